#include "Unit/Client/private/AnswerTables.h"

#include "Unit/Client/private/AnswerFields.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

using nlohmann::ordered_json;

namespace
{
constexpr std::size_t DETECTOR_STATES = 3;
constexpr const char* FOR_PEOPLE = "-"; // what they see where nothing came
constexpr const char* FOR_PROGRAMS = "";

Table gainTable(const ordered_json& answer)
{
    Table table{{"state", "detector_state_0_percent", "detector_state_1_percent", "detector_state_2_percent"}, {}};
    for (const char* pState : {"Ramping", "On"}) {
        const ordered_json& gains = arrayOf(answer, pState);
        std::vector<std::string> row = {pState[0] == 'R' ? "ramping" : "on"};
        for (std::size_t nState = 0; nState < DETECTOR_STATES; ++nState) {
            row.push_back(nState < gains.size() ? plainText(gains[nState]) : "");
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

std::string gainText(const ordered_json& answer)
{
    Table table = gainTable(answer);
    table.headings = {"gain in % for detector state", "0", "1", "2"};
    return alignedText(table);
}

Table transientTable(const ordered_json& answer, const char* pMissing, std::vector<std::string> headings)
{
    Table table{std::move(headings), {}};
    for (const ordered_json& sample : arrayOf(answer, "OPCLog")) {
        const AnswerFields fields(sample, pMissing);
        table.rows.push_back({fmt::format("{}", table.rows.size() + 1), fields.power("TxRfPowerSet"),
                              fields.power("TxRfPowerTarget"), fields.power("TxRfDetectedPower"),
                              fields.power("TxIfPower"), fields.gain("TxRfGain")});
    }
    return table;
}

std::string transientText(const ordered_json& answer)
{
    return alignedText(
        transientTable(answer, FOR_PEOPLE, {"sample", "set dBm", "target dBm", "detected dBm", "IF dBm", "gain dB"}));
}

Table transientCsv(const ordered_json& answer)
{
    return transientTable(answer, FOR_PROGRAMS,
                          {"sample", "tx_rf_power_set_dBm", "tx_rf_power_target_dBm", "tx_rf_detected_power_dBm",
                           "tx_if_power_dBm", "tx_rf_gain_dB"});
}

/** @return the statistics, whose name carries the channel and may be cut */
const ordered_json& opcLogOf(const ordered_json& answer)
{
    if (answer.is_object()) {
        for (const auto& item : answer.items()) {
            if (item.value().is_array() && item.key().find(".TxOutputPowerControl") != std::string::npos) {
                return item.value();
            }
        }
    }
    throw std::runtime_error("the unit's answer has no output power control log; --json shows what came");
}

Table opcLogTable(const ordered_json& answer, const char* pMissing)
{
    Table table{{"object", "unit", "actual", "minimum", "maximum"}, {}};
    for (const ordered_json& object : opcLogOf(answer)) {
        const AnswerFields fields(object, pMissing);
        const std::string sName = fields.plain("ObjectName");
        std::vector<std::string> row = {sName, sName.find("Power") == std::string::npos ? "dB" : "dBm"};
        const bool bPower = row.back() == "dBm";
        for (const char* pMember : {"ActualValue", "MinValue", "MaxValue"}) {
            row.push_back(bPower ? fields.power(pMember) : fields.gain(pMember));
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

std::string opcLogText(const ordered_json& answer)
{
    return alignedText(opcLogTable(answer, FOR_PEOPLE));
}

Table opcLogCsv(const ordered_json& answer)
{
    return opcLogTable(answer, FOR_PROGRAMS);
}

/** @return a table with a row for each struct of an array and a column for each of its members */
Table memberTable(const ordered_json& structs, std::vector<std::string> headings,
                  const std::vector<const char*>& members)
{
    Table table{std::move(headings), {}};
    for (const ordered_json& object : structs) {
        const AnswerFields fields(object, FOR_PROGRAMS);
        std::vector<std::string>& row = table.rows.emplace_back();
        for (const char* pMember : members) {
            row.push_back(fields.plain(pMember));
        }
    }
    return table;
}

Table traceLevelTable(const ordered_json& answer)
{
    return memberTable(arrayOf(answer, "Groups"), {"group", "level"}, {"Group", "Level"});
}

Table faultTable(const ordered_json& answer)
{
    return memberTable(arrayOf(answer, "Faults"), {"operation", "kind", "times", "value", "delay_us", "probability"},
                       {"Operation", "Kind", "Times", "Value", "DelayUs", "Probability"});
}

std::string faultText(const ordered_json& answer)
{
    Table table = faultTable(answer);
    table.headings.back() = "delay us";
    return table.rows.empty() ? "no faults are set\n" : alignedText(table);
}

std::string traceLevelText(const ordered_json& answer)
{
    return alignedText(traceLevelTable(answer));
}
} // namespace

const AnswerForm GAIN_FORM = {gainText, gainTable};
const AnswerForm TRANSIENT_LOG_FORM = {transientText, transientCsv};
const AnswerForm OPC_LOG_FORM = {opcLogText, opcLogCsv};
const AnswerForm TRACE_LEVEL_FORM = {traceLevelText, traceLevelTable};
const AnswerForm FAULT_FORM = {faultText, faultTable};
