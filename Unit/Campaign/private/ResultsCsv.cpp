#include "Unit/Campaign/ResultsCsv.h"

#include "Unit/Files/NewFile.h"
#include "Unit/Text/Table.h"

#include <fmt/format.h>

#include <cmath>
#include <vector>

namespace
{
std::string headerLine(const SweepDefinition& definition)
{
    std::vector<std::string> cells = {"run", "seed"};
    for (const SweepParameter& parameter : definition.parameters) {
        cells.push_back(parameter.sPath);
    }
    for (const RunMeasureKey& key : runMeasureKeys()) {
        cells.emplace_back(key.pName);
    }
    cells.emplace_back("error");
    return csvLine(cells);
}

std::string rowLine(const ResultRow& row)
{
    std::vector<std::string> cells = {fmt::format("{}", row.nNumber), fmt::format("{}", row.nSeed)};
    for (const SweepValue& value : row.values) {
        const bool bQuoted = value.sToml.starts_with('"');
        cells.push_back(bQuoted ? value.sToml.substr(1, value.sToml.size() - 2) : value.sToml);
    }
    for (const RunMeasureKey& key : runMeasureKeys()) {
        const double measure = row.measures.*key.pField;
        cells.push_back(row.failed() || std::isnan(measure) ? "" : fmt::format("{}", measure));
    }
    cells.push_back(row.sError);
    return csvLine(cells);
}
} // namespace

void writeResultsCsv(const ResultsFile& results, const std::string& sPath)
{
    NewFile file(sPath);
    file.write(headerLine(results.definition()));
    results.forEach([&file](const ResultRow& row) { file.write(rowLine(row)); });
    file.finish();
}
