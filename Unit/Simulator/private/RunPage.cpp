#include "Unit/Simulator/RunPage.h"

#include "Unit/Simulator/private/EventText.h"
#include "Unit/Simulator/private/MeasureText.h"

#include <fmt/format.h>

#include <string_view>

namespace
{
constexpr const char* HEAD = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{}</title>
<style>
:root {{ color-scheme: light dark; --text: #1a1a1a; --soft: #555; --page: #fff; --line: #ccc; --code: #f3f3f3; }}
@media (prefers-color-scheme: dark) {{
  :root {{ --text: #e8e8e8; --soft: #aaa; --page: #161616; --line: #444; --code: #242424; }}
}}
body {{ margin: 0 auto; padding: 1rem; max-width: 62rem; font: 1rem/1.5 system-ui, sans-serif; color: var(--text);
       background: var(--page); }}
h1 {{ font-size: 1.5rem; margin: 0 0 .25rem; }}
h2 {{ font-size: 1.15rem; margin: 2rem 0 .5rem; }}
.soft {{ color: var(--soft); }}
.wide {{ overflow-x: auto; }}
figure {{ margin: 1rem 0; background: #fff; border-radius: .4rem; }}
figure svg {{ display: block; width: 100%; min-width: 38rem; height: auto; }}
table {{ border-collapse: collapse; width: 100%; }}
th, td {{ text-align: left; padding: .2rem .7rem .2rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }}
th.group {{ padding-top: .9rem; }}
td.value {{ text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }}
pre {{ background: var(--code); padding: .7rem; overflow-x: auto; border-radius: .4rem; font-size: .85rem; }}
.missed {{ font-weight: bold; }}
</style>
</head>
<body>
)";

std::string escaped(const std::string& sText)
{
    std::string sEscaped;
    for (const char c : sText) {
        switch (c) {
        case '&':
            sEscaped += "&amp;";
            break;
        case '<':
            sEscaped += "&lt;";
            break;
        case '>':
            sEscaped += "&gt;";
            break;
        case '"':
            sEscaped += "&quot;";
            break;
        default:
            sEscaped += c;
        }
    }
    return sEscaped;
}

/** @return the drawing's element, without what comes before it in a file of its own and without a title to hover over
 */
std::string svgElement(const std::string& sPicture)
{
    constexpr std::string_view TITLE = "<title>Gnuplot</title>";
    const std::size_t nBegin = sPicture.find("<svg");
    std::string sElement = nBegin == std::string::npos ? std::string() : sPicture.substr(nBegin);
    const std::size_t nTitle = sElement.find(TITLE);
    return nTitle == std::string::npos ? sElement : sElement.erase(nTitle, TITLE.size());
}

std::string row(const std::string& sFirst, const std::string& sValue, const std::string& sLast)
{
    return fmt::format("<tr><td>{}</td><td class=\"value\">{}</td><td>{}</td></tr>\n", sFirst, sValue, sLast);
}

std::string headingText(const RunReport& report)
{
    const Scenario& scenario = report.scenario;
    std::string sText =
        fmt::format("<h1>{}</h1>\n", escaped(scenario.sTitle.empty() ? scenario.sPath : scenario.sTitle));
    if (!scenario.sDescription.empty()) {
        sText += fmt::format("<p>{}</p>\n", escaped(scenario.sDescription));
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
        sText += row(key.pName, measureText(key, measures.*key.pField), escaped(key.pMeaning));
    }
    return sText + "</table></div>\n";
}

std::string eventsText(const Scenario& scenario)
{
    std::string sText;
    for (const EventMark& mark : marksOf(scenario)) {
        if (!mark.sText.empty()) {
            sText +=
                fmt::format("<tr><td class=\"value\">{} s</td><td>{}</td></tr>\n", mark.seconds, escaped(mark.sText));
        }
    }
    return sText.empty() ? sText : "<h2>What happens</h2>\n<div class=\"wide\"><table>\n" + sText + "</table></div>\n";
}

std::string warningsText(const RunReport& report)
{
    std::string sText;
    for (const std::string& sWarning : report.warnings) {
        sText += fmt::format("<li>{}</li>\n", escaped(sWarning));
    }
    return sText.empty() ? sText : "<h2>Warnings</h2>\n<ul>\n" + sText + "</ul>\n";
}
} // namespace

std::string runPage(const RunReport& report, const std::string& sScenarioText, const std::string& sPicture)
{
    const Scenario& scenario = report.scenario;
    std::string sText =
        fmt::format(fmt::runtime(HEAD), escaped(scenario.sTitle.empty() ? scenario.sPath : scenario.sTitle));
    sText += headingText(report);
    sText += "<figure class=\"wide\">\n" + svgElement(sPicture) + "</figure>\n";
    sText += expectationsText(report) + warningsText(report) + measuresText(report.measures) + eventsText(scenario);
    sText += fmt::format("<h2>The same run again</h2>\n<pre>{}</pre>\n", escaped(replayCommand(report)));
    sText +=
        fmt::format("<h2>{}</h2>\n<pre>{}</pre>\n</body>\n</html>\n", escaped(scenario.sPath), escaped(sScenarioText));
    return sText;
}
