/** @file
 * The closed loop of a simulated run beside what control theory says of it.
 */
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "tests/unit/ScenarioMaker.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
constexpr double STEP_AT_SECONDS = 3.0;
constexpr std::int32_t STEP_CENTI_DB = 800;

/** A transmitter that puts out its control power exactly, and a detector that reads it so. */
TransmitterParameters linearTransmitter()
{
    TransmitterParameters parameters;
    parameters.actuatorStepDb = 0.0;
    parameters.psatAboveMaxDb = 30.0;
    parameters.rappP = 20.0;
    parameters.gainPerDegreeDb = 0.0;
    parameters.gainPerGhzDb = 0.0;
    parameters.detectorStepDb = 0.0;
    parameters.detectorNoiseDb = 0.0;
    parameters.detectorFloorBelowMaxDb = 100.0;
    return parameters;
}

Scenario stepOfTheRequest(int nGainPercent, double fromDbm, double toDbm)
{
    Scenario scenario = scenarioOn(STEP_AT_SECONDS + 2.4);
    ChannelConfiguration& channel = scenario.unit.channels.front();
    channel.transmitter = linearTransmitter();
    channel.nPowerMode = eTX_POWER_MODE_FREE;
    channel.requestedPowerDbm = fromDbm;
    channel.gainPercentOn = GainPercent{nGainPercent, nGainPercent, nGainPercent};
    ScenarioEvent event = eventAt(STEP_AT_SECONDS);
    event.requestedPowerDbm = toDbm;
    scenario.events.push_back(event);
    return scenario;
}

struct TheoryCase
{
    int nGainPercent;
    int nDirection;
};

void PrintTo(const TheoryCase& c, std::ostream* pStream)
{
    *pStream << c.nGainPercent << " %, " << c.nDirection;
}

class VirtualRunTheory : public testing::TestWithParam<TheoryCase>
{
};
} // namespace

/*
 * With a the gain in percent and e the error, a step of the loop is s = (a e + 50) / 100, cut towards zero. For a e >=
 * 0 it is a e / 100 rounded to nearest: |s - a e / 100| <= 1/2. For a e <= -50 it is a e / 100 + 1/2 rounded up, so
 * that s - a e / 100 lies from 1/2 to 1/2 + 99/100; between them s is 0 and a e / 100 above -1/2. So in any case -1/2
 * <= s - a e / 100 <= 149/100 =: r. The power follows the control power exactly, so that the next error is e - s = (1 -
 * a / 100) e - (s - a e / 100). With q = 1 - a / 100, the error after n steps is q^n E0 off by at most r (1 + |q| + ...
 * + |q|^(n-1)). A reading is a whole number of hundredths here, since control powers are, and adds nothing.
 */
TEST_P(VirtualRunTheory, ErrorDecaysWithTheGainWithinItsRounding)
{
    constexpr double LARGEST_ROUNDING = 1.49;
    const auto [nGainPercent, nDirection] = GetParam();
    const double fromDbm = 14.0;
    const double toDbm = fromDbm + nDirection * STEP_CENTI_DB / 100.0;
    const std::vector<VirtualStep> steps = stepsOf(stepOfTheRequest(nGainPercent, fromDbm, toDbm));
    const auto nFirst = static_cast<std::size_t>(STEP_AT_SECONDS * 1000.0 / 6.0);
    ASSERT_EQ(steps.at(nFirst).sample.nRequestedPower, std::lround(toDbm * 100.0));
    ASSERT_EQ(steps.at(nFirst - 1).sample.nState, eOPC_TX_ON);

    const double q = 1.0 - nGainPercent / 100.0;
    const double firstError = steps.at(nFirst).sample.nPowerError; // the rest of an earlier rounding included
    ASSERT_NEAR(firstError, nDirection * STEP_CENTI_DB, LARGEST_ROUNDING / (1.0 - std::abs(q)));
    double expected = firstError;
    double bound = 0.0;
    for (std::size_t nStep = nFirst; nStep < steps.size(); ++nStep) {
        const StepSample& sample = steps[nStep].sample;
        ASSERT_NEAR(sample.nPowerError, expected, bound + 1e-9) << "step " << nStep - nFirst;
        ASSERT_NEAR(steps[nStep].outputPowerDbm * 100.0, sample.nPctrl, 1e-6);
        expected *= q;
        bound = LARGEST_ROUNDING + std::abs(q) * bound;
    }
    // The whole settling was looked at: theory has nothing left but the rounding.
    EXPECT_LT(std::abs(expected), 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Gains, VirtualRunTheory,
                         testing::Values(TheoryCase{5, 1}, TheoryCase{5, -1}, TheoryCase{20, 1}, TheoryCase{20, -1},
                                         TheoryCase{50, 1}, TheoryCase{50, -1}, TheoryCase{100, 1}, TheoryCase{100, -1},
                                         TheoryCase{150, 1}, TheoryCase{150, -1}),
                         [](const auto& information) {
                             return "Gain" + std::to_string(information.param.nGainPercent) +
                                    (information.param.nDirection > 0 ? "Up" : "Down");
                         });
