#include "tests/unit/safety/HeardSequence.h"

#include <gmock/gmock.h>

#include <limits>

using namespace heard;

namespace
{
constexpr EHeardSides HANDLER_ONLY = EHeardSides::HandlerOnly;
constexpr int HIGHEST = std::numeric_limits<int>::max();
constexpr ERfDetectorLoopMode NORMAL = eRF_DETECTOR_LOOP_MODE_NORMAL;

class PowerRules : public ::testing::TestWithParam<RuleCase>
{
};

TEST_P(PowerRules, AreJudged)
{
    EXPECT_THAT(names(brokenBy(GetParam().sequence, GetParam().eSides)),
                ::testing::ElementsAreArray(names(GetParam().broken)));
}

Heard inProductionTest()
{
    return productionTest(true, NORMAL, tellProductionTest(NORMAL));
}

/** A switch-on, as the handler hears it. */
Heard heardUntilOn(int nPctrl, int nUpper)
{
    return readLimits(-2000, nUpper) + tx(2) + power(nPctrl) + tx(3) + power(nPctrl) + tx(4) + detector() +
           power(nPctrl, nPctrl) + traffic(true);
}

Heard heardLoopStep(int nPctrl)
{
    return measure() + detector() + power(nPctrl);
}

const RuleCase KEPT[] = {
    {"LoopReachesBothLimits", untilOn(0, -500, 700) + loopStep(700) + loopStep(-500), {}},
    {"LoopHasALowerLimitOfItsOwn", untilOn(0, -500) + loopStep(-500), {}},
    {"NewLowerLimitHoldsForTheLoop", untilOn(0, -500) + limits(-800) + loopStep(-800), {}},
    {"UnknownLowerLimitKeepsTheOneThatWasSet", untilOn(-300, OPC_POWER_UNKNOWN) + loopStep(-300), {}},
    {"UpperLimitWinsOverTheLowerOne", untilOn(0, -500, 100) + limits(200) + loopStep(100), {}},
    {"ProductionTestWidensBothLimits",
     untilOn(0, -500, 700) + inProductionTest() + loopStep(2700) + loopStep(-2500),
     {}},
    {"SecondPowerIsTheFirst",
     limits(-5) + on() + firstStep(-5) + limits(3) + times(3, step()) + step(tx(3) + power(-5)),
     {}},
    {"LimitedModeMovesByTen", interval(6) + untilOn(0) + on(0) + loopStep(10) + loopStep(0), {}},
    {"LimitedModeMovesByTwentyAtOtherIntervals", untilOn(0) + interval(10) + on(0) + loopStep(20) + loopStep(0), {}},
    {"LimitedModeIsFreeBeforeAnIntervalIsSet", untilOn(0) + on(0) + loopStep(900), {}},
    {"OtherModesAreFree", interval(6) + untilOn(0) + on(1) + loopStep(900) + on(3) + loopStep(0), {}},
    {"ProductionTestIsFree", interval(6) + untilOn(0) + on(0) + inProductionTest() + loopStep(900), {}},
    {"LowerLimitTakesThePowerAlong", interval(6) + untilOn(0) + on(0) + limits(500) + loopStep(500), {}},
    {"RefusedPowerIsGoneOnFrom",
     interval(6) + untilOn(0) + on(0) + step(measure() + detector() + power(10, 0, EAF_FAILED)) + loopStep(20),
     {}},
    {"HandlerAloneAllowsWhatProductionTestMay",
     tellProductionTest(NORMAL) + heardUntilOn(0, 700) + heardLoopStep(2700),
     {},
     HANDLER_ONLY},
    {"HandlerAloneDoesNotKnowTheLowerLimit", heardUntilOn(0, 700) + heardLoopStep(-9000), {}, HANDLER_ONLY},
    {"PowersThatWrapAreNotJudgedByTheirStep",
     interval(6) + untilOn(HIGHEST - 1, std::numeric_limits<int>::min(), HIGHEST) + on(0) + loopStep(8 - HIGHEST),
     {}},
};

const RuleCase BROKEN[] = {
    {"StartPowerIsTheLowerLimit", limits(-5) + on() + firstStep(-4), {ESafetyRule::StartPower}},
    {"SecondPowerIsAnother",
     limits(-5) + on() + firstStep(-5) + limits(-4) + times(3, step()) + step(tx(3) + power(-4)),
     {ESafetyRule::StartPower}},
    {"StartPowerAboveTheUpperLimit", limits(500) + on() + firstStep(500, -500, 499), {ESafetyRule::CrossedLimits}},
    {"RampAboveTheUpperLimit", untilRamp(0, -500, 700) + rampStep(701, 900), {ESafetyRule::UpperLimit}},
    {"RampBelowThePowerItBeganWith", untilRamp(0, -500) + rampStep(-1, 900), {ESafetyRule::LowerLimit}},
    {"ProductionTestDoesNotWidenTheRamp",
     inProductionTest() + untilRamp(0, -500, 700) + rampStep(701, 900),
     {ESafetyRule::UpperLimit}},
    {"LoopAboveTheUpperLimit", untilOn(0, -500, 700) + loopStep(701), {ESafetyRule::UpperLimit}},
    {"LoopBelowTheLowerLimit", untilOn(0, -500, 700) + loopStep(-501), {ESafetyRule::LowerLimit}},
    {"LoopAtALowerLimitAboveTheUpperOne",
     untilOn(0, -500, 100) + limits(200) + loopStep(200),
     {ESafetyRule::CrossedLimits}},
    {"LoopBetweenCrossedLimits", untilOn(0, -500, 100) + limits(200) + loopStep(150), {ESafetyRule::UpperLimit}},
    {"ProductionTestHasAnEndToo",
     untilOn(0, -500, 700) + inProductionTest() + loopStep(2701) + loopStep(-2501),
     {ESafetyRule::UpperLimit, ESafetyRule::LowerLimit}},
    {"ProductionTestIsOver",
     untilOn(0, -500, 700) + inProductionTest() + productionTest(false, NORMAL, tellProductionTest(NORMAL)) +
         loopStep(701),
     {ESafetyRule::UpperLimit}},
    {"LimitedModeMovesByEleven",
     interval(6) + untilOn(0) + on(0) + loopStep(11) + loopStep(0),
     {ESafetyRule::StepSize, ESafetyRule::StepSize}},
    {"ReportedModeIsALimitedOne", interval(6) + untilOn(0) + on(2) + loopStep(11), {ESafetyRule::StepSize}},
    {"ModeOfAnIgnoredRequestHolds",
     interval(6) + untilOn(0) + request(static_cast<ERequestedTxPowerState>(7), 0) + loopStep(11),
     {ESafetyRule::StepSize}},
    {"LimitedModeMovesByTwentyOneAtOtherIntervals",
     untilOn(0) + interval(10) + on(0) + loopStep(-21),
     {ESafetyRule::StepSize}},
    {"NoJumpUpToTheUpperLimit", interval(6) + untilOn(0, -500, 700) + on(0) + loopStep(700), {ESafetyRule::StepSize}},
    {"NoJumpDownToTheLowerLimit", interval(6) + untilOn(0, -500) + on(0) + loopStep(-500), {ESafetyRule::StepSize}},
    {"NoStepIsLargerThanAThousandDecibels", untilOn(0, -500, 200000) + loopStep(100001), {ESafetyRule::StepSize}},
    {"RefusedPowerIsWhatTheNextStepIsMeasuredFrom",
     interval(6) + untilOn(0) + on(0) + step(measure() + detector() + power(10, 0, EAF_FAILED)) + loopStep(21),
     {ESafetyRule::StepSize}},
    {"PowerWhileOff", step(power(0)), {ESafetyRule::PowerWhileOff}},
    {"PowerWhileMuted", untilOn(0) + off() + step(traffic(false) + tx(0) + power(0)), {ESafetyRule::PowerWhileOff}},
    {"LoopWithoutMeasurement", untilOn(0) + step(detector() + power(0)), {ESafetyRule::UnmeasuredPower}},
    {"LoopWithoutDetector", untilOn(0) + step(measure() + power(0)), {ESafetyRule::UnmeasuredPower}},
    {"LoopAfterAFailedMeasurement",
     untilOn(0) + step(measure(EAF_FAILED) + detector() + power(0)),
     {ESafetyRule::UnmeasuredPower}},
    {"RampWithoutDetector", untilRamp(0) + step(tx(4) + power(0)), {ESafetyRule::UnmeasuredPower}},
    {"RampWithoutItsStep", untilRamp(0) + step(detector() + power(0)), {ESafetyRule::StepOrder}},
    {"PowerTwiceInAStep", untilOn(0) + step(measure() + detector() + power(0) + power(0)), {ESafetyRule::StepOrder}},
    {"HandlerAloneSeesTheUpperLimit",
     heardUntilOn(0, 700) + heardLoopStep(701),
     {ESafetyRule::UpperLimit},
     HANDLER_ONLY},
    {"HandlerAloneSeesAStartAboveIt",
     readLimits(-2000, 700) + tx(2) + power(701),
     {ESafetyRule::UpperLimit},
     HANDLER_ONLY},
    {"HandlerAloneSeesAnotherSecondPower",
     readLimits(-2000, 700) + tx(2) + power(5) + tx(3) + power(6),
     {ESafetyRule::StartPower},
     HANDLER_ONLY},
    {"HandlerAloneSeesPowerWhileOff", power(0), {ESafetyRule::PowerWhileOff}, HANDLER_ONLY},
};

INSTANTIATE_TEST_SUITE_P(Kept, PowerRules, ::testing::ValuesIn(KEPT), caseName);
INSTANTIATE_TEST_SUITE_P(Broken, PowerRules, ::testing::ValuesIn(BROKEN), caseName);
} // namespace
