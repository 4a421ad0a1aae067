/** @file
 * Socket addresses as text.
 */
#pragma once

#include <sys/socket.h>

#include <string>

/** @return the numeric address without the port; empty when there is none */
std::string numericAddress(const sockaddr* pAddress, socklen_t nLength);
