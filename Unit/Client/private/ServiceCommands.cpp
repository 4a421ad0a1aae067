#include "Simulation/Handlers/HandlerFault.h"
#include "Unit/Client/private/ArgumentChecks.h"
#include "Unit/Client/private/ControlTree.h"

using nlohmann::ordered_json;

namespace
{
constexpr int HIGHEST_LEVEL = 9;

std::vector<std::string> operationNames()
{
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(EHandlerOperation::Count));
    for (int nOperation = 0; nOperation < static_cast<int>(EHandlerOperation::Count); ++nOperation) {
        names.emplace_back(handlerOperationName(static_cast<EHandlerOperation>(nOperation)));
    }
    return names;
}

std::vector<std::string> faultNames()
{
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(EHandlerFault::Intermittent) + 1);
    for (int nKind = 0; nKind <= static_cast<int>(EHandlerFault::Intermittent); ++nKind) {
        names.emplace_back(handlerFaultName(static_cast<EHandlerFault>(nKind)));
    }
    return names;
}

void addStatus(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& command = addControlCommand(control, "status", "Show how the unit and its channels are doing",
                                          "  opc ctl status\n"
                                          "  opc ctl status --channel 1 --watch\n"
                                          "  opc ctl status --watch 0.5 --csv status.csv");
    leaves.push_back(
        {&command, [] {
             return ControlRequest{"Unit.Status", ordered_json::object(), EChannelUse::WhenNamed, &STATUS_FORM};
         }});
}

/** Two arguments are a group and its level, one is the level of all groups, none asks for the levels. */
ControlRequest traceRequest(const CLI::Option& first, const CLI::Option& second)
{
    if (first.count() == 0) {
        return {"Unit.TraceLevels", ordered_json::object(), EChannelUse::Never, &TRACE_LEVEL_FORM};
    }
    ControlRequest request{"Unit.SetTraceLevel", ordered_json::object(), EChannelUse::Never};
    if (second.count() > 0) {
        request.members["Group"] = first.as<std::string>();
    }
    const std::string sLevel = (second.count() > 0 ? second : first).as<std::string>();
    if (sLevel.size() != 1 || sLevel[0] < '0' || sLevel[0] > '0' + HIGHEST_LEVEL) {
        throw CLI::ValidationError("N", "\"" + sLevel + "\" is not a level from 0 to 9");
    }
    request.members["Level"] = sLevel[0] - '0';
    return request;
}

void addTrace(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& trace = addControlCommand(control, "trace", "The unit's trace",
                                        "  opc ctl trace level\n"
                                        "  opc ctl trace level RQX.OPCL 5");
    CLI::App& level = addControlCommand(trace, "level", "Show the trace levels of all groups, or set them",
                                        "  opc ctl trace level\n"
                                        "  opc ctl trace level 3\n"
                                        "      level 3 for all groups\n"
                                        "  opc ctl trace level RQX.OPCL 5");
    CLI::Option* pFirst = level.add_option("GROUP", "The group; left out for all groups")->type_name("TEXT");
    CLI::Option* pSecond = level.add_option("N", "The level, 0 to 9")->type_name("{0,1,2,3,4,5,6,7,8,9}");
    leaves.push_back({&level, [=] { return traceRequest(*pFirst, *pSecond); }});
}

void addFaultSet(CLI::App& fault, std::vector<ControlLeaf>& leaves)
{
    CLI::App& set = addControlCommand(fault, "set", "Let an operation of the simulated transmitter fail",
                                      "  opc ctl fault set getPmeasured fail\n"
                                      "  opc ctl fault set getPmeasured fail-times --times 5\n"
                                      "  opc ctl fault set getPmeasured wrong-value --value 3000\n"
                                      "  opc ctl fault set setOutputPower slow --delay-us 500 --channel 1");
    CLI::Option* pOperation = set.add_option("OPERATION", "Which operation")->required();
    onlyWords(*pOperation, operationNames());
    CLI::Option* pKind = set.add_option("KIND", "How it fails; none for not any more")->required();
    onlyWords(*pKind, faultNames());
    CLI::Option* pTimes = set.add_option("--times", "fail-times: how many calls fail");
    onlyWholeNumbers(*pTimes, "N");
    CLI::Option* pValue = set.add_option("--value", "wrong-value: what is read or set");
    onlyWholeNumbers(*pValue, "N");
    CLI::Option* pDelay = set.add_option("--delay-us", "slow: how long a call takes, in microseconds");
    onlyWholeNumbers(*pDelay, "N");
    CLI::Option* pProbability = set.add_option("--probability", "intermittent: how likely a call fails, 0 to 1");
    onlyNumbers(*pProbability, "NUMBER");
    leaves.push_back({&set, [=] {
                          ControlRequest request{
                              "Unit.SetFault",
                              {{"Operation", pOperation->as<std::string>()}, {"Kind", pKind->as<std::string>()}}};
                          const std::vector<std::pair<const char*, const CLI::Option*>> numbers = {
                              {"Times", pTimes}, {"Value", pValue}, {"DelayUs", pDelay}};
                          for (const auto& [pMember, pOption] : numbers) {
                              if (pOption->count() > 0) {
                                  request.members[pMember] = wholeNumberOf(*pOption);
                              }
                          }
                          if (pProbability->count() > 0) {
                              request.members["Probability"] = numberOf(*pProbability);
                          }
                          return request;
                      }});
}

ControlRequest noFault(const std::vector<std::string>& operations)
{
    ControlRequest request{"Unit.SetFault", {{"Operation", operations.front()}, {"Kind", "none"}}};
    for (std::size_t nOperation = 1; nOperation < operations.size(); ++nOperation) {
        request.furtherCalls.push_back({{"Operation", operations[nOperation]}, {"Kind", "none"}});
    }
    return request;
}

void addFault(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& fault = addControlCommand(control, "fault", "Faults of a channel's simulated transmitter",
                                        "  opc ctl fault set getPmeasured fail\n"
                                        "  opc ctl fault list\n"
                                        "  opc ctl fault clear");
    CLI::App& list = addControlCommand(fault, "list", "Show which faults are set", "  opc ctl fault list --channel 1");
    leaves.push_back(
        {&list, [] {
             return ControlRequest{"Unit.Faults", ordered_json::object(), EChannelUse::Always, &FAULT_FORM};
         }});
    addFaultSet(fault, leaves);
    CLI::App& clear = addControlCommand(fault, "clear", "Let operations work again",
                                        "  opc ctl fault clear\n"
                                        "  opc ctl fault clear getPmeasured --channel 1");
    CLI::Option* pOperation = clear.add_option("OPERATION", "Which operation; left out for all");
    onlyWords(*pOperation, operationNames());
    leaves.push_back({&clear, [pOperation] {
                          return noFault(pOperation->count() == 0
                                             ? operationNames()
                                             : std::vector<std::string>{pOperation->as<std::string>()});
                      }});
}
} // namespace

void addServiceCommands(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    addStatus(control, leaves);
    addTrace(control, leaves);
    addFault(control, leaves);
}
