#include "Unit/LivePage/private/ReplayJson.h"

#include "Unit/LivePage/private/BadRequest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace
{
constexpr const char* MEMBERS = "send a JSON object with paused, position_us or speed";
constexpr std::size_t LONGEST_QUOTE = 40;

/** @return a value as an answer quotes it */
std::string jsonText(const nlohmann::json& value)
{
    const std::string sText = value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
    return sText.size() <= LONGEST_QUOTE ? sText : sText.substr(0, LONGEST_QUOTE) + "...";
}

bool readPaused(const nlohmann::json& value)
{
    if (!value.is_boolean()) {
        throw BadRequest(fmt::format("paused is {}; it has to be true or false", jsonText(value)));
    }
    return value.get<bool>();
}

std::uint64_t readPosition(const nlohmann::json& value, const ReplayState& state)
{
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < state.nFromUs ||
        value.get<std::uint64_t>() > state.nToUs)
    {
        throw BadRequest(fmt::format("position_us is {}; it has to be whole microseconds from {} to {}",
                                     jsonText(value), state.nFromUs, state.nToUs));
    }
    return value.get<std::uint64_t>();
}

unsigned int readSpeed(const nlohmann::json& value)
{
    for (const unsigned int nSpeed : REPLAY_SPEEDS) {
        if (value.is_number_unsigned() && value.get<std::uint64_t>() == nSpeed) {
            return nSpeed;
        }
    }
    throw BadRequest(
        fmt::format("speed is {}; it has to be one of {}", jsonText(value), fmt::join(REPLAY_SPEEDS, ", ")));
}
} // namespace

nlohmann::ordered_json replayJson(const ReplayState& state)
{
    return {{"from_us", state.nFromUs},
            {"to_us", state.nToUs},
            {"position_us", state.nPositionUs},
            {"speed", state.nSpeed},
            {"paused", state.bPaused}};
}

ReplayChange readReplayChange(const std::string& sBody, const ReplayState& state)
{
    const nlohmann::json body = nlohmann::json::parse(sBody, nullptr, false);
    if (!body.is_object() || body.empty()) {
        throw BadRequest(MEMBERS);
    }
    ReplayChange change;
    for (const auto& [sName, value] : body.items()) {
        if (sName == "paused") {
            change.bPaused = readPaused(value);
        }
        else if (sName == "position_us") {
            change.nPositionUs = readPosition(value, state);
        }
        else if (sName == "speed") {
            change.nSpeed = readSpeed(value);
        }
        else {
            throw BadRequest(fmt::format("{} is nothing that a replay has; {}", jsonText(sName), MEMBERS));
        }
    }
    return change;
}
