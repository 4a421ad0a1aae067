#include "Unit/CommandLine/SweepReportCommand.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/ResultsCsv.h"
#include "Unit/Campaign/SweepReport.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/private/OutputFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>

namespace
{
constexpr std::uint64_t MOST_WORST = 1000;
constexpr std::size_t MOST_BY = 3; // an axis, lines, and columns of a picture

constexpr const char* EXAMPLES =
    "Examples:\n"
    "  opc sweep-report gain-study.db\n"
    "      which parameter moves which measure, and the worst runs with the commands that replay them\n"
    "  opc sweep-report gain-study.db --by channel.gain_percent_on --where 'limit_cycle_db<=0.1'\n"
    "      measures by gain, and the share of runs without a large limit cycle\n"
    "  opc sweep-report gain-study.db --csv gain-study.csv\n"
    "      a row per run, with its parameters and measures\n"
    "\n"
    "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file.";

void addQuestions(CLI::App& command, SweepReportOptions& options)
{
    command
        .add_option("--measure", options.measures,
                    "Report this measure instead of those that the sweep file names; repeatable")
        ->type_name("KEY")
        ->allow_extra_args(false);
    CLI::Option* pWorst = command.add_option("--worst", options.nWorst, "Name so many of the worst runs of a measure")
                              ->type_name("N")
                              ->check(CLI::Range(std::uint64_t{0}, MOST_WORST));
    CLI::Option* pBy = command
                           .add_option("--by", options.by,
                                       "Report the measures by the values of up to 3 parameters, such as "
                                       "channel.gain_percent_on,transmitter.detector_noise_db")
                           ->type_name("PARAMETERS")
                           ->delimiter(',')
                           ->allow_extra_args(false)
                           ->excludes(pWorst);
    command
        .add_option("--where", options.conditions,
                    "Tell the share of runs with this, such as 'limit_cycle_db<=0.1'; repeatable")
        ->type_name("CONDITION")
        ->allow_extra_args(false)
        ->needs(pBy);
    command
        .add_flag("--best", options.bBest,
                  "Tell the best value of the first parameter for each combination of the others")
        ->needs(pBy);
}

void addOutputs(CLI::App& command, SweepReportOptions& options)
{
    command.add_option("--csv", options.sCsvFile, "Write a row per run into this file")->type_name("FILE");
    command.add_flag("--json", options.bJson, "Print the report as JSON");
}

std::vector<std::size_t> parametersOf(const std::vector<std::string>& names, const SweepDefinition& definition)
{
    std::vector<std::size_t> parameters;
    for (const std::string& sName : names) {
        const std::size_t nParameter = parameterNamed(definition, sName, "--by");
        if (std::find(parameters.begin(), parameters.end(), nParameter) != parameters.end()) {
            throw ConfigurationError(fmt::format("--by: \"{}\" is named twice; name each parameter once", sName));
        }
        parameters.push_back(nParameter);
    }
    if (parameters.size() > MOST_BY) {
        throw ConfigurationError(
            fmt::format("--by: names {} parameters; it can be at most {}", parameters.size(), MOST_BY));
    }
    return parameters;
}

SweepQuestion questionOf(const SweepReportOptions& options, const SweepDefinition& definition)
{
    SweepQuestion question;
    for (const std::string& sName : options.measures) {
        const RunMeasureKey* const pKey = &measureNamed(sName, "--measure");
        if (std::find(question.measures.begin(), question.measures.end(), pKey) == question.measures.end()) {
            question.measures.push_back(pKey);
        }
    }
    if (question.measures.empty()) {
        question.measures = usualMeasures(definition);
    }
    question.nWorst = static_cast<std::size_t>(options.nWorst);
    question.by = parametersOf(options.by, definition);
    for (const std::string& sText : options.conditions) {
        question.conditions.push_back(parseCondition(sText, "--where"));
    }
    question.bBest = options.bBest;
    return question;
}
} // namespace

SweepReportCommand::SweepReportCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("sweep-report", "Report what the runs of a sweep came to"))
{
    m_pCommand->add_option("RESULTS.db", m_options.sResultsFile, "The results file of opc sweep")
        ->required()
        ->type_name("FILE");
    addQuestions(*m_pCommand, m_options);
    addOutputs(*m_pCommand, m_options);
    m_pCommand->footer(EXAMPLES);
}

int SweepReportCommand::run() const
{
    (void)std::signal(SIGPIPE, SIG_IGN); // of a reader of the report
    const ResultsFile results = ResultsFile::openToRead(m_options.sResultsFile);
    if (!m_options.sCsvFile.empty()) {
        writeResultsCsv(results, m_options.sCsvFile);
    }
    else {
        const SweepReport report(results, questionOf(m_options, results.definition()));
        printOut(m_options.bJson ? sweepReportJson(report) : sweepReportText(report));
    }
    return eEXIT_OK;
}
