/** @file
 * Makes the runs of a campaign in virtual time.
 */
#pragma once

#include "Unit/Campaign/ICampaignRunner.h"
#include "Unit/Campaign/SweepDefinition.h"

#include <string>

/** Runs a sweep's scenario; files that the sweep's values name start from the sweep file's folder. */
class ScenarioRunner final : public ICampaignRunner
{
public:
    explicit ScenarioRunner(const SweepDefinition& definition);

    std::vector<CampaignInput> check(const std::vector<ScenarioOverride>& overrides) const override;
    void tryStart(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const override;
    RunMeasures run(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const override;

private:
    Scenario load(std::vector<ScenarioOverride> overrides) const;
    Scenario load(std::vector<ScenarioOverride> overrides, std::uint64_t nSeed) const;

    std::string m_sScenario;
    std::string m_sFolder; // of the sweep file, complete
};
