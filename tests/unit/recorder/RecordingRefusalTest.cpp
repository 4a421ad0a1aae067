#include "Platform/ConfigurationError.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>

namespace
{
/** A file that nobody may record into. */
struct Refused
{
    const char* pWhat;
    std::function<std::string(const TemporaryFolder&)> make; /**< returns its path */
    const char* pError;                                      /**< to who records; null where that one is not to know */
    const char* pReadError;
};

std::string database(const TemporaryFolder& folder, const std::string& sSql)
{
    SQLite::Database made(folder.path("other.db"), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    made.exec(sSql);
    return folder.path("other.db");
}

const std::vector<Refused>& refusedFiles()
{
    static const std::vector<Refused> FILES = {
        {"another program's database",
         [](const TemporaryFolder& folder) {
             return database(folder, "CREATE TABLE run(id); INSERT INTO run VALUES (1)");
         },
         ": is not a recording of opc run; name another file", ": is not a recording of opc run; name another file"},
        {"another program's database with a journal",
         [](const TemporaryFolder& folder) {
             return database(folder, "PRAGMA journal_mode = WAL; CREATE TABLE run(id)");
         },
         ": is not a recording of opc run; name another file", ": is not a recording of opc run; name another file"},
        {"a newer recording",
         [](const TemporaryFolder& folder) {
             std::string sFile = folder.path("unit.db");
             record(recorderOf(sFile), {makeStep(0)});
             SQLite::Database(sFile, SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 2");
             return sFile;
         },
         ": is a recording of version 2, and this program knows version 1; use a newer opc, or name another file",
         ": is a recording of version 2, and this program knows version 1; use a newer opc, or name another file"},
        {"a recording with a view in place of a table",
         [](const TemporaryFolder& folder) {
             std::string sFile = folder.path("unit.db");
             record(recorderOf(sFile), {makeStep(0)});
             SQLite::Database(sFile, SQLite::OPEN_READWRITE)
                 .exec("DROP TABLE step; CREATE VIEW step AS WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 "
                       "FROM n) SELECT 1, i, 3, i FROM n");
             return sFile;
         },
         nullptr, ": is not a recording of opc run; name another file"},
        {"text", [](const TemporaryFolder& folder) { return folder.write("notes.txt", "nothing"); },
         ": is not a recording of opc run; name another file", ": is not a recording of opc run; name another file"},
        {"a folder", [](const TemporaryFolder& folder) { return folder.path(""); },
         ": is no file; name another file to record into", ": is no file; name a recording of opc run"},
        {"no folder", [](const TemporaryFolder& folder) { return folder.path("none/unit.db"); },
         ": cannot be written: No such file or directory; name another file to record into",
         ": does not exist; name a recording of opc run"},
    };
    return FILES;
}

std::string errorOf(const std::function<void()>& action)
{
    try {
        action();
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
    return "none";
}

/** @return names and contents of all files in a folder */
std::vector<std::pair<std::string, std::string>> contentsOf(const TemporaryFolder& folder)
{
    std::vector<std::pair<std::string, std::string>> contents;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path(""))) {
        contents.emplace_back(entry.path().string(), TemporaryFolder::read(entry.path().string()));
    }
    std::sort(contents.begin(), contents.end());
    return contents;
}
} // namespace

TEST(RecordingRefusal, NamesTheFileAndLeavesItAlone)
{
    for (const Refused& refused : refusedFiles()) {
        const TemporaryFolder folder;
        const std::string sFile = refused.make(folder);
        const auto before = contentsOf(folder);
        if (refused.pError != nullptr) {
            EXPECT_EQ(errorOf([&] { const UnitRecorder recorder(recorderOf(sFile)); }), sFile + refused.pError)
                << refused.pWhat;
        }
        EXPECT_EQ(errorOf([&] { const Recording recording(sFile); }), sFile + refused.pReadError) << refused.pWhat;
        EXPECT_TRUE(contentsOf(folder) == before) << refused.pWhat;
    }
}

TEST(RecordingRefusal, KeepsASecondRecorderOffTheFile)
{
    const TemporaryFolder folder;
    const std::string sFile = folder.path("unit.db");
    RunFeed feed(10, 10);
    UnitRecorder first(recorderOf(sFile));
    first.begin(makeRun(), feed);
    EXPECT_EQ(errorOf([&] { const UnitRecorder second(recorderOf(sFile)); }),
              sFile + ": another process is at work on it; wait for its end, or name another file to record into");
    first.stop();
    EXPECT_EQ(Recording(sFile).runs().size(), 1U);
}

TEST(RecordingRefusal, TakesAnEmptyFile)
{
    const TemporaryFolder folder;
    const std::string sFile = folder.write("unit.db", "");
    record(recorderOf(sFile), {makeStep(0)});
    EXPECT_EQ(Recording(sFile).runs().size(), 1U);
}
