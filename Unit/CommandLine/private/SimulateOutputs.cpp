#include "Unit/CommandLine/private/SimulateOutputs.h"

#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/Simulator/RunPage.h"
#include "Unit/Simulator/RunPlot.h"

#include <fmt/format.h>

SimulateOutputs::SimulateOutputs(const SimulateOptions& options)
{
    std::vector<std::string> files = options.plotFiles;
    files.push_back(options.sCsvFile);
    files.push_back(options.sHtmlFile);
    checkNamedOnce(files);
    if (!options.sCsvFile.empty()) {
        m_pCsv = std::make_unique<StepCsv>(options.sCsvFile,
                                           StepCsvSettings{options.nEvery.value_or(1), options.bucketSeconds});
    }
    for (const std::string& sFile : options.plotFiles) {
        m_plots.push_back(std::make_unique<NewFile>(sFile));
    }
    if (!options.sHtmlFile.empty()) {
        m_pPage = std::make_unique<NewFile>(options.sHtmlFile);
    }
    if (m_pPage || !m_plots.empty()) {
        checkPlotting();
        m_pTrack = std::make_unique<RunTrack>();
    }
}

void SimulateOutputs::onStep(const VirtualStep& step)
{
    if (m_pCsv) {
        m_pCsv->onStep(step);
    }
    if (m_pTrack) {
        m_pTrack->onStep(step);
    }
}

void SimulateOutputs::drawPlots(RunReport& report)
{
    for (const auto& pPlot : m_plots) {
        pPlot->write(runPlot(*m_pTrack, report.scenario, pictureFor(pPlot->path())));
        report.outputs.push_back(pPlot->path());
    }
}

void SimulateOutputs::finish(RunReport& report, const std::string& sScenarioText)
{
    drawPlots(report);
    if (m_pPage) {
        m_pPage->write(runPage(report, sScenarioText, runPlot(*m_pTrack, report.scenario, EPicture::Svg)));
        report.outputs.push_back(m_pPage->path());
    }
    if (m_pCsv) {
        m_pCsv->finish();
        report.outputs.push_back(fmt::format("{} ({} rows)", m_pCsv->path(), m_pCsv->rows()));
    }
    for (const auto& pPlot : m_plots) {
        pPlot->finish();
    }
    if (m_pPage) {
        m_pPage->finish();
    }
}
