/** @file
 * A drive: what is asked of a transmitter, and what surrounds it, over time.
 */
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/** How a value goes from one row of a profile to the next. */
enum class EInterpolation
{
    Held,  /**< stays until the next row */
    Linear /**< moves in a straight line */
};

/** What a profile says at a time; a column that it does not have says nothing. */
struct ProfilePoint
{
    std::optional<double> requestedPowerDbm;
    std::optional<double> temperatureDegrees;
    std::optional<double> frequencyMhz;
};

/** A profile read from CSV. */
class Profile
{
public:
    /** How each column is read between rows. */
    struct Interpolation
    {
        EInterpolation eRequestedPower = EInterpolation::Held;
        EInterpolation eTemperature = EInterpolation::Linear;
        EInterpolation eFrequency = EInterpolation::Held;
    };

    /**
     * Reads a profile: a header row, time_s (ascending) and any of requested_power_dBm, temperature_C, frequency_MHz;
     * other columns are not used. Every row has a value in each column; values lie in the ranges of DriveRanges.h.
     * @throws ConfigurationError that names file, line, character and column, as CsvFile does by its strict rules
     */
    Profile(const std::string& sPath, const Interpolation& interpolation);

    /** @return what the profile says at a time; before its first row the first holds, after its last the last */
    ProfilePoint at(double seconds) const;

    /**
     * The same for one who goes forward in small steps, at the same cost however long the profile.
     * @param[in,out] nRow 0 at first; where the last call ended
     */
    ProfilePoint at(double seconds, std::size_t& nRow) const;

    double firstSecond() const { return m_seconds.front(); }
    double lastSecond() const { return m_seconds.back(); }

private:
    struct Column
    {
        EInterpolation eInterpolation = EInterpolation::Held;
        std::vector<double> values; // empty when the file does not have the column
    };

    ProfilePoint pointAt(double seconds, std::size_t nRow) const;
    std::optional<double> valueAt(const Column& column, std::size_t nRow, double seconds) const;

    std::vector<double> m_seconds;
    Column m_requestedPower;
    Column m_temperature;
    Column m_frequency;
};
