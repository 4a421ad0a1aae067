/** @file
 * Makes the runs of a sweep on all processors, and keeps what they came to.
 */
#pragma once

#include "Unit/Campaign/ICampaignRunner.h"
#include "Unit/Campaign/ResultsFile.h"
#include "Unit/Campaign/SweepDefinition.h"

#include <cstdint>
#include <string>

/** How a campaign is made. */
struct CampaignOptions
{
    std::string sResultsFile;
    Shard shard;
    unsigned int nJobs = 1;    /**< processes that make runs at the same time */
    bool bRetryFailed = false; /**< make runs again that have failed before */
};

/** Is told how a campaign goes on, and may end it. */
class ICampaignObserver
{
public:
    /** The campaign begins. @param nDone runs that the results file has already, of nTotal */
    virtual void onStart(std::uint64_t nDone, std::uint64_t nTotal) = 0;

    /** Called several times a second. @param nDone runs that have ended so far, earlier ones included */
    virtual void onProgress(std::uint64_t nDone) = 0;

    /** A run's process died. */
    virtual void onDeath(std::uint64_t nRun, const std::string& sError, const std::string& sLastWords) = 0;

    /** @return whether the campaign is to end before its time */
    virtual bool wantsStop() = 0;

protected:
    ~ICampaignObserver() = default;
};

/** What a campaign came to. */
struct CampaignOutcome
{
    std::uint64_t nTotal = 0;  /**< runs of the campaign, or of its shard */
    std::uint64_t nDone = 0;   /**< of these, in the results file */
    std::uint64_t nFailed = 0; /**< of these */
    std::uint64_t nUnsafe = 0; /**< of these, with a breach of a safety rule */
};

/**
 * Makes all runs that the results file does not have yet. Call it while the process has one thread only, and with the
 * signals that are to stop it blocked.
 * @throws ConfigurationError for bad input, before the first run
 * @throws std::runtime_error when results cannot be written; those that were stay
 */
CampaignOutcome runCampaign(const SweepDefinition& definition, const ICampaignRunner& runner,
                            const CampaignOptions& options, ICampaignObserver& observer);
