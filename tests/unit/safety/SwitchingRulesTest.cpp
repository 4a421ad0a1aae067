#include "tests/unit/safety/HeardSequence.h"

#include <gmock/gmock.h>

using namespace heard;

namespace
{
constexpr ESafetyRule STEP_ORDER = ESafetyRule::StepOrder;

class SwitchingRules : public ::testing::TestWithParam<RuleCase>
{
};

TEST_P(SwitchingRules, AreJudged)
{
    EXPECT_THAT(names(brokenBy(GetParam().sequence, GetParam().eSides)),
                ::testing::ElementsAreArray(names(GetParam().broken)));
}

const RuleCase KEPT[] = {
    {"NothingAtAll", step() + step(), {}},
    {"WholeLife",
     interval(6) + untilOn(0) + times(3, loopStep(5)) + switchOff() + step() + untilOn(0) + switchOff(),
     {}},
    {"OnRequestWhileOnIsIgnored", untilOn(0) + on() + loopStep(0), {}},
    {"OffRequestWhileOffIsIgnored", off() + step(), {}},
    {"OffRequestWhileSwitchingOnIsIgnored", untilRamp(0) + off() + lastRampStep(0) + loopStep(0), {}},
    {"OnRequestWhileSwitchingOffIsIgnored",
     untilOn(0) + off() + on() + step(traffic(false) + tx(0)) + on() + step(tx(1)),
     {}},
    {"OnRequestWhileRampingBeginsAnew", untilRamp(0) + rampStep(20, 500) + untilRamp(0) + lastRampStep(0), {}},
    {"OffRequestWhileSwitchingOffBeginsAnew",
     untilOn(0) + off() + step(traffic(false) + tx(0)) + off() + step(traffic(false) + tx(0)) + step(tx(1)),
     {}},
    {"FailedCallsAreTriedAgain",
     limits(0) + on() + step(readLimits(0, 0, EAF_FAILED) + tx(2, EAF_FAILED)) +
         step(readLimits(-2000, 2000) + tx(2) + power(0, 0, EAF_FAILED)) + firstStep(0) + times(3, step()) +
         step(tx(3, EAF_FAILED)) + step(tx(3) + power(0, 0, EAF_FAILED)) + step(tx(3) + power(0)) +
         step(tx(4, EAF_FAILED)) + step(tx(4) + detector(EAF_FAILED)) +
         step(tx(4) + detector() + power(0, 0, EAF_FAILED)) + lastRampStep(0) + step(measure(EAF_FAILED)) +
         step(measure() + detector(EAF_FAILED)) + loopStep(0) + off() + step(traffic(false, EAF_FAILED)) +
         step(traffic(false) + tx(0, EAF_FAILED)) + step(traffic(false) + tx(0)) + step(tx(1, EAF_FAILED)) +
         step(tx(1)),
     {}},
    {"RampMayTakeItsTime",
     untilRamp(0) + times(15, rampStep(0, 500)) + step(tx(4) + detector() + power(0, 500) + traffic(true)) +
         loopStep(0),
     {}},
    {"FailedLastRampStepGoesOnWithTheLoop",
     untilRamp(0) + times(15, rampStep(0, 500)) + step(tx(4) + detector(EAF_FAILED)) + loopStep(0) + switchOff(),
     {}},
    {"LongerIntervalWaitsLess", interval(12) + limits(0) + on() + firstStep(0) + step() + step(tx(3) + power(0)), {}},
    {"SilentWithoutALowerLimit", limits(OPC_POWER_UNKNOWN) + on() + times(3, step()) + limits(0) + firstStep(0), {}},
    {"SilentForGoodWithoutAnUpperLimit",
     limits(0) + on() + step(readLimits(0, OPC_POWER_UNKNOWN) + tx(2) + power(0)) + on() + times(9, step()),
     {}},
    {"ProductionTestIsTold",
     productionTest(true, eRF_DETECTOR_LOOP_MODE_OPEN, tellProductionTest(eRF_DETECTOR_LOOP_MODE_OPEN)),
     {}},
    {"StopWithoutCalls", untilOn(0) + switchOff() + stop(), {}},
    {"HandlerAloneKnowsNoRequests",
     readLimits(-2000, 2000) + tx(2) + power(-500) + tx(3) + power(-500) + tx(4) + detector() + power(-400, 900) +
         traffic(true) + measure() + detector() + power(-390) + traffic(false) + tx(0) + tx(1) +
         readLimits(-2000, 2000) + tx(2),
     {},
     EHeardSides::HandlerOnly},
};

const RuleCase BROKEN[] = {
    {"SwitchOnWithoutRequest", limits(0) + firstStep(0), {ESafetyRule::SwitchOnUnasked}},
    {"CarrierWithoutRequest", step(tx(3)), {ESafetyRule::SwitchOnUnasked}},
    {"SwitchOnAfterIgnoredOffRequestOnly", off() + firstStep(0), {ESafetyRule::SwitchOnUnasked}},
    {"StepTwoWithoutLimits", limits(0) + on() + step(tx(2)), {STEP_ORDER}},
    {"StepThreeBeforeStepTwo", on() + step(tx(3)), {STEP_ORDER}},
    {"StepFourBeforeStepThree", limits(0) + on() + firstStep(0) + step(tx(4)), {STEP_ORDER}},
    {"CarrierBeforeItHasSettled",
     limits(0) + on() + firstStep(0) + times(2, step()) + step(tx(3) + power(0)),
     {ESafetyRule::SettlingTime}},
    {"StepAfterAFailedOne", limits(0) + on() + step(readLimits(0, 9) + tx(2, EAF_FAILED) + power(0)), {STEP_ORDER}},
    {"UnknownStep", untilOn(0) + step(tx(5)), {STEP_ORDER}},
    {"RampThatDoesNotEnd", untilRamp(0) + times(16, rampStep(0, 500)) + step(tx(4)), {STEP_ORDER}},
    {"SwitchOffWithoutRequest", untilOn(0) + step(traffic(false)), {STEP_ORDER}},
    {"LoopAfterOffRequest",
     untilOn(0) + off() + loopStep(0),
     {ESafetyRule::PowerWhileOff, ESafetyRule::SwitchOffMissed}},
    {"SwitchOnAfterOffRequest", untilOn(0) + off() + step(tx(2)), {ESafetyRule::OnlySwitchOff}},
    {"SwitchOnWhileSwitchingOff",
     untilOn(0) + off() + step(traffic(false) + tx(0)) + step(readLimits(0, 9)),
     {ESafetyRule::OnlySwitchOff}},
    {"NothingAfterOffRequest", untilOn(0) + off() + step(), {ESafetyRule::SwitchOffMissed}},
    {"HalfASwitchOff", untilOn(0) + off() + step(traffic(false)), {ESafetyRule::SwitchOffMissed}},
    {"MutedButLeftPowered", untilOn(0) + off() + step(traffic(false) + tx(0)) + step(), {ESafetyRule::SwitchOffMissed}},
    {"TrafficLeftOn", untilOn(0) + off() + step(tx(0)), {ESafetyRule::TrafficLeftOn}},
    {"TrafficNotDisabledByAFailedCall",
     untilOn(0) + off() + step(traffic(false, EAF_FAILED) + tx(0)),
     {ESafetyRule::TrafficLeftOn}},
    {"SwitchOffHeldIsToldOnce",
     untilOn(0) + limits(OPC_POWER_UNKNOWN) + off() + times(5, step()),
     {ESafetyRule::SwitchOffHeld}},
    {"TrafficWhileRamping",
     untilRamp(0) + step(tx(4) + detector() + power(0, 101) + traffic(true)),
     {ESafetyRule::TrafficTooEarly}},
    {"TrafficAfterAFailedPower",
     untilRamp(0) + step(tx(4) + detector() + power(0, 0, EAF_FAILED) + traffic(true)),
     {ESafetyRule::TrafficTooEarly}},
    {"TrafficInTheLoop",
     untilOn(0) + step(measure() + detector() + power(0) + traffic(true)),
     {ESafetyRule::TrafficTooEarly}},
    {"TrafficWhileOff", step(traffic(true)), {ESafetyRule::TrafficTooEarly}},
    {"CallsWithoutALowerLimit", limits(OPC_POWER_UNKNOWN) + on() + step(readLimits(0, 9)), {ESafetyRule::Silence}},
    {"CallsAfterAnUnknownUpperLimit",
     limits(0) + on() + step(readLimits(0, OPC_POWER_UNKNOWN) + tx(2) + power(0)) + times(3, step()) + step(tx(3)),
     {ESafetyRule::Silence}},
    {"CallOutsideOfAStep", untilOn(0) + power(0), {ESafetyRule::OutsideStep}},
    {"ProductionTestByItself", step(tellProductionTest(eRF_DETECTOR_LOOP_MODE_OPEN)), {ESafetyRule::OutsideStep}},
    {"ProductionTestOtherThanSet",
     productionTest(true, eRF_DETECTOR_LOOP_MODE_OPEN, tellProductionTest(eRF_DETECTOR_LOOP_MODE_CLOSED)),
     {ESafetyRule::OutsideStep}},
    {"CallAfterTheStop", stop() + tx(1), {ESafetyRule::AfterStop}},
    {"ProductionTestAfterTheStop", stop() + tellProductionTest(eRF_DETECTOR_LOOP_MODE_OPEN), {ESafetyRule::AfterStop}},
    {"HandlerAloneSeesTheOrder", readLimits(0, 9) + tx(3), {STEP_ORDER}, EHeardSides::HandlerOnly},
    {"HandlerAloneSeesSwitchOnWhileMuted",
     readLimits(0, 9) + tx(2) + power(0) + tx(3) + power(0) + tx(4) + detector() + power(0) + traffic(true) +
         traffic(false) + tx(0) + tx(2),
     {ESafetyRule::OnlySwitchOff},
     EHeardSides::HandlerOnly},
    {"HandlerAloneSeesTrafficTooEarly",
     readLimits(0, 9) + tx(2) + power(0) + traffic(true),
     {ESafetyRule::TrafficTooEarly},
     EHeardSides::HandlerOnly},
    {"HandlerAloneSeesCallsAfterAnUnknownUpperLimit",
     readLimits(0, OPC_POWER_UNKNOWN) + tx(2) + power(0) + tx(3),
     {ESafetyRule::Silence},
     EHeardSides::HandlerOnly},
};

INSTANTIATE_TEST_SUITE_P(Kept, SwitchingRules, ::testing::ValuesIn(KEPT), caseName);
INSTANTIATE_TEST_SUITE_P(Broken, SwitchingRules, ::testing::ValuesIn(BROKEN), caseName);
} // namespace
