/** @file
 * What a scenario file says.
 */
#pragma once

#include "Simulation/Scenario/MeasureSettings.h"
#include "Simulation/Scenario/RunMeasures.h"
#include "Unit/Configuration/UnitConfiguration.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/** What happens at a time of a run. What is empty stays as it is. */
struct ScenarioEvent
{
    double atSeconds = 0.0;             /**< since the run began */
    double overSeconds = 0.0;           /**< the moving values get to theirs in a straight line over this time */
    std::optional<double> everySeconds; /**< happens again and again, to the end of the run */
    std::string sLabel;

    std::optional<bool> on;
    std::optional<int> nPowerMode;
    std::optional<double> txPminDbm;
    std::optional<double> txPmaxDbm;
    std::optional<GainPercent> gainPercentRamping;
    std::optional<GainPercent> gainPercentOn;
    std::optional<bool> productionTest;
    std::optional<int> nLoopMode;

    // The moving values.
    std::optional<double> requestedPowerDbm;
    std::optional<double> frequencyMhz;
    std::optional<double> temperatureDegrees;
    std::vector<std::pair<const TransmitterKey*, double>> transmitter; /**< keys of transmitterKeys() */
};

/** A recorded drive: what moves requested power, temperature and frequency unless an event has set them. */
struct DriveConfiguration
{
    std::string sFile; /**< path, complete; empty for none */
    Profile::Interpolation interpolation;
    double startSeconds = 0.0; /**< where in the drive the run begins */
    bool bRepeat = false;      /**< begins anew at its end; otherwise its last row holds */
};

/**
 * What a measure has to be for the scenario to have gone as expected. Both bounds are NO_MEASURE where the run must not
 * have the measure at all.
 */
struct MeasureBand
{
    const RunMeasureKey* pMeasure;
    double minimum; /**< -infinity for none */
    double maximum; /**< infinity for none */
};

/** One channel's run in virtual time. */
struct Scenario
{
    std::string sPath; /**< of the file itself */
    std::string sTitle;
    std::string sDescription;
    double durationSeconds = 0.0;
    UnitConfiguration unit; /**< one channel, the scenario's faults; profile and test interface do not count */
    DriveConfiguration drive;
    std::vector<ScenarioEvent> events; /**< ascending in time */
    MeasureSettings measures;
    std::vector<MeasureBand> expectations;

    const ChannelConfiguration& channel() const { return unit.channels.front(); }
};

/** A value that replaces what a scenario file says. */
struct ScenarioOverride
{
    std::string sPath;  /**< such as "transmitter.detector_noise_db" or "event.2.at_s" */
    std::string sValue; /**< as it would stand in the file */
};

/**
 * Reads a scenario.
 * @param overrides put into the file's contents before they are read, in their order
 * @throws ConfigurationError that names file, line and column, or the override at fault, and what is allowed
 */
Scenario loadScenario(const std::string& sPath, const std::vector<ScenarioOverride>& overrides = {});

/** @return the override that a text such as "channel.gain_percent_on=40" asks for @throws ConfigurationError */
ScenarioOverride parseOverride(const std::string& sText);
