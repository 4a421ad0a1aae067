#include "Platform/Threads/ThreadRules.h"

#if OPC_THREAD_RULES

#include <cstdio>
#include <cstdlib>

namespace
{
thread_local EThreadRole t_eRole = EThreadRole::Other;

unsigned int threadNumber()
{
    static std::atomic<unsigned int> nThreads{0};
    thread_local const unsigned int t_nNumber = ++nThreads;
    return t_nNumber;
}

const char* nameOf(EThreadRole eRole)
{
    switch (eRole) {
    case EThreadRole::Regulation:
        return "the regulation's thread";
    case EThreadRole::Connection:
        return "a connection's thread";
    case EThreadRole::Other:
        break;
    }
    return "a thread";
}

[[noreturn]] void fail(const char* pWhat, const char* pRule, unsigned int nOwner)
{
    std::fprintf(stderr, "thread rule broken: %s was called from %s (number %u), %s", pWhat, nameOf(t_eRole),
                 threadNumber(), pRule);
    if (nOwner != 0) {
        std::fprintf(stderr, " of thread number %u", nOwner);
    }
    std::fputs("; see the tables of threads in docs/architecture.md\n", stderr);
    std::abort();
}
} // namespace

ThreadRoleScope::ThreadRoleScope(EThreadRole eRole) : m_eBefore(t_eRole)
{
    t_eRole = eRole;
}

ThreadRoleScope::~ThreadRoleScope()
{
    t_eRole = m_eBefore;
}

void refuseThreadRole(EThreadRole eRole, const char* pWhat)
{
    if (t_eRole == eRole) {
        fail(pWhat, "which it is not for", 0);
    }
}

void OwnedByThread::check(const char* pWhat) const
{
    unsigned int nOwner = 0;
    if (!m_nOwner.compare_exchange_strong(nOwner, threadNumber(), std::memory_order_relaxed) &&
        nOwner != threadNumber()) {
        fail(pWhat, "and is", nOwner);
    }
}

void OwnedByThread::refuseOwner(const char* pWhat) const
{
    if (m_nOwner.load(std::memory_order_relaxed) == threadNumber()) {
        fail(pWhat, "which serves it and would wait for itself", 0);
    }
}

#endif
