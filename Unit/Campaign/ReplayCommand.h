/** @file
 * The command that makes a run of a sweep again.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <cstdint>
#include <string>

/** Knows the files of a campaign as they are seen from the current folder. */
class ReplayCommand
{
public:
    /** @param results outlives this */
    explicit ReplayCommand(const ResultsFile& results);

    /** @return path of the scenario */
    const std::string& scenario() const { return m_sScenario; }

    /** @return the command, to be pasted into a shell in the current folder */
    std::string forRun(std::uint64_t nRun) const;

private:
    const SweepDefinition& m_definition;
    std::string m_sScenario;
    std::string m_sSweepFolder;
};
