/** @file
 * Joins the results of a campaign's parts.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <cstdint>
#include <string>
#include <vector>

/** What to join. */
struct MergeOptions
{
    std::vector<std::string> files;
    std::string sOutput;
    bool bPartial = false; /**< also when runs of the campaign are missing */
};

/** Is told how a merge goes on, and may end it. */
class IMergeObserver
{
public:
    /** Called for every run. @param nDone different runs so far, of the nTotal that the campaign has */
    virtual void onProgress(std::uint64_t nDone, std::uint64_t nTotal) = 0;

    /** @return whether the merge is to end before its time */
    virtual bool wantsStop() = 0;

protected:
    ~IMergeObserver() = default;
};

/** A file that was read. */
struct MergedFile
{
    std::string sPath;
    Shard shard;
};

/** What a merge came to. */
struct MergeOutcome
{
    std::string sSweepFile; /**< name of the campaign's sweep file, without folders */
    std::vector<MergedFile> files;
    std::vector<bool> finished; /**< for each run of the campaign whether a file has it */
    std::uint64_t nDone = 0;    /**< of these */
    std::uint64_t nFailed = 0;  /**< of those that are done */
    bool bStopped = false;      /**< before its time */
    bool bWritten = false;      /**< the output is there */
};

/**
 * Writes the runs of all files into a new one, with which a campaign of all runs can go on. The files are only read.
 * The new one gets its name when it is complete; there is none after an error, after a stop, or when runs are missing
 * unless the options allow for that.
 *
 * A run that several files have must be the same in all, a failure included.
 * @throws ConfigurationError when a file is the wrong one or files contradict each other
 * @throws std::runtime_error when a file cannot be read or the output cannot be written
 */
MergeOutcome mergeResults(const MergeOptions& options, IMergeObserver& observer);

/** @return the runs that are not finished, such as "3, 7-9 and 120 more", with at most so many numbers and ranges */
std::string missingRunsText(const std::vector<bool>& finished, std::size_t nMost);

/**
 * @param nMost commands at most; those of further shards are left out
 * @return command lines that make the missing runs: in the output where it was written, else for each shard by itself.
 * None when the files are not of one division of the campaign into shards.
 */
std::vector<std::string> missingRunsCommands(const MergeOutcome& outcome, const std::string& sOutput,
                                             std::size_t nMost);
