/** @file
 * What is reported when a controller does to its transmitter what it must not do.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/** What holds for every transmitter; docs/safety.md tells why. */
enum class ESafetyRule : std::uint8_t
{
    UpperLimit,      /**< a power above the upper limit was sent */
    LowerLimit,      /**< a power below the lower limit was sent */
    CrossedLimits,   /**< the lower limit is above the upper one and was sent */
    StartPower,      /**< the switch-on did not send the lower limit that was set */
    StepSize,        /**< the closed loop moved the power by more than the power mode allows */
    PowerWhileOff,   /**< a power was sent while the transmitter was off or switching off */
    UnmeasuredPower, /**< a power was sent without the readings that it has to come from */
    StepOrder,       /**< a step of the transmitter, or a power, out of its order */
    SettlingTime,    /**< the carrier was switched on before the transmitter had settled */
    SwitchOnUnasked, /**< a switch-on that nobody had requested */
    OnlySwitchOff,   /**< something other than the switch-off after an off request */
    SwitchOffMissed, /**< a step did not go on with the switch-off */
    SwitchOffHeld,   /**< the switch-off waits because a limit is not known */
    TrafficTooEarly, /**< traffic was enabled before the ramp had ended */
    TrafficLeftOn,   /**< the transmitter was muted without disabling traffic before */
    Silence,         /**< a call of the handler while a limit is not known */
    OutsideStep,     /**< a call of the handler that nobody had called the controller for */
    AfterStop,       /**< a call of the handler after the stop */
    Count
};

inline constexpr std::size_t SAFETY_RULES = static_cast<std::size_t>(ESafetyRule::Count);

/** @return the rule's name, such as "upper-limit" */
const char* safetyRuleName(ESafetyRule eRule) noexcept;

/** @return whether the rule can be broken by a controller that behaves as it is meant to */
bool isHazardOfBehaviour(ESafetyRule eRule) noexcept;

/** What was heard, on either side of the controller. */
enum class EHeardCall : std::uint8_t
{
    SetOutputPower,
    SetTxState,
    TellProductionTest, /**< the handler's setProductionTestSettings */
    GetReducedGain,
    GetTxPowerReadings,
    CalculateDetectorUsage,
    GetPmeasured,
    SetTraffic,
    GetPctrlLimits,
    SetTxPminPmax,
    Request,
    SetProductionTest, /**< the controller's */
    SetInterval,
    StepBegins,
    StepEnds,
    Stop
};

/** One call: what went in, what came out. */
struct HeardCall
{
    std::uint64_t nStep = 0;              /**< regulator calls that had begun */
    std::array<std::int32_t, 2> values{}; /**< arguments or outputs, in their order */
    std::int32_t nResult = 0;             /**< not of a call that was heard as it began */
    EHeardCall eCall = EHeardCall::StepBegins;
};

/** @return the call as people read it, such as "step 12: setOutputPower(-500, 300) = 0x8000" */
std::string callText(const HeardCall& call);

/** A breach of a rule. Powers on the handler's scale. */
struct SafetyViolation
{
    static constexpr std::size_t MOST_CALLS = 32;

    ESafetyRule eRule = ESafetyRule::Count;
    unsigned int nChannel = 0;
    std::uint64_t nStep = 0;                   /**< regulator calls that had begun; 0 when they are not heard */
    EOPCState eState = eOPC_UNDEFINED;         /**< that the controller acts in, as far as its calls tell */
    std::array<std::int32_t, 3> values{};      /**< what violationText() names, by rule */
    std::array<HeardCall, MOST_CALLS> calls{}; /**< that led to it, the oldest first; the last one broke the rule */
    std::size_t nCalls = 0;
};

/** @return one line: the rule, the channel, the step, what is wrong and the values */
std::string violationText(const SafetyViolation& violation);

/** @return the calls that led to it, a line each, indented */
std::string violationCalls(const SafetyViolation& violation);

/** Is told each violation, in the thread of the call that broke the rule; must neither throw nor wait. */
class IViolationReceiver
{
public:
    virtual void onViolation(const SafetyViolation& violation) noexcept = 0;

protected:
    ~IViolationReceiver() = default;
};
