// A recording that was tampered with: lines of SQL, or of bytes, are put over a good one, and it is read in every way.
#include "Unit/Recorder/RecordedTime.h"
#include "Unit/Recorder/RecordingExport.h"
#include "Unit/Replay/ReplayPlayer.h"
#include "Unit/Replay/private/RecordedFiles.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace
{
constexpr char BYTES_LINE = '@';              // "@ae text": the text over the bytes from 0xae on
constexpr int MOST_INSTRUCTIONS = 2'000'000;  // of the database's machine, for all the SQL of an input
constexpr std::size_t MOST_TEXT = 16'000'000; // that is exported of one

const std::string& goodRecording()
{
    static const std::string BYTES = [] {
        const std::string sPath = pathInFolder("good.db");
        RunEvent event;
        event.nTimeUs = 12'000;
        event.eEvent = ERunEvent::Command;
        event.sText = "tx on";
        event.sDetail = R"({"method":"Unit.SetTxPower","params":[{}]})";
        record(recorderOf(sPath), {makeStep(0), makeStep(0, 1), makeStep(12'000), makeStep(2'000'000, 1)}, {event});
        std::string sBytes = TemporaryFolder::read(sPath);
        std::filesystem::remove(sPath);
        return sBytes;
    }();
    return BYTES;
}

/** SQL of an input may do anything but leave the database. */
int authorize(void*, int nAction, const char*, const char*, const char*, const char*)
{
    return nAction == SQLITE_ATTACH || nAction == SQLITE_PRAGMA ? SQLITE_DENY : SQLITE_OK;
}

/** One that would make a database of many megabytes, or run for long, ends. */
void runSql(const std::string& sPath, const std::vector<std::string>& lines)
{
    SQLite::Database database(sPath, SQLite::OPEN_READWRITE);
    sqlite3* const pHandle = database.getHandle();
    (void)sqlite3_db_config(pHandle, SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    (void)sqlite3_exec(pHandle,
                       "PRAGMA writable_schema = ON; PRAGMA max_page_count = 200; PRAGMA journal_mode = MEMORY",
                       nullptr, nullptr, nullptr);
    (void)sqlite3_limit(pHandle, SQLITE_LIMIT_LENGTH, 100'000);
    (void)sqlite3_set_authorizer(pHandle, authorize, nullptr);
    sqlite3_progress_handler(
        pHandle, MOST_INSTRUCTIONS, [](void*) { return 1; }, nullptr);
    for (const std::string& sLine : lines) {
        (void)sqlite3_exec(pHandle, sLine.c_str(), nullptr, nullptr, nullptr); // much of it is no SQL
    }
}

void putBytes(std::string& sFile, const std::string& sLine)
{
    std::size_t nAt = 0;
    const auto result = std::from_chars(sLine.data() + 1, sLine.data() + sLine.size(), nAt, 16);
    const auto nText = static_cast<std::size_t>(result.ptr - sLine.data()) + 1;
    if (result.ec != std::errc() || nText >= sLine.size() || nAt >= sFile.size()) {
        return;
    }
    sFile.replace(nAt, std::min(sLine.size() - nText, sFile.size() - nAt), sLine, nText,
                  std::min(sLine.size() - nText, sFile.size() - nAt));
}

std::string makeRecording(const std::string& sText)
{
    std::string sPath = writeInFolder("unit.db", goodRecording());
    std::vector<std::string> sql;
    std::vector<std::string> bytes;
    for (const std::string& sLine : splitText(sText, '\n')) {
        (sLine.starts_with(BYTES_LINE) ? bytes : sql).push_back(sLine);
    }
    runSql(sPath, sql);
    if (!bytes.empty()) {
        std::string sFile = TemporaryFolder::read(sPath);
        for (const std::string& sLine : bytes) {
            putBytes(sFile, sLine);
        }
        writeInFolder("unit.db", sFile);
    }
    return sPath;
}

/** What is wrong with a recording is told in a line that names it. */
template <class TCall> void attempt(const std::string& sPath, const TCall& call)
{
    try {
        call();
    }
    catch (const std::runtime_error& error) {
        require(std::string(error.what()).find(sPath) != std::string::npos,
                std::string("an error that does not name the file: ") + error.what());
    }
}

/** Counts the cells of rows, as somebody reads them who knows about quotes. */
class CsvShape
{
public:
    void take(std::string_view sText)
    {
        m_nBytes += sText.size();
        require(m_nBytes <= MOST_TEXT, "an export without an end");
        for (const char c : sText) {
            m_bQuoted = m_bQuoted != (c == '"');
            m_nCells += !m_bQuoted && c == ',' ? 1 : 0;
            if (!m_bQuoted && c == '\n') {
                m_nWanted = m_nWanted == 0 ? m_nCells : m_nWanted;
                require(m_nCells == m_nWanted, "rows of different lengths");
                m_nCells = 0;
            }
        }
    }

    void finish() const { require(!m_bQuoted && m_nCells == 0, "a last row without an end"); }

private:
    bool m_bQuoted = false;
    std::size_t m_nBytes = 0;
    std::size_t m_nCells = 0;
    std::size_t m_nWanted = 0;
};

void exportRun(const Recording& recording, const RecordedRun& run)
{
    for (int nKind = 0; nKind < 4; ++nKind) {
        CsvShape shape;
        RecordingExport request;
        request.eResolution = static_cast<EResolution>(nKind % 3);
        request.channels = run.channels;
        request.nToUs = RecordedRange().nToUs;
        request.write = [&](std::string_view sText) { shape.take(sText); };
        request.progress = [](std::uint64_t) {};
        attempt(recording.path(), [&] {
            (nKind == 3 ? exportEvents : exportSteps)(recording, run, request);
            shape.finish();
        });
    }
}

void playRun(const std::string& sPath, const RecordedRun& run)
{
    attempt(sPath, [&] {
        ReplayBegin begin;
        begin.nSpeed = 100;
        begin.newRun = [] { return std::string("0123456789abcdef"); };
        ReplayPlayer player(Recording(sPath), run, begin);
        for (int nTime = 0; nTime < 20; ++nTime) {
            player.advance(std::chrono::milliseconds(33));
        }
        ReplayChange change;
        change.nPositionUs = player.state().nToUs;
        player.change(change);
        const ReplayState state = player.state();
        require(state.nFromUs <= state.nPositionUs && state.nPositionUs <= state.nToUs, "a position beyond the run");
    });
}

void readRecording(const std::string& sPath)
{
    const Recording recording(sPath);
    std::vector<RecordedRun> runs = recording.runs();
    runs.resize(std::min<std::size_t>(runs.size(), 3));
    for (const RecordedRun& run : runs) {
        attempt(sPath, [&] {
            const RecordedFiles files(recording.files(run.nId), sPath);
            (void)files.load();
        });
        if (run.channels.size() <= 100) {
            exportRun(recording, run);
            playRun(sPath, run);
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sPath = makeRecording(inputText(pData, nSize));
    attempt(sPath, [&] { readRecording(sPath); });
    return 0;
}
