/** @file
 * One thing that is done to a controller or to what surrounds it.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Differential
{
/** The handler's operations, in the order of its table. */
enum class EHandlerCall
{
    SetOutputPower,
    SetTxState,
    SetProductionTestSettings,
    GetReducedGain,
    GetTxPowerReadings,
    CalculateDetectorUsage,
    GetPmeasured,
    SetTraffic,
    GetPctrlLimits,
    Count
};
inline constexpr std::size_t HANDLER_CALLS = static_cast<std::size_t>(EHandlerCall::Count);

/** Kinds of operations, with what their arguments mean. */
enum class EOperation
{
    // The controller's inputs.
    Regulate,            /**< requested power */
    Request,             /**< state, mode */
    SetLimits,           /**< lower limit, upper limit */
    SetProductionTest,   /**< flag, loop mode */
    SetGain,             /**< detector state, state, percent */
    GetGain,             /**< detector state, state */
    SetInterval,         /**< milliseconds */
    ChangeFrequency,     /**< frequency */
    ReportTemperature,   /**< temperature */
    RegisterObserver,    /**< list, observer */
    OpcLogCommand,       /**< index of the option */
    TransientLogCommand, /**< index of the option */
    RestartLogs,
    RunPhase, /**< index of the phase */
    Initialize,
    Uninitialize,
    // What only the linked module's own class lets in.
    EnterState, /**< state, 3 or 4: the delayed switch-on, which no operation begins */
    StepStateMachine,
    WriteInitialGain, /**< gain */
    // What surrounds it.
    AnswerOf,       /**< handler call, result, whether outputs are written: from now on */
    FaultOf,        /**< handler call, result, whether outputs are written, which call from now on: once */
    OutputOf,       /**< handler call, three values that it writes */
    FollowPower,    /**< whether the measured power follows the power sent, and how far above it */
    Heal,           /**< every handler call succeeds, with everyday outputs */
    TableAnswer,    /**< table, how it is fetched, whether it is valid, how it interpolates */
    TableOffset,    /**< table, factor of x, factor of y, constant */
    Storage,        /**< variable, result, value, whether there is content */
    Publish,        /**< what, how */
    FrequencyEntry, /**< result of registering with the frequency handler */
    AdvanceClock,   /**< seconds, nanoseconds */
    TraceLevel,     /**< level of the test interface's trace object */
    Count
};
inline constexpr std::size_t OPERATIONS = static_cast<std::size_t>(EOperation::Count);

/** An operation and its arguments; those that its kind does not take are 0. */
struct Operation
{
    EOperation eKind = EOperation::Regulate;
    std::array<std::int32_t, 4> anArgument{};

    bool operator==(const Operation&) const = default;
};

/** What is done to one controller, from its construction to its end. */
struct Sequence
{
    std::uint32_t nChannel = 0;
    std::vector<Operation> operations;
};

/** @return the kind's name, as in C++ */
std::string_view nameOf(EOperation eKind);
/** @return how many arguments the kind takes */
std::size_t argumentsOf(EOperation eKind);
/** @return the handler call's name, as in C++ */
std::string_view nameOf(EHandlerCall eCall);
/** @return the sequence as the initialiser of a Sequence, one operation a line */
std::string textOf(const Sequence& sequence);

/** Options of the log commands by index; the transient log's last two stand for a missing and a wrong member. */
inline constexpr std::array<const char*, 11> OPC_LOG_OPTIONS = {
    "Start", "Stop", "Read", "ReadAndReset", "SaveToSysLog", "Enable", "Disable", "", "start", "Read ", "Save"};
inline constexpr std::array<const char*, 11> TRANSIENT_LOG_OPTIONS = {
    "Enable", "Disable", "Read", "SaveToSysLog", "Start", "Stop", "ReadAndReset", "", "enable", nullptr, nullptr};
inline constexpr std::size_t OPTION_NOT_GIVEN = 9;
inline constexpr std::size_t OPTION_IS_INTEGER = 10;

/** How something is published, by the argument of Publish. */
enum class EPublished
{
    Proper,
    Absent,
    Foreign,  /**< something else stands under the name */
    Tableless /**< the handler without its table */
};
} // namespace Differential
