/** @file
 * What a recording says of a run, besides its steps and events.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Process/RegulationLoop.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** A file that the run was started with. */
struct RecordedFile
{
    std::string sKind; /**< "unit", "storage", "calibration" or "profile" */
    std::string sName; /**< as the unit file writes it; of the unit file itself, as it was named */
    std::string sContent;

    bool operator==(const RecordedFile&) const = default;
};

/** A run of a unit, and all that it takes to run it again. */
struct RecordedRun
{
    std::int64_t nId = 0;            /**< in the file: 1, 2, ... */
    std::string sRun;                /**< tells runs apart, also those of other files */
    std::int64_t nStartedUnixUs = 0; /**< when the first step was due */
    unsigned int intervalMs = 6;     /**< at the start */
    double speed = 1.0;
    double startSeconds = 0.0;             /**< where in the profile it began */
    std::string sVersion;                  /**< of the program */
    std::optional<std::uint64_t> nEndedUs; /**< time of the last step; none while it goes on, or when it was cut off */
    std::vector<unsigned int> channels;    /**< numbers, in the order of their indices */
    std::vector<ModuleConfiguration> modules;
    std::vector<RecordedFile> files; /**< the unit file first */
};

/**
 * Describes a run that is about to begin, with the files as they are now. The token of the test interface, which is a
 * secret, is left out.
 * @throws ConfigurationError when a file cannot be read
 */
RecordedRun describeRun(const UnitConfiguration& unit, const RunSettings& settings, std::string sVersion);
