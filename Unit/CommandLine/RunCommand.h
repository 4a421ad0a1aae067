/** @file
 * The command that runs a unit in real time.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/** What a person asks of a run. */
struct RunOptions
{
    std::string sUnitFile;
    std::optional<double> durationSeconds;
    std::optional<unsigned int> nChannels;
    double speed = 1.0;
    double startSeconds = 0.0;
    std::string sCsvFile;               /**< empty for none */
    std::string sRecordFile;            /**< of the recording; the unit file's when empty */
    std::optional<std::uint16_t> nPort; /**< of the test interface; the unit file's when empty */
    std::string sWebRoot;               /**< folder of the live page; empty for the one built in */
    bool bSafetyMonitor = false;        /**< whether every call of the controllers and handlers is judged */
    bool bTestInterface = true;         /**< false: not even where the unit file wants it */
};

/**
 * Runs a unit until its time is up or a signal stops it; shows its status and a summary on standard output.
 * @return the exit code: 0, or 1 when something failed during the run or a safety rule was broken
 * @throws ConfigurationError for bad input, with nothing left behind
 * @throws UnitStartError when the unit could not start for another reason
 */
int runUnit(const RunOptions& options);
