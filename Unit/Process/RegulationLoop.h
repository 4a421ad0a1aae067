/** @file
 * Calls the regulators of all channels on time.
 */
#pragma once

#include "Unit/Clock/DeadlineTimer.h"
#include "Unit/Process/CommandQueue.h"
#include "Unit/Process/FaultSchedule.h"
#include "Unit/Process/InputValue.h"
#include "Unit/Process/NotifiedTemperature.h"
#include "Unit/Process/RadioChannel.h"
#include "Unit/Process/StepSample.h"

#include <boost/lockfree/spsc_queue.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/** The bounded way of samples out of the regulation thread: one writer, one reader, nobody waits. */
using SampleQueue = boost::lockfree::spsc_queue<StepSample>;

/** How a run goes. */
struct RunSettings
{
    unsigned int intervalMs = 6;
    double speed = 1.0;        /**< profile and simulated seconds per second */
    double startSeconds = 0.0; /**< where in the profile the run begins */
    std::optional<double> durationSeconds;
    double temperatureDegrees = 25.0;  /**< without a profile's */
    const Profile* pProfile = nullptr; /**< not owned; null for none */
};

/**
 * The regulation of all channels: what its one thread does.
 *
 * A step of it allocates nothing, locks nothing and does no input or output; only a move of the temperature by a whole
 * degree or of the frequency by a whole megahertz goes through the handlers' observer lists.
 */
class RegulationLoop
{
public:
    /** How many calls the channels are given to switch off. */
    static constexpr unsigned int MAX_STOP_CALLS = 200;

    /**
     * @param channels connected and configured; they, the temperature handler (null for none) and the queue must
     *        outlive the loop
     */
    RegulationLoop(const RunSettings& settings, std::vector<RadioChannel*> channels,
                   ISimulatedTemperature* pTemperature, const std::vector<FaultConfiguration>& faults,
                   SampleQueue& queue);

    RegulationLoop(const RegulationLoop&) = delete;
    RegulationLoop& operator=(const RegulationLoop&) = delete;
    ~RegulationLoop() = default;

    /** @return the way into the regulation thread; refuses everything once run() is over */
    CommandQueue& commands() { return m_commands; }

    // For commands, in the regulation thread.
    const std::vector<RadioChannel*>& channels() const { return m_channels; }

    /** Wants a transmitter on or off. @return false for one to come on while the unit is stopping */
    bool want(RadioChannel& channel, ERequestedTxPowerState eState) const;

    unsigned int intervalMs() const { return m_settings.intervalMs; }
    double elapsedSeconds() const;
    InputValue& temperatureDegrees() { return m_temperatureDegrees; }

    /**
     * Lets the deadlines after the next one follow at another interval, which every controller is told.
     * @param intervalMs 1 to MAX_INTERVAL_MS
     * @return whether every controller took it
     */
    bool setInterval(unsigned int intervalMs);

    /** Regulates until the time is up or a stop is requested, then until every channel is off. The thread's body. */
    void run() noexcept;

    /** Asks for the stop. Any thread. */
    void requestStop() { m_bStopRequested.store(true, std::memory_order_relaxed); }

    /** @return whether run() is over; what follows is valid then, and for commands */
    bool isFinished() const { return m_bFinished.load(std::memory_order_acquire); }

    std::uint64_t overruns() const { return m_nOverruns; }
    std::uint64_t droppedSamples() const { return m_nDropped; }
    const LatenessStatistics& lateness() const { return m_timer ? m_timer->statistics() : m_noLateness; }

    /** @return what ended the regulation before its time; empty when nothing did */
    const std::string& error() const { return m_sError; }

private:
    void regulateUntilOff();
    bool isStopDue() const;
    bool allAreOff() const;
    void wantOff();
    void tick(std::uint64_t nSkipped);
    void switchFaults();
    void serveCommands();

    RunSettings m_settings;
    std::vector<RadioChannel*> m_channels;
    NotifiedTemperature m_temperature;
    FaultSchedule m_faults;
    SampleQueue& m_queue;
    CommandQueue m_commands;
    std::optional<DeadlineTimer> m_timer; // from the first step on
    InputValue m_temperatureDegrees;
    std::int64_t m_nLastElapsedNs = 0;
    bool m_bStopping = false;
    std::uint64_t m_nOverruns = 0;
    std::uint64_t m_nDropped = 0;
    LatenessStatistics m_noLateness;
    std::string m_sError;
    std::atomic<bool> m_bStopRequested{false};
    std::atomic<bool> m_bFinished{false};
};
