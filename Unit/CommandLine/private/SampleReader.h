/** @file
 * Takes the samples out of the regulation thread.
 */
#pragma once

#include "Unit/CommandLine/StatusDisplay.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Recorder/ChannelMeasures.h"
#include "Unit/Recorder/CsvWriter.h"

#include <fmt/format.h>

#include <vector>

/** Reads the samples of a run while it goes on, in the main thread. */
class SampleReader
{
public:
    SampleReader(SampleQueue& queue, CsvWriter* pWriter, StatusDisplay& display, std::size_t nChannels)
        : m_queue(queue), m_pWriter(pWriter), m_display(display), m_measures(nChannels)
    {}

    void drain()
    {
        m_queue.consume_all([this](const StepSample& sample) {
            m_measures[sample.nChannelIndex].add(sample);
            m_display.add(sample);
            if (m_pWriter != nullptr) {
                m_pWriter->add(sample);
            }
        });
        if (m_pWriter != nullptr) {
            m_pWriter->flush();
            reportWriteError();
        }
        m_display.refresh();
    }

    const std::vector<ChannelMeasures>& measures() const { return m_measures; }

private:
    void reportWriteError()
    {
        if (!m_bErrorReported && !m_pWriter->error().empty()) {
            m_bErrorReported = true;
            fmt::print(stderr, "opc run: {}\n", m_pWriter->error());
        }
    }

    SampleQueue& m_queue;
    CsvWriter* m_pWriter;
    StatusDisplay& m_display;
    std::vector<ChannelMeasures> m_measures;
    bool m_bErrorReported = false;
};
