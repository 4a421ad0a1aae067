/** @file
 * Plays a recorded run.
 */
#pragma once

#include "Unit/LivePage/PageReplay.h"
#include "Unit/Recorder/Recording.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/** How a replay begins. */
struct ReplayBegin
{
    std::optional<std::uint64_t> nPositionUs; /**< the first recorded step when empty; moved to the next when earlier */
    unsigned int nSpeed = 1;
    bool bPaused = false;
    std::function<std::string()> newRun; /**< gives each feed its identifier */
};

/**
 * Gives the recorded steps and events of a run to a feed as time goes on, as if the unit ran.
 *
 * After a jump there is a new feed, which holds up to a minute before the position. At the end it pauses. So that
 * neither a page nor the network drowns, no more than MOST_STEPS_A_SECOND are played, each of them whole: when the
 * speed makes them more, only every so-manieth of each channel is, and those that change state or result.
 */
class ReplayPlayer final : public IPageReplay
{
public:
    static constexpr unsigned int MOST_STEPS_A_SECOND = 20'000;
    static constexpr std::uint64_t PREFILL_US = 60'000'000;

    /** @throws ConfigurationError when no steps of the run are left, or the position is after the last one */
    ReplayPlayer(Recording recording, RecordedRun run, ReplayBegin begin);

    /**
     * Plays on, unless it is paused. @param elapsed real time since the last call
     * @throws std::exception when the recording cannot be read; it is paused then
     */
    void advance(std::chrono::microseconds elapsed);

    /** Ends the streams of what is played. */
    void close();

    PageFeed feed() const override;
    ReplayState state() const override;
    void change(const ReplayChange& change) override;

private:
    void readTimes();
    void jumpTo(std::uint64_t nPositionUs);
    void playTo(std::uint64_t nPositionUs);
    std::uint64_t stride() const;
    bool isPlayed(const StepSample& sample, std::uint64_t nStride);

    mutable std::mutex m_mutex; // of all that follow
    Recording m_recording;
    RecordedRun m_run;
    std::function<std::string()> m_newRun;
    ReplayState m_state;
    std::string m_sRun; // of the feed
    std::shared_ptr<RunFeed> m_pFeed;
    std::vector<std::int32_t> m_results; // the latest of each channel, by index
};
