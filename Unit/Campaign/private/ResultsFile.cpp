#include "Unit/Campaign/ResultsFile.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/ResultsSchema.h"
#include "Unit/Database/ReadOnlyDatabase.h"
#include "Unit/Files/FileLock.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>

namespace
{
constexpr int BUSY_TIMEOUT_MS = 5000; // somebody who reads or writes for a moment is waited for

template <class TAction> auto guarded(const std::string& sPath, const TAction& action)
{
    try {
        return action();
    }
    catch (const SQLite::Exception& error) {
        failWith(error, sPath);
    }
}

/** A file that is only read is somebody's input. */
void lockToRead(std::optional<FileLock>& lock, const std::string& sPath)
{
    try {
        lock.emplace(sPath, ELock::Read, "name another file");
    }
    catch (const FileNotLocked& error) {
        throw ConfigurationError(error.what());
    }
}

void refuseNoFile(const std::string& sPath)
{
    if (!std::filesystem::is_regular_file(sPath)) {
        throw ConfigurationError(fmt::format("{}: {}; name a results file of opc sweep", sPath,
                                             std::filesystem::exists(sPath) ? "is no file" : "does not exist"));
    }
}

std::string shardText(const Shard& shard)
{
    return shard.nCount == 1 ? "all runs" : fmt::format("shard {}/{}", shard.nIndex, shard.nCount);
}

void refuseOther(const std::string& sPath, const CampaignDescription& inFile, const CampaignDescription& wanted)
{
    std::vector<std::string> reasons = differences(inFile, wanted);
    if (inFile.shard != wanted.shard) {
        reasons.push_back(fmt::format("it is for {}, not {}", shardText(inFile.shard), shardText(wanted.shard)));
    }
    if (!reasons.empty()) {
        throw ConfigurationError(fmt::format("{}: has results of another campaign: {}; name another file with "
                                             "--results, or remove this one",
                                             sPath, fmt::join(reasons, "; ")));
    }
}
} // namespace

class ResultsFile::Implementation
{
public:
    Implementation(const std::string& sPath, const CampaignDescription& wanted)
        : m_sPath(sPath), m_lock(std::in_place, sPath, ELock::Write, "name another file with --results"),
          m_database(sPath, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, BUSY_TIMEOUT_MS)
    {
        if (isEmptyDatabase(m_database)) {
            createTables(m_database, wanted, parseSweepDefinition(wanted.sSweep, wanted.sSweepFile));
        }
        m_description = readDescription(m_database, sPath);
        refuseOther(sPath, m_description, wanted);
        if (m_description.sSweep != wanted.sSweep || m_description.sScenario != wanted.sScenario) {
            updateTexts(m_database, wanted); // what does not touch results, such as the title, may change
            m_description = wanted;
        }
        m_database.exec("PRAGMA synchronous = NORMAL"); // a loss of power costs the last runs and not the file
        (void)m_database.execAndGet("PRAGMA journal_mode = WAL").getString();
        readDefinition();
        m_insert.emplace(m_database, insertStatement(m_definition));
    }

    Implementation(const std::string& sPath, bool bAlone) : m_sPath(sPath), m_database(openDatabaseToRead(sPath))
    {
        if (bAlone) {
            lockToRead(m_lock, sPath);
        }
        m_description = readDescription(m_database, sPath);
        readDefinition();
    }

    const std::string& path() const { return m_sPath; }
    SQLite::Database& database() { return m_database; }
    const CampaignDescription& description() const { return m_description; }
    const SweepDefinition& definition() const { return m_definition; }

    void add(const std::vector<ResultRow>& rows)
    {
        SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
        (void)m_insert->tryReset(); // it may have failed the last time
        for (const ResultRow& row : rows) {
            bindRun(*m_insert, row);
            m_insert->exec();
            m_insert->reset();
        }
        transaction.commit();
    }

private:
    void readDefinition() { m_definition = parseSweepDefinition(m_description.sSweep, m_description.sSweepFile); }

    std::string m_sPath;
    std::optional<FileLock> m_lock; // goes after the database, whose own locks would end with it
    SQLite::Database m_database;
    std::optional<SQLite::Statement> m_insert;
    CampaignDescription m_description;
    SweepDefinition m_definition;
};

ResultsFile::ResultsFile(std::unique_ptr<Implementation> pImplementation)
    : m_pImplementation(std::move(pImplementation))
{}

ResultsFile::~ResultsFile() = default;
ResultsFile::ResultsFile(ResultsFile&&) noexcept = default;

ResultsFile ResultsFile::openForRuns(const std::string& sPath, const CampaignDescription& description)
{
    return guarded(sPath, [&] { return ResultsFile(std::make_unique<Implementation>(sPath, description)); });
}

ResultsFile ResultsFile::openToRead(const std::string& sPath)
{
    refuseNoFile(sPath);
    return guarded(sPath, [&] { return ResultsFile(std::make_unique<Implementation>(sPath, false)); });
}

ResultsFile ResultsFile::openToReadAlone(const std::string& sPath)
{
    refuseNoFile(sPath);
    return guarded(sPath, [&] { return ResultsFile(std::make_unique<Implementation>(sPath, true)); });
}

const std::string& ResultsFile::path() const
{
    return m_pImplementation->path();
}

const CampaignDescription& ResultsFile::description() const
{
    return m_pImplementation->description();
}

const SweepDefinition& ResultsFile::definition() const
{
    return m_pImplementation->definition();
}

std::vector<bool> ResultsFile::finishedRuns() const
{
    return guarded(path(), [&] {
        std::vector<bool> finished(static_cast<std::size_t>(definition().nRuns));
        SQLite::Statement query(m_pImplementation->database(), "SELECT number FROM run");
        while (query.executeStep()) {
            const auto nNumber = static_cast<std::uint64_t>(query.getColumn(0).getInt64());
            if (nNumber >= finished.size()) {
                throw std::runtime_error(
                    fmt::format("{}: is damaged: has a run {} of {}", path(), nNumber, finished.size()));
            }
            finished[static_cast<std::size_t>(nNumber)] = true;
        }
        return finished;
    });
}

std::uint64_t ResultsFile::failedRuns() const
{
    return guarded(path(), [&] {
        const char* pQuery = "SELECT count(*) FROM run WHERE status <> 'ok'";
        return static_cast<std::uint64_t>(m_pImplementation->database().execAndGet(pQuery).getInt64());
    });
}

std::uint64_t ResultsFile::unsafeRuns() const
{
    return guarded(path(), [&] {
        SQLite::Database& database = m_pImplementation->database();
        // A file may be of a version without this measure.
        const char* pColumns = "SELECT count(*) FROM pragma_table_info('run') WHERE name = 'safety_violations'";
        if (database.execAndGet(pColumns).getInt() == 0) {
            return std::uint64_t{0};
        }
        const char* pQuery = "SELECT count(*) FROM run WHERE safety_violations > 0";
        return static_cast<std::uint64_t>(database.execAndGet(pQuery).getInt64());
    });
}

void ResultsFile::add(const std::vector<ResultRow>& rows)
{
    guarded(path(), [&] { m_pImplementation->add(rows); });
}

void ResultsFile::forgetFailedRuns()
{
    guarded(path(), [&] { m_pImplementation->database().exec("DELETE FROM run WHERE status <> 'ok'"); });
}

void ResultsFile::forEach(const std::function<void(const ResultRow&)>& function) const
{
    guarded(path(), [&] {
        SQLite::Statement query(m_pImplementation->database(), "SELECT * FROM run ORDER BY number");
        std::vector<std::pair<int, double RunMeasures::*>> columns; // a file may be of a version with fewer measures
        for (int nColumn = 0; nColumn < query.getColumnCount(); ++nColumn) {
            for (const RunMeasureKey& key : runMeasureKeys()) {
                if (query.getColumnName(nColumn) == std::string(key.pName)) {
                    columns.emplace_back(nColumn, key.pField);
                }
            }
        }
        while (query.executeStep()) {
            ResultRow row;
            row.nNumber = static_cast<std::uint64_t>(query.getColumn("number").getInt64());
            row.nSeed = static_cast<std::uint64_t>(query.getColumn("seed").getInt64());
            row.values = planRun(definition(), row.nNumber).values;
            row.sError = query.getColumn("error").isNull() ? "" : query.getColumn("error").getString();
            for (const auto& [nColumn, pField] : columns) {
                const SQLite::Column column = query.getColumn(nColumn);
                row.measures.*pField = column.isNull() ? NO_MEASURE : column.getDouble();
            }
            function(row);
        }
    });
}

void ResultsFile::settle()
{
    try {
        (void)m_pImplementation->database().execAndGet("PRAGMA journal_mode = DELETE").getString();
    }
    catch (const SQLite::Exception&) { // somebody reads it: it stays as it is, complete with its journal
        return;
    }
}

std::vector<std::string> differences(const CampaignDescription& first, const CampaignDescription& second)
{
    const auto valueIn = [](const CampaignDescription& description, const std::string& sName) {
        const auto found = std::find_if(description.identity.begin(), description.identity.end(),
                                        [&sName](const auto& part) { return part.first == sName; });
        return found == description.identity.end() ? std::string("none") : found->second;
    };
    std::vector<std::string> lines;
    const auto add = [&](const std::string& sName) {
        const std::string sFirst = valueIn(first, sName);
        const std::string sSecond = valueIn(second, sName);
        if (sFirst != sSecond) {
            lines.push_back(fmt::format("{} was {} and is {}", sName, sFirst, sSecond));
        }
    };
    for (const auto& [sName, sValue] : first.identity) {
        add(sName);
    }
    for (const auto& [sName, sValue] : second.identity) {
        if (valueIn(first, sName) == "none") {
            add(sName);
        }
    }
    return lines;
}
