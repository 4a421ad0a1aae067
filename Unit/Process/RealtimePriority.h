/** @file
 * Real-time priority for a thread.
 */
#pragma once

#include <pthread.h>

#include <string>

/** Greatest real-time priority; 0 is none. */
inline constexpr int MAX_REALTIME_PRIORITY = 99;

/**
 * Lets a thread go before all threads without real-time priority (SCHED_FIFO).
 * @param nPriority 1 to MAX_REALTIME_PRIORITY
 * @return why not, and what to do; empty when it worked
 */
std::string giveRealtimePriority(pthread_t thread, int nPriority);
