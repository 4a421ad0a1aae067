#include "Unit/Simulator/private/EventText.h"

#include "tests/unit/simulator/VirtualSteps.h"

#include <gtest/gtest.h>

TEST(EventText, SaysWhatHappensUnlessThereIsALabel)
{
    ScenarioEvent event;
    event.on = true;
    EXPECT_EQ(eventText(event), "on");
    event.on = false;
    event.nPowerMode = 0;
    event.txPminDbm = -5.0;
    event.txPmaxDbm = 25.5;
    event.gainPercentOn = GainPercent{20, 10, 5};
    event.productionTest = true;
    event.nLoopMode = 2;
    EXPECT_EQ(eventText(event),
              "off, mode 0, Pmin -5 dBm, Pmax 25.5 dBm, gain on 20/10/5 %, production test on, loop mode 2");
    event.sLabel = "something";
    EXPECT_EQ(eventText(event), "something");
}

TEST(EventText, SaysHowLongAMoveTakes)
{
    ScenarioEvent event;
    event.requestedPowerDbm = 12.5;
    event.frequencyMhz = 5200.0;
    event.temperatureDegrees = -33.0;
    event.transmitter = {{&transmitterKeys().front(), 1.5}};
    event.overSeconds = 4.0;
    EXPECT_EQ(eventText(event),
              std::string("request 12.5 dBm, 5200 MHz, -33 °C, ") + transmitterKeys().front().pName + " 1.5 over 4 s");
}

TEST(EventMarks, AreInOrderOfTimeWithFaultsAndRepetitions)
{
    Scenario scenario = makeScenario(10.0);
    ScenarioEvent repeated;
    repeated.atSeconds = 1.0;
    repeated.everySeconds = 4.0;
    repeated.sLabel = "again";
    scenario.events = {repeated};
    FaultConfiguration fault;
    fault.fault.eKind = EHandlerFault::Stuck;
    fault.atSeconds = 3.0;
    fault.forSeconds = 1.0;
    scenario.unit.faults = {fault};
    fault.atSeconds = 11.0;
    scenario.unit.faults.push_back(fault);
    const std::vector<EventMark> marks = marksOf(scenario);
    ASSERT_EQ(marks.size(), 5U) << "what is after the end is left out";
    const std::pair<double, std::string> expected[] = {
        {1.0, "again (every 4 s)"}, {3.0, "getPmeasured stuck"}, {4.0, "getPmeasured works"}, {5.0, ""}, {9.0, ""}};
    for (std::size_t nMark = 0; nMark < marks.size(); ++nMark) {
        EXPECT_DOUBLE_EQ(marks[nMark].seconds, expected[nMark].first);
        EXPECT_EQ(marks[nMark].sText, expected[nMark].second);
    }
}

TEST(EventMarks, HaveOnlyTheFirstOfVeryManyRepetitions)
{
    Scenario scenario = makeScenario(1e6);
    ScenarioEvent repeated;
    repeated.everySeconds = 1.0;
    repeated.on = true;
    scenario.events = {repeated};
    EXPECT_EQ(marksOf(scenario).size(), 1U);
}
