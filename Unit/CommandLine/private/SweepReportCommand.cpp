#include "Unit/CommandLine/SweepReportCommand.h"

#include "Unit/Campaign/ResultsCsv.h"
#include "Unit/CommandLine/CommandLine.h"

namespace
{
constexpr const char* EXAMPLES = "Examples:\n"
                                 "  opc sweep-report step-response.db --csv step-response.csv\n"
                                 "      a row per run, with its parameters and measures\n"
                                 "\n"
                                 "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file.";
} // namespace

SweepReportCommand::SweepReportCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("sweep-report", "Report what the runs of a sweep came to"))
{
    m_pCommand->add_option("RESULTS.db", m_sResultsFile, "The results file of opc sweep")
        ->required()
        ->type_name("FILE");
    m_pCommand->add_option("--csv", m_sCsvFile, "Write a row per run into this file")->required()->type_name("FILE");
    m_pCommand->footer(EXAMPLES);
}

int SweepReportCommand::run() const
{
    writeResultsCsv(ResultsFile::openToRead(m_sResultsFile), m_sCsvFile);
    return eEXIT_OK;
}
