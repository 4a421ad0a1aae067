/** @file
 * What happened in a run, as text.
 */
#pragma once

#include "Simulation/Scenario/TrackingMeasures.h"
#include "Unit/Clock/LatenessStatistics.h"
#include "Unit/Process/CommandQueue.h"
#include "Unit/Process/RadioChannel.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** A channel's part of the summary. */
struct ChannelResult
{
    unsigned int nChannel = 0;
    ChannelStatistics statistics;
    std::optional<std::uint64_t> nRefusedCalls; /**< none without a simulated handler */
    TrackingSummary tracking;
};

/** What a run came to. */
struct RunResult
{
    std::string sEndedBy; /**< such as "SIGINT" */
    unsigned int intervalMs = 6;
    std::uint64_t nOverruns = 0;
    LatenessStatistics lateness;
    std::uint64_t nDroppedSamples = 0;
    CommandStatistics commands;
    std::string sRecordedFile; /**< empty when nothing was recorded */
    std::uint64_t nRecordedRows = 0;
    std::string sRecording; /**< file of the recording; empty when there is none */
    std::uint64_t nRecordedSteps = 0;
    std::uint64_t nLostSteps = 0;                   /**< that the recording does not have */
    std::optional<std::uint64_t> nSafetyViolations; /**< none without the safety monitor */
    std::vector<ChannelResult> channels;
};

/** @return the summary, lines that end with newlines */
std::string summaryText(const RunResult& result);
