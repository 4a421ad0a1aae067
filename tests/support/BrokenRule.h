/** @file
 * How tests see that a thread rule holds.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#if defined(__SANITIZE_THREAD__)
/** Lets the process that a death test forks have threads of its own, also when tests before it have left some. */
extern "C" [[gnu::used]] inline const char* __tsan_default_options()
{
    return "die_after_fork=0";
}
#endif

/** Runs a function in a thread of its own, and waits for it. */
template <class TFunction> void inAnotherThread(const TFunction& function)
{
    std::thread(function).join();
}

/** Expects a statement to end the process for breaking the rule of a function; skips the test where none is checked. */
#define EXPECT_BROKEN_RULE(statement, pFunction)                                                                       \
    if (OPC_THREAD_RULES == 0) {                                                                                       \
        GTEST_SKIP() << "thread rules are checked in builds without NDEBUG";                                           \
    }                                                                                                                  \
    EXPECT_DEATH(statement, std::string("thread rule broken: ") + (pFunction) + " was called from ")
