/** @file
 * The deadlines of a recorded run, without the time between them.
 */
#pragma once

#include "Unit/Process/RegulationPace.h"
#include "Unit/Replay/RecordedTick.h"

#include <cstdint>
#include <string>

/** Is told of a regulation that follows a recording, in its thread. */
class IReplayListener
{
public:
    virtual ~IReplayListener() = default;

    /**
     * The channels have taken a step.
     * @param pRecorded what they did when it was recorded; null where that is not recorded
     * @return false to end the regulation
     */
    virtual bool onTick(const RecordedTick* pRecorded) = 0;

    /**
     * The time before the next deadline.
     * @param nSteps that each channel has taken; 0 before the first
     * @param nNextUs the time of the next deadline
     * @return false to end the regulation
     */
    virtual bool onGap(std::uint64_t nSteps, std::uint64_t nNextUs) = 0;
};

/**
 * Leads a regulation along recorded ticks. Ticks that are not recorded follow each other at the interval, when their
 * number and the count of skipped deadlines say that it was so; else the pace ends before them.
 */
class RecordedPace final : public IRegulationPace
{
public:
    /** @param listener must outlive the object */
    RecordedPace(TickSource source, IReplayListener& listener);

    void begin(std::chrono::nanoseconds interval) override;
    bool wait() override { return m_bGoing; }
    std::uint64_t next() override;
    void serve(CommandQueue& commands) override;
    void setInterval(std::chrono::nanoseconds interval) override { m_intervalNs = interval.count(); }
    std::int64_t elapsedNs() const override { return m_nElapsedNs; }
    std::int64_t latenessNs() const override { return 0; }
    const LatenessStatistics& statistics() const override { return m_lateness; }

    /** @return whether there is a deadline that the regulation has not taken */
    bool hasMore() const { return m_bGoing; }

    std::uint64_t takenTicks() const { return m_nTaken; }

    /** @return how many of the ticks taken are not recorded */
    std::uint64_t missingTicks() const { return m_nMissing; }

    /** @return why the pace cannot go on; empty when it has come to the end of the recording */
    const std::string& trouble() const { return m_sTrouble; }

private:
    std::int64_t aheadNs() const;
    void lookAhead();
    std::uint64_t goOn();
    std::uint64_t fail(std::string sTrouble);

    TickSource m_source;
    IReplayListener& m_listener;
    RecordedTick m_tick;  // the deadline's, when it is recorded
    RecordedTick m_ahead; // the next that is recorded
    bool m_bAhead = false;
    bool m_bRecorded = false;
    bool m_bGoing = false;
    std::int64_t m_intervalNs = 0;
    std::int64_t m_nElapsedNs = 0;
    std::uint32_t m_nOverruns = 0;
    std::uint64_t m_nTaken = 0;
    std::uint64_t m_nMissing = 0;
    std::string m_sTrouble;
    LatenessStatistics m_lateness;
};
