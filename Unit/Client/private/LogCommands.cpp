#include "Unit/Client/private/ControlTree.h"

namespace
{
/** A command about a log that is one request option of the log's method. */
struct LogOption
{
    const char* pName;
    const char* pDescription;
    const char* pRequestOption;
    const AnswerForm* pForm;
    const char* pExamples = nullptr; /**< null for the usual one */
};

void checkPlotFile(CLI::Option& option)
{
    option.type_name("FILE")->check(CLI::Validator(
        [](const std::string& sText) {
            const std::string sEnding = sText.size() > 4 ? sText.substr(sText.size() - 4) : "";
            return sEnding == ".svg" || sEnding == ".png" ? std::string()
                                                          : "\"" + sText + "\" ends neither with .svg nor with .png";
        },
        ""));
}

CLI::App& addOption(CLI::App& log, std::vector<ControlLeaf>& leaves, const char* pMethod, const LogOption& option)
{
    const std::string sExample = "  opc ctl log " + log.get_name() + " " + option.pName + " --channel 1";
    CLI::App& command = addControlCommand(log, option.pName, option.pDescription,
                                          option.pExamples == nullptr ? sExample.c_str() : option.pExamples);
    leaves.push_back({&command, [pMethod, option] {
                          return ControlRequest{
                              pMethod, {{"RequestOption", option.pRequestOption}}, EChannelUse::Always, option.pForm};
                      }});
    return command;
}

void addTransientLog(CLI::App& log, std::vector<ControlLeaf>& leaves)
{
    constexpr const char* METHOD = "TI.ManageOPCTransientLog";
    CLI::App& transient = addControlCommand(log, "transient", "The log of single steps, up to 200 samples",
                                            "  opc ctl log transient enable\n"
                                            "  opc ctl tx on\n"
                                            "  opc ctl log transient read --plot switch-on.svg");
    addOption(transient, leaves, METHOD, {"enable", "Empty the log and start it", "Enable", nullptr});
    addOption(transient, leaves, METHOD, {"disable", "Stop the log; its samples stay", "Disable", nullptr});
    addOption(transient, leaves, METHOD, {"save", "Write the samples to the system log", "SaveToSysLog", nullptr});
    CLI::App& read = addOption(transient, leaves, METHOD,
                               {"read", "Show the samples", "Read", &TRANSIENT_LOG_FORM,
                                "  opc ctl log transient read --channel 1 --csv samples.csv\n"
                                "  opc ctl log transient read --plot switch-on.svg"});
    CLI::Option* pPlot = read.add_option("--plot", "Plot the samples into this file (.svg or .png) with gnuplot, in "
                                                   "place of the table");
    checkPlotFile(*pPlot);
    leaves.back().request = [request = leaves.back().request, pPlot] {
        ControlRequest plotted = request();
        plotted.sPlotFile = pPlot->count() > 0 ? pPlot->as<std::string>() : "";
        return plotted;
    };
}

void addOpcLog(CLI::App& log, std::vector<ControlLeaf>& leaves)
{
    constexpr const char* METHOD = "TI.ManageLogs";
    CLI::App& statistics =
        addControlCommand(log, "opc", "The statistics: last value, minimum and maximum of each quantity",
                          "  opc ctl log opc start\n"
                          "  opc ctl log opc read --watch");
    addOption(statistics, leaves, METHOD, {"start", "Reset the statistics and start them", "Start", nullptr});
    addOption(statistics, leaves, METHOD, {"stop", "Stop the statistics; they stay", "Stop", nullptr});
    addOption(statistics, leaves, METHOD, {"read", "Show the statistics", "Read", &OPC_LOG_FORM});
    addOption(statistics, leaves, METHOD,
              {"read-and-reset", "Show the statistics and begin them anew", "ReadAndReset", &OPC_LOG_FORM});
    addOption(statistics, leaves, METHOD, {"save", "Write the statistics to the system log", "SaveToSysLog", nullptr});
}
} // namespace

void addLogCommands(CLI::App& control, std::vector<ControlLeaf>& leaves)
{
    CLI::App& log = addControlCommand(control, "log", "Manage and read a channel's two logs",
                                      "  opc ctl log transient enable\n"
                                      "  opc ctl log transient read --csv samples.csv\n"
                                      "  opc ctl log opc read");
    addTransientLog(log, leaves);
    addOpcLog(log, leaves);
}
