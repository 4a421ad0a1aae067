/** @file
 * Real-time priority for a thread.
 */
#pragma once

#include <pthread.h>

#include <string>

/**
 * Lets a thread go before all threads without real-time priority (SCHED_FIFO).
 * @param nPriority 1 to 99
 * @return why not, and what to do; empty when it worked
 */
std::string giveRealtimePriority(pthread_t thread, int nPriority);
