#include "Platform/Calibration/CalibrationTables.h"

#include "Platform/Calibration/private/TableRegistry.h"
#include "Platform/ConfigurationError.h"
#include "Platform/Csv/CsvFile.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace
{

void checkAxis(const std::string& sName, const char* pAxis, const std::vector<int32_t>& axis)
{
    const auto it = std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>());
    if (it != axis.end()) {
        throw ConfigurationError("calibration table " + sName + ": " + pAxis + " axis does not ascend from " +
                                 std::to_string(*it) + " to " + std::to_string(*std::next(it)) +
                                 "; give each position once, in ascending order");
    }
}

void checkGrid(const std::string& sName, const CalibrationGrid& grid)
{
    checkAxis(sName, "x", grid.xAxis);
    checkAxis(sName, "y", grid.yAxis);
    if (!grid.values.empty() && grid.values.size() != grid.xAxis.size() * grid.yAxis.size()) {
        throw ConfigurationError("calibration table " + sName + ": " + std::to_string(grid.values.size()) +
                                 " values for " + std::to_string(grid.xAxis.size()) + " by " +
                                 std::to_string(grid.yAxis.size()) +
                                 " positions; give one value for each pair of positions");
    }
}

/** Adds a field's position to an axis. */
void appendPosition(const CsvFile& file, const CsvRow& row, std::size_t nColumn, std::vector<int32_t>& axis)
{
    const int32_t nPosition = file.integer(row, nColumn);
    if (!axis.empty() && nPosition <= axis.back()) {
        throw ConfigurationError::atLine(file.path(), row.nLine,
                                         "column " + std::to_string(nColumn + 1) + ": " + std::to_string(nPosition) +
                                             " does not lie above " + std::to_string(axis.back()) +
                                             " before it; give the axis in ascending order");
    }
    axis.push_back(nPosition);
}

void appendRow(const CsvFile& file, const CsvRow& row, CalibrationGrid& grid)
{
    const std::size_t nColumns = grid.xAxis.size() + 1;
    if (row.fields.size() > nColumns) {
        throw ConfigurationError::atLine(file.path(), row.nLine,
                                         "column " + std::to_string(nColumns + 1) +
                                             " has no position on the x axis of the first row; take the field out");
    }
    appendPosition(file, row, 0, grid.yAxis);
    for (std::size_t nColumn = 1; nColumn < nColumns; ++nColumn) {
        grid.values.push_back(file.integer(row, nColumn));
    }
}

CalibrationGrid readGrid(const std::string& sPath)
{
    const CsvFile file(sPath);
    if (file.rows().empty()) {
        throw ConfigurationError::atLine(sPath, 0, "holds no table; begin with a row of a corner text and the x axis");
    }
    CalibrationGrid grid;
    const CsvRow& header = file.rows().front();
    if (header.fields.size() < 2) {
        throw ConfigurationError::atLine(sPath, header.nLine,
                                         "has no x axis; write a corner text and at least one position");
    }
    for (std::size_t nColumn = 1; nColumn < header.fields.size(); ++nColumn) {
        appendPosition(file, header, nColumn, grid.xAxis);
    }
    std::for_each(file.rows().begin() + 1, file.rows().end(),
                  [&file, &grid](const CsvRow& row) { appendRow(file, row, grid); });
    if (grid.values.empty()) {
        throw ConfigurationError::atLine(sPath, header.nLine,
                                         "no values follow the x axis; add rows of a y position and its values");
    }
    return grid;
}

} // namespace

TableRegistry& TableRegistry::get()
{
    static auto* const pRegistry = new TableRegistry;
    return *pRegistry;
}

void CalibrationTables::add(const std::string& sName, CalibrationGrid grid)
{
    checkGrid(sName, grid);
    TableRegistry& registry = TableRegistry::get();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    registry.tables[sName].grid = std::move(grid);
}

void CalibrationTables::loadFile(const std::string& sName, const std::string& sPath)
{
    add(sName, readGrid(sPath));
}

void CalibrationTables::clear()
{
    TableRegistry& registry = TableRegistry::get();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    registry.tables.clear();
}
