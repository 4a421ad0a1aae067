#include "Simulation/Scenario/Profile.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Csv/CsvFile.h"
#include "Platform/FileText.h"
#include "Simulation/Scenario/DriveRanges.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace
{
/** A column that a drive may have, and what its values may be. */
struct DriveColumn
{
    const char* pName;
    double lowest;
    double highest;
};

constexpr DriveColumn TIME{"time_s", 0.0, LONGEST_RUN_SECONDS};
constexpr DriveColumn POWER{"requested_power_dBm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM};
constexpr DriveColumn TEMPERATURE{"temperature_C", COLDEST_DEGREES, HOTTEST_DEGREES};
constexpr DriveColumn FREQUENCY{"frequency_MHz", 0.0, HIGHEST_FREQUENCY_MHZ};

/** @return a limit without an exponent */
std::string limitText(double limit)
{
    std::array<char, 32> text{};
    const std::to_chars_result result =
        std::to_chars(text.data(), text.data() + text.size(), limit, std::chars_format::fixed);
    return {text.data(), result.ptr};
}

double readNumber(const CsvFile& file, const CsvRow& row, std::size_t nColumn, const DriveColumn& column)
{
    const double value = file.number(row, nColumn);
    if (value < column.lowest || value > column.highest) {
        throw file.errorAt(row, nColumn,
                           " is out of range; write a number from " + limitText(column.lowest) + " to " +
                               limitText(column.highest));
    }
    return value;
}

/** @return the column's values over all data rows; none when the file does not have the column */
std::vector<double> readColumn(const CsvFile& file, const DriveColumn& column)
{
    std::vector<double> values;
    if (const std::optional<std::size_t> nColumn = file.column(column.pName)) {
        values.reserve(file.rows().size() - 1);
        for (auto row = file.rows().begin() + 1; row != file.rows().end(); ++row) {
            values.push_back(readNumber(file, *row, *nColumn, column));
        }
    }
    return values;
}

/** @return an error at the beginning of the header row */
ConfigurationError headerError(const CsvFile& file, const std::string& sText)
{
    const CsvPlace place = file.rows().front().places.front();
    return ConfigurationError::atColumn(file.path(), place.nLine, place.nColumn, sText);
}

void checkRows(const CsvFile& file)
{
    if (file.rows().empty()) {
        throw ConfigurationError::atLine(file.path(), 0,
                                         std::string("the file is empty; begin it with a header row that names ") +
                                             TIME.pName + " and the columns to use");
    }
    if (!file.column(TIME.pName)) {
        throw headerError(file, std::string("the header row has no column ") + TIME.pName + ", it begins " +
                                    quotedForMessage(file.rows().front().fields.front()) +
                                    "; name the columns in the first row");
    }
    if (!file.column(POWER.pName) && !file.column(TEMPERATURE.pName) && !file.column(FREQUENCY.pName)) {
        throw headerError(file, std::string("the header row names no column to use; add ") + POWER.pName + ", " +
                                    TEMPERATURE.pName + " or " + FREQUENCY.pName);
    }
    if (file.rows().size() == 1) {
        throw headerError(file, "there is no row after the header row; add at least one");
    }
}

void checkAscending(const CsvFile& file, const std::vector<double>& seconds)
{
    const auto late = std::adjacent_find(seconds.begin(), seconds.end(),
                                         [](double earlier, double later) { return later <= earlier; });
    if (late == seconds.end()) {
        return;
    }
    const auto nRow = static_cast<std::size_t>(late - seconds.begin()) + 2; // the later one, after the header row
    const std::size_t nColumn = *file.column(TIME.pName);
    throw file.errorAt(file.rows()[nRow], nColumn,
                       " is not later than " + quotedForMessage(file.rows()[nRow - 1].fields[nColumn]) +
                           " in the row before; order the rows by ascending time");
}
} // namespace

Profile::Profile(const std::string& sPath, const Interpolation& interpolation)
{
    const CsvFile file(sPath, ECsvRules::Strict);
    checkRows(file);
    m_seconds = readColumn(file, TIME);
    checkAscending(file, m_seconds);
    m_requestedPower = {interpolation.eRequestedPower, readColumn(file, POWER)};
    m_temperature = {interpolation.eTemperature, readColumn(file, TEMPERATURE)};
    m_frequency = {interpolation.eFrequency, readColumn(file, FREQUENCY)};
}

ProfilePoint Profile::at(double seconds) const
{
    const auto next = std::upper_bound(m_seconds.begin(), m_seconds.end(), seconds);
    return pointAt(seconds, static_cast<std::size_t>(std::max<std::ptrdiff_t>(next - m_seconds.begin() - 1, 0)));
}

ProfilePoint Profile::at(double seconds, std::size_t& nRow) const
{
    if (seconds < m_seconds[nRow]) {
        nRow = 0;
    }
    while (nRow + 1 < m_seconds.size() && m_seconds[nRow + 1] <= seconds) {
        ++nRow;
    }
    return pointAt(seconds, nRow);
}

ProfilePoint Profile::pointAt(double seconds, std::size_t nRow) const
{
    return {valueAt(m_requestedPower, nRow, seconds), valueAt(m_temperature, nRow, seconds),
            valueAt(m_frequency, nRow, seconds)};
}

std::optional<double> Profile::valueAt(const Column& column, std::size_t nRow, double seconds) const
{
    if (column.values.empty()) {
        return std::nullopt;
    }
    const double value = column.values[nRow];
    if (column.eInterpolation == EInterpolation::Held || seconds <= m_seconds[nRow] || nRow + 1 == column.values.size())
    {
        return value;
    }
    const double share = (seconds - m_seconds[nRow]) / (m_seconds[nRow + 1] - m_seconds[nRow]);
    return value + share * (column.values[nRow + 1] - value);
}
