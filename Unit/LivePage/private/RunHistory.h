/** @file
 * The history of a channel, from what the feed holds and what is recorded.
 */
#pragma once

#include "Unit/LivePage/RecordedPast.h"
#include "Unit/Process/StepSample.h"
#include "Unit/Recorder/StepSummary.h"
#include "Unit/Telemetry/RunFeed.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/** What a history was made of; the coarsest, where it is of several. */
enum class EHistorySource
{
    Ring,
    Steps,
    Seconds,
    Minutes
};

/** @return the name that pages use, such as "seconds" */
const char* historySourceName(EHistorySource eSource);

/** What is asked for. */
struct HistoryQuestion
{
    unsigned int nChannel = 0;
    std::uint64_t nFromUs = 0; /**< since the run began */
    std::uint64_t nToUs = 0;   /**< included; not before the begin */
    std::size_t nPoints = 1;   /**< samples or parts to give at most */
    unsigned int intervalMs = 1;
};

/** A channel over a range. */
struct ChannelHistory
{
    EHistorySource eSource = EHistorySource::Ring;
    std::vector<StepSample> steps;  /**< all of them, where there are no more than were asked for */
    std::vector<StepSummary> parts; /**< in place of the steps, each with the time of its middle */
};

/** Steps or seconds of a channel that are read for a history at most; beyond it the next coarser ones are. */
inline constexpr std::uint64_t MOST_HISTORY_ROWS = 100'000;

/** Minutes of a channel that a history can be made of: nearly two years. A longer range is refused. */
inline constexpr std::uint64_t MOST_HISTORY_MINUTES = 1'000'000;

/**
 * Looks into the feed, and for what it does not hold any more into the recording: each step of that stands in the
 * answer once, whatever the recorder writes meanwhile. Without a feed everything is from the recording.
 * @param pFeed, pPast null for none
 * @throws BadRequest when the range is too long even in minutes
 * @throws std::exception when the recording cannot be read
 */
ChannelHistory channelHistory(const RunFeed* pFeed, RecordedPast* pPast, const HistoryQuestion& question);

/**
 * @return the latest events of a range, oldest first: those that the feed holds, and earlier ones from the recording;
 *         without a feed all from the recording
 * @throws std::exception when the recording cannot be read
 */
std::vector<RunEvent> latestEvents(const RunFeed* pFeed, RecordedPast* pPast, std::uint64_t nFromUs,
                                   std::uint64_t nToUs, std::size_t nMost);
