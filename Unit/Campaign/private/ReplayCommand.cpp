#include "Unit/Campaign/ReplayCommand.h"

#include "Unit/Campaign/private/SweepFiles.h"
#include "Unit/Campaign/private/Worker.h"
#include "Unit/Text/ShellWord.h"

#include <fmt/format.h>

#include <filesystem>

namespace fs = std::filesystem;

ReplayCommand::ReplayCommand(const ResultsFile& results) : m_definition(results.definition())
{
    const fs::path folder = fs::path(results.path()).parent_path();
    const fs::path scenario = (folder / results.description().sScenarioFile).lexically_normal();
    m_sSweepFolder = (scenario.parent_path() / results.description().sSweepFolder).lexically_normal().string();
    m_sScenario = scenario.string();
    m_sScenario.insert(0, m_sScenario.starts_with('-') ? "./" : ""); // which would be an option
}

std::string ReplayCommand::forRun(std::uint64_t nRun) const
{
    const RunPlan plan = planRun(m_definition, nRun);
    std::string sCommand = "opc simulate " + shellWord(m_sScenario);
    for (const ScenarioOverride& given : overridesOf(m_definition, plan.values)) {
        const ScenarioOverride found = fromFolder(given, m_sSweepFolder);
        sCommand += " --set " + shellWord(found.sPath + "=" + found.sValue);
    }
    return sCommand + fmt::format(" --seed {}", plan.nSeed);
}
