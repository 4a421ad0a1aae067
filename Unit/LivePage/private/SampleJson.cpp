#include "Unit/LivePage/SampleJson.h"

#include "Unit/Telemetry/SampleColumns.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace
{
using Samples = std::vector<const StepSample*>;

// What a single step has, and a part of a range has no mean of.
const std::array<SampleColumn, 4> STEP_COLUMNS = {{
    {"t_us", [](const StepSample& s) { return ColumnValue(static_cast<std::int64_t>(s.nTimeUs)); }},
    {"state", [](const StepSample& s) { return ColumnValue(s.nState); }},
    {"result", [](const StepSample& s) { return ColumnValue(s.nResult); }},
    {"detector_state", [](const StepSample& s) { return ColumnValue(s.nDetectorState); }},
}};

void append(fmt::memory_buffer& buffer, std::string_view text)
{
    buffer.append(text.data(), text.data() + text.size());
}

/** Appends a list, whose items a function appends. */
template <class TItems, class TAppend>
void appendList(fmt::memory_buffer& buffer, const TItems& items, TAppend appendItem)
{
    append(buffer, "[");
    bool bFirst = true;
    for (const auto& item : items) {
        append(buffer, std::exchange(bFirst, false) ? "" : ",");
        appendItem(item);
    }
    append(buffer, "]");
}

void appendValue(fmt::memory_buffer& buffer, const ColumnValue& value)
{
    if (value) {
        fmt::format_to(std::back_inserter(buffer), "{}", *value);
    }
    else {
        append(buffer, "null");
    }
}

template <class TRead> void appendColumn(fmt::memory_buffer& buffer, const Samples& samples, TRead read)
{
    appendList(buffer, samples, [&](const StepSample* pSample) { appendValue(buffer, read(*pSample)); });
}

constexpr std::array<std::size_t, std::tuple_size_v<decltype(StepSample::reducedGain)>> AMPLIFIERS = {0, 1, 2, 3, 4, 5};

void appendChannel(fmt::memory_buffer& buffer, const Samples& samples)
{
    fmt::format_to(std::back_inserter(buffer), "{{\"c\":{}", samples.front()->nChannelNumber);
    const auto appendNamed = [&](const SampleColumn& column) {
        fmt::format_to(std::back_inserter(buffer), ",\"{}\":", column.pName);
        appendColumn(buffer, samples, column.read);
    };
    std::for_each(STEP_COLUMNS.begin(), STEP_COLUMNS.end(), appendNamed);
    std::for_each(quantityColumns().begin(), quantityColumns().end(), appendNamed);
    append(buffer, ",\"reduced_gain_cdb\":");
    appendList(buffer, AMPLIFIERS, [&](std::size_t nAmplifier) {
        appendColumn(buffer, samples,
                     [nAmplifier](const StepSample& sample) { return reducedGain(sample, nAmplifier); });
    });
    append(buffer, "}");
}

/** Appends a quantity's minima, means and maxima. @param nQuantity as summaryColumns() has them */
void appendQuantity(fmt::memory_buffer& buffer, std::span<const StepSummary> parts, std::size_t nQuantity)
{
    append(buffer, "{");
    bool bFirst = true;
    for (const auto& [pName, member] :
         {std::pair("min", &QuantitySummary::nMin), std::pair("mean", &QuantitySummary::nMean),
          std::pair("max", &QuantitySummary::nMax)})
    {
        fmt::format_to(std::back_inserter(buffer), "{}\"{}\":", std::exchange(bFirst, false) ? "" : ",", pName);
        appendList(buffer, parts, [&, member = member](const StepSummary& part) {
            const auto& quantity = part.quantities.at(nQuantity);
            appendValue(buffer, quantity ? ColumnValue((*quantity).*member) : std::nullopt);
        });
    }
    append(buffer, "}");
}

template <class TField>
void appendField(fmt::memory_buffer& buffer, const char* pName, std::span<const StepSummary> parts, TField field)
{
    fmt::format_to(std::back_inserter(buffer), ",\"{}\":", pName);
    appendList(buffer, parts,
               [&](const StepSummary& part) { fmt::format_to(std::back_inserter(buffer), "{}", part.*field); });
}
} // namespace

void appendSamples(fmt::memory_buffer& buffer, std::span<const StepSample> samples)
{
    std::vector<Samples> channels;
    for (const StepSample& sample : samples) {
        channels.resize(std::max(channels.size(), sample.nChannelIndex + std::size_t{1}));
        channels[sample.nChannelIndex].push_back(&sample);
    }
    std::erase_if(channels, [](const Samples& channel) { return channel.empty(); });
    appendList(buffer, channels, [&](const Samples& channel) { appendChannel(buffer, channel); });
}

void appendSummaries(fmt::memory_buffer& buffer, unsigned int nChannel, std::span<const StepSummary> parts)
{
    const auto out = std::back_inserter(buffer);
    fmt::format_to(out, "{{\"c\":{}", nChannel);
    appendField(buffer, "t_us", parts, &StepSummary::nTimeUs);
    appendField(buffer, "n", parts, &StepSummary::nSteps);
    appendField(buffer, "failed", parts, &StepSummary::nFailedSteps);
    appendField(buffer, "state", parts, &StepSummary::nState);
    for (std::size_t nQuantity = 0; nQuantity < quantityColumns().size(); ++nQuantity) {
        fmt::format_to(out, ",\"{}\":", quantityColumns().at(nQuantity).pName);
        appendQuantity(buffer, parts, nQuantity);
    }
    append(buffer, ",\"reduced_gain_cdb\":");
    appendList(buffer, AMPLIFIERS,
               [&](std::size_t nAmplifier) { appendQuantity(buffer, parts, quantityColumns().size() + nAmplifier); });
    append(buffer, "}");
}

void appendEvents(fmt::memory_buffer& buffer, std::span<const RunEvent> events)
{
    appendList(buffer, events, [&](const RunEvent& event) {
        nlohmann::ordered_json object = {{"id", event.nId}, {"t_us", event.nTimeUs}, {"channel", nullptr}};
        if (event.nChannelNumber) {
            object["channel"] = *event.nChannelNumber;
        }
        object["kind"] = runEventName(event.eEvent);
        object["text"] = event.sText;
        append(buffer, object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    });
}
