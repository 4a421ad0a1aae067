/** @file
 * Makes the runs of a campaign.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"
#include "Unit/Simulator/Scenario.h"

#include <cstdint>
#include <string>
#include <vector>

/** A file that the results of a campaign depend on. */
struct CampaignInput
{
    std::string sRole; /**< such as "drive" or "module OutputPowerController" */
    std::string sPath;
};

/** Makes one run of a scenario after the other. */
class ICampaignRunner
{
public:
    virtual ~ICampaignRunner() = default;

    /**
     * Reads the scenario as a run would.
     * @return the files that the run would use, the scenario's own first
     * @throws ConfigurationError for bad input
     */
    virtual std::vector<CampaignInput> check(const std::vector<ScenarioOverride>& overrides) const = 0;

    /** Starts a run and ends it at once. Called in a process of its own. @throws std::exception when it cannot start */
    virtual void tryStart(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const = 0;

    /** Makes a run. Called in a process that makes many, one after the other. @throws std::exception when it fails */
    virtual RunMeasures run(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const = 0;
};
