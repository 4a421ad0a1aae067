#include "Unit/Campaign/SweepPage.h"

#include "Unit/Campaign/private/SweepTables.h"
#include "Unit/Text/Html.h"

#include <fmt/format.h>

namespace
{
/** @return a row; all but its first cell are values */
std::string rowText(const std::vector<std::string>& cells, const char* pElement)
{
    std::string sText = "<tr>";
    for (const std::string& sCell : cells) {
        const char* const pClass = &sCell == &cells.front() ? "" : " class=\"value\"";
        sText += fmt::format("<{0}{1}>{2}</{0}>", pElement, pClass, escapedHtml(sCell));
    }
    return sText + "</tr>\n";
}

std::string tableText(const Table& table)
{
    std::string sText = "<div class=\"wide\"><table>\n" + rowText(table.headings, "th");
    for (const auto& row : table.rows) {
        sText += rowText(row, "td");
    }
    return sText + "</table></div>\n";
}

std::string commandText(const SweepReport& report, std::uint64_t nRun)
{
    return fmt::format("<pre class=\"command\">{}</pre>\n", escapedHtml(report.replay.forRun(nRun)));
}

std::string headText(const SweepReport& report)
{
    std::string sText =
        fmt::format("<h1>{}</h1>\n<div class=\"wide\"><table>\n", escapedHtml(report.definition().sTitle));
    for (const auto& [sLabel, sValue] : headLines(report)) {
        sText += fmt::format("<tr><td>{}</td><td>{}</td></tr>\n", escapedHtml(sLabel), escapedHtml(sValue));
    }
    return sText + "</table></div>\n";
}

std::string effectsHtml(const SweepReport& report, const MeasureEffects& effects)
{
    const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
    std::string sText = fmt::format("<h2>{}</h2>\n<p>{}: {}</p>\n", key.pName, escapedHtml(key.pMeaning),
                                    escapedHtml(rangeText(report, effects)));
    if (effects.nFirstWithout) {
        sText += commandText(report, report.runs.numbers[*effects.nFirstWithout]);
    }
    if (effects.all.nRuns > 0) {
        sText += tableText(effectsTable(report, effects));
    }
    for (const std::size_t nRun : effects.worst) {
        sText += fmt::format("<p>{}{}</p>\n", nRun == effects.worst.front() ? "Worst: " : "",
                             escapedHtml(worstText(report, effects, nRun))) +
                 commandText(report, report.runs.numbers[nRun]);
    }
    return sText;
}

std::string failuresHtml(const SweepReport& report)
{
    if (report.runs.failures.empty()) {
        return {};
    }
    std::string sText = fmt::format("<h2>Failed: {} runs</h2>\n", report.runs.nFailed);
    for (const FailedRun& run : report.runs.failures) {
        sText +=
            fmt::format("<p>run {}: {}</p>\n", run.nNumber, escapedHtml(run.sError)) + commandText(report, run.nNumber);
    }
    return sText + (report.runs.nFailed > report.runs.failures.size() ? "<p>And more.</p>\n" : "");
}
} // namespace

std::string sweepPage(const SweepReport& report, const std::string& sPicture)
{
    std::string sText = htmlHead(report.definition().sTitle) + headText(report);
    sText += "<figure class=\"wide\">\n" + svgElement(sPicture) + "</figure>\n";
    if (!report.question.by.empty()) {
        sText += fmt::format("<p>{}</p>\n", escapedHtml(groupsText(report)));
        sText += tableText(report.question.bBest ? bestTable(report) : groupsTable(report));
    }
    for (const MeasureEffects& effects : report.effects) {
        sText += effectsHtml(report, effects);
    }
    sText += failuresHtml(report);
    const std::string& sScenario = report.results.description().sScenario;
    sText += fmt::format("<h2>{}</h2>\n<pre>{}</pre>\n", escapedHtml(report.definition().sPath),
                         escapedHtml(report.definition().sText));
    return sText + fmt::format("<h2>{}</h2>\n<pre>{}</pre>\n</body>\n</html>\n", escapedHtml(report.replay.scenario()),
                               escapedHtml(sScenario));
}
