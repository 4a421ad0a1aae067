// Exceptions on their way through the module's C entry points.
#include "tests/abi/AllocationFailures.h"
#include "tests/abi/LoadedLibrary.h"
#include "tests/support/RecordingPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

using ::testing::Contains;

namespace
{
class ConstructFailure : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        // What is allocated once and kept, by the records and by the libraries, is there from now on.
        constructFailing(0);
        m_platform.reset();
    }

    void TearDown() override { m_platform.reset(); }

    /** Constructs with an allocation failing, 0 for none, and destructs. @return whether it passed on an exception */
    bool constructFailing(std::size_t nAllocation) const
    {
        void* pModule = nullptr;
        try {
            const AllocationFailure failure(nAllocation);
            m_library.construct(&pModule, 12345678);
        }
        catch (const std::bad_alloc&) {
            EXPECT_EQ(pModule, nullptr);
            return true;
        }
        EXPECT_NE(pModule, nullptr);
        m_library.destruct(pModule);
        return false;
    }

    /** Forgets everything, with it the manager's entry of a module that never came to be. */
    void reset(bool bQuiet)
    {
        m_platform.reset();
        m_platform.setQuiet(bQuiet);
    }

    /** @return how many allocations a construction makes, found by failing one after the other */
    std::size_t constructionAllocations(bool bQuiet)
    {
        std::size_t nAllocation = 0;
        do {
            reset(bQuiet);
            ++nAllocation;
        } while (constructFailing(nAllocation));
        return nAllocation - 1;
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
    LoadedLibrary m_library;
};

TEST_F(ConstructFailure, EveryFailedAllocationReachesTheCallerAndLeavesNothingBehind)
{
    const std::size_t nAllocations = constructionAllocations(false);
    EXPECT_GT(nAllocations, 2U); // controller, log, name at the least
    for (std::size_t i = 1; i <= nAllocations; ++i) {
        m_platform.reset();
        const std::ptrdiff_t nBefore = AllocationFailure::livingAllocations();
        EXPECT_TRUE(constructFailing(i)) << i;
        m_platform.reset();
        EXPECT_EQ(AllocationFailure::livingAllocations(), nBefore) << i;
    }
}

TEST_F(ConstructFailure, ABrokerThatThrowsStopsTheConstructionAfterTheLogIsGone)
{
    // Quiet, the platform allocates nothing for its records: the last allocation is the broker's for the name.
    const std::size_t nAllocations = constructionAllocations(true);
    reset(true);
    EXPECT_TRUE(constructFailing(nAllocations));
    m_platform.setQuiet(false);
    EXPECT_TRUE(m_platform.script().interfaces.empty());
    EXPECT_EQ(m_platform.script().modules.size(), 1U); // what was registered before stays so
}

TEST_F(ConstructFailure, TheLibraryServesAfterAFailure)
{
    EXPECT_TRUE(constructFailing(1));
    m_platform.reset();
    EXPECT_FALSE(constructFailing(0));
    EXPECT_THAT(m_platform.calls(), Contains("registerInterface(IOutputPowerController_12345678)"));
    EXPECT_THAT(m_platform.calls(), Contains("unregisterInterface(IOutputPowerController_12345678, null)"));
}
} // namespace
