/** @file
 * How a person goes on with a campaign.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <string>

/** @param sResults results file; empty for the usual one @return the command that makes a shard's missing runs */
std::string sweepCall(const std::string& sSweepFile, const Shard& shard, const std::string& sResults);
