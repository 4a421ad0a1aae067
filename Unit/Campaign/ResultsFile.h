/** @file
 * The file with a campaign's results: an SQLite database.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"
#include "Unit/Campaign/SweepDefinition.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/** A part of a campaign: the runs whose number, divided by nCount, leaves nIndex - 1. */
struct Shard
{
    std::uint64_t nIndex = 1;
    std::uint64_t nCount = 1;

    bool contains(std::uint64_t nRun) const { return nRun % nCount == nIndex - 1; }
    bool operator==(const Shard&) const = default;
};

/** What a results file says of its campaign. */
struct CampaignDescription
{
    std::string sSweepFile;    /**< name of the sweep file, without folders */
    std::string sSweep;        /**< text of the sweep file */
    std::string sScenarioFile; /**< path of the scenario, from the folder of the results file */
    std::string sScenario;     /**< text of the scenario file */
    std::string sSweepFolder;  /**< of the sweep file, from the scenario's folder */
    Shard shard;
    std::vector<std::pair<std::string, std::string>> identity; /**< all that determines the results, by name */
};

/** A finished run. */
struct ResultRow
{
    std::uint64_t nNumber = 0;
    std::uint64_t nSeed = 0;
    std::vector<SweepValue> values;
    std::string sError; /**< empty when all went well */
    RunMeasures measures;

    bool failed() const { return !sError.empty(); }
};

/** A results file, open. Errors are thrown as std::runtime_error or, where the file is the wrong one,
 * ConfigurationError. */
class ResultsFile
{
public:
    /**
     * Opens a file to go on with its campaign, or makes a new one. No other process can do so until this goes.
     * @throws ConfigurationError when the file is another program's, or its campaign is another one
     */
    static ResultsFile openForRuns(const std::string& sPath, const CampaignDescription& description);

    /** Opens a file that exists, to read it; a campaign may go on with it meanwhile. */
    static ResultsFile openToRead(const std::string& sPath);

    /** Opens a file that exists, to read it; no campaign goes on with it until this goes. */
    static ResultsFile openToReadAlone(const std::string& sPath);

    ~ResultsFile();
    ResultsFile(ResultsFile&&) noexcept;
    ResultsFile& operator=(ResultsFile&&) = delete;
    ResultsFile(const ResultsFile&) = delete;
    ResultsFile& operator=(const ResultsFile&) = delete;

    const std::string& path() const;
    const CampaignDescription& description() const;

    /** @return the sweep that the file's text describes */
    const SweepDefinition& definition() const;

    /** @return for each run of the whole sweep whether it is in the file */
    std::vector<bool> finishedRuns() const;

    /** @return number of failed runs in the file */
    std::uint64_t failedRuns() const;

    /** @return number of runs in the file in which a safety rule was broken */
    std::uint64_t unsafeRuns() const;

    /** Adds runs, all or none. */
    void add(const std::vector<ResultRow>& rows);

    /** Takes the failed runs out, so that they are made again. */
    void forgetFailedRuns();

    /** Calls a function with every run, in the order of their numbers. */
    void forEach(const std::function<void(const ResultRow&)>& function) const;

    /** Makes the file complete in itself, without a journal beside it, where nobody is reading it. */
    void settle();

private:
    class Implementation;
    explicit ResultsFile(std::unique_ptr<Implementation> pImplementation);

    std::unique_ptr<Implementation> m_pImplementation;
};

/** @return what differs between two campaigns, a line each; empty when their results go together */
std::vector<std::string> differences(const CampaignDescription& first, const CampaignDescription& second);
