#include "Unit/CommandLine/private/FittedTransmitter.h"

#include "Platform/ConfigurationError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double MHZ_PER_GHZ = 1000.0;

using Setting = std::pair<double TransmitterParameters::*, double>;

const Setting* settingOf(const std::vector<Setting>& settings, double TransmitterParameters::*pField)
{
    const auto found = std::find_if(settings.begin(), settings.end(),
                                    [pField](const Setting& setting) { return setting.first == pField; });
    return found == settings.end() ? nullptr : &*found;
}

void checkRange(const FittedSweep& fitted, const TransmitterKey& key, double value)
{
    if (value < key.minimum || value > key.maximum) {
        throw ConfigurationError(
            fmt::format("no transmitter can be set like the amplifier {}: {} would be {:.2f}, and can be {} to {}{}",
                        placeText(fitted.place), key.pName, value, key.minimum, key.maximum,
                        key.pField == &TransmitterParameters::psatAboveMaxDb
                            ? fmt::format("; its saturated power is {:.2f} dBm: choose --max-power below that",
                                          fitted.fit.saturatedDbm)
                            : std::string()));
    }
}
} // namespace

std::optional<GainSlope> gainSlope(const std::vector<FittedSweep>& fits, const std::optional<double>& supplyVolts)
{
    std::vector<std::pair<double, double>> gains; // GHz, dB
    double meanGhz = 0.0;
    double meanDb = 0.0;
    for (const FittedSweep& fitted : fits) {
        if (fitted.place.frequencyMhz && fitted.place.supplyVolts == supplyVolts) {
            gains.emplace_back(*fitted.place.frequencyMhz / MHZ_PER_GHZ, fitted.fit.gainDb);
            meanGhz += gains.back().first;
            meanDb += gains.back().second;
        }
    }
    if (gains.size() < 2) {
        return std::nullopt;
    }
    meanGhz /= static_cast<double>(gains.size());
    meanDb /= static_cast<double>(gains.size());
    double products = 0.0;
    double squares = 0.0;
    for (const auto& [ghz, db] : gains) {
        products += (ghz - meanGhz) * (db - meanDb);
        squares += (ghz - meanGhz) * (ghz - meanGhz);
    }
    GainSlope slope{products / squares, 0.0, gains.size()};
    for (const auto& [ghz, db] : gains) {
        const double lineDb = meanDb + slope.perGhzDb * (ghz - meanGhz);
        slope.largestErrorDb = std::max(slope.largestErrorDb, std::abs(db - lineDb));
    }
    return slope;
}

std::vector<std::pair<std::string, double>> transmitterSettings(const FittedSweep& fitted, double maxPowerDbm,
                                                                const std::optional<GainSlope>& slope)
{
    using P = TransmitterParameters;
    std::vector<Setting> settings = {{&P::maxPowerDbm, maxPowerDbm},
                                     {&P::chainGainDb, fitted.fit.gainDb},
                                     {&P::psatAboveMaxDb, fitted.fit.saturatedDbm - maxPowerDbm},
                                     {&P::rappP, fitted.fit.rappP}};
    if (fitted.place.frequencyMhz) {
        settings.emplace_back(&P::referenceFrequencyMhz, *fitted.place.frequencyMhz);
    }
    if (slope) {
        settings.emplace_back(&P::gainPerGhzDb, slope->perGhzDb);
    }
    std::vector<std::pair<std::string, double>> named;
    for (const TransmitterKey& key : transmitterKeys()) {
        if (const Setting* pSetting = settingOf(settings, key.pField)) {
            checkRange(fitted, key, pSetting->second);
            named.emplace_back(key.pName, pSetting->second);
        }
    }
    return named;
}
