/** @file
 * Sequences of calls to tell the safety rules.
 */
#pragma once

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/** Calls in their order; sequences add up. */
using Heard = std::vector<std::function<void(TransmitterRules&)>>;

inline Heard operator+(Heard first, const Heard& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline Heard times(int nTimes, const Heard& heard)
{
    Heard all;
    for (int nTime = 0; nTime < nTimes; ++nTime) {
        all = all + heard;
    }
    return all;
}

namespace heard
{
// The caller's side.
inline Heard limits(int nTxPmin)
{
    return {[=](TransmitterRules& rules) { rules.onSetTxPminPmax(nTxPmin); }};
}
inline Heard interval(int nMs)
{
    return {[=](TransmitterRules& rules) { rules.onSetInterval(nMs); }};
}
inline Heard request(ERequestedTxPowerState eState, int nMode)
{
    return {[=](TransmitterRules& rules) {
        rules.onRequestBegins(static_cast<ETxPowerMode>(nMode));
        rules.onRequestEnds(eState, static_cast<ETxPowerMode>(nMode), EAF_OK);
    }};
}
inline Heard on(int nMode = 1)
{
    return request(eREQUESTED_TX_POWER_ON, nMode);
}
inline Heard off(int nMode = 1)
{
    return request(eREQUESTED_TX_POWER_OFF, nMode);
}
inline Heard stop()
{
    return {[](TransmitterRules& rules) { rules.onStop(); }};
}
/** One regulator call with what happens in it. */
inline Heard step(const Heard& inside = {})
{
    return Heard{[](TransmitterRules& rules) { rules.onStepBegins(0); }} + inside +
           Heard{[](TransmitterRules& rules) { rules.onStepEnds(EAF_OK); }};
}
inline Heard productionTest(bool bOn, ERfDetectorLoopMode eMode, const Heard& inside)
{
    return Heard{[=](TransmitterRules& rules) { rules.onProductionTestBegins(bOn, eMode); }} + inside +
           Heard{[](TransmitterRules& rules) { rules.onProductionTestEnds(EAF_OK); }};
}

// The handler's side.
inline Heard power(int nPctrl, int nPtarget = 0, EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onSetOutputPower(nPctrl, nPtarget, nResult); }};
}
inline Heard tx(int nStep, EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onSetTxState(nStep, nResult); }};
}
inline Heard traffic(bool bEnable, EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onSetTraffic(bEnable, nResult); }};
}
inline Heard readLimits(int nLower, int nUpper, EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onGetPctrlLimits(nLower, nUpper, nResult); }};
}
inline Heard detector(EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onCalculateDetectorUsage(0, 0, nResult); }};
}
inline Heard measure(EOPHResult nResult = EAF_OK)
{
    return {[=](TransmitterRules& rules) { rules.onGetPmeasured(0, nResult); }};
}
inline Heard tellProductionTest(ERfDetectorLoopMode eMode)
{
    return {[=](TransmitterRules& rules) { rules.onTellProductionTest(eMode, EAF_OK); }};
}

// What a controller does rightly.
/** The step that reads the limits and sends the start power. */
inline Heard firstStep(int nStartPower, int nLower = -2000, int nUpper = 2000)
{
    return step(readLimits(nLower, nUpper) + tx(2) + power(nStartPower));
}
/** From the request until the ramp's first step, at the interval of 6 ms. */
inline Heard untilRamp(int nStartPower, int nLower = -2000, int nUpper = 2000)
{
    return limits(nStartPower) + on() + firstStep(nStartPower, nLower, nUpper) + times(3, step()) +
           step(tx(3) + power(nStartPower));
}
inline Heard rampStep(int nPctrl, int nPtarget)
{
    return step(tx(4) + detector() + power(nPctrl, nPtarget));
}
/** The ramp's last step, which is where it wants to be. */
inline Heard lastRampStep(int nPctrl)
{
    return step(tx(4) + detector() + power(nPctrl, nPctrl) + traffic(true));
}
/** On, at a control power that is the start power as well. */
inline Heard untilOn(int nPctrl, int nLower = -2000, int nUpper = 2000)
{
    return untilRamp(nPctrl, nLower, nUpper) + lastRampStep(nPctrl);
}
inline Heard loopStep(int nPctrl)
{
    return step(measure() + detector() + power(nPctrl));
}
inline Heard switchOff()
{
    return off() + step(traffic(false) + tx(0)) + step(tx(1));
}
} // namespace heard

/** A sequence and the rules that it breaks, in their order. */
struct RuleCase
{
    const char* pName;
    Heard sequence;
    std::vector<ESafetyRule> broken;
    EHeardSides eSides = EHeardSides::Both;
};

inline std::vector<ESafetyRule> brokenBy(const Heard& sequence, EHeardSides eSides)
{
    std::vector<ESafetyRule> broken;
    ViolationStore store([&broken](const SafetyViolation& violation) { broken.push_back(violation.eRule); });
    TransmitterRules rules(0, eSides, store);
    for (const auto& tell : sequence) {
        tell(rules);
    }
    return broken;
}

/** @return rule names, for messages */
inline std::vector<std::string> names(const std::vector<ESafetyRule>& rules)
{
    std::vector<std::string> texts;
    texts.reserve(rules.size());
    for (const ESafetyRule eRule : rules) {
        texts.emplace_back(safetyRuleName(eRule));
    }
    return texts;
}

inline std::string caseName(const ::testing::TestParamInfo<RuleCase>& info)
{
    return info.param.pName;
}
