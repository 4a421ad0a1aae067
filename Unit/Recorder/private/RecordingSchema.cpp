#include "Unit/Recorder/private/RecordingSchema.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Recorder/StepSummary.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <type_traits>

namespace
{
constexpr int BUSY_TIMEOUT_MS = 1000; // the feed holds what comes meanwhile
constexpr std::string_view MAGIC{"SQLite format 3\0", 16};
constexpr std::size_t VERSION_AT = 60;
constexpr std::size_t APPLICATION_AT = 68;
constexpr std::size_t HEADER_BYTES = 100;

template <auto pField> void bindField(SQLite::Statement& statement, int nParameter, const StepSample& sample)
{
    if constexpr (std::is_floating_point_v<std::remove_cvref_t<decltype(sample.*pField)>>) {
        statement.bind(nParameter, static_cast<double>(sample.*pField));
    }
    else {
        statement.bind(nParameter, static_cast<std::int64_t>(sample.*pField));
    }
}

template <auto pField> void readField(const SQLite::Column& column, StepSample& sample)
{
    using Field = std::remove_cvref_t<decltype(sample.*pField)>;
    if constexpr (std::is_floating_point_v<Field>) {
        sample.*pField = static_cast<Field>(column.getDouble());
    }
    else {
        sample.*pField = static_cast<Field>(column.getInt64());
    }
}

template <auto pField> StepColumn field(const char* pName)
{
    return {pName, bindField<pField>, readField<pField>};
}

template <std::size_t nAmplifier> StepColumn amplifier(const char* pName)
{
    return {
        pName,
        [](SQLite::Statement& statement, int nParameter, const StepSample& sample) {
            statement.bind(nParameter, static_cast<std::int64_t>(sample.reducedGain.at(nAmplifier)));
        },
        [](const SQLite::Column& column, StepSample& sample) { sample.reducedGain.at(nAmplifier) = column.getInt(); }};
}

constexpr const char* TABLES = R"SQL(
CREATE TABLE run(id INTEGER PRIMARY KEY, run TEXT NOT NULL, started_unix_us INTEGER NOT NULL,
  interval_ms INTEGER NOT NULL, speed REAL NOT NULL, start_s REAL NOT NULL, version TEXT NOT NULL, ended_us INTEGER);
CREATE TABLE channel(run INTEGER NOT NULL, position INTEGER NOT NULL, number INTEGER NOT NULL,
  PRIMARY KEY(run, position)) WITHOUT ROWID;
CREATE TABLE module(run INTEGER NOT NULL, position INTEGER NOT NULL, name TEXT NOT NULL, library TEXT NOT NULL,
  scope TEXT NOT NULL, PRIMARY KEY(run, position)) WITHOUT ROWID;
CREATE TABLE content(id INTEGER PRIMARY KEY, content TEXT NOT NULL);
CREATE TABLE run_file(run INTEGER NOT NULL, position INTEGER NOT NULL, kind TEXT NOT NULL, name TEXT NOT NULL,
  content INTEGER NOT NULL REFERENCES content(id), PRIMARY KEY(run, position)) WITHOUT ROWID;
CREATE VIEW file AS SELECT run, position, kind, name, content.content AS content
  FROM run_file JOIN content ON content.id = run_file.content;
CREATE TABLE event(run INTEGER NOT NULL, time_us INTEGER NOT NULL, id INTEGER NOT NULL, steps INTEGER NOT NULL,
  channel INTEGER, kind TEXT NOT NULL, text TEXT NOT NULL, detail TEXT NOT NULL,
  PRIMARY KEY(run, time_us, id)) WITHOUT ROWID;
)SQL";

constexpr int TABLE_COUNT = 9;
constexpr const char* PLAIN_TABLES =
    "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND rootpage > 0 AND name IN ('run', 'channel', 'module', "
    "'content', 'run_file', 'event', 'step', 'second', 'minute')";

std::string tableOfSteps(const std::string& sTable, const std::vector<std::string>& columns)
{
    std::string sColumns;
    for (const std::string& sColumn : columns) {
        sColumns += sColumn + (sColumn == "temperature_c" || sColumn == "frequency_mhz" ? " REAL, " : " INTEGER, ");
    }
    return fmt::format("CREATE TABLE {}(run INTEGER NOT NULL, time_us INTEGER NOT NULL, channel INTEGER NOT NULL, {}"
                       "PRIMARY KEY(run, time_us, channel)) WITHOUT ROWID",
                       sTable, sColumns);
}

void createTables(SQLite::Database& database)
{
    database.exec("PRAGMA auto_vacuum = INCREMENTAL"); // so that a smaller max_mb makes the file smaller
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    database.exec(fmt::format("PRAGMA application_id = {}", RECORDING_APPLICATION));
    database.exec(fmt::format("PRAGMA user_version = {}", RECORDING_VERSION));
    database.exec(TABLES);
    std::vector<std::string> columns;
    for (const StepColumn& column : stepColumns()) {
        columns.emplace_back(column.pName);
    }
    database.exec(tableOfSteps("step", columns));
    database.exec(tableOfSteps("second", summaryColumnNames()));
    database.exec(tableOfSteps("minute", summaryColumnNames()));
    transaction.commit();
}

void refuseUnless(bool bRecording, int nVersion, const std::string& sPath)
{
    if (!bRecording) {
        throw ConfigurationError(fmt::format("{}: is not a recording of opc run; name another file", sPath));
    }
    if (nVersion != RECORDING_VERSION) {
        throw ConfigurationError(fmt::format("{}: is a recording of version {}, and this program knows version {}; "
                                             "use a newer opc, or name another file",
                                             sPath, nVersion, RECORDING_VERSION));
    }
}

int numberAt(const std::array<char, HEADER_BYTES>& header, std::size_t nAt)
{
    std::uint32_t nNumber = 0;
    for (std::size_t nByte = 0; nByte < sizeof nNumber; ++nByte) { // the most significant first
        nNumber = nNumber << 8U | static_cast<unsigned char>(header.at(nAt + nByte));
    }
    return static_cast<int>(nNumber);
}
} // namespace

const std::vector<StepColumn>& stepColumns()
{
    static const std::vector<StepColumn> COLUMNS = {
        field<&StepSample::nStateBefore>("state_before"),
        field<&StepSample::nState>("state"),
        field<&StepSample::nRequestedPower>("requested_cdb"),
        field<&StepSample::nPtarget>("ptarget_cdb"),
        field<&StepSample::nPctrl>("pctrl_cdb"),
        field<&StepSample::nPmeasured>("pmeasured_cdb"),
        field<&StepSample::nPredictedPctrl>("ppredicted_cdb"),
        field<&StepSample::nPowerError>("error_cdb"),
        field<&StepSample::nResult>("result"),
        field<&StepSample::nDetectorState>("detector_state"),
        field<&StepSample::nIfPower>("if_power_cdb"),
        field<&StepSample::nRfGain>("rf_gain_cdb"),
        amplifier<0>("reduced_gain_1_cdb"),
        amplifier<1>("reduced_gain_2_cdb"),
        amplifier<2>("reduced_gain_3_cdb"),
        amplifier<3>("reduced_gain_4_cdb"),
        amplifier<4>("reduced_gain_5_cdb"),
        amplifier<5>("reduced_gain_6_cdb"),
        field<&StepSample::temperatureDegrees>("temperature_c"),
        field<&StepSample::frequencyMhz>("frequency_mhz"),
        field<&StepSample::nLatenessUs>("lateness_us"),
        field<&StepSample::nOverruns>("overruns"),
        field<&StepSample::nSteps>("steps"),
        field<&StepSample::nFailedSteps>("failed_steps"),
    };
    return COLUMNS;
}

std::vector<std::string> summaryColumnNames()
{
    std::vector<std::string> names = {"steps", "failed_steps", "state"};
    for (const SampleColumn& column : summaryColumns()) {
        for (const char* pPart : {"min", "mean", "max"}) {
            names.push_back(fmt::format("{}_{}", column.pName, pPart));
        }
    }
    return names;
}

std::string insertStatement(const std::string& sTable, std::size_t nColumns)
{
    std::string sValues = "?";
    for (std::size_t nColumn = 1; nColumn < nColumns; ++nColumn) {
        sValues += ", ?";
    }
    return fmt::format("INSERT OR REPLACE INTO {} VALUES ({})", sTable, sValues);
}

void refuseOtherFile(const std::string& sPath)
{
    std::array<char, HEADER_BYTES> header{};
    std::ifstream stream(sPath, std::ios::binary);
    stream.read(header.data(), static_cast<std::streamsize>(header.size()));
    if (stream.gcount() == 0 && !stream.bad()) {
        return;
    }
    refuseUnless(std::string_view(header.data(), MAGIC.size()) == MAGIC &&
                     numberAt(header, APPLICATION_AT) == RECORDING_APPLICATION,
                 numberAt(header, VERSION_AT), sPath);
}

void checkIsRecording(SQLite::Database& database, const std::string& sPath)
{
    const int nVersion = database.execAndGet("PRAGMA user_version").getInt();
    refuseUnless(database.execAndGet("PRAGMA application_id").getInt() == RECORDING_APPLICATION, nVersion, sPath);
    // A view in place of a table might have rows without an end.
    const int nTables = database.execAndGet(PLAIN_TABLES).getInt();
    refuseUnless(nTables == TABLE_COUNT, nVersion, sPath);
}

SQLite::Database openToRecord(const std::string& sPath)
{
    SQLite::Database database(sPath, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, BUSY_TIMEOUT_MS);
    if (database.execAndGet("PRAGMA application_id").getInt() == 0) {
        createTables(database);
    }
    database.exec("PRAGMA synchronous = NORMAL"); // a loss of power costs the last seconds and not the file
    return database;
}
