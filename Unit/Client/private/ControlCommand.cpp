#include "Unit/Client/ControlCommand.h"

#include "Unit/Client/private/ArgumentChecks.h"
#include "Unit/Client/private/ControlRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace
{
constexpr double DEFAULT_WATCH_SECONDS = 1.0;
constexpr double SHORTEST_SECONDS = 0.01;
constexpr double LONGEST_SECONDS = 86400.0;

constexpr const char* EXAMPLES =
    "  opc ctl status\n"
    "      the state, the powers and the counts of all channels of a unit on this machine\n"
    "  opc ctl --unit http://192.0.2.7:8080 tx on --channel 1\n"
    "  opc ctl power 37.5 --channel 1\n"
    "  opc ctl status --watch 0.5 --csv status.csv\n"
    "  opc ctl log transient read --plot switch-on.svg\n"
    "  opc ctl fault set getPmeasured fail-times --times 5\n"
    "\n"
    "The options may stand before or after the subcommand. Each subcommand has --help.\n"
    "Exit codes: 0 done, 1 the unit refused, 2 a wrong argument or file, 3 no unit "
    "answered.";

void onlySeconds(CLI::Option& option)
{
    onlyNumbers(option, "SECONDS");
    option.check(CLI::Validator(
        [](const std::string& sText) {
            double seconds = 0.0;
            return CLI::detail::lexical_cast(sText, seconds) && seconds >= SHORTEST_SECONDS &&
                           seconds <= LONGEST_SECONDS
                       ? std::string()
                       : fmt::format("\"{}\" is not from {} to {} seconds", sText, SHORTEST_SECONDS, LONGEST_SECONDS);
        },
        ""));
}
} // namespace

/** What has been added to the program's command tree. */
struct ControlCommand::Tree
{
    explicit Tree(CLI::App& app) : control(addControlCommand(app, "ctl", "Talk to a running unit", EXAMPLES))
    {
        control.fallthrough(); // the subcommands take it over: what they do not know is this command's
        addConnectionOptions();
        addOutputOptions();
        addServiceCommands(control, leaves);
        addSettingCommands(control, leaves);
        addLogCommands(control, leaves);
        control.fallthrough(false);
    }

    void addConnectionOptions()
    {
        control
            .add_option("--unit", options.sAddress,
                        "Where the unit's test interface is; http://127.0.0.1:8080 when left out")
            ->type_name("URL")
            ->envname("OPC_UNIT");
        control.add_option("--token-file", options.sTokenFile, "A file whose first line is the unit's token")
            ->type_name("FILE");
        onlyWholeNumbers(*control.add_option("--channel", options.nChannel, "Which channel; 0 when left out"), "N", 0,
                         std::numeric_limits<int>::max());
        onlySeconds(*control.add_option("--timeout", options.answerSeconds,
                                        "How long the unit may take to answer; 30 s when left out"));
    }

    void addOutputOptions()
    {
        control.add_flag("--json", options.bJson, "Print what the unit answered as JSON");
        control
            .add_option("--csv", options.sCsvFile,
                        "Write what is shown into this file as comma-separated values, too; - for standard output "
                        "instead")
            ->type_name("FILE");
        pWatch = control.add_option("--watch", "Show it again and again, every second or every so many, until Ctrl-C")
                     ->expected(0, 1);
        onlySeconds(*pWatch);
        pWatch->type_name("[SECONDS]");
    }

    CLI::App& control;
    ControlOptions options;
    CLI::Option* pWatch = nullptr;
    std::vector<ControlLeaf> leaves;
};

CLI::App& addControlCommand(CLI::App& parent, const char* pName, const char* pDescription, const char* pExamples)
{
    CLI::App* pCommand = parent.add_subcommand(pName, pDescription);
    pCommand->require_subcommand(0, 1);
    const std::string sShared = parent.get_parent() == nullptr
                                    ? ""
                                    : "\n\nMore options, such as --unit, --channel, --json and --watch: opc ctl --help";
    pCommand->footer(std::string("Examples:\n") + pExamples + sShared);
    return *pCommand;
}

ControlCommand::ControlCommand(CLI::App& app) : m_pTree(std::make_unique<Tree>(app)) {}

ControlCommand::~ControlCommand() = default;

bool ControlCommand::parsed() const
{
    return m_pTree->control.parsed();
}

int ControlCommand::run() const
{
    const auto leaf = std::find_if(m_pTree->leaves.begin(), m_pTree->leaves.end(),
                                   [](const ControlLeaf& candidate) { return candidate.pCommand->parsed(); });
    if (leaf == m_pTree->leaves.end()) {
        throw CLI::RequiredError("a subcommand");
    }
    ControlOptions options = m_pTree->options;
    if (m_pTree->pWatch->count() > 0) {
        const std::string sSeconds = m_pTree->pWatch->as<std::string>();
        options.watchSeconds = sSeconds.empty() ? DEFAULT_WATCH_SECONDS : numberOf(*m_pTree->pWatch);
    }
    return runControl(options, leaf->request());
}
