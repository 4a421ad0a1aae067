#include "Simulation/Scenario/Profile.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Csv/CsvFile.h"

#include <algorithm>

namespace
{
const char* const TIME_COLUMN = "time_s";
const char* const POWER_COLUMN = "requested_power_dBm";
const char* const TEMPERATURE_COLUMN = "temperature_C";
const char* const FREQUENCY_COLUMN = "frequency_MHz";

double readNumber(const CsvFile& file, const CsvRow& row, std::size_t nColumn, const char* pName)
{
    try {
        return file.number(row, nColumn);
    }
    catch (const ConfigurationError& error) {
        throw ConfigurationError(std::string(error.what()) + " (" + pName + ")");
    }
}

/** @return the column's values over all data rows; none when the file does not have the column */
std::vector<double> readColumn(const CsvFile& file, const char* pName)
{
    std::vector<double> values;
    if (const std::optional<std::size_t> nColumn = file.column(pName)) {
        values.reserve(file.rows().size() - 1);
        for (auto row = file.rows().begin() + 1; row != file.rows().end(); ++row) {
            values.push_back(readNumber(file, *row, *nColumn, pName));
        }
    }
    return values;
}

void checkRows(const CsvFile& file)
{
    if (file.rows().empty()) {
        throw ConfigurationError::atLine(file.path(), 0,
                                         std::string("the file is empty; begin it with a header row that names ") +
                                             TIME_COLUMN + " and the columns to use");
    }
    const CsvRow& header = file.rows().front();
    if (!file.column(TIME_COLUMN)) {
        throw ConfigurationError::atLine(file.path(), header.nLine,
                                         std::string("the header row has no column ") + TIME_COLUMN + ", it begins \"" +
                                             header.fields.front() + "\"; name the columns in the first row");
    }
    if (!file.column(POWER_COLUMN) && !file.column(TEMPERATURE_COLUMN) && !file.column(FREQUENCY_COLUMN)) {
        throw ConfigurationError::atLine(file.path(), header.nLine,
                                         std::string("the header row names no column to use; add ") + POWER_COLUMN +
                                             ", " + TEMPERATURE_COLUMN + " or " + FREQUENCY_COLUMN);
    }
    if (file.rows().size() == 1) {
        throw ConfigurationError::atLine(file.path(), header.nLine,
                                         "there is no row after the header row; add at least one");
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
    const CsvRow& row = file.rows()[nRow];
    const std::size_t nColumn = *file.column(TIME_COLUMN);
    throw ConfigurationError::atLine(file.path(), row.nLine,
                                     std::string("column ") + TIME_COLUMN + " reads \"" + row.fields[nColumn] +
                                         "\" after \"" + file.rows()[nRow - 1].fields[nColumn] +
                                         "\"; order the rows by ascending time");
}
} // namespace

Profile::Profile(const std::string& sPath, const Interpolation& interpolation)
{
    const CsvFile file(sPath);
    checkRows(file);
    m_seconds = readColumn(file, TIME_COLUMN);
    checkAscending(file, m_seconds);
    m_requestedPower = {interpolation.eRequestedPower, readColumn(file, POWER_COLUMN)};
    m_temperature = {interpolation.eTemperature, readColumn(file, TEMPERATURE_COLUMN)};
    m_frequency = {interpolation.eFrequency, readColumn(file, FREQUENCY_COLUMN)};
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
