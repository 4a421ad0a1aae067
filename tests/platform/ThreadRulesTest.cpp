#include "Platform/Threads/ThreadRules.h"

#include "Platform/Trace/TraceControl.h"
#include "tests/support/BrokenRule.h"

#include <gtest/gtest.h>

#include <type_traits>

#if OPC_THREAD_RULES
static_assert(!std::is_empty_v<OwnedByThread>);
#else
static_assert(std::is_empty_v<OwnedByThread> && std::is_empty_v<ThreadRoleScope>, "a release pays nothing");
#endif

TEST(OwnedByThread, BelongsToTheFirstThreadThatComes)
{
    const OwnedByThread owned;
    owned.check("first");
    owned.check("again");
    EXPECT_BROKEN_RULE(inAnotherThread([&owned] { owned.check("Thing::use"); }), "Thing::use");
}

TEST(OwnedByThread, StaysWithAThreadThatHasEnded)
{
    const OwnedByThread owned;
    inAnotherThread([&owned] { owned.check("first"); });
    EXPECT_BROKEN_RULE(owned.check("Thing::use"), "Thing::use");
    EXPECT_BROKEN_RULE(inAnotherThread([&owned] { owned.check("Thing::use"); }), "Thing::use");
}

TEST(OwnedByThread, GoesToTheNextThreadOnceItIsHandedOver)
{
    OwnedByThread owned;
    owned.check("first");
    owned.handOver();
    inAnotherThread([&owned] { owned.check("second"); });
    EXPECT_BROKEN_RULE(owned.check("Thing::use"), "Thing::use");
}

TEST(OwnedByThread, LetsACopyBeAnybodys)
{
    OwnedByThread owned;
    owned.check("first");
    const OwnedByThread copy(owned);
    inAnotherThread([&copy] { copy.check("the copy's first"); });
    EXPECT_BROKEN_RULE(copy.check("Thing::use"), "Thing::use");
}

TEST(OwnedByThread, RefusesItsOwnerWhatItIsNotFor)
{
    const OwnedByThread owned;
    owned.refuseOwner("nobody's");
    owned.check("first");
    inAnotherThread([&owned] { owned.refuseOwner("another's"); });
    EXPECT_BROKEN_RULE(owned.refuseOwner("Thing::wait"), "Thing::wait");
}

TEST(ThreadRole, LastsAsLongAsItsScope)
{
    {
        const ThreadRoleScope outer(EThreadRole::Regulation);
        {
            const ThreadRoleScope inner(EThreadRole::Connection);
            refuseThreadRole(EThreadRole::Regulation, "inner");
        }
        inAnotherThread([] { refuseThreadRole(EThreadRole::Regulation, "another thread"); });
    }
    refuseThreadRole(EThreadRole::Regulation, "after it");
    const ThreadRoleScope regulation(EThreadRole::Regulation);
    EXPECT_BROKEN_RULE(refuseThreadRole(EThreadRole::Regulation, "Thing::wait"), "Thing::wait");
}

TEST(ThreadRole, KeepsTheRegulationFromWaitingForTheSystemLog)
{
    const ThreadRoleScope regulation(EThreadRole::Regulation);
    EXPECT_BROKEN_RULE(TraceControl::waitForSystemLog(std::chrono::milliseconds(0)), "TraceControl::waitForSystemLog");
}
