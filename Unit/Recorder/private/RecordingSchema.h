/** @file
 * How a recording stands in its database.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Recorder/RecordedRun.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>
#include <vector>

/** Marks a database as a recording, in its header: "OPCR". */
inline constexpr int RECORDING_APPLICATION = 0x4f504352;

/** Goes up when a program that reads the old kind cannot read the new one. */
inline constexpr int RECORDING_VERSION = 1;

/** Columns of run, time_us and channel, which come first in each table of rows. */
inline constexpr int KEY_COLUMNS = 3;

/** A column of table step, but for run, time_us and channel, which come first. */
struct StepColumn
{
    const char* pName;
    void (*bind)(SQLite::Statement& statement, int nParameter, const StepSample& sample);
    void (*read)(const SQLite::Column& column, StepSample& sample);
};

/** @return the columns in their order */
const std::vector<StepColumn>& stepColumns();

/** @return the columns of tables second and minute, but for run, time_us and channel */
std::vector<std::string> summaryColumnNames();

/** @return "INSERT OR REPLACE INTO sTable VALUES (?, ...)" */
std::string insertStatement(const std::string& sTable, std::size_t nColumns);

/**
 * Looks at a file's first bytes, without a change to it.
 * @throws ConfigurationError unless it is a recording of this version, or empty
 */
void refuseOtherFile(const std::string& sPath);

/** @throws ConfigurationError unless a database is a recording that this program reads */
void checkIsRecording(SQLite::Database& database, const std::string& sPath);

/** Opens a recording and makes its tables where there are none. @throws SQLite::Exception */
SQLite::Database openToRecord(const std::string& sPath);

/** Adds a run with its files. @return its id */
std::int64_t addRun(SQLite::Database& database, const RecordedRun& run);

/** @return all runs, with everything but their files; oldest first */
std::vector<RecordedRun> readRuns(SQLite::Database& database);

std::vector<RecordedFile> readFiles(SQLite::Database& database, std::int64_t nRun);
