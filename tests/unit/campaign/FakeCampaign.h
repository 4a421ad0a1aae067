/** @file
 * A campaign without simulations: its measures are plain functions of the parameters.
 */
#pragma once

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/Campaign.h"
#include "tests/unit/TemporaryFolder.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

/** Runs with two parameters, a and b; a = 13 fails, a = 66 dies, a = 99 is bad input that only a run finds. */
class FakeRunner : public ICampaignRunner
{
public:
    explicit FakeRunner(std::string sScenario) : m_sScenario(std::move(sScenario)) {}

    std::vector<CampaignInput> check(const std::vector<ScenarioOverride>& overrides) const override
    {
        for (const ScenarioOverride& override : overrides) {
            if (override.sPath != "a" && override.sPath != "b" && override.sPath != "duration_s") {
                throw ConfigurationError("no such key: " + override.sPath);
            }
        }
        return {{"scenario", m_sScenario}};
    }

    void tryStart(const std::vector<ScenarioOverride>&, std::uint64_t) const override
    {
        if (bCannotStart) {
            throw ConfigurationError("module is missing");
        }
    }

    RunMeasures run(const std::vector<ScenarioOverride>& overrides, std::uint64_t nSeed) const override
    {
        const double a = std::strtod(overrides.at(overrides.size() - 2).sValue.c_str(), nullptr);
        const double b = std::strtod(overrides.back().sValue.c_str(), nullptr);
        if (a == 13.0) {
            throw std::runtime_error("the run failed");
        }
        if (a == 66.0) {
            (void)!write(STDERR_FILENO, "last words", 10);
            (void)raise(SIGKILL);
        }
        if (a == 99.0) {
            throw ConfigurationError("bad combination");
        }
        (void)usleep(nMicroseconds);
        RunMeasures measures;
        measures.steps = a + 10.0 * b;
        measures.settlingMaxMs = static_cast<double>(nSeed);
        measures.safetyViolations = a == 7.0 ? 2.0 : 0.0;
        return measures;
    }

    bool bCannotStart = false;
    unsigned int nMicroseconds = 0;

private:
    std::string m_sScenario;
};

/** Remembers what it is told, and stops after a number of runs. */
class FakeObserver : public ICampaignObserver
{
public:
    virtual ~FakeObserver() = default;

    void onStart(std::uint64_t nDone, std::uint64_t nTotal) override
    {
        nDoneAtStart = nDone;
        nDoneNow = nDone;
        nTotalAtStart = nTotal;
    }
    void onProgress(std::uint64_t nDone) override { nDoneNow = nDone; }
    void onDeath(std::uint64_t nRun, const std::string& sError, const std::string& sLastWords) override
    {
        deaths.push_back(std::to_string(nRun) + ": " + sError + ": " + sLastWords);
    }
    bool wantsStop() override { return nDoneNow >= nStopAfter; }

    std::uint64_t nDoneAtStart = 0;
    std::uint64_t nTotalAtStart = 0;
    std::uint64_t nDoneNow = 0;
    std::uint64_t nStopAfter = ~std::uint64_t{0};
    std::vector<std::string> deaths;
};

/** A sweep over a and b in a folder of its own. */
class FakeCampaign
{
public:
    explicit FakeCampaign(const std::string& sValuesOfA = "1, 2, 3, 4, 5", const std::string& sKeys = "")
        : runner(folder.write("base.toml", "duration_s = 1\n")),
          definition(parseSweepDefinition("[sweep]\nscenario = \"base.toml\"\nmethod = \"grid\"\n" + sKeys +
                                              "[[parameter]]\npath = \"a\"\nvalues = [" + sValuesOfA +
                                              "]\n[[parameter]]\npath = \"b\"\nvalues = [0.5, 1.5, 2.5, 3.5]\n",
                                          folder.path("sweep.toml")))
    {
        options.sResultsFile = folder.path("results.db");
        options.nJobs = 2;
    }

    CampaignOutcome run() { return runCampaign(definition, runner, options, observer); }

    TemporaryFolder folder;
    FakeRunner runner;
    SweepDefinition definition;
    CampaignOptions options;
    FakeObserver observer;
};

/** @return all runs of a results file, a line each */
inline std::vector<std::string> linesOf(const std::string& sResultsFile)
{
    std::vector<std::string> lines;
    ResultsFile::openToRead(sResultsFile).forEach([&lines](const ResultRow& row) {
        std::string sLine = std::to_string(row.nNumber) + " " + std::to_string(row.nSeed);
        for (const SweepValue& value : row.values) {
            sLine += " " + value.sToml;
        }
        lines.push_back(sLine + " " + std::to_string(row.measures.steps) + " " +
                        std::to_string(row.measures.settlingMaxMs) + " " + row.sError);
    });
    return lines;
}
