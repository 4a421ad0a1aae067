#include "tests/module/differential/Operation.h"

namespace Differential
{
namespace
{
struct Kind
{
    std::string_view sName;
    std::size_t nArguments;
};

constexpr std::array<Kind, OPERATIONS> KINDS = {
    {{"Regulate", 1},          {"Request", 2},          {"SetLimits", 2},        {"SetProductionTest", 2},
     {"SetGain", 3},           {"GetGain", 2},          {"SetInterval", 1},      {"ChangeFrequency", 1},
     {"ReportTemperature", 1}, {"RegisterObserver", 2}, {"OpcLogCommand", 1},    {"TransientLogCommand", 1},
     {"RestartLogs", 0},       {"RunPhase", 1},         {"Initialize", 0},       {"Uninitialize", 0},
     {"EnterState", 1},        {"StepStateMachine", 0}, {"WriteInitialGain", 1}, {"AnswerOf", 3},
     {"FaultOf", 4},           {"OutputOf", 4},         {"FollowPower", 2},      {"Heal", 0},
     {"TableAnswer", 4},       {"TableOffset", 4},      {"Storage", 4},          {"Publish", 2},
     {"FrequencyEntry", 1},    {"AdvanceClock", 2},     {"TraceLevel", 1}}};

constexpr std::array<std::string_view, HANDLER_CALLS> HANDLER_CALL_NAMES = {
    "SetOutputPower", "SetTxState",         "SetProductionTestSettings",
    "GetReducedGain", "GetTxPowerReadings", "CalculateDetectorUsage",
    "GetPmeasured",   "SetTraffic",         "GetPctrlLimits"};

// INT32_MIN has no literal of its type.
std::string numberText(std::int32_t nNumber)
{
    return nNumber == INT32_MIN ? "INT32_MIN" : std::to_string(nNumber);
}
} // namespace

std::string_view nameOf(EOperation eKind)
{
    return KINDS.at(static_cast<std::size_t>(eKind)).sName;
}

std::size_t argumentsOf(EOperation eKind)
{
    return KINDS.at(static_cast<std::size_t>(eKind)).nArguments;
}

std::string_view nameOf(EHandlerCall eCall)
{
    return HANDLER_CALL_NAMES.at(static_cast<std::size_t>(eCall));
}

std::string textOf(const Sequence& sequence)
{
    std::string sText = "{" + std::to_string(sequence.nChannel) + ", {\n";
    for (const Operation& operation : sequence.operations) {
        sText += "    {EOperation::" + std::string(nameOf(operation.eKind));
        for (std::size_t i = 0; i < argumentsOf(operation.eKind); ++i) {
            sText += (i == 0 ? ", {" : ", ") + numberText(operation.anArgument[i]);
        }
        sText += argumentsOf(operation.eKind) == 0 ? "},\n" : "}},\n";
    }
    return sText + "}}";
}
} // namespace Differential
