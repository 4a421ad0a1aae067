/** @file
 * What a run came to.
 */
#pragma once

#include "Unit/SafetyMonitor/SafetyViolation.h"
#include "Unit/Simulator/Scenario.h"

#include <string>
#include <vector>

/** An expectation and what the run had. */
struct ExpectationResult
{
    MeasureBand band;
    double value = NO_MEASURE;
    bool bMet = false;
};

/** @return whether a measure is as expected; not a number for both bounds expects that there is none */
bool isWithin(const MeasureBand& band, double value);

/** @return every expectation of a scenario with what became of it */
std::vector<ExpectationResult> checkExpectations(const std::vector<MeasureBand>& bands, const RunMeasures& measures);

/** A finished run. */
struct RunReport
{
    Scenario scenario;
    std::vector<ScenarioOverride> overrides;
    RunMeasures measures;
    std::vector<ExpectationResult> expectations;
    std::vector<std::string> warnings;
    std::vector<SafetyViolation> violations; /**< the first of each safety rule; the measures have their number */
    double wallSeconds = 0.0;                /**< how long it took; not part of what is the same in every run */
    std::vector<std::string> outputs;        /**< what was written, such as "run.csv (1000 rows)" */

    bool allMet() const;

    /** @return whether no safety rule was broken, or as often as the scenario expects */
    bool isSafe() const;
};

/** @return the report for people, lines that end with newlines */
std::string reportText(const RunReport& report);

/** @return the expectations that were missed, a line each; empty for none */
std::string missedText(const RunReport& report);

/** @return the breaches of safety rules with the calls that led to them; empty for none */
std::string violationsText(const RunReport& report);

/** @return the report for programs, the same text for the same run; a measure that does not exist is null */
std::string reportJson(const RunReport& report);

/** @return the command that makes the same run, to be pasted into a shell */
std::string replayCommand(const RunReport& report);
