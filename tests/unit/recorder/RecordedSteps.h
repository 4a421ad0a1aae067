/** @file
 * Runs to record.
 */
#pragma once

#include "Unit/Recorder/Recording.h"
#include "Unit/Recorder/UnitRecorder.h"
#include "tests/unit/SampleMaker.h"
#include "tests/unit/TemporaryFolder.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

/** When the runs of these tests begin: 2026-11-21T15:00:00Z. */
inline constexpr std::int64_t STARTED_UNIX_US = 1'795'273'200'000'000;

/** @return a run of channels 3 and 5 */
inline RecordedRun makeRun(const std::string& sRun = "0123456789abcdef")
{
    RecordedRun run;
    run.sRun = sRun;
    run.nStartedUnixUs = STARTED_UNIX_US;
    run.intervalMs = 12;
    run.speed = 2.5;
    run.startSeconds = 30.0;
    run.sVersion = "1.2.3";
    run.channels = {3, 5};
    run.modules = {{"Handler", "libHandler.so", EModuleScope::Unit, 0},
                   {"Loop", "./Loop.so", EModuleScope::Channel, 0}};
    run.files = {{"unit", "unit.toml", "[unit]\n"}, {"profile", "p.csv", "time_s\n0\n"}};
    return run;
}

/** @return a step of channel 3 (index 0) or 5 (index 1), whose fields are all different */
inline StepSample makeStep(std::uint64_t nTimeUs, std::uint32_t nIndex = 0)
{
    StepSample sample = makeSample();
    sample.nTimeUs = nTimeUs;
    sample.nChannelIndex = nIndex;
    sample.nChannelNumber = nIndex == 0 ? 3 : 5;
    sample.nStateBefore = eOPC_TX_ON_RAMPING;
    sample.nIfPower = -300;
    sample.nRfGain = 1234;
    sample.reducedGain = {1, 2, 3, 4, 5, 6};
    sample.temperatureDegrees = 25.1F; // has no short decimal form
    sample.frequencyMhz = 5123.456F;
    return sample;
}

inline RecorderConfiguration recorderOf(const std::string& sFile)
{
    RecorderConfiguration configuration;
    configuration.sFile = sFile;
    return configuration;
}

/** Records steps and events as a run of its own. @return what people are told */
inline std::vector<std::string> record(const RecorderConfiguration& configuration, const std::vector<StepSample>& steps,
                                       const std::vector<RunEvent>& events = {}, const RecordedRun& run = makeRun())
{
    RunFeed feed(steps.size() + 1, events.size() + 1);
    UnitRecorder recorder(configuration);
    feed.add(steps);
    for (const RunEvent& event : events) {
        feed.add(event);
    }
    recorder.begin(run, feed);
    recorder.stop();
    return recorder.takeNotices();
}

inline std::vector<StepSample> stepsOf(const Recording& recording, const RecordedRange& range)
{
    std::vector<StepSample> steps;
    recording.forEachStep(range, [&](const StepSample& step) { steps.push_back(step); });
    return steps;
}

inline std::vector<StepSummary> summariesOf(const Recording& recording, EResolution eResolution,
                                            const RecordedRange& range)
{
    std::vector<StepSummary> summaries;
    recording.forEachSummary(eResolution, range, [&](const StepSummary& summary) { summaries.push_back(summary); });
    return summaries;
}

inline std::vector<RunEvent> eventsOf(const Recording& recording, const RecordedRange& range)
{
    std::vector<RunEvent> events;
    recording.forEachEvent(range, [&](const RunEvent& event) { events.push_back(event); });
    return events;
}

inline RecordedRange wholeRun(std::int64_t nRun)
{
    RecordedRange range;
    range.nRun = nRun;
    return range;
}
