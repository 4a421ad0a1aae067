#include "Unit/Campaign/ScenarioRunner.h"

#include "Unit/Campaign/private/SweepFiles.h"
#include "Unit/Process/ModuleLibrary.h"
#include "Unit/Simulator/VirtualRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>

namespace
{
namespace fs = std::filesystem;

/** Adds a file, unless there is none of that name, as for a library that only the system knows to find. */
void addFile(std::vector<CampaignInput>& inputs, const std::string& sRole, const std::string& sPath)
{
    std::error_code error;
    if (!sPath.empty() && fs::is_regular_file(sPath, error)) {
        inputs.push_back({sRole, sPath});
    }
}

std::string libraryOf(const UnitConfiguration& unit, const ModuleConfiguration& module)
{
    const std::vector<std::string> candidates = moduleLibraryCandidates(unit.sFolder, module.sLibrary);
    const auto found = std::find_if(candidates.begin(), candidates.end(),
                                    [](const std::string& sCandidate) { return fs::exists(sCandidate); });
    return found == candidates.end() ? "" : *found;
}
} // namespace

ScenarioRunner::ScenarioRunner(const SweepDefinition& definition)
    : m_sScenario(definition.sScenario), m_sFolder(fs::absolute(definition.sPath).parent_path().string())
{}

std::vector<CampaignInput> ScenarioRunner::check(const std::vector<ScenarioOverride>& overrides) const
{
    const Scenario scenario = load(overrides);
    const UnitConfiguration& unit = scenario.unit;
    std::vector<CampaignInput> inputs = {{"scenario", m_sScenario}};
    if (unit.sPath != m_sScenario) {
        addFile(inputs, "unit file", unit.sPath);
    }
    addFile(inputs, "drive", scenario.drive.sFile);
    addFile(inputs, "storage", unit.sStorageFile);
    for (const CalibrationConfiguration& calibration : unit.calibrations) {
        addFile(inputs, "calibration " + calibration.sName, calibration.sFile);
    }
    for (const ModuleConfiguration& module : unit.modules) {
        addFile(inputs, "module " + module.sName, libraryOf(unit, module));
    }
    return inputs;
}

void ScenarioRunner::tryStart(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const
{
    const VirtualRun started(load(overrides, nSeed));
}

RunMeasures ScenarioRunner::run(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const
{
    const Scenario scenario = load(overrides, nSeed);
    VirtualRun run(scenario);
    (void)run.proceed(std::numeric_limits<std::uint64_t>::max(), nullptr);
    return run.measures();
}

Scenario ScenarioRunner::load(std::vector<ScenarioOverride> overrides) const
{
    for (ScenarioOverride& given : overrides) {
        given = fromFolder(given, m_sFolder);
    }
    return loadScenario(m_sScenario, overrides);
}

Scenario ScenarioRunner::load(std::vector<ScenarioOverride> overrides, std::uint64_t nSeed) const
{
    overrides.push_back({"seed", fmt::format("{}", nSeed)});
    return load(std::move(overrides));
}
