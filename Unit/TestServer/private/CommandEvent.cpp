#include "Unit/TestServer/private/CommandEvent.h"

#include "Unit/TestServer/private/MethodHelpers.h"
#include "Unit/Text/OneLine.h"
#include "Unit/XmlRpc/JsonXmlRpc.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <charconv>
#include <string_view>

using nlohmann::ordered_json;

namespace
{
constexpr const char* LOG_METHOD = "TI.ManageLogs"; // the one that asks for a log by its name
constexpr const char* LOG = "LogName";              // such as "Channel.0.TxOutputPowerControlLog"
constexpr std::string_view LOG_PREFIX = "Channel.";
constexpr const char* OPTION = "RequestOption";
constexpr const char* READ = "Read";
constexpr std::size_t LONGEST_TEXT = 200;
constexpr std::size_t LONGEST_DETAIL = 16384; // members that no method asks for can be of any length

/** The units that names of members end with. */
struct NamedUnit
{
    std::string_view sSuffix;
    const char* pUnit;
    int nDigits;
};

constexpr std::array<NamedUnit, 6> UNITS = {{{"Dbm", " dBm", 2},
                                             {"Mhz", " MHz", 3},
                                             {"TemperatureC", " \u00b0C", 2},
                                             {"Ms", " ms", 0},
                                             {"Us", " \u00b5s", 0},
                                             {"Percent", " %", 0}}};

const NamedUnit* unitOf(std::string_view sName)
{
    for (const NamedUnit& unit : UNITS) {
        if (sName.ends_with(unit.sSuffix)) {
            return &unit;
        }
    }
    return nullptr;
}

bool isUpper(char c)
{
    return std::isupper(static_cast<unsigned char>(c)) != 0;
}

/** @return "requested power" for "RequestedPower", and "OPC transient log" for "OPCTransientLog" */
std::string wordsOf(std::string_view sName)
{
    std::string sWords;
    for (std::size_t nAt = 0; nAt < sName.size(); ++nAt) {
        const bool bLastUpper = nAt > 0 && isUpper(sName[nAt - 1]);
        const bool bNextUpper = nAt + 1 == sName.size() || isUpper(sName[nAt + 1]);
        const bool bAcronym = isUpper(sName[nAt]) && bNextUpper && (bLastUpper || nAt + 1 < sName.size());
        if (nAt > 0 && isUpper(sName[nAt]) && !(bLastUpper && bNextUpper)) {
            sWords += ' ';
        }
        sWords += bAcronym ? sName[nAt] : static_cast<char>(std::tolower(static_cast<unsigned char>(sName[nAt])));
    }
    return sWords;
}

/** @return what a method is about: "requested power" for "Unit.SetRequestedPower" */
std::string subjectOf(std::string_view sMethod)
{
    sMethod.remove_prefix(sMethod.find('.') + 1);
    for (const std::string_view sVerb : {"Set", "Manage"}) {
        if (sMethod.starts_with(sVerb)) {
            sMethod.remove_prefix(sVerb.size());
        }
    }
    return wordsOf(sMethod);
}

std::string valueText(const std::string& sName, const ordered_json& value)
{
    const NamedUnit* const pUnit = unitOf(sName);
    if (value.is_number() && pUnit != nullptr) {
        return fmt::format("{:.{}f}{}", value.get<double>(), pUnit->nDigits, pUnit->pUnit);
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "on" : "off";
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/** @return a member as a part of the text; its name is left out where the subject says the same */
std::string memberText(const std::string& sName, const ordered_json& value, const std::string& sSubject)
{
    if (sName == "Source") {
        return "as in the unit file";
    }
    const NamedUnit* const pUnit = unitOf(sName);
    const std::string_view sBare(sName.data(), sName.size() - (pUnit == nullptr ? 0 : pUnit->sSuffix.size()));
    const std::string sWords = wordsOf(sBare);
    return sWords.empty() || sWords == sSubject ? valueText(sName, value)
                                                : fmt::format("{} {}", sWords, valueText(sName, value));
}

std::string textOf(const std::string& sMethod, const ordered_json& parameters)
{
    const std::string sSubject = subjectOf(sMethod);
    std::vector<std::pair<std::string, ordered_json>> members;
    for (const auto& item : parameters.items()) {
        const bool bChannel =
            item.key() == CHANNEL || item.key() == LOG || (parameters.is_array() && !item.value().is_string());
        if (!bChannel) {
            members.emplace_back(item.key(), item.value());
        }
    }
    if (members.size() == 1) {
        const auto& [sName, value] = members.front();
        return fmt::format("{} {}", sSubject,
                           sName == "Source" ? memberText(sName, value, sSubject) : valueText(sName, value));
    }
    std::string sText = sSubject;
    for (const auto& [sName, value] : members) {
        sText += fmt::format("{} {}", sText == sSubject ? ":" : ",", memberText(sName, value, sSubject));
    }
    return sText;
}

/** @return the only struct of a call, else an array of its parameters */
ordered_json parametersOf(XMLRPC_REQUEST request)
{
    ordered_json parameters = jsonFromXmlRpc(XMLRPC_RequestGetData(request));
    return parameters.is_array() && parameters.size() == 1 && parameters[0].is_object() ? parameters[0] : parameters;
}

unsigned int channelIn(const std::string& sMethod, const ordered_json& parameters)
{
    if (parameters.is_array()) {
        return parameters.size() > 1 && parameters[1].is_number() ? parameters[1].get<unsigned int>() : 0;
    }
    unsigned int nChannel = 0;
    if (parameters.is_object() && sMethod == LOG_METHOD && parameters.contains(LOG) && parameters[LOG].is_string()) {
        const std::string sLog = parameters[LOG].get<std::string>();
        if (sLog.starts_with(LOG_PREFIX)) {
            (void)std::from_chars(sLog.data() + LOG_PREFIX.size(), sLog.data() + sLog.size(), nChannel);
        }
    }
    else if (parameters.is_object() && parameters.contains(CHANNEL) && parameters[CHANNEL].is_number()) {
        nChannel = parameters[CHANNEL].get<unsigned int>();
    }
    return nChannel;
}

bool onlyReads(const ordered_json& parameters)
{
    if (parameters.is_array()) {
        return !parameters.empty() && parameters[0] == READ;
    }
    return parameters.is_object() && parameters.contains(OPTION) && parameters[OPTION] == READ;
}

std::string dumped(const ordered_json& json)
{
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}
} // namespace

std::optional<RunEvent> commandEvent(const Method& method, XMLRPC_REQUEST request, const CommandMoment& moment,
                                     const std::string& sFault)
{
    if (method.eChanges == EMethodChange::Nothing) {
        return std::nullopt;
    }
    ordered_json parameters = parametersOf(request);
    if (onlyReads(parameters)) {
        return std::nullopt;
    }
    RunEvent event;
    event.nTimeUs = moment.nTimeUs;
    event.nSteps = moment.nSteps;
    event.eEvent = ERunEvent::Command;
    if (method.eChanges == EMethodChange::Channel) {
        event.nChannelNumber = channelIn(method.sName, parameters);
    }
    const std::string sText = textOf(method.sName, parameters);
    event.sText = oneLine(sFault.empty() ? sText : fmt::format("{}, failed: {}", sText, sFault), LONGEST_TEXT);
    ordered_json detail = {{"method", method.sName}, {"params", parameters}};
    if (!sFault.empty()) {
        detail["fault"] = sFault;
    }
    event.sDetail = dumped(detail);
    if (event.sDetail.size() > LONGEST_DETAIL) {
        detail["params"] = nullptr;
        event.sDetail = dumped(detail);
    }
    return event;
}
