#include "Unit/CommandLine/SweepReportCommand.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/ResultsCsv.h"
#include "Unit/Campaign/SweepPage.h"
#include "Unit/Campaign/SweepPlot.h"
#include "Unit/Campaign/SweepReport.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/Files/NewFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <memory>

namespace
{
constexpr std::uint64_t MOST_WORST = 1000;
constexpr std::size_t MOST_BY = 3; // an axis, lines, and columns of a picture

constexpr const char* SWEEP_REPORT_EXAMPLES =
    "Examples:\n"
    "  opc sweep-report gain-study.db\n"
    "      which parameter moves which measure, and the worst runs with the commands that replay them\n"
    "  opc sweep-report gain-study.db --by channel.gain_percent_on --where 'limit_cycle_db<=0.1'\n"
    "      measures by gain, and the share of runs without a large limit cycle\n"
    "  opc sweep-report gain-study.db --plot gain-study.svg --html gain-study.html\n"
    "      draws the effects, and makes a page of the report\n"
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
    command.add_option("--plot", options.plotFiles, "Draw the report, as .svg or .png; repeatable")
        ->type_name("FILE")
        ->check(pictureFile())
        ->allow_extra_args(false);
    command.add_option("--html", options.sHtmlFile, "Make a page of the report that needs no other file")
        ->type_name("FILE");
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

/** The files that are asked for; they get their names when all of them are complete. */
class SweepOutputs
{
public:
    explicit SweepOutputs(const SweepReportOptions& options) : m_sCsvFile(options.sCsvFile)
    {
        std::vector<std::string> files = options.plotFiles;
        files.push_back(options.sCsvFile);
        files.push_back(options.sHtmlFile);
        checkNamedOnce(files);
        for (const std::string& sFile : options.plotFiles) {
            m_plots.push_back(std::make_unique<NewFile>(sFile));
        }
        if (!options.sHtmlFile.empty()) {
            m_pPage = std::make_unique<NewFile>(options.sHtmlFile);
        }
    }

    bool onlyCsv() const { return !m_sCsvFile.empty() && m_plots.empty() && !m_pPage; }
    bool none() const { return m_sCsvFile.empty() && m_plots.empty() && !m_pPage; }

    void draw(const SweepReport& report)
    {
        for (const auto& pPlot : m_plots) {
            pPlot->write(sweepPlot(report, pictureFor(pPlot->path())));
        }
        if (m_pPage) {
            m_pPage->write(sweepPage(report, sweepPlot(report, EPicture::Svg)));
        }
    }

    void finish(const ResultsFile& results)
    {
        if (!m_sCsvFile.empty()) {
            writeResultsCsv(results, m_sCsvFile);
        }
        for (const auto& pPlot : m_plots) {
            pPlot->finish();
        }
        if (m_pPage) {
            m_pPage->finish();
        }
    }

private:
    std::string m_sCsvFile;
    std::vector<std::unique_ptr<NewFile>> m_plots;
    std::unique_ptr<NewFile> m_pPage;
};
} // namespace

SweepReportCommand::SweepReportCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("sweep-report", "Report what the runs of a sweep came to"))
{
    m_pCommand->add_option("RESULTS.db", m_options.sResultsFile, "The results file of opc sweep")
        ->required()
        ->type_name("FILE");
    addQuestions(*m_pCommand, m_options);
    addOutputs(*m_pCommand, m_options);
    m_pCommand->footer(SWEEP_REPORT_EXAMPLES);
}

int SweepReportCommand::run() const
{
    (void)std::signal(SIGPIPE, SIG_IGN); // of gnuplot, and of a reader of the report
    const ResultsFile results = ResultsFile::openToRead(m_options.sResultsFile);
    const SweepQuestion question = questionOf(m_options, results.definition());
    SweepOutputs outputs(m_options);
    std::string sPrinted;
    if (m_options.bJson || !outputs.onlyCsv()) {
        const SweepReport report(results, question);
        outputs.draw(report);
        if (m_options.bJson || outputs.none()) {
            sPrinted = m_options.bJson ? sweepReportJson(report) : sweepReportText(report);
        }
    }
    outputs.finish(results);
    printOut(sPrinted);
    return eEXIT_OK;
}
