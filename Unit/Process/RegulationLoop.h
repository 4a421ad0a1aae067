/** @file
 * Calls the regulators of all channels on time.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Clock/TimeHistogram.h"
#include "Unit/Process/CommandQueue.h"
#include "Unit/Process/FaultSchedule.h"
#include "Unit/Process/InputValue.h"
#include "Unit/Process/NotifiedTemperature.h"
#include "Unit/Process/RadioChannel.h"
#include "Unit/Process/RegulationPace.h"
#include "Unit/Process/SampleQueue.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/** Where in a run a command, or the stop, took effect. */
struct CommandMoment
{
    std::uint64_t nTimeUs = 0; /**< of the first step that it is in force for, since the first step of all */
    std::uint64_t nSteps = 0;  /**< that each channel had taken before */
    std::uint64_t nNumber = 0; /**< of a command: 1, 2, ...; 0 before the first */
};

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
     * @param channels connected and configured; they, the temperature handler (null for none), the queue and the pace
     *        must outlive the loop
     * @param pPace null for real time
     */
    RegulationLoop(const RunSettings& settings, std::vector<RadioChannel*> channels,
                   ISimulatedTemperature* pTemperature, const std::vector<FaultConfiguration>& faults,
                   SampleQueue& queue, IRegulationPace* pPace = nullptr);

    RegulationLoop(const RegulationLoop&) = delete;
    RegulationLoop& operator=(const RegulationLoop&) = delete;
    ~RegulationLoop() = default;

    /** @return the way into the regulation thread; refuses everything once run() is over */
    CommandQueue& commands() { return m_commands; }

    /** @return the channels, which do not change. Any thread */
    const std::vector<RadioChannel*>& channels() const { return m_channels; }

    // For commands, in the regulation thread.

    /** Wants a transmitter on or off. @return false for one to come on while the unit is stopping */
    bool want(RadioChannel& channel, ERequestedTxPowerState eState) const;

    /** Notes that a command takes effect now. */
    void noteCommand();

    double elapsedSeconds() const;
    InputValue& temperatureDegrees()
    {
        m_owner.check("RegulationLoop::temperatureDegrees");
        return m_temperatureDegrees;
    }

    /**
     * Lets the deadlines after the next one follow at another interval, which every controller is told.
     * @param intervalMs 1 to MAX_INTERVAL_MS
     * @return whether every controller took it
     */
    bool setInterval(unsigned int intervalMs);

    /**
     * Regulates until the time is up or a stop is requested, then until every channel is off; or until the pace is at
     * its end. The thread's body.
     */
    void run() noexcept;

    /** @return when the latest command took effect. Whoever had it carried out, before anybody has the next one */
    const CommandMoment& lastCommand() const { return m_lastCommand; }

    /** Asks for the stop. Any thread. */
    void requestStop() { m_bStopRequested.store(true, std::memory_order_relaxed); }

    /** @return when the switch-off of the stop began; none before it. Any thread, at any time */
    std::optional<CommandMoment> stopMoment() const;

    /** @return the time between two steps. Any thread, at any time */
    unsigned int intervalMs() const { return m_intervalMs.load(std::memory_order_relaxed); }

    /** @return samples that found the queue full. Any thread, at any time */
    std::uint64_t droppedSamples() const { return m_nDropped.load(std::memory_order_relaxed); }

    // How late the ticks began, and how long each channel's steps took. Any thread, at any time.
    const TimeHistogram& latenessTimes() const { return m_latenessTimes; }
    const TimeHistogram& stepTimes(std::size_t nChannelIndex) const { return m_stepTimes.at(nChannelIndex); }

    /** @return whether run() is over; what follows is valid then, and for commands */
    bool isFinished() const { return m_bFinished.load(std::memory_order_acquire); }

    std::uint64_t overruns() const
    {
        m_owner.check("RegulationLoop::overruns");
        return m_nOverruns;
    }
    const LatenessStatistics& lateness() const
    {
        m_owner.check("RegulationLoop::lateness");
        return m_pace.statistics();
    }

    /** @return what ended the regulation before its time; empty when nothing did */
    const std::string& error() const
    {
        m_owner.check("RegulationLoop::error");
        return m_sError;
    }

private:
    void handOver();
    void regulateUntilOff();
    bool isStopDue() const;
    void beginStop();
    CommandMoment now() const;
    bool allAreOff() const;
    void wantOff();
    void tick(std::uint64_t nSkipped);
    void switchFaults();

    RunSettings m_settings;
    std::vector<RadioChannel*> m_channels;
    NotifiedTemperature m_temperature;
    FaultSchedule m_faults;
    SampleQueue& m_queue;
    CommandQueue m_commands;
    CommandMoment m_lastCommand;
    std::atomic<unsigned int> m_intervalMs;
    DeadlinePace m_realTime; // unless another pace is given
    IRegulationPace& m_pace;
    InputValue m_temperatureDegrees;
    std::int64_t m_nLastElapsedNs = 0;
    bool m_bStopping = false;
    CommandMoment m_stopMoment;
    std::atomic<bool> m_bStopKnown{false}; // m_stopMoment does not change any more
    std::uint64_t m_nOverruns = 0;
    std::atomic<std::uint64_t> m_nDropped{0};
    TimeHistogram m_latenessTimes;
    std::vector<TimeHistogram> m_stepTimes; // by index
    std::string m_sError;
    std::atomic<bool> m_bStopRequested{false};
    std::atomic<bool> m_bFinished{false};
    [[no_unique_address]] OwnedByThread m_owner; // while it runs, the regulation thread
};
