/** @file
 * What a C program does with the platform.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Publishes a record of its own in the C broker, finds it, calls it and withdraws it.
 * @return 0, or the number of the step that went wrong
 */
int useBrokerFromC(void);

/** @return what the first operation of the output power control log found in the broker returns, or -1 */
long restartLogsFromC(const char* pName);

#ifdef __cplusplus
}
#endif
