/** @file
 * Fills the calibration handler.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <cstdint>
#include <string>
#include <vector>

/** A rectangular grid of values over two ascending axes. */
struct CalibrationGrid
{
    std::vector<int32_t> xAxis;  /**< ascending, at least one */
    std::vector<int32_t> yAxis;  /**< ascending, at least one */
    std::vector<int32_t> values; /**< row by row: values[y * xAxis.size() + x] */
};

/** The unit's calibration tables. Fill them before the start-up phases, from one thread. */
class EAF_PUBLIC CalibrationTables
{
public:
    /**
     * Adds a table, replacing one of that name. A grid without values makes a table that is not valid.
     * @throws ConfigurationError when an axis does not ascend or the values do not fill the grid
     */
    static void add(const std::string& sName, CalibrationGrid grid);

    /**
     * Adds a table from a CSV file: the first row holds a corner text and the x axis, each further row a y and its
     * values; all integers in the table's own units.
     * @throws ConfigurationError that names the file, line and column; nothing is added then
     */
    static void loadFile(const std::string& sName, const std::string& sPath);

    /** Forgets all tables; those given out before are invalid afterwards. */
    static void clear();
};
