/** @file
 * A unit that is made of what is recorded of it.
 */
#pragma once

#include "Simulation/Scenario/Profile.h"
#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Process/UnitProcess.h"
#include "Unit/Recorder/Recording.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/** Keeps the process's trace lines off standard error and off the system log while it stands. */
class QuietTrace
{
public:
    QuietTrace() { apply(false); }
    ~QuietTrace() { apply(true); }

    QuietTrace(const QuietTrace&) = delete;
    QuietTrace& operator=(const QuietTrace&) = delete;

    /** To be called again after whatever decides about trace lines itself. */
    void renew() { apply(false); }

private:
    static void apply(bool bHeard);
};

/** The modules and channels of a recorded run, with the files that it was started with. */
class ReplayedUnit
{
public:
    /** Loads everything. @throws ConfigurationError */
    ReplayedUnit(const Recording& recording, const RecordedRun& run);

    /** Starts the modules. @throws ConfigurationError, UnitStartError */
    void start();

    /** Wants all transmitters on, as a run does that begins. @return the channels. @throws UnitStartError */
    std::vector<RadioChannel*> wantOn();

    /** @return which handler of the started unit is not a simulated one, so that what it told is not recorded */
    std::string unrepeatableHandler();

    UnitProcess& process() { return m_process; }
    const RunSettings& settings() const { return m_settings; }
    const std::vector<FaultConfiguration>& faults() const { return m_unit.faults; }

private:
    UnitConfiguration m_unit;
    std::unique_ptr<Profile> m_pProfile;
    RunSettings m_settings;
    QuietTrace m_quiet;
    UnitProcess m_process;
};
