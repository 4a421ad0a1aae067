#include "Unit/Campaign/private/CampaignIdentity.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/SweepValues.h"
#include "Unit/Campaign/private/Worker.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

namespace
{
constexpr std::uint64_t RUNS_TRIED = 20;

std::string contentsOf(const std::string& sPath)
{
    std::ifstream stream(sPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/** @return a file's contents in a few characters: FNV-1a with 64 bits */
std::string fingerprint(const std::string& sPath)
{
    std::uint64_t nHash = 0xcbf29ce484222325U;
    std::ifstream stream(sPath, std::ios::binary);
    std::array<char, 65536> block{};
    while (stream.read(block.data(), block.size()), stream.gcount() > 0) {
        for (std::streamsize n = 0; n < stream.gcount(); ++n) {
            nHash = (nHash ^ static_cast<unsigned char>(block.at(static_cast<std::size_t>(n)))) * 0x100000001b3U;
        }
    }
    return fmt::format("{:016x}", nHash);
}

/** @return the file with the platform, which modules share with the program */
std::string platformLibrary()
{
    Dl_info information = {};
    return dladdr(reinterpret_cast<void*>(&ConfigurationError::atLine), &information) != 0 ? information.dli_fname : "";
}

std::string programText()
{
    utsname system = {};
    (void)uname(&system);
    return fmt::format("opc {} for {}, build {}/{}", OPC_VERSION, system.machine, fingerprint("/proc/self/exe"),
                       fingerprint(platformLibrary()));
}

/** Takes the files that the runs use, as the scenario is read. */
class ScenarioTrial
{
public:
    ScenarioTrial(const SweepDefinition& definition, const ICampaignRunner& runner)
        : m_definition(definition), m_runner(runner)
    {}

    const std::vector<CampaignInput>& inputs() const { return m_inputs; }

    void tryAll()
    {
        for (std::uint64_t nRun = 0; nRun < std::min(m_definition.nRuns, RUNS_TRIED); ++nRun) {
            tryValues(planRun(m_definition, nRun).values);
        }
        const std::vector<SweepValue> first = planRun(m_definition, 0).values;
        for (std::size_t nParameter = 0; nParameter < first.size(); ++nParameter) {
            for (const SweepValue& value : extremes(m_definition.parameters[nParameter])) {
                std::vector<SweepValue> values = first;
                values[nParameter] = value;
                tryValues(values);
            }
        }
    }

private:
    static std::vector<SweepValue> extremes(const SweepParameter& parameter)
    {
        std::vector<SweepValue> values = parameter.values;
        for (const auto& bound : {parameter.minimum, parameter.maximum}) {
            if (bound) {
                values.push_back(numberValue(*bound));
            }
        }
        return values;
    }

    void tryValues(const std::vector<SweepValue>& values)
    {
        for (const CampaignInput& input : m_runner.check(overridesOf(m_definition, values))) {
            if (m_known.emplace(input.sRole, input.sPath).second) {
                m_inputs.push_back(input);
            }
        }
    }

    const SweepDefinition& m_definition;
    const ICampaignRunner& m_runner;
    std::vector<CampaignInput> m_inputs;
    std::set<std::pair<std::string, std::string>> m_known;
};
} // namespace

CampaignDescription describeCampaign(const SweepDefinition& definition, const ICampaignRunner& runner,
                                     const Shard& shard, const std::string& sResultsFile)
{
    namespace fs = std::filesystem;
    ScenarioTrial trial(definition, runner);
    trial.tryAll();
    CampaignDescription description;
    description.sSweepFile = fs::path(definition.sPath).filename().string();
    description.sSweep = definition.sText;
    description.sScenarioFile = fs::absolute(definition.sScenario)
                                    .lexically_normal()
                                    .lexically_proximate(fs::absolute(sResultsFile).lexically_normal().parent_path())
                                    .string();
    description.sScenario = contentsOf(definition.sScenario);
    const fs::path scenarioFolder = fs::absolute(definition.sScenario).lexically_normal().parent_path();
    description.sSweepFolder =
        fs::absolute(definition.sPath).lexically_normal().parent_path().lexically_proximate(scenarioFolder).string();
    description.shard = shard;
    auto& identity = description.identity;
    const bool bGrid = definition.eMethod == ESweepMethod::Grid;
    identity.emplace_back("method", bGrid ? "grid" : "random");
    identity.emplace_back("number of runs", std::to_string(definition.nRuns));
    identity.emplace_back("seed", std::to_string(definition.nSeed));
    identity.emplace_back("repeats", std::to_string(definition.nRepeats));
    identity.emplace_back("duration_s", definition.durationSeconds ? numberValue(*definition.durationSeconds).sToml
                                                                   : "the scenario's");
    for (std::size_t n = 0; n < definition.parameters.size(); ++n) {
        identity.emplace_back(fmt::format("parameter {}", n + 1), definition.parameters[n].sDescription);
    }
    for (const CampaignInput& input : trial.inputs()) {
        const auto isRole = [&input](const auto& part) {
            return part.first == input.sRole || part.first.starts_with(input.sRole + " (");
        };
        const auto nSame = std::count_if(identity.begin(), identity.end(), isRole);
        identity.emplace_back(nSame == 0 ? input.sRole : fmt::format("{} ({})", input.sRole, nSame + 1),
                              fingerprint(input.sPath));
    }
    identity.emplace_back("program", programText());
    return description;
}
