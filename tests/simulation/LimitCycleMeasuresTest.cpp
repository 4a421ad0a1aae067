#include "tests/simulation/StepSequence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace
{
constexpr int WINDOW = 512;
constexpr int EVERY = 4096;

/** A sequence whose next step is the first steady one. */
class SteadySequence : public StepSequence
{
public:
    SteadySequence() { add(60); }

    /** Adds a sine of this amplitude, the same phase from call to call where nSteps is whole periods. */
    void addSine(int nSteps, double amplitudeDb, double periodSteps, double noiseDb = 0.0)
    {
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            add(1, amplitudeDb * std::cos(2.0 * std::numbers::pi * nStep / periodSteps) + noiseDb * m_normal(m_random));
        }
    }

    /** Adds noise of which each value keeps so much of the last. */
    void addNoise(int nSteps, double standardDb, double kept)
    {
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            m_value = kept * m_value + std::sqrt(1.0 - kept * kept) * standardDb * m_normal(m_random);
            add(1, m_value);
        }
    }

private:
    std::mt19937_64 m_random{7};
    std::normal_distribution<double> m_normal;
    double m_value = 0.0;
};

TEST(LimitCycleMeasures, FindAmplitudeAndPeriodInNoise)
{
    const struct
    {
        double periodSteps;
        double amplitudeDb; // of what the steps see of the sine
    } cases[] = {{2.0, 0.1}, {4.0, 0.1}, {7.5, 0.1}, {20.0, 0.1}, {41.0, 0.1}, {100.0, 0.1}};
    for (const auto& [periodSteps, amplitudeDb] : cases) {
        SteadySequence clean;
        clean.addSine(WINDOW, 0.1, periodSteps);
        EXPECT_NEAR(clean.measures().limitCycleDb, amplitudeDb, 0.002) << periodSteps;
        EXPECT_NEAR(clean.measures().limitCycleMs, 6.0 * periodSteps, 0.01 * 6.0 * periodSteps) << periodSteps;
        SteadySequence noisy;
        noisy.addSine(WINDOW, 0.1, periodSteps, 0.02);
        EXPECT_NEAR(noisy.measures().limitCycleDb, amplitudeDb, 0.02) << periodSteps;
        EXPECT_NEAR(noisy.measures().limitCycleMs, 6.0 * periodSteps, 0.1 * 6.0 * periodSteps) << periodSteps;
    }
}

TEST(LimitCycleMeasures, FindAnActuatorThatGoesBackAndForth)
{
    SteadySequence sequence;
    for (int nStep = 0; nStep < WINDOW; ++nStep) {
        sequence.add(1, nStep % 12 < 3 ? 0.2 : -0.05);
    }
    EXPECT_NEAR(sequence.measures().limitCycleDb, 0.125, 0.005);
    EXPECT_NEAR(sequence.measures().limitCycleMs, 72.0, 0.5);
}

TEST(LimitCycleMeasures, FindNoneInNoiseThatForgetsSlowly)
{
    for (const double kept : {0.0, 0.5, 0.8, -0.5}) {
        SteadySequence sequence;
        sequence.addNoise(200 * EVERY, 0.05, kept);
        EXPECT_EQ(sequence.measures().limitCycleDb, 0.0) << kept;
        EXPECT_TRUE(std::isnan(sequence.measures().limitCycleMs)) << kept;
    }
}

TEST(LimitCycleMeasures, FindNoneInADriftOrInAFlatOutput)
{
    SteadySequence drifting;
    for (int nStep = 0; nStep < 2 * EVERY; ++nStep) {
        drifting.add(1, nStep * 0.0005);
    }
    EXPECT_EQ(drifting.measures().limitCycleDb, 0.0);
    SteadySequence flat;
    for (int nStep = 0; nStep < 2 * EVERY; ++nStep) {
        flat.add(1, nStep % 2 * 0.0005);
    }
    EXPECT_EQ(flat.measures().limitCycleDb, 0.0);
}

TEST(LimitCycleMeasures, FindTheCycleOnADrift)
{
    SteadySequence sequence;
    for (int nStep = 0; nStep < WINDOW; ++nStep) {
        sequence.add(1, nStep * 0.002 + (nStep % 10 < 5 ? 0.1 : -0.1));
    }
    EXPECT_NEAR(sequence.measures().limitCycleDb, 0.1, 0.01);
}

TEST(LimitCycleMeasures, ExistOnceAWindowOfSteadyStepsIsFull)
{
    SteadySequence sequence;
    sequence.add(WINDOW - 1);
    EXPECT_TRUE(std::isnan(sequence.measures().limitCycleDb));
    sequence.add(1);
    EXPECT_EQ(sequence.measures().limitCycleDb, 0.0);
}

TEST(LimitCycleMeasures, TakeTheLargestOfTheWindowsThatAreLookedAt)
{
    SteadySequence sequence;
    sequence.addSine(EVERY, 0.1, 16.0);
    sequence.addSine(EVERY, 0.3, 32.0);
    sequence.addSine(EVERY, 0.2, 8.0);
    EXPECT_NEAR(sequence.measures().limitCycleDb, 0.3, 0.002);
    EXPECT_NEAR(sequence.measures().limitCycleMs, 6.0 * 32.0, 0.5);
}

TEST(LimitCycleMeasures, AreLookedForOncePerSeveralWindows)
{
    SteadySequence sequence;
    sequence.add(WINDOW);
    sequence.addSine(EVERY - WINDOW, 0.1, 16.0);
    EXPECT_EQ(sequence.measures().limitCycleDb, 0.0) << "the steps in between are not looked at";
    sequence.addSine(WINDOW, 0.1, 16.0);
    EXPECT_NEAR(sequence.measures().limitCycleDb, 0.1, 0.002);
}

TEST(LimitCycleMeasures, AreLookedForAnewAfterAJumpAndASwitchOff)
{
    const auto jump = [](SteadySequence& sequence) { sequence.reference(1500); };
    const auto off = [](SteadySequence& sequence) { sequence.addIn(eOPC_TX_OFF, 5); };
    void (*const breaks[])(SteadySequence&) = {jump, off};
    for (const auto pfnBreak : breaks) {
        SteadySequence sequence;
        sequence.add(WINDOW);
        pfnBreak(sequence);
        sequence.add(60);
        sequence.addSine(WINDOW, 0.1, 16.0);
        EXPECT_NEAR(sequence.measures().limitCycleDb, 0.1, 0.002);
    }
}

TEST(LimitCycleMeasures, NeedAWindowWithoutMoveFailureOrSwitchOff)
{
    const auto moved = [](SteadySequence& sequence) { sequence.reference(1006); };
    const auto failed = [](SteadySequence& sequence) {
        sequence.step.bFailed = true;
        sequence.add(1);
        sequence.step.bFailed = false;
    };
    const auto left = [](SteadySequence& sequence) {
        sequence.addIn(eOPC_TX_OFF, 1);
        sequence.add(60);
    };
    const auto nearlyStill = [](SteadySequence& sequence) { sequence.reference(1005); };
    const struct
    {
        const char* pName;
        void (*pfnInterrupt)(SteadySequence&);
        bool bInterrupts;
    } cases[] = {{"moved", moved, true}, {"failed", failed, true}, {"left", left, true}, {"still", nearlyStill, false}};
    for (const auto& [pName, pfnInterrupt, bInterrupts] : cases) {
        SteadySequence sequence;
        sequence.add(300);
        pfnInterrupt(sequence);
        sequence.add(WINDOW - 1);
        EXPECT_EQ(std::isnan(sequence.measures().limitCycleDb), bInterrupts) << pName;
        sequence.add(1);
        EXPECT_EQ(sequence.measures().limitCycleDb, 0.0) << pName;
    }
}

TEST(LimitCycleMeasures, DoNotFindPeriodsLongerThanAQuarterOfTheWindow)
{
    SteadySequence sequence;
    sequence.addSine(WINDOW, 0.1, 180.0);
    EXPECT_EQ(sequence.measures().limitCycleDb, 0.0);
}
} // namespace
