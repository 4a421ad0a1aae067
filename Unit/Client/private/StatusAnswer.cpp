#include "Unit/Client/private/AnswerFields.h"
#include "Unit/Client/private/AnswerTables.h"

#include <fmt/format.h>

#include <array>

using nlohmann::ordered_json;

namespace
{
/** A member as a column for programs. */
struct Column
{
    const char* pHeading;
    const char* pMember;
};

constexpr std::array<Column, 21> CHANNEL_COLUMNS = {{
    {"channel", "RadioChannelID"},
    {"state", "State"},
    {"tx_power", "TxPower"},
    {"power_mode", "PowerMode"},
    {"requested_power_dBm", "RequestedPowerDbm"},
    {"requested_power_source", "RequestedPowerSource"},
    {"target_power_dBm", "TargetPowerDbm"},
    {"control_power_dBm", "ControlPowerDbm"},
    {"measured_power_dBm", "MeasuredPowerDbm"},
    {"predicted_power_dBm", "PredictedPowerDbm"},
    {"power_error_dB", "PowerErrorDb"},
    {"detector_state", "DetectorState"},
    {"tx_pmin_dBm", "TxPminDbm"},
    {"tx_pmax_dBm", "TxPmaxDbm"},
    {"frequency_MHz", "FrequencyMhz"},
    {"frequency_source", "FrequencySource"},
    {"production_test", "ProductionTest"},
    {"loop_mode", "LoopMode"},
    {"steps", "Steps"},
    {"failed_steps", "FailedSteps"},
    {"refused_calls", "RefusedCalls"},
}};

constexpr std::array<Column, 10> UNIT_COLUMNS = {{
    {"interval_ms", "IntervalMs"},
    {"uptime_s", "UptimeS"},
    {"temperature_C", "TemperatureC"},
    {"temperature_source", "TemperatureSource"},
    {"overruns", "Overruns"},
    {"lateness_mean_us", "LatenessMeanUs"},
    {"lateness_max_us", "LatenessMaxUs"},
    {"dropped_samples", "DroppedSamples"},
    {"commands", "Commands"},
    {"longest_command_us", "LongestCommandUs"},
}};

Table statusCsv(const ordered_json& answer)
{
    Table table;
    for (const Column& column : CHANNEL_COLUMNS) {
        table.headings.emplace_back(column.pHeading);
    }
    for (const Column& column : UNIT_COLUMNS) {
        table.headings.emplace_back(column.pHeading);
    }
    const AnswerFields unit(answer, "");
    for (const ordered_json& object : arrayOf(answer, "Channels")) {
        const AnswerFields channel(object, "");
        std::vector<std::string>& row = table.rows.emplace_back();
        for (const Column& column : CHANNEL_COLUMNS) {
            row.push_back(channel.plain(column.pMember));
        }
        for (const Column& column : UNIT_COLUMNS) {
            row.push_back(unit.plain(column.pMember));
        }
    }
    return table;
}

std::string withSource(const std::string& sValue, const AnswerFields& fields, const char* pSource)
{
    return fields.has(pSource) ? fmt::format("{} ({})", sValue, fields.plain(pSource)) : sValue;
}

std::string productionTest(const AnswerFields& channel)
{
    const std::string sOn = channel.plain("ProductionTest");
    return sOn == "true" ? "on, loop mode " + channel.plain("LoopMode") : (sOn == "false" ? "off" : sOn);
}

/** A line of the table for people, a channel in each column. */
struct Line
{
    const char* pLabel;
    std::string (*text)(const AnswerFields& channel);
};

constexpr std::array<Line, 16> LINES = {{
    {"state", [](const AnswerFields& channel) { return channel.plain("State"); }},
    {"transmitter", [](const AnswerFields& channel) { return channel.plain("TxPower"); }},
    {"power mode", [](const AnswerFields& channel) { return channel.plain("PowerMode"); }},
    {"requested dBm",
     [](const AnswerFields& channel) {
         return withSource(channel.number("RequestedPowerDbm", 2), channel, "RequestedPowerSource");
     }},
    {"target dBm", [](const AnswerFields& channel) { return channel.number("TargetPowerDbm", 2); }},
    {"control dBm", [](const AnswerFields& channel) { return channel.number("ControlPowerDbm", 2); }},
    {"measured dBm", [](const AnswerFields& channel) { return channel.number("MeasuredPowerDbm", 2); }},
    {"predicted dBm", [](const AnswerFields& channel) { return channel.number("PredictedPowerDbm", 2); }},
    {"error dB", [](const AnswerFields& channel) { return channel.number("PowerErrorDb", 2); }},
    {"detector state", [](const AnswerFields& channel) { return channel.plain("DetectorState"); }},
    {"limits dBm",
     [](const AnswerFields& channel) {
         return channel.number("TxPminDbm", 2) + " to " + channel.number("TxPmaxDbm", 2);
     }},
    {"frequency MHz",
     [](const AnswerFields& channel) {
         return withSource(channel.number("FrequencyMhz", 3), channel, "FrequencySource");
     }},
    {"production test", productionTest},
    {"steps", [](const AnswerFields& channel) { return channel.number("Steps", 0); }},
    {"failed steps", [](const AnswerFields& channel) { return channel.number("FailedSteps", 0); }},
    {"refused calls", [](const AnswerFields& channel) { return channel.number("RefusedCalls", 0); }},
}};

std::string unitText(const AnswerFields& unit)
{
    return fmt::format("interval {} ms, up {} s, temperature {}\n"
                       "overruns {}, lateness mean {} us, max {} us, dropped samples {}\n"
                       "commands {}, longest {} us\n\n",
                       unit.plain("IntervalMs"), unit.number("UptimeS", 1),
                       withSource(unit.number("TemperatureC", 1) + " C", unit, "TemperatureSource"),
                       unit.number("Overruns", 0), unit.number("LatenessMeanUs", 0), unit.number("LatenessMaxUs", 0),
                       unit.number("DroppedSamples", 0), unit.number("Commands", 0),
                       unit.number("LongestCommandUs", 0));
}

std::string statusText(const ordered_json& answer)
{
    const std::string sMissing = "-";
    Table table{{"channel"}, {}};
    for (const Line& line : LINES) {
        table.rows.push_back({line.pLabel});
    }
    for (const ordered_json& object : arrayOf(answer, "Channels")) {
        const AnswerFields channel(object, sMissing);
        table.headings.push_back(channel.plain("RadioChannelID"));
        for (std::size_t nLine = 0; nLine < LINES.size(); ++nLine) {
            table.rows[nLine].push_back(LINES.at(nLine).text(channel));
        }
    }
    return unitText(AnswerFields(answer, sMissing)) + alignedText(table);
}
} // namespace

const AnswerForm STATUS_FORM = {statusText, statusCsv};
