/** @file
 * Whether a system logger is there.
 */
#pragma once

/**
 * Connects to a system logger's socket, of either kind, and leaves it at that.
 * @param pPath of the socket
 * @return 0 when somebody listens; otherwise why not, as an errno
 */
int probeSystemLog(const char* pPath) noexcept;
