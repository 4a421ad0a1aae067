/** @file
 * How results stand in their database.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

/** Marks a database as a results file, in its header: "OPCS". */
inline constexpr int RESULTS_APPLICATION = 0x4f504353;

/** Goes up when a file of the old kind cannot be read any more. */
inline constexpr int RESULTS_VERSION = 1;

/** @return whether there is nothing in a database, so that it may become a results file */
bool isEmptyDatabase(SQLite::Database& database);

/** Makes the tables and writes the description, all or nothing. */
void createTables(SQLite::Database& database, const CampaignDescription& description,
                  const SweepDefinition& definition);

/** Replaces the texts of sweep and scenario. */
void updateTexts(SQLite::Database& database, const CampaignDescription& description);

/** @throws ConfigurationError when the database is not that of a campaign */
CampaignDescription readDescription(SQLite::Database& database, const std::string& sPath);

/** What to do with a run that is there already. */
enum class EPresentRun
{
    Fails,
    Stays
};

/** @return the statement that adds a run; its values are bound by bindRun() */
std::string insertStatement(const SweepDefinition& definition, EPresentRun ePresent = EPresentRun::Fails);

/** @return the statement that counts the runs that are the same in every value; they are bound by bindRun() */
std::string sameRunStatement(const SweepDefinition& definition);

/** Binds a run to a statement with a value for each column. */
void bindRun(SQLite::Statement& statement, const ResultRow& row);

/** Adds what went wrong with the database to the path. */
[[noreturn]] void failWith(const SQLite::Exception& error, const std::string& sPath);
