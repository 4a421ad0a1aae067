// Every combination of the values at which the arithmetic turns.
#include "tests/module/step/StepModel.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace
{
constexpr std::int32_t LEAST = INT32_MIN;
constexpr std::int32_t MOST = INT32_MAX;

/** All values of interest. */
const std::vector<std::int32_t>& corners()
{
    static const std::vector<std::int32_t> s_corners = [] {
        std::vector<std::int32_t> values = {0,          LEAST,     LEAST + 1, LEAST + 49,  LEAST + 50,
                                            LEAST + 51, MOST,      MOST - 1,  MOST - 49,   MOST - 50,
                                            MOST - 51,  LEAST / 2, MOST / 2,  MOST / 2 + 1};
        for (const std::int32_t nValue :
             {1,   2,   3,    7,    8,    10,   20,    49,    50,    51,    99,    100,   101,    149,
              150, 151, 1999, 2000, 2001, 9900, 10000, 46340, 46341, 65535, 65536, 99999, 100000, 100001})
        {
            values.push_back(nValue);
            values.push_back(-nValue);
        }
        return values;
    }();
    return s_corners;
}

/** Fewer of them, for many arguments at once. */
constexpr std::array<std::int32_t, 11> FEW_CORNERS = {0, 1, 50, -50, 100, -100, 2000, -2000, 100000, MOST, LEAST};

TEST(StepCorners, GainStepFollowsTheModel)
{
    for (const std::int32_t nGain : corners()) {
        for (const std::int32_t nError : corners()) {
            ASSERT_EQ(RegulatorStep::gainStep(nGain, nError), StepModel::gainStep(nGain, nError))
                << nGain << ", " << nError;
        }
    }
}

TEST(StepCorners, WrappingOperationsFollowTheModel)
{
    for (const std::int32_t a : corners()) {
        for (const std::int32_t b : corners()) {
            ASSERT_EQ(RegulatorStep::wrapAdd(a, b), StepModel::wrapped(std::int64_t{a} + b)) << a << ", " << b;
            ASSERT_EQ(RegulatorStep::wrapSubtract(a, b), StepModel::wrapped(std::int64_t{a} - b)) << a << ", " << b;
            ASSERT_EQ(RegulatorStep::wrapMultiply(a, b), StepModel::wrapped(std::int64_t{a} * b)) << a << ", " << b;
        }
    }
}

TEST(StepCorners, LimitFollowsTheModel)
{
    for (const std::int32_t nValue : corners()) {
        for (const std::int32_t nLower : corners()) {
            for (const std::int32_t nUpper : corners()) {
                ASSERT_EQ(RegulatorStep::limit(nValue, nLower, nUpper), StepModel::limited(nValue, nLower, nUpper))
                    << nValue << ", " << nLower << ", " << nUpper;
            }
        }
    }
}

/** Calls a function with every combination of FEW_CORNERS in an array. */
template <std::size_t COUNT, class TCall> void forEachCombination(TCall call)
{
    std::array<std::int32_t, COUNT> anValue{};
    std::array<std::size_t, COUNT> anIndex{};
    for (;;) {
        for (std::size_t i = 0; i < COUNT; ++i) {
            anValue[i] = FEW_CORNERS[anIndex[i]];
        }
        call(anValue);
        std::size_t nDigit = 0;
        while (nDigit < COUNT && ++anIndex[nDigit] == FEW_CORNERS.size()) {
            anIndex[nDigit++] = 0;
        }
        if (nDigit == COUNT) {
            return;
        }
    }
}

TEST(StepCorners, RampStepFollowsTheModel)
{
    std::size_t nFailures = 0;
    forEachCombination<5>([&nFailures](const std::array<std::int32_t, 5>& v) {
        const std::int32_t nStep = RegulatorStep::rampPctrl(v[0], v[1], v[2], v[3], v[4]);
        if (nStep != StepModel::rampPctrl(v[0], v[1], v[2], v[3], v[4]) && nFailures++ < 5) {
            ADD_FAILURE() << "control " << v[0] << ", gain " << v[1] << ", error " << v[2] << ", limits " << v[3]
                          << " to " << v[4] << ": " << nStep;
        }
    });
    EXPECT_EQ(nFailures, 0U);
}

TEST(StepCorners, ClosedLoopStepFollowsTheModel)
{
    struct Mode
    {
        std::int32_t nMaxPctrlStep;
        bool bStepLimited;
        bool bProductionTestMode;
    };
    constexpr std::array<Mode, 5> MODES = {
        Mode{10, true, false}, {0, true, false}, {MOST, true, false}, {10, false, false}, {10, true, true}};
    std::size_t nFailures = 0;
    forEachCombination<5>([&](const std::array<std::int32_t, 5>& v) {
        for (const std::int32_t nGain : {0, 20, 100, -100, MOST}) {
            for (const Mode& mode : MODES) {
                const RegulatorStep::ClosedLoopInput input = {.nPtarget = v[0],
                                                              .nPmeasured = v[1],
                                                              .nPctrl = v[2],
                                                              .nGainPercent = nGain,
                                                              .nPctrlMin = v[3],
                                                              .nPctrlMax = v[4],
                                                              .nMaxPctrlStep = mode.nMaxPctrlStep,
                                                              .bStepLimited = mode.bStepLimited,
                                                              .bProductionTestMode = mode.bProductionTestMode};
                const RegulatorStep::ClosedLoopResult result = RegulatorStep::closedLoop(input);
                const RegulatorStep::ClosedLoopResult expected = StepModel::closedLoop(input);
                if (!StepModel::isSame(result, expected) && nFailures++ < 5) {
                    ADD_FAILURE() << StepModel::textOf(input) << ": " << StepModel::textOf(result) << " instead of "
                                  << StepModel::textOf(expected);
                }
            }
        }
    });
    EXPECT_EQ(nFailures, 0U);
}
} // namespace
