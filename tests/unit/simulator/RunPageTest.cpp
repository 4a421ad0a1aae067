#include "Unit/Simulator/RunPage.h"

#include "tests/unit/simulator/VirtualSteps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::Not;

namespace
{
RunReport makePageReport()
{
    RunReport report;
    report.scenario = makeScenario(60.0);
    report.scenario.sTitle = "<b>Title</b>";
    report.scenario.sDescription = "a & b";
    return report;
}

std::string pageOf(const RunReport& report)
{
    return runPage(report, "title = \"<x>\"\n", "<?xml version=\"1.0\"?>\n<!DOCTYPE svg>\n<svg>drawing</svg>\n");
}
} // namespace

TEST(RunPage, HasThePictureTheMeasuresAndTheScenario)
{
    const std::string sPage = pageOf(makePageReport());
    EXPECT_THAT(sPage, HasSubstr("<h1>&lt;b&gt;Title&lt;/b&gt;</h1>"));
    EXPECT_THAT(sPage, HasSubstr("<p>a &amp; b</p>"));
    EXPECT_THAT(sPage, HasSubstr("<svg>drawing</svg>"));
    EXPECT_THAT(sPage, Not(HasSubstr("<?xml")));
    EXPECT_THAT(sPage, HasSubstr("title = &quot;&lt;x&gt;&quot;"));
    EXPECT_THAT(sPage, HasSubstr("<pre>opc simulate run.toml</pre>"));
    for (const RunMeasureKey& key : runMeasureKeys()) {
        EXPECT_THAT(sPage, HasSubstr(std::string("<td>") + key.pName + "</td>"));
    }
}

TEST(RunPage, ListsExpectationsEventsAndWarningsWhereThereAreAny)
{
    RunReport report = makePageReport();
    EXPECT_THAT(pageOf(report), Not(HasSubstr("<h2>Expectations")));
    EXPECT_THAT(pageOf(report), Not(HasSubstr("<h2>Warnings")));
    EXPECT_THAT(pageOf(report), Not(HasSubstr("<h2>What happens")));
    report.expectations = checkExpectations({{measureKey("jumps"), 0.0, 0.0}}, report.measures);
    EXPECT_THAT(pageOf(report), HasSubstr("<h2>Expectations: all met</h2>"));
    report.expectations = checkExpectations({{measureKey("jumps"), 1.0, 2.0}}, report.measures);
    report.warnings = {"a <warning>"};
    ScenarioEvent event;
    event.atSeconds = 2.5;
    event.on = true;
    report.scenario.events = {event};
    const std::string sPage = pageOf(report);
    EXPECT_THAT(sPage, HasSubstr("<h2>Expectations: not all met</h2>"));
    EXPECT_THAT(sPage, HasSubstr("missed:</span> 1 to 2</td>"));
    EXPECT_THAT(sPage, HasSubstr("<li>a &lt;warning&gt;</li>"));
    EXPECT_THAT(sPage, HasSubstr("<td class=\"value\">2.5 s</td><td>on</td>"));
}
