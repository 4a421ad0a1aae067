/** @file
 * The calibration tables of the process.
 */
#pragma once

#include "Platform/Calibration/private/CCalibrationTable.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>

/** Tables by name. */
struct TableRegistry
{
    std::mutex mutex;
    // Addresses of a map's values hold whatever is added.
    std::map<std::string, CCalibrationTable, std::less<>> tables;

    /** @return the one of the process; never destroyed, since tables are valid while the process runs */
    static TableRegistry& get();
};
