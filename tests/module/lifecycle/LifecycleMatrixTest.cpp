// A module's life in every order that its callers may choose, in surroundings that are in order and in such that fail.
#include "tests/abi/AllocationFailures.h"
#include "tests/module/lifecycle/LifecycleWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr int MAX_FAILURES_SHOWN = 5;

using Life = std::vector<EMoment>;

// What may come in any order between construction and destruction. Left out is what has no defined outcome: a handle
// used before Construct or after Destruct, a switch-on without a power handler.
const Life MOMENTS = {EMoment::Initialize,  EMoment::ModuleInit, EMoment::StorageObjects, EMoment::FrameFormat,
                      EMoment::Stop,        EMoment::Regulate,   EMoment::NullHandles,    EMoment::PowerHandlerGoes,
                      EMoment::Uninitialize};

/** @return every row of moments, repeats included, of up to a length */
std::vector<Life> livesUpTo(std::size_t nLength)
{
    std::vector<Life> lives = {{}};
    std::size_t nBegin = 0;
    for (std::size_t i = 0; i < nLength; ++i) {
        const std::size_t nEnd = lives.size();
        for (std::size_t k = nBegin; k < nEnd; ++k) {
            for (const EMoment eMoment : MOMENTS) {
                Life longer = lives[k];
                longer.push_back(eMoment);
                lives.push_back(std::move(longer));
            }
        }
        nBegin = nEnd;
    }
    return lives;
}

/** A moment of one of several modules. */
using Turn = std::pair<std::size_t, EMoment>;

/** Lives turns and counts cases; the first failures are reported. */
class LifecycleMatrix : public ::testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_EQ(m_nFailures, 0) << "of " << m_nCases << " cases";
        std::cout << m_nCases << " cases\n";
    }

    void live(const Surroundings& surroundings, const std::vector<unsigned int>& channels,
              const std::vector<Turn>& turns)
    {
        ++m_nCases;
        LifecycleWorld world(surroundings, channels);
        for (std::size_t i = 0; i < turns.size(); ++i) {
            const std::string sWrong = world.live(turns[i].second, turns[i].first);
            if (!sWrong.empty()) {
                report(surroundings, channels, turns, i, sWrong);
                return;
            }
        }
    }

    void live(const Surroundings& surroundings, unsigned int nChannel, const Life& life)
    {
        std::vector<Turn> turns = {{0, EMoment::Construct}};
        for (const EMoment eMoment : life) {
            turns.emplace_back(0, eMoment);
        }
        turns.emplace_back(0, EMoment::Destruct);
        live(surroundings, {nChannel}, turns);
    }

    /** Lives every interleaving of one life per channel. */
    void interleave(const std::vector<unsigned int>& channels, const Life& life)
    {
        std::vector<std::size_t> order;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            order.insert(order.end(), life.size(), i);
        }
        do {
            std::vector<std::size_t> next(channels.size());
            std::vector<Turn> turns;
            turns.reserve(order.size());
            for (const std::size_t nModule : order) {
                turns.emplace_back(nModule, life[next[nModule]++]);
            }
            live(allSurroundings().front(), channels, turns);
        } while (std::next_permutation(order.begin(), order.end()));
    }

private:
    void report(const Surroundings& surroundings, const std::vector<unsigned int>& channels,
                const std::vector<Turn>& turns, std::size_t nTurn, const std::string& sWrong)
    {
        if (++m_nFailures > MAX_FAILURES_SHOWN) {
            return;
        }
        std::ostringstream text;
        for (std::size_t i = 0; i < turns.size(); ++i) {
            text << (i == 0 ? "" : ", ") << (i == nTurn ? ">>> " : "") << nameOf(turns[i].second) << " of channel "
                 << channels[turns[i].first];
        }
        ADD_FAILURE() << surroundings.pName << ": " << text.str() << "\n  " << sWrong;
    }

    std::size_t m_nCases = 0;
    int m_nFailures = 0;
};
} // namespace

TEST_F(LifecycleMatrix, EveryOrderOfUpToFourMomentsDoesWhatEachOfThemDoes)
{
    for (const Life& life : livesUpTo(4)) {
        live(allSurroundings().front(), 0, life);
    }
}

TEST_F(LifecycleMatrix, EveryFailureAroundTheModuleIsTakenAsTheBehaviourSays)
{
    const Life whole = {EMoment::Initialize, EMoment::ModuleInit, EMoment::StorageObjects, EMoment::FrameFormat,
                        EMoment::Regulate,   EMoment::Stop,       EMoment::Uninitialize};
    for (const Surroundings& surroundings : allSurroundings()) {
        live(surroundings, 12, whole);
        for (const Life& life : livesUpTo(3)) {
            live(surroundings, 3, life);
        }
    }
}

TEST_F(LifecycleMatrix, ChannelsLiveTheirLivesBesideEachOther)
{
    const Life life = {EMoment::Construct, EMoment::Initialize, EMoment::ModuleInit, EMoment::Uninitialize,
                       EMoment::Destruct};
    // Two of one channel meet in the broker; 1 and 12 share the power handler's cut name.
    for (const std::vector<unsigned int>& channels :
         std::vector<std::vector<unsigned int>>{{0, 1}, {1, 12}, {0, 0}, {12, 12}})
    {
        interleave(channels, life);
    }
    interleave({0, 1, 12}, {EMoment::Construct, EMoment::Initialize, EMoment::Destruct});
    interleave({1, 1, 0}, {EMoment::Construct, EMoment::Initialize, EMoment::Destruct});
}

TEST_F(LifecycleMatrix, NoOrderLeavesMemoryBehind)
{
    const auto liveAll = [this] {
        for (const Life& life : livesUpTo(2)) {
            live(allSurroundings().front(), 12345678, life);
        }
    };
    liveAll(); // what is allocated once and kept is there from now on
    const std::ptrdiff_t nBefore = AllocationFailure::livingAllocations();
    liveAll();
    EXPECT_EQ(AllocationFailure::livingAllocations(), nBefore);
}

namespace
{
/** Fails the moments of a whole life one allocation after the other. */
class LifecycleAllocation : public ::testing::Test
{
protected:
    // Destruct is left out: a destructor that throws ends the process.
    const Life m_life = {EMoment::Construct,   EMoment::Initialize, EMoment::ModuleInit, EMoment::StorageObjects,
                         EMoment::FrameFormat, EMoment::Regulate,   EMoment::Stop,       EMoment::Uninitialize};

    /**
     * Lives up to a moment in which an allocation fails, which is then done again.
     * @param nMoment which moment of the life
     * @param nAllocation which allocation, from 1
     * @return whether the moment got as far as that allocation
     */
    static bool failOnce(const Life& life, std::size_t nMoment, std::size_t nAllocation)
    {
        LifecycleWorld world(allSurroundings().front(), {12345678});
        world.platform().setQuiet(true); // nothing allocates for the records
        bool bFailed = false;
        for (std::size_t i = 0; i < life.size(); ++i) {
            const Texts before = world.publishedNames();
            const std::size_t nModules = world.platform().script().modules.size();
            if (i == nMoment) {
                bFailed = !isDoneWithFailure(world, life[i], nAllocation);
                expectPartOf(world, life[i], before, nModules);
            }
            if (i != nMoment || bFailed) {
                EXPECT_EQ(world.act(life[i]), EAF_OK) << nameOf(life[i]);
            }
        }
        EXPECT_EQ(world.publishedNames(), Texts{"IOutputPowerController_12345678"});
        world.act(EMoment::Destruct);
        EXPECT_EQ(world.publishedNames(), Texts{}) << nameOf(life[nMoment]) << ", allocation " << nAllocation;
        return bFailed;
    }

private:
    static bool isDoneWithFailure(LifecycleWorld& world, EMoment eMoment, std::size_t nAllocation)
    {
        try {
            const AllocationFailure failure(nAllocation);
            world.act(eMoment);
        }
        catch (const std::bad_alloc&) {
            return false;
        }
        return true;
    }

    /** What a moment that failed half-way leaves is part of what it does; a module registered before stays so. */
    static void expectPartOf(LifecycleWorld& world, EMoment eMoment, const Texts& before, std::size_t nModules)
    {
        const Texts after = world.publishedNames();
        const bool bTakes = eMoment == EMoment::Uninitialize;
        EXPECT_TRUE(bTakes ? std::includes(before.begin(), before.end(), after.begin(), after.end())
                           : std::includes(after.begin(), after.end(), before.begin(), before.end()))
            << nameOf(eMoment);
        const std::size_t nNow = world.platform().script().modules.size();
        EXPECT_LE(nNow, eMoment == EMoment::Construct ? 1U : nModules) << nameOf(eMoment);
        if (eMoment == EMoment::Construct) {
            world.platform().script().modules.clear(); // nobody else takes out what never came to be
        }
    }
};
} // namespace

TEST_F(LifecycleAllocation, EveryMomentThatFailsIsMadeGoodByDoingItAgain)
{
    std::size_t nCases = 0;
    for (std::size_t nMoment = 0; nMoment < m_life.size(); ++nMoment) {
        std::size_t nAllocation = 1;
        while (failOnce(m_life, nMoment, nAllocation)) {
            ++nAllocation;
        }
        const bool bAllocates = m_life[nMoment] != EMoment::FrameFormat && m_life[nMoment] != EMoment::Regulate &&
                                m_life[nMoment] != EMoment::Stop;
        EXPECT_EQ(nAllocation > 1, bAllocates) << nameOf(m_life[nMoment]);
        std::cout << nAllocation - 1 << " allocations in " << nameOf(m_life[nMoment]) << '\n';
        nCases += nAllocation - 1;
    }
    EXPECT_GT(nCases, 10U);
    std::cout << nCases << " cases\n";
}

TEST_F(LifecycleAllocation, NoneOfThemLeavesMemoryBehind)
{
    for (std::size_t nMoment = 0; nMoment < m_life.size(); ++nMoment) {
        bool bFailed = true;
        for (std::size_t nAllocation = 1; bFailed; ++nAllocation) {
            bFailed = failOnce(m_life, nMoment, nAllocation); // what is kept for good is there from now on
            const std::ptrdiff_t nBefore = AllocationFailure::livingAllocations();
            failOnce(m_life, nMoment, nAllocation);
            EXPECT_EQ(AllocationFailure::livingAllocations(), nBefore)
                << nameOf(m_life[nMoment]) << ", allocation " << nAllocation;
        }
    }
}

TEST_F(LifecycleAllocation, AManagerThatThrowsKeepsItsEntryAndNothingElseIsLeft)
{
    LifecycleWorld world(allSurroundings().front(), {12345678});
    world.platform().setQuiet(true);
    bool bThrows = true;
    world.platform().script().afterRegisterModule = [&bThrows] {
        if (bThrows) {
            throw std::bad_alloc();
        }
    };
    const std::ptrdiff_t nBefore = AllocationFailure::livingAllocations();
    EXPECT_THROW(world.act(EMoment::Construct), std::bad_alloc);
    EXPECT_EQ(world.publishedNames(), Texts{});
    EXPECT_EQ(world.platform().script().modules.size(), 1U);
    std::vector<ModuleInterface*>().swap(world.platform().script().modules); // nobody else takes it out
    EXPECT_EQ(AllocationFailure::livingAllocations(), nBefore);

    bThrows = false;
    EXPECT_EQ(world.act(EMoment::Construct), EAF_OK);
    EXPECT_EQ(world.publishedNames(), Texts{"IOutputPowerController_12345678"});
}
