#include "Unit/Campaign/private/ResultsSchema.h"

#include "Platform/ConfigurationError.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <cmath>
#include <map>
#include <stdexcept>

namespace
{
constexpr double LARGEST_INTEGER = 9e15;

/** Keys of table definition. */
constexpr const char* SWEEP_FILE = "sweep file";
constexpr const char* SWEEP = "sweep";
constexpr const char* SCENARIO_FILE = "scenario file";
constexpr const char* SCENARIO = "scenario";
constexpr const char* SWEEP_FOLDER = "sweep folder";
constexpr const char* SHARD_INDEX = "shard index";
constexpr const char* SHARD_COUNT = "shard count";

std::string runTable(const SweepDefinition& definition)
{
    std::string sSql = "CREATE TABLE run(number INTEGER PRIMARY KEY, seed INTEGER NOT NULL, status TEXT NOT NULL, "
                       "error TEXT";
    for (const SweepParameter& parameter : definition.parameters) {
        sSql += fmt::format(", \"{}\"", parameter.sPath); // without a type, so that values stay as they are
    }
    for (const RunMeasureKey& key : runMeasureKeys()) {
        sSql += fmt::format(", \"{}\" REAL", key.pName);
    }
    return sSql + ")";
}

void bindValue(SQLite::Statement& statement, int nColumn, const SweepValue& value)
{
    if (!value.number) {
        const bool bQuoted = value.sToml.front() == '"';
        statement.bind(nColumn, bQuoted ? value.sToml.substr(1, value.sToml.size() - 2) : value.sToml);
    }
    else if (*value.number == std::floor(*value.number) && std::abs(*value.number) < LARGEST_INTEGER) {
        statement.bind(nColumn, static_cast<std::int64_t>(*value.number));
    }
    else {
        statement.bind(nColumn, *value.number);
    }
}

void notOurs(const std::string& sPath)
{
    throw ConfigurationError(fmt::format("{}: is not a results file of opc sweep; name another file", sPath));
}
} // namespace

bool isEmptyDatabase(SQLite::Database& database)
{
    return database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0 &&
           database.execAndGet("PRAGMA application_id").getInt() == 0;
}

void createTables(SQLite::Database& database, const CampaignDescription& description, const SweepDefinition& definition)
{
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    database.exec(fmt::format("PRAGMA application_id = {}", RESULTS_APPLICATION));
    database.exec(fmt::format("PRAGMA user_version = {}", RESULTS_VERSION));
    database.exec("CREATE TABLE definition(name TEXT PRIMARY KEY, value TEXT NOT NULL)");
    database.exec("CREATE TABLE identity(position INTEGER PRIMARY KEY, name TEXT NOT NULL, value TEXT NOT NULL)");
    database.exec(runTable(definition));
    SQLite::Statement entry(database, "INSERT INTO definition VALUES (?, ?)");
    for (const auto& [sName, sValue] : {std::pair{SWEEP_FILE, description.sSweepFile},
                                        {SWEEP, description.sSweep},
                                        {SCENARIO_FILE, description.sScenarioFile},
                                        {SCENARIO, description.sScenario},
                                        {SWEEP_FOLDER, description.sSweepFolder},
                                        {SHARD_INDEX, std::to_string(description.shard.nIndex)},
                                        {SHARD_COUNT, std::to_string(description.shard.nCount)}})
    {
        entry.bind(1, sName);
        entry.bind(2, sValue);
        entry.exec();
        entry.reset();
    }
    SQLite::Statement part(database, "INSERT INTO identity(name, value) VALUES (?, ?)");
    for (const auto& [sName, sValue] : description.identity) {
        part.bind(1, sName);
        part.bind(2, sValue);
        part.exec();
        part.reset();
    }
    transaction.commit();
}

void updateTexts(SQLite::Database& database, const CampaignDescription& description)
{
    SQLite::Statement update(database, "UPDATE definition SET value = CASE name WHEN ?1 THEN ?2 ELSE ?4 END "
                                       "WHERE name IN (?1, ?3)");
    update.bind(1, SWEEP);
    update.bind(2, description.sSweep);
    update.bind(3, SCENARIO);
    update.bind(4, description.sScenario);
    update.exec();
}

CampaignDescription readDescription(SQLite::Database& database, const std::string& sPath)
{
    if (database.execAndGet("PRAGMA application_id").getInt() != RESULTS_APPLICATION) {
        notOurs(sPath);
    }
    const int nVersion = database.execAndGet("PRAGMA user_version").getInt();
    if (nVersion != RESULTS_VERSION) {
        throw ConfigurationError(fmt::format("{}: is a results file of version {}; this program reads version {}",
                                             sPath, nVersion, RESULTS_VERSION));
    }
    std::map<std::string, std::string> entries;
    SQLite::Statement query(database, "SELECT name, value FROM definition");
    while (query.executeStep()) {
        entries[query.getColumn(0).getString()] = query.getColumn(1).getString();
    }
    CampaignDescription description;
    description.sSweepFile = entries[SWEEP_FILE];
    description.sSweep = entries[SWEEP];
    description.sScenarioFile = entries[SCENARIO_FILE];
    description.sScenario = entries[SCENARIO];
    description.sSweepFolder = entries[SWEEP_FOLDER];
    description.shard = {std::stoull("0" + entries[SHARD_INDEX]), std::stoull("0" + entries[SHARD_COUNT])};
    if (description.shard.nIndex == 0 || description.shard.nIndex > description.shard.nCount) {
        notOurs(sPath);
    }
    SQLite::Statement parts(database, "SELECT name, value FROM identity ORDER BY position");
    while (parts.executeStep()) {
        description.identity.emplace_back(parts.getColumn(0).getString(), parts.getColumn(1).getString());
    }
    return description;
}

std::string insertStatement(const SweepDefinition& definition, EPresentRun ePresent)
{
    std::string sSql = ePresent == EPresentRun::Stays ? "INSERT OR IGNORE" : "INSERT";
    sSql += " INTO run VALUES (?, ?, ?, ?";
    for (std::size_t n = 0; n < definition.parameters.size() + runMeasureKeys().size(); ++n) {
        sSql += ", ?";
    }
    return sSql + ")";
}

std::string sameRunStatement(const SweepDefinition& definition)
{
    std::string sSql = "SELECT count(*) FROM run WHERE number IS ? AND seed IS ? AND status IS ? AND error IS ?";
    for (const SweepParameter& parameter : definition.parameters) {
        sSql += fmt::format(" AND \"{}\" IS ?", parameter.sPath);
    }
    for (const RunMeasureKey& key : runMeasureKeys()) {
        sSql += fmt::format(" AND \"{}\" IS ?", key.pName);
    }
    return sSql;
}

void bindRun(SQLite::Statement& statement, const ResultRow& row)
{
    int nColumn = 0;
    statement.bind(++nColumn, static_cast<std::int64_t>(row.nNumber));
    statement.bind(++nColumn, static_cast<std::int64_t>(row.nSeed));
    statement.bind(++nColumn, row.failed() ? "failed" : "ok");
    if (row.failed()) {
        statement.bind(++nColumn, row.sError);
    }
    else {
        statement.bind(++nColumn);
    }
    for (const SweepValue& value : row.values) {
        bindValue(statement, ++nColumn, value);
    }
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (row.failed()) {
            statement.bind(++nColumn);
        }
        else {
            statement.bind(++nColumn, row.measures.*key.pField); // SQLite keeps not-a-number as null
        }
    }
}

void failWith(const SQLite::Exception& error, const std::string& sPath)
{
    switch (error.getErrorCode()) {
    case SQLITE_NOTADB:
        notOurs(sPath);
        [[fallthrough]];
    case SQLITE_FULL:
        throw std::runtime_error(fmt::format("{}: cannot be written: the disk is full", sPath));
    case SQLITE_READONLY:
        throw std::runtime_error(fmt::format("{}: cannot be written: it, or its folder, is read-only", sPath));
    case SQLITE_BUSY:
        throw std::runtime_error(fmt::format("{}: another program has locked it", sPath));
    case SQLITE_CORRUPT:
        throw std::runtime_error(fmt::format("{}: is damaged: {}", sPath, error.what()));
    default:
        throw std::runtime_error(fmt::format("{}: {}", sPath, error.what()));
    }
}
