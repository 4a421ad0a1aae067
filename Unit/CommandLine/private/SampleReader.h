/** @file
 * Reads what a run tells, for the terminal and the CSV file, and passes on what became of the recording.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/CommandLine/StatusDisplay.h"
#include "Unit/Recorder/ChannelMeasures.h"
#include "Unit/Recorder/CsvWriter.h"
#include "Unit/Recorder/UnitRecorder.h"
#include "Unit/Telemetry/RunFeed.h"

#include <fmt/format.h>

#include <vector>

/** Reads the samples of a run while it goes on, in the main thread. */
class SampleReader
{
public:
    /** @param pWriter, pRecorder null for none */
    SampleReader(const RunFeed& feed, CsvWriter* pWriter, UnitRecorder* pRecorder, StatusDisplay& display,
                 std::size_t nChannels)
        : m_feed(feed), m_pWriter(pWriter), m_pRecorder(pRecorder), m_display(display), m_measures(nChannels)
    {}

    void drain()
    {
        m_owner.check("SampleReader::drain");
        m_feed.read(m_position, m_batch, ALL);
        m_nLost += m_batch.nLostSamples;
        for (const StepSample& sample : m_batch.samples) {
            m_measures[sample.nChannelIndex].add(sample);
            m_display.add(sample);
            if (m_pWriter != nullptr) {
                m_pWriter->add(sample);
            }
        }
        if (m_pWriter != nullptr) {
            m_pWriter->flush();
            reportWriteError();
        }
        m_display.refresh();
        reportRecorder();
    }

    void reportRecorder()
    {
        if (m_pRecorder != nullptr) {
            for (const std::string& sNotice : m_pRecorder->takeNotices()) {
                fmt::print(stderr, "opc run: {}\n", sNotice);
            }
        }
    }

    const std::vector<ChannelMeasures>& measures() const { return m_measures; }

    /** @return samples that were gone before this reader came for them */
    std::uint64_t lostSamples() const { return m_nLost; }

private:
    static constexpr std::size_t ALL = static_cast<std::size_t>(-1);

    void reportWriteError()
    {
        if (!m_bErrorReported && !m_pWriter->error().empty()) {
            m_bErrorReported = true;
            fmt::print(stderr, "opc run: {}\n", m_pWriter->error());
        }
    }

    const RunFeed& m_feed;
    FeedPosition m_position;
    FeedBatch m_batch;
    CsvWriter* m_pWriter;
    UnitRecorder* m_pRecorder;
    StatusDisplay& m_display;
    std::vector<ChannelMeasures> m_measures;
    std::uint64_t m_nLost = 0;
    bool m_bErrorReported = false;
    [[no_unique_address]] OwnedByThread m_owner;
};
