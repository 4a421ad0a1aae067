#include "Unit/Text/PowerText.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

const char* controllerStateName(std::int32_t nState)
{
    static constexpr std::array<const char*, eOPC_UNDEFINED + 1> NAMES = {"TX_OFF_INITIATED",
                                                                          "TX_OFF_IN_PROGRESS",
                                                                          "TX_OFF",
                                                                          "DELAYED_TX_ON_INITIATED",
                                                                          "DELAYED_TX_ON_IN_PROGRESS",
                                                                          "TX_ON_INITIATED",
                                                                          "TX_ON_IN_PROGRESS",
                                                                          "TX_ON_RAMPING",
                                                                          "TX_ON",
                                                                          "UNDEFINED"};
    return nState >= 0 && nState < static_cast<std::int32_t>(NAMES.size()) ? NAMES.at(static_cast<std::size_t>(nState))
                                                                           : "UNKNOWN";
}

std::string decibelText(std::int32_t nCentiDb)
{
    return fmt::format("{:.2f}", nCentiDb / 100.0);
}

std::string powerText(std::int32_t nCentiDbm)
{
    const bool bMarker = nCentiDbm == OPC_POWER_OFF || nCentiDbm == OPC_POWER_UNKNOWN;
    return bMarker ? std::string("off") : decibelText(nCentiDbm);
}

std::int32_t nearestInteger(double value)
{
    constexpr double LIMIT = 1e7;
    if (!(value > -LIMIT)) {
        return static_cast<std::int32_t>(-LIMIT);
    }
    return static_cast<std::int32_t>(std::lround(value < LIMIT ? value : LIMIT));
}

std::int32_t centiDb(double decibels)
{
    return nearestInteger(decibels * 100.0);
}
