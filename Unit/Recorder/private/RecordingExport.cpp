#include "Unit/Recorder/RecordingExport.h"

#include "Unit/Text/IsoTime.h"
#include "Unit/Text/PowerText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

namespace
{
constexpr std::size_t WRITTEN_BYTES = 64UL * 1024;

/** How a quantity of summaryColumns() stands in a CSV file. */
struct CsvQuantity
{
    const char* pName;
    int nDigits; // behind the point: whole numbers of summaryColumns() are these many powers of ten smaller
};

constexpr std::array<CsvQuantity, SUMMARY_QUANTITIES> QUANTITIES = {{{"requested_power_dBm", 2},
                                                                     {"ptarget_dBm", 2},
                                                                     {"pctrl_dBm", 2},
                                                                     {"pmeasured_dBm", 2},
                                                                     {"ppredicted_dBm", 2},
                                                                     {"error_dB", 2},
                                                                     {"rf_gain_dB", 2},
                                                                     {"if_power_dBm", 2},
                                                                     {"temperature_C", 2},
                                                                     {"frequency_MHz", 3},
                                                                     {"reduced_gain_1_dB", 2},
                                                                     {"reduced_gain_2_dB", 2},
                                                                     {"reduced_gain_3_dB", 2},
                                                                     {"reduced_gain_4_dB", 2},
                                                                     {"reduced_gain_5_dB", 2},
                                                                     {"reduced_gain_6_dB", 2}}};
constexpr const char* STEP_NAMES[] = {"state", "state_name", "result", "detector_state", "lateness_us"};
constexpr const char* SUMMARY_NAMES[] = {"state", "state_name", "steps", "failed_steps"};

using Buffer = fmt::memory_buffer;

template <class... TArguments>
void append(Buffer& buffer, fmt::format_string<TArguments...> format, TArguments&&... arguments)
{
    fmt::format_to(std::back_inserter(buffer), format, std::forward<TArguments>(arguments)...);
}

void appendValue(Buffer& buffer, std::optional<std::int64_t> nValue, int nDigits)
{
    buffer.push_back(',');
    if (nValue) {
        append(buffer, "{:.{}f}", static_cast<double>(*nValue) / (nDigits == 3 ? 1000.0 : 100.0), nDigits);
    }
}

void appendState(Buffer& buffer, std::int32_t nState)
{
    append(buffer, ",{},{}", nState, controllerStateName(nState));
}

void appendCells(Buffer& buffer, const StepSample& sample)
{
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        appendValue(buffer, summaryColumns().at(nQuantity).read(sample), QUANTITIES.at(nQuantity).nDigits);
    }
    appendState(buffer, sample.nState);
    append(buffer, ",{},{},{}", sample.nResult, sample.nDetectorState, sample.nLatenessUs);
}

void appendCells(Buffer& buffer, const StepSummary& summary)
{
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        const auto& quantity = summary.quantities.at(nQuantity);
        for (const auto pPart : {&QuantitySummary::nMin, &QuantitySummary::nMean, &QuantitySummary::nMax}) {
            appendValue(buffer, quantity ? std::optional((*quantity).*pPart) : std::nullopt,
                        QUANTITIES.at(nQuantity).nDigits);
        }
    }
    appendState(buffer, summary.nState);
    append(buffer, ",{},{}", summary.nSteps, summary.nFailedSteps);
}

std::vector<std::string> columnNames(EResolution eResolution)
{
    std::vector<std::string> names;
    const bool bSteps = eResolution == EResolution::Steps;
    for (const CsvQuantity& quantity : QUANTITIES) {
        if (bSteps) {
            names.emplace_back(quantity.pName);
            continue;
        }
        for (const char* const pPart : {"min", "mean", "max"}) {
            names.push_back(fmt::format("{}_{}", quantity.pName, pPart));
        }
    }
    if (bSteps) {
        names.insert(names.end(), std::begin(STEP_NAMES), std::end(STEP_NAMES));
    }
    else {
        names.insert(names.end(), std::begin(SUMMARY_NAMES), std::end(SUMMARY_NAMES));
    }
    return names;
}

/** Gathers text and hands it on in large parts. */
class CsvText
{
public:
    explicit CsvText(const RecordingExport& request) : m_request(request) {}

    Buffer& buffer() { return m_buffer; }

    void endRow(std::uint64_t nTimeUs)
    {
        m_buffer.push_back('\n');
        if (m_buffer.size() >= WRITTEN_BYTES) {
            flush();
            m_request.progress(nTimeUs);
        }
    }

    void flush()
    {
        m_request.write({m_buffer.data(), m_buffer.size()});
        m_buffer.clear();
    }

private:
    const RecordingExport& m_request;
    Buffer m_buffer;
};

void appendTime(Buffer& buffer, const RecordedRun& run, std::uint64_t nTimeUs)
{
    append(buffer, "{}.{:06},{}", nTimeUs / 1'000'000, nTimeUs % 1'000'000,
           isoTime(run.nStartedUnixUs + static_cast<std::int64_t>(nTimeUs)));
}

/** Makes one row of the cells of all channels at a time. */
class CsvRows
{
public:
    CsvRows(const RecordedRun& run, const RecordingExport& request)
        : m_run(run), m_request(request), m_text(request), m_cells(request.channels.size())
    {
        const std::vector<std::string> names = columnNames(request.eResolution);
        m_sNoCells = std::string(names.size(), ',');
        append(m_text.buffer(), "time_s,time_iso");
        for (const unsigned int nChannel : request.channels) {
            for (const std::string& sName : names) {
                append(m_text.buffer(), ",ch{}/{}", nChannel, sName);
            }
        }
        m_text.endRow(request.nFromUs);
    }

    template <class TRow> void add(const TRow& row)
    {
        const auto channel = std::find(m_request.channels.begin(), m_request.channels.end(), row.nChannelNumber);
        if (channel == m_request.channels.end()) {
            return;
        }
        if (m_bCells && row.nTimeUs != m_nTimeUs) {
            writeRow();
        }
        m_nTimeUs = row.nTimeUs;
        m_bCells = true;
        appendCells(m_cells[static_cast<std::size_t>(channel - m_request.channels.begin())], row);
    }

    void finish()
    {
        if (m_bCells) {
            writeRow();
        }
        m_text.flush();
    }

private:
    void writeRow()
    {
        appendTime(m_text.buffer(), m_run, m_nTimeUs);
        for (Buffer& cells : m_cells) {
            m_text.buffer().append(cells.size() > 0 ? std::string_view(cells.data(), cells.size()) : m_sNoCells);
            cells.clear();
        }
        m_text.endRow(m_nTimeUs);
        m_bCells = false;
    }

    const RecordedRun& m_run;
    const RecordingExport& m_request;
    CsvText m_text;
    std::string m_sNoCells;
    std::vector<Buffer> m_cells; // by channel
    std::uint64_t m_nTimeUs = 0;
    bool m_bCells = false;
};

RecordedRange rangeOf(const RecordedRun& run, const RecordingExport& request)
{
    RecordedRange range;
    range.nRun = run.nId;
    range.nFromUs = request.nFromUs;
    range.nToUs = request.nToUs;
    if (request.channels.size() == 1) {
        range.nChannel = request.channels.front();
    }
    return range;
}

std::string quoted(const std::string& sText)
{
    std::string sQuoted = "\"";
    for (const char c : sText) {
        sQuoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return sQuoted + "\"";
}
} // namespace

void exportSteps(const Recording& recording, const RecordedRun& run, const RecordingExport& request)
{
    CsvRows rows(run, request);
    if (request.eResolution == EResolution::Steps) {
        recording.forEachStep(rangeOf(run, request), [&](const StepSample& sample) { rows.add(sample); });
    }
    else {
        recording.forEachSummary(request.eResolution, rangeOf(run, request),
                                 [&](const StepSummary& summary) { rows.add(summary); });
    }
    rows.finish();
}

void exportEvents(const Recording& recording, const RecordedRun& run, const RecordingExport& request)
{
    CsvText text(request);
    append(text.buffer(), "time_s,time_iso,channel,kind,text,steps,detail");
    text.endRow(request.nFromUs);
    RecordedRange range = rangeOf(run, request);
    range.nChannel.reset(); // the unit's events have none
    recording.forEachEvent(range, [&](const RunEvent& event) {
        const bool bWanted = !event.nChannelNumber || std::find(request.channels.begin(), request.channels.end(),
                                                                *event.nChannelNumber) != request.channels.end();
        if (bWanted) {
            appendTime(text.buffer(), run, event.nTimeUs);
            append(text.buffer(), ",{},{},{},{},{}",
                   event.nChannelNumber ? std::to_string(*event.nChannelNumber) : std::string(),
                   runEventName(event.eEvent), quoted(event.sText), event.nSteps,
                   event.sDetail.empty() ? std::string() : quoted(event.sDetail));
            text.endRow(event.nTimeUs);
        }
    });
    text.flush();
}
