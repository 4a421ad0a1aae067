/** @file
 * Holds calls to the threads that they are meant for: checked in builds without NDEBUG and with sanitizers, nothing in
 * all others. Whoever breaks a rule is told which one on standard error, and the process ends.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <atomic>

#if !defined(NDEBUG) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/** Whether the rules are checked. */
#define OPC_THREAD_RULES 1
#else
#define OPC_THREAD_RULES 0
#endif

/** What a thread does, as far as rules speak of it. */
enum class EThreadRole
{
    Other,
    Regulation, /**< takes the steps: must never wait for others */
    Connection  /**< answers one client of the unit's server */
};

#if OPC_THREAD_RULES

/** Gives the calling thread a role for as long as this stands. Any thread. */
class EAF_PUBLIC ThreadRoleScope
{
public:
    explicit ThreadRoleScope(EThreadRole eRole);
    ~ThreadRoleScope();
    ThreadRoleScope(const ThreadRoleScope&) = delete;
    ThreadRoleScope& operator=(const ThreadRoleScope&) = delete;

private:
    EThreadRole m_eBefore;
};

/** Ends the process when the calling thread has a role that a function is not for. @param pWhat the function */
EAF_PUBLIC void refuseThreadRole(EThreadRole eRole, const char* pWhat);

/** What only one thread may use at a time: the one that came first, until it is handed over. */
class EAF_PUBLIC OwnedByThread
{
public:
    OwnedByThread() = default;
    // A copy is another thing, and nobody's yet.
    OwnedByThread(const OwnedByThread& /*other*/) {}
    OwnedByThread& operator=(const OwnedByThread& /*other*/) { return *this; }
    ~OwnedByThread() = default;

    /** Makes it the calling thread's when it is nobody's; ends the process when it is another's. @param pWhat what is
     * called */
    void check(const char* pWhat) const;

    /** Ends the process when it is the calling thread's own. @param pWhat what is called */
    void refuseOwner(const char* pWhat) const;

    /** Makes it nobody's, so that the next thread that comes has it. For who knows that its owner is through with it.
     */
    void handOver() { m_nOwner.store(0, std::memory_order_relaxed); }

private:
    mutable std::atomic<unsigned int> m_nOwner{0}; // number of a thread, which no other ever has; 0 for nobody
};

#else

class ThreadRoleScope
{
public:
    explicit ThreadRoleScope(EThreadRole /*eRole*/) {}
    ~ThreadRoleScope() {} // NOLINT(modernize-use-equals-default): a scope, and no unused variable
    ThreadRoleScope(const ThreadRoleScope&) = delete;
    ThreadRoleScope& operator=(const ThreadRoleScope&) = delete;
};

inline void refuseThreadRole(EThreadRole /*eRole*/, const char* /*pWhat*/) {}

class OwnedByThread
{
public:
    void check(const char* /*pWhat*/) const {}
    void refuseOwner(const char* /*pWhat*/) const {}
    void handOver() {}
};

#endif
