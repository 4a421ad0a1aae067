/** @file
 * What the module asks of its handler in a simulated run beside what it asks in a real one.
 */
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Process/UnitProcess.h"
#include "tests/unit/ScenarioMaker.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace
{
constexpr double DURATION_SECONDS = 2.0;
constexpr int ATTEMPTS = 8; // for a machine that is busy
const char* const DRIVE = "time_s,requested_power_dBm,temperature_C,frequency_MHz\n"
                          "0,10,20,5000\n0.5,12.5,31,5000\n1.2,9,28,5003\n1.6,20,-5,4998\n5,8,40,5001\n";

class VirtualRunCalls : public testing::Test
{
protected:
    VirtualRunCalls()
    {
        setenv("OPC_TEST_CALLS", m_folder.path("calls").c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        m_scenario = quietScenario(DURATION_SECONDS + 0.1);
        m_scenario.unit.modules[2].sLibrary = OPC_LIBRARY_FOLDER "/libCallRecordingHandler.so";
        m_scenario.unit.trace.nDefaultLevel = 0;
        m_scenario.unit.trace.bSystemLog = false;
        const std::string sChannel = "Channel.0.";
        m_scenario.unit.calibrations = {{sChannel + "P.Level.Over.Bandwidth.To.OPC.Target.Offset",
                                         OPC_EXAMPLES "/calibration/power_over_bandwidth.csv"},
                                        {sChannel + "Frequency.Over.Temperature.To.OPC.Target.Offset",
                                         OPC_EXAMPLES "/calibration/frequency_over_temperature.csv"}};
        m_scenario.unit.faults = {faultAt(0.9, EHandlerOperation::GetPmeasured, EHandlerFault::Stuck),
                                  faultAt(1.3, EHandlerOperation::SetOutputPower, EHandlerFault::Intermittent)};
        m_scenario.unit.faults[0].forSeconds = 0.2;
        m_scenario.unit.faults[1].forSeconds = 0.3;
        m_scenario.drive.sFile = m_folder.write("drive.csv", DRIVE);
        m_scenario.drive.interpolation = {EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Linear};
        m_scenario.events = {requestAt(0.0, true), requestAt(DURATION_SECONDS, false)};
    }

    VirtualRunCalls(const VirtualRunCalls&) = delete;
    VirtualRunCalls& operator=(const VirtualRunCalls&) = delete;
    ~VirtualRunCalls() override { unsetenv("OPC_TEST_CALLS"); } // NOLINT(concurrency-mt-unsafe)

    std::string takeCalls() const
    {
        std::ostringstream text;
        text << std::ifstream(m_folder.path("calls"), std::ios::binary).rdbuf();
        return text.str();
    }

    /** @return the calls of a run in real time; empty when it lost a deadline */
    std::string callsInRealTime() const
    {
        std::uint64_t nOverruns = 0;
        {
            const Profile profile(m_scenario.drive.sFile, m_scenario.drive.interpolation);
            UnitProcess process(m_scenario.unit);
            process.load();
            process.start();
            RadioChannel& channel = *process.channels().front();
            channel.requestOn();
            RunSettings settings;
            settings.intervalMs = m_scenario.unit.intervalMs;
            settings.durationSeconds = DURATION_SECONDS;
            settings.temperatureDegrees = m_scenario.unit.temperatureDegrees;
            settings.pProfile = &profile;
            SampleQueue queue(1000);
            RegulationLoop loop(settings, {&channel}, process.temperature(), m_scenario.unit.faults, queue);
            loop.run();
            EXPECT_EQ(loop.error(), "");
            nOverruns = loop.overruns();
        }
        return nOverruns == 0 ? takeCalls() : std::string();
    }

    std::string callsInVirtualTime() const
    {
        stepsOf(m_scenario);
        return takeCalls();
    }

    TemporaryFolder m_folder;
    Scenario m_scenario;
};
} // namespace

TEST_F(VirtualRunCalls, EqualThoseOfARunInRealTime)
{
    std::string sReal;
    for (int nAttempt = 0; nAttempt < ATTEMPTS && sReal.empty(); ++nAttempt) {
        sReal = callsInRealTime();
    }
    if (sReal.empty()) {
        GTEST_SKIP() << "the machine is too busy for " << DURATION_SECONDS << " s without a lost deadline";
    }
    const std::string sVirtual = callsInVirtualTime();
    EXPECT_GT(std::count(sVirtual.begin(), sVirtual.end(), '\n'), 900) << "three calls a step when on";
    EXPECT_EQ(sVirtual, sReal);
}

TEST_F(VirtualRunCalls, DifferFromThoseOfOtherInputs)
{
    const std::string sCalls = callsInVirtualTime();
    EXPECT_EQ(callsInVirtualTime(), sCalls);
    m_scenario.unit.faults.pop_back();
    EXPECT_NE(callsInVirtualTime(), sCalls);
}
