// Millions of random steps against the model.
#include "tests/module/step/StepModel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace
{
constexpr int STEPS = 3'000'000;

/** Draws values of every magnitude, so that small and wrapping steps are equally common. */
class MixedValues
{
public:
    std::int32_t next()
    {
        const std::uint64_t nDrawn = m_random();
        const unsigned int nBits = static_cast<unsigned int>(nDrawn >> 59); // 0 to 31
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(nDrawn)) >> nBits;
    }

    std::int32_t nextNotNegative() { return next() & INT32_MAX; }
    bool nextFlag() { return (m_random() & 1U) != 0; }

private:
    // The same values at every run.
    std::mt19937_64 m_random{6}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
};

TEST(StepRandom, ClosedLoopStepFollowsTheModel)
{
    MixedValues values;
    for (int i = 0; i < STEPS; ++i) {
        const RegulatorStep::ClosedLoopInput input = {.nPtarget = values.next(),
                                                      .nPmeasured = values.next(),
                                                      .nPctrl = values.next(),
                                                      .nGainPercent = values.next(),
                                                      .nPctrlMin = values.next(),
                                                      .nPctrlMax = values.next(),
                                                      .nMaxPctrlStep = values.nextNotNegative(),
                                                      .bStepLimited = values.nextFlag(),
                                                      .bProductionTestMode = values.nextFlag()};
        const RegulatorStep::ClosedLoopResult result = RegulatorStep::closedLoop(input);
        const RegulatorStep::ClosedLoopResult expected = StepModel::closedLoop(input);
        if (!StepModel::isSame(result, expected)) {
            FAIL() << StepModel::textOf(input) << ": " << StepModel::textOf(result) << " instead of "
                   << StepModel::textOf(expected);
        }
    }
}

TEST(StepRandom, ClosedLoopStepWithinUsualPowersFollowsTheModel)
{
    MixedValues values;
    for (int i = 0; i < STEPS; ++i) {
        const RegulatorStep::ClosedLoopInput input = {.nPtarget = values.next() % 10000,
                                                      .nPmeasured = values.next() % 10000,
                                                      .nPctrl = values.next() % 10000,
                                                      .nGainPercent = values.next() % 1000,
                                                      .nPctrlMin = values.next() % 10000,
                                                      .nPctrlMax = values.next() % 10000,
                                                      .nMaxPctrlStep = values.nextFlag() ? 10 : 20,
                                                      .bStepLimited = values.nextFlag(),
                                                      .bProductionTestMode = values.nextFlag()};
        const RegulatorStep::ClosedLoopResult result = RegulatorStep::closedLoop(input);
        const RegulatorStep::ClosedLoopResult expected = StepModel::closedLoop(input);
        if (!StepModel::isSame(result, expected)) {
            FAIL() << StepModel::textOf(input) << ": " << StepModel::textOf(result) << " instead of "
                   << StepModel::textOf(expected);
        }
    }
}

TEST(StepRandom, RampStepFollowsTheModel)
{
    MixedValues values;
    for (int i = 0; i < STEPS; ++i) {
        const std::int32_t nPctrl = values.next();
        const std::int32_t nGain = values.next();
        const std::int32_t nError = values.next();
        const std::int32_t nTxPmin = values.next();
        const std::int32_t nPctrlMax = values.next();
        const std::int32_t nStep = RegulatorStep::rampPctrl(nPctrl, nGain, nError, nTxPmin, nPctrlMax);
        if (nStep != StepModel::rampPctrl(nPctrl, nGain, nError, nTxPmin, nPctrlMax)) {
            FAIL() << "control " << nPctrl << ", gain " << nGain << ", error " << nError << ", limits " << nTxPmin
                   << " to " << nPctrlMax << ": " << nStep;
        }
    }
}
} // namespace
