#include "Unit/Simulator/private/EventText.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
constexpr double MOST_REPETITIONS = 50.0;

class Parts
{
public:
    template <class... TArguments> void add(const char* pFormat, const TArguments&... arguments)
    {
        m_sText += (m_sText.empty() ? "" : ", ") + fmt::format(fmt::runtime(pFormat), arguments...);
    }

    template <class TValue> void addIf(const std::optional<TValue>& value, const char* pFormat)
    {
        if (value) {
            add(pFormat, *value);
        }
    }

    void addGain(const std::optional<GainPercent>& gain, const char* pWhen)
    {
        if (gain) {
            add("gain {} {}/{}/{} %", pWhen, (*gain)[0], (*gain)[1], (*gain)[2]);
        }
    }

    const std::string& text() const { return m_sText; }

private:
    std::string m_sText;
};

void addSettings(Parts& parts, const ScenarioEvent& event)
{
    if (event.on) {
        parts.add(*event.on ? "on" : "off");
    }
    parts.addIf(event.nPowerMode, "mode {}");
    parts.addIf(event.txPminDbm, "Pmin {} dBm");
    parts.addIf(event.txPmaxDbm, "Pmax {} dBm");
    parts.addGain(event.gainPercentRamping, "ramping");
    parts.addGain(event.gainPercentOn, "on");
    if (event.productionTest) {
        parts.add("production test {}", *event.productionTest ? "on" : "off");
    }
    parts.addIf(event.nLoopMode, "loop mode {}");
}

void addFaults(std::vector<EventMark>& marks, const Scenario& scenario)
{
    for (const FaultConfiguration& fault : scenario.unit.faults) {
        marks.push_back({fault.atSeconds, fmt::format("{} {}", handlerOperationName(fault.eOperation),
                                                      handlerFaultName(fault.fault.eKind))});
        if (fault.forSeconds) {
            marks.push_back(
                {fault.atSeconds + *fault.forSeconds, fmt::format("{} works", handlerOperationName(fault.eOperation))});
        }
    }
}
} // namespace

std::string eventText(const ScenarioEvent& event)
{
    if (!event.sLabel.empty()) {
        return event.sLabel;
    }
    Parts parts;
    addSettings(parts, event);
    parts.addIf(event.requestedPowerDbm, "request {} dBm");
    parts.addIf(event.frequencyMhz, "{} MHz");
    parts.addIf(event.temperatureDegrees, "{} °C");
    for (const auto& [pKey, value] : event.transmitter) {
        parts.add("{} {}", pKey->pName, value);
    }
    return event.overSeconds > 0.0 ? fmt::format("{} over {} s", parts.text(), event.overSeconds) : parts.text();
}

std::vector<EventMark> marksOf(const Scenario& scenario)
{
    std::vector<EventMark> marks;
    for (const ScenarioEvent& event : scenario.events) {
        if (!event.everySeconds) {
            marks.push_back({event.atSeconds, eventText(event)});
            continue;
        }
        marks.push_back({event.atSeconds, fmt::format("{} (every {} s)", eventText(event), *event.everySeconds)});
        const double repetitions = (scenario.durationSeconds - event.atSeconds) / *event.everySeconds;
        for (int nTime = 1; repetitions <= MOST_REPETITIONS && nTime < repetitions; ++nTime) {
            marks.push_back({event.atSeconds + nTime * *event.everySeconds, ""});
        }
    }
    addFaults(marks, scenario);
    std::erase_if(marks, [&scenario](const EventMark& mark) { return mark.seconds >= scenario.durationSeconds; });
    std::stable_sort(marks.begin(), marks.end(),
                     [](const EventMark& a, const EventMark& b) { return a.seconds < b.seconds; });
    return marks;
}
