/** @file
 * Opens a database to read it, wherever it lies.
 */
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

inline constexpr int DATABASE_BUSY_TIMEOUT_MS = 5000; /**< who reads or writes for a moment is waited for */

/** Opens a file that exists, also in a folder that cannot be written. @throws SQLite::Exception */
SQLite::Database openDatabaseToRead(const std::string& sPath);
