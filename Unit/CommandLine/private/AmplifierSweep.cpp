#include "Unit/CommandLine/private/AmplifierSweep.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Csv/CsvFile.h"
#include "Platform/FileText.h"
#include "Unit/Configuration/ValueRanges.h"

#include <fmt/format.h>

#include <map>
#include <utility>

namespace
{
/** A column and what its values can be. */
struct ColumnRange
{
    const char* pName;
    double lowest;
    double highest;
};

constexpr ColumnRange INPUT{"pin_dBm", -200.0, HIGHEST_POWER_DBM};
constexpr ColumnRange OUTPUT{"pout_dBm", -200.0, HIGHEST_POWER_DBM};
constexpr ColumnRange FREQUENCY{"frequency_MHz", 0.0, HIGHEST_FREQUENCY_MHZ};
constexpr ColumnRange SUPPLY{"supply_V", LOWEST_SUPPLY_VOLTS, HIGHEST_SUPPLY_VOLTS};

/** One of the file's columns, if it has it. */
class Column
{
public:
    Column(const CsvFile& file, const ColumnRange& range)
        : m_file(file), m_range(range), m_nColumn(file.column(range.pName))
    {}

    bool isThere() const { return m_nColumn.has_value(); }

    double number(const CsvRow& row) const
    {
        const double value = readNumber(row);
        if (value < m_range.lowest || value > m_range.highest) {
            throw ConfigurationError::atLine(m_file.path(), row.nLine,
                                             fmt::format("column {}: {} ({}) can be {} to {}", *m_nColumn + 1,
                                                         quotedForMessage(row.fields[*m_nColumn]), m_range.pName,
                                                         m_range.lowest, m_range.highest));
        }
        return value;
    }

    std::optional<double> numberIfThere(const CsvRow& row) const
    {
        return isThere() ? std::optional<double>(number(row)) : std::nullopt;
    }

private:
    double readNumber(const CsvRow& row) const
    {
        try {
            return m_file.number(row, *m_nColumn);
        }
        catch (const ConfigurationError& error) {
            throw ConfigurationError(fmt::format("{} ({})", error.what(), m_range.pName));
        }
    }

    const CsvFile& m_file;
    ColumnRange m_range;
    std::optional<std::size_t> m_nColumn;
};

/** Columns that the file must have, and rows below them. */
void checkHeader(const CsvFile& file)
{
    if (file.rows().empty()) {
        throw ConfigurationError::atLine(file.path(), 0,
                                         fmt::format("the file is empty; begin it with a header row that names {} "
                                                     "and {}",
                                                     INPUT.pName, OUTPUT.pName));
    }
    const CsvRow& header = file.rows().front();
    for (const ColumnRange& needed : {INPUT, OUTPUT}) {
        if (!file.column(needed.pName)) {
            throw ConfigurationError::atLine(file.path(), header.nLine,
                                             fmt::format("the header row has no column {}, it begins {}; name {} and "
                                                         "{} in the first row, and {} and {} if there are several",
                                                         needed.pName, quotedForMessage(header.fields.front()),
                                                         INPUT.pName, OUTPUT.pName, FREQUENCY.pName, SUPPLY.pName));
        }
    }
    if (file.rows().size() == 1) {
        throw ConfigurationError::atLine(
            file.path(), header.nLine,
            fmt::format("there is no row after the header row; add at least {}", LEAST_AMPLIFIER_POINTS));
    }
}
} // namespace

std::vector<AmplifierSweep> readAmplifierSweeps(const std::string& sPath)
{
    const CsvFile file(sPath);
    checkHeader(file);
    const Column input(file, INPUT);
    const Column output(file, OUTPUT);
    const Column frequency(file, FREQUENCY);
    const Column supply(file, SUPPLY);

    std::map<std::pair<std::optional<double>, std::optional<double>>, AmplifierSweep> sweeps;
    for (auto row = file.rows().begin() + 1; row != file.rows().end(); ++row) {
        const SweepPlace place{frequency.numberIfThere(*row), supply.numberIfThere(*row)};
        AmplifierSweep& sweep =
            sweeps.try_emplace({place.frequencyMhz, place.supplyVolts}, AmplifierSweep{place, row->nLine, {}})
                .first->second;
        sweep.points.push_back({input.number(*row), output.number(*row)});
    }
    std::vector<AmplifierSweep> ordered;
    ordered.reserve(sweeps.size());
    for (auto& [place, sweep] : sweeps) {
        ordered.push_back(std::move(sweep));
    }
    return ordered;
}

std::string placeText(const SweepPlace& place)
{
    if (place.frequencyMhz && place.supplyVolts) {
        return fmt::format("at {} MHz and {} V", *place.frequencyMhz, *place.supplyVolts);
    }
    if (place.frequencyMhz) {
        return fmt::format("at {} MHz", *place.frequencyMhz);
    }
    return place.supplyVolts ? fmt::format("at {} V", *place.supplyVolts) : "in the file";
}
