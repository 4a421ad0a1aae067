#include "Unit/SafetyMonitor/SafetyViolation.h"

#include <fmt/format.h>

namespace
{
constexpr std::array<const char*, SAFETY_RULES> RULE_NAMES = {
    "upper-limit",     "lower-limit",       "crossed-limits",  "start-power",       "step-size",
    "power-while-off", "unmeasured-power",  "step-order",      "settling-time",     "switch-on-unasked",
    "only-switch-off", "switch-off-missed", "switch-off-held", "traffic-too-early", "traffic-left-on",
    "silence",         "outside-step",      "after-stop"};

const HeardCall& lastCall(const SafetyViolation& violation)
{
    return violation.calls[violation.nCalls == 0 ? 0 : violation.nCalls - 1];
}

std::string argumentsText(const HeardCall& call)
{
    const auto [nFirst, nSecond] = call.values;
    switch (call.eCall) {
    case EHeardCall::SetOutputPower:
        return fmt::format("setOutputPower({}, {})", nFirst, nSecond);
    case EHeardCall::SetTxState:
        return fmt::format("setTxState({})", nFirst);
    case EHeardCall::TellProductionTest:
        return fmt::format("handler's setProductionTestSettings({})", nFirst);
    case EHeardCall::GetReducedGain:
        return fmt::format("getReducedGainFromAmplifier({}) gave {}", nFirst, nSecond);
    case EHeardCall::GetTxPowerReadings:
        return fmt::format("getTxPowerReadings() gave {}, {}", nFirst, nSecond);
    case EHeardCall::CalculateDetectorUsage:
        return fmt::format("calculateDetectorUsage({}) gave {}", nFirst, nSecond);
    case EHeardCall::GetPmeasured:
        return fmt::format("getPmeasured() gave {}", nFirst);
    case EHeardCall::SetTraffic:
        return fmt::format("setZembraMlmTrafTx({})", nFirst != 0);
    case EHeardCall::GetPctrlLimits:
        return fmt::format("getPctrlLimits() gave {}, {}", nFirst, nSecond);
    case EHeardCall::SetTxPminPmax:
        return fmt::format("setTxPminPmax({})", nFirst);
    case EHeardCall::Request:
        return fmt::format("setRequestedTxPowerState({}, mode {})", nFirst, nSecond);
    case EHeardCall::SetProductionTest:
        return fmt::format("setProductionTestSettings({}, {})", nFirst != 0, nSecond);
    case EHeardCall::SetInterval:
        return fmt::format("setRegulatorInterval({})", nFirst);
    case EHeardCall::StepBegins:
        return fmt::format("regulate({}) begins", nFirst);
    case EHeardCall::StepEnds:
        return "regulate ends";
    case EHeardCall::Stop:
        break;
    }
    return "the stop";
}

/** What has been sent: a power, and the limits that it is not within. */
std::string limitText(const SafetyViolation& violation)
{
    const auto [nPower, nLimit, nLower] = violation.values;
    switch (violation.eRule) {
    case ESafetyRule::UpperLimit:
        return fmt::format("control power {} is above the upper limit {}", nPower, nLimit);
    case ESafetyRule::LowerLimit:
        return fmt::format("control power {} is below the lower limit {}", nPower, nLimit);
    case ESafetyRule::CrossedLimits:
        return fmt::format("control power {} is above the upper limit {}, because the lower limit {} is: lower the one "
                           "or raise the other",
                           nPower, nLimit, nLower);
    case ESafetyRule::StartPower:
        return fmt::format("the switch-on sends {} instead of its start power {}", nPower, nLimit);
    default:
        return fmt::format("control power moves from {} to {}, further than {}", nLimit, nPower, nLower);
    }
}

std::string orderText(const SafetyViolation& violation)
{
    const std::int32_t nFirst = violation.values[0];
    const std::string sCall = argumentsText(lastCall(violation));
    switch (violation.eRule) {
    case ESafetyRule::PowerWhileOff:
        return fmt::format("power {} is sent while the transmitter is off or switching off", nFirst);
    case ESafetyRule::UnmeasuredPower:
        return fmt::format("power {} is sent without this step's readings", nFirst);
    case ESafetyRule::StepOrder:
        return sCall + " is out of its order";
    case ESafetyRule::SettlingTime:
        return fmt::format("the carrier comes {} regulator calls before the transmitter has settled",
                           violation.values[1]);
    case ESafetyRule::SwitchOnUnasked:
        return sCall + " begins a switch-on that nobody has requested";
    case ESafetyRule::OnlySwitchOff:
        return sCall + " after an off request";
    case ESafetyRule::SwitchOffMissed:
        return "the switch-off does not go on";
    default:
        return fmt::format("the switch-off waits, since a limit is not known (lower {}, upper {}): the transmitter "
                           "stays on",
                           nFirst, violation.values[1]);
    }
}

std::string whatIsWrong(const SafetyViolation& violation)
{
    switch (violation.eRule) {
    case ESafetyRule::UpperLimit:
    case ESafetyRule::LowerLimit:
    case ESafetyRule::CrossedLimits:
    case ESafetyRule::StartPower:
    case ESafetyRule::StepSize:
        return limitText(violation);
    case ESafetyRule::TrafficTooEarly:
        return "traffic is enabled before the ramp has ended";
    case ESafetyRule::TrafficLeftOn:
        return "the transmitter is muted without traffic having been disabled";
    case ESafetyRule::Silence:
        return fmt::format("{} while a limit is not known (lower {}, upper {})", argumentsText(lastCall(violation)),
                           violation.values[0], violation.values[1]);
    case ESafetyRule::OutsideStep:
        return argumentsText(lastCall(violation)) + " outside of the call that it belongs to";
    case ESafetyRule::AfterStop:
        return argumentsText(lastCall(violation)) + " after the stop";
    default:
        return orderText(violation);
    }
}
} // namespace

const char* safetyRuleName(ESafetyRule eRule) noexcept
{
    const auto nRule = static_cast<std::size_t>(eRule);
    // cppcheck-suppress CastIntegerToAddressAtReturn ; the names are texts
    return nRule < RULE_NAMES.size() ? RULE_NAMES[nRule] : "unknown";
}

bool isHazardOfBehaviour(ESafetyRule eRule) noexcept
{
    return eRule == ESafetyRule::CrossedLimits || eRule == ESafetyRule::SwitchOffHeld;
}

std::string callText(const HeardCall& call)
{
    const bool bSucceeded = !EAF_isFailure(call.nResult);
    return fmt::format("step {}: {}{}", call.nStep, argumentsText(call),
                       bSucceeded ? std::string() : fmt::format(" = {:#x}", static_cast<std::uint32_t>(call.nResult)));
}

std::string violationText(const SafetyViolation& violation)
{
    return fmt::format("{}: channel {}, step {}: {}", safetyRuleName(violation.eRule), violation.nChannel,
                       violation.nStep, whatIsWrong(violation));
}

std::string violationCalls(const SafetyViolation& violation)
{
    std::string sText;
    for (std::size_t nCall = 0; nCall < violation.nCalls; ++nCall) {
        sText += "    " + callText(violation.calls[nCall]) + "\n";
    }
    return sText;
}
