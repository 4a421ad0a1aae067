/** @file
 * A results file that is there when it is complete, and not before.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <optional>
#include <string>

/** What became of a run that was to be added. */
enum class EAddedRun
{
    New,
    Same,   /**< the file has it already, and it is the same in every value */
    Differs /**< the file has it already, with other values */
};

/** Gathers runs under a temporary name in the same folder. Errors name the file's own name. */
class NewResultsFile
{
public:
    /** @throws ConfigurationError when there is such a file already, or when it cannot be made there */
    NewResultsFile(std::string sPath, const CampaignDescription& description, const SweepDefinition& definition);

    /** Takes an unfinished file away. */
    ~NewResultsFile();

    NewResultsFile(const NewResultsFile&) = delete;
    NewResultsFile& operator=(const NewResultsFile&) = delete;

    /** @throws std::runtime_error when it cannot be written */
    EAddedRun add(const ResultRow& row);

    /** Gives the file its name; nothing is added after that. @throws std::runtime_error when that fails */
    void finish();

private:
    void refuseWhatIsThere() const;
    void open(const CampaignDescription& description, const SweepDefinition& definition);
    void close();

    std::string m_sPath;
    std::string m_sTemporaryPath; // empty once it has its name
    std::optional<SQLite::Database> m_database;
    std::optional<SQLite::Statement> m_insert;
    std::optional<SQLite::Statement> m_same;
};
