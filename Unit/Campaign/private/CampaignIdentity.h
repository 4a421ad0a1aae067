/** @file
 * What the results of a campaign depend on.
 */
#pragma once

#include "Unit/Campaign/ICampaignRunner.h"
#include "Unit/Campaign/ResultsFile.h"
#include "Unit/Campaign/SweepDefinition.h"

#include <string>

/**
 * Reads the scenario with the values of the first runs and with every value that stands in the sweep, so that bad ones
 * are found before the first run.
 * @param sResultsFile that the scenario's path is told from
 * @throws ConfigurationError
 */
CampaignDescription describeCampaign(const SweepDefinition& definition, const ICampaignRunner& runner,
                                     const Shard& shard, const std::string& sResultsFile);
