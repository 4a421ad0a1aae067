#include "Unit/Simulator/RunPage.h"

#include "Unit/Simulator/MeasureText.h"
#include "Unit/Simulator/private/EventText.h"
#include "Unit/Text/Html.h"

#include <fmt/format.h>

namespace
{
std::string row(const std::string& sFirst, const std::string& sValue, const std::string& sLast)
{
    return fmt::format("<tr><td>{}</td><td class=\"value\">{}</td><td>{}</td></tr>\n", sFirst, sValue, sLast);
}

std::string headingText(const RunReport& report)
{
    const Scenario& scenario = report.scenario;
    std::string sText =
        fmt::format("<h1>{}</h1>\n", escapedHtml(scenario.sTitle.empty() ? scenario.sPath : scenario.sTitle));
    if (!scenario.sDescription.empty()) {
        sText += fmt::format("<p>{}</p>\n", escapedHtml(scenario.sDescription));
    }
    return sText + fmt::format("<p class=\"soft\">{} s at {} ms, seed {}, {:.0f} steps</p>\n", scenario.durationSeconds,
                               scenario.unit.intervalMs, scenario.channel().nSeed, report.measures.steps);
}

std::string expectationsText(const RunReport& report)
{
    if (report.expectations.empty()) {
        return {};
    }
    std::string sText = fmt::format("<h2>Expectations: {}</h2>\n<div class=\"wide\"><table>\n"
                                    "<tr><th>measure</th><th>value</th><th>expected</th></tr>\n",
                                    report.allMet() ? "all met" : "not all met");
    for (const ExpectationResult& result : report.expectations) {
        const RunMeasureKey& key = *result.band.pMeasure;
        sText += row(key.pName, measureText(key, result.value),
                     (result.bMet ? "" : "<span class=\"missed\">missed:</span> ") + bandText(result.band));
    }
    return sText + "</table></div>\n";
}

std::string measuresText(const RunMeasures& measures)
{
    std::string sText = "<h2>Measures</h2>\n<div class=\"wide\"><table>\n";
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (const char* const pGroup = measureGroup(key)) {
            sText += fmt::format("<tr><th class=\"group\" colspan=\"3\">{}</th></tr>\n", pGroup);
        }
        sText += row(key.pName, measureText(key, measures.*key.pField), escapedHtml(key.pMeaning));
    }
    return sText + "</table></div>\n";
}

std::string eventsText(const Scenario& scenario)
{
    std::string sText;
    for (const EventMark& mark : marksOf(scenario)) {
        if (!mark.sText.empty()) {
            sText += fmt::format("<tr><td class=\"value\">{} s</td><td>{}</td></tr>\n", mark.seconds,
                                 escapedHtml(mark.sText));
        }
    }
    return sText.empty() ? sText : "<h2>What happens</h2>\n<div class=\"wide\"><table>\n" + sText + "</table></div>\n";
}

std::string warningsText(const RunReport& report)
{
    std::string sText;
    for (const std::string& sWarning : report.warnings) {
        sText += fmt::format("<li>{}</li>\n", escapedHtml(sWarning));
    }
    return sText.empty() ? sText : "<h2>Warnings</h2>\n<ul>\n" + sText + "</ul>\n";
}
} // namespace

std::string runPage(const RunReport& report, const std::string& sScenarioText, const std::string& sPicture)
{
    const Scenario& scenario = report.scenario;
    std::string sText = htmlHead(scenario.sTitle.empty() ? scenario.sPath : scenario.sTitle);
    sText += headingText(report);
    sText += "<figure class=\"wide\">\n" + svgElement(sPicture) + "</figure>\n";
    sText += expectationsText(report) + warningsText(report) + measuresText(report.measures) + eventsText(scenario);
    sText += fmt::format("<h2>The same run again</h2>\n<pre>{}</pre>\n", escapedHtml(replayCommand(report)));
    sText += fmt::format("<h2>{}</h2>\n<pre>{}</pre>\n</body>\n</html>\n", escapedHtml(scenario.sPath),
                         escapedHtml(sScenarioText));
    return sText;
}
