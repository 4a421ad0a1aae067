#include "tests/platform/TraceFixture.h"

#include <syslog.h>

#include <chrono>
#include <map>
#include <sstream>
#include <thread>

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* PATH = "Control/Some/private/File";
constexpr std::size_t CAPACITY = 8192;
constexpr seconds PROBE_INTERVAL(1);

class SystemLogTest : public TraceFixture
{
protected:
    void write(const std::string& sText) { m_trace.beginLogMsg(4, PATH, 1) << sText << std::endl; }

    void writeMany(std::size_t nCount)
    {
        for (std::size_t nLine = 0; nLine < nCount; ++nLine) {
            write(std::to_string(nLine));
        }
    }

    /**
     * @param nError what looking for a logger meets with
     * @return what a line written then makes standard error say; the answer to the last look is too old by then
     */
    std::string saidWithLogger(int nError, bool bStream = false)
    {
        TraceControl::setListener({}); // its records would come from another thread
        std::this_thread::sleep_for(PROBE_INTERVAL + milliseconds(100));
        SystemLogRecorder::setLogger(nError, bStream);
        return standardErrorOf([this] {
            write("a line");
            systemLogLines();
        });
    }

    static std::vector<std::string> sentTexts()
    {
        std::vector<std::string> result;
        for (const SystemLogLine& line : systemLogLines()) {
            result.push_back(line.sText);
        }
        return result;
    }

    static std::vector<std::string> linesOf(const std::string& sText)
    {
        std::vector<std::string> result;
        std::istringstream stream(sText);
        for (std::string sLine; std::getline(stream, sLine);) {
            result.push_back(sLine);
        }
        return result;
    }

    KmtTrace m_trace{"Log", 1};
};

TEST_F(SystemLogTest, KeepsTheOrder)
{
    TraceControl::setListener({});
    writeMany(2000);
    const std::vector<std::string> texts = sentTexts();
    ASSERT_EQ(texts.size(), 2000U);
    for (std::size_t nLine = 0; nLine < texts.size(); ++nLine) {
        ASSERT_EQ(texts[nLine], "Log: " + std::to_string(nLine));
    }
}

TEST_F(SystemLogTest, IsOpenedForTheUnit)
{
    write("any");
    EXPECT_THAT(sentTexts(), ElementsAre("Log: any"));
    EXPECT_EQ(SystemLogRecorder::identity(), "opc");
    EXPECT_EQ(SystemLogRecorder::options(), LOG_PID);
}

TEST_F(SystemLogTest, DoesNotHoldUpTheWriter)
{
    SystemLogRecorder::hold();
    writeMany(203);
    EXPECT_THAT(SystemLogRecorder::lines(), IsEmpty());
    EXPECT_THAT(m_records, SizeIs(203));
    EXPECT_FALSE(TraceControl::waitForSystemLog(milliseconds(20)));
    EXPECT_FALSE(TraceControl::waitForSystemLog(milliseconds(-1)));
    SystemLogRecorder::release();
    EXPECT_THAT(sentTexts(), SizeIs(203));
}

TEST_F(SystemLogTest, WaitsForTheLinesWrittenBeforehand)
{
    EXPECT_TRUE(TraceControl::waitForSystemLog(milliseconds(0)));
    EXPECT_TRUE(TraceControl::waitForSystemLog(milliseconds::max()));
    SystemLogRecorder::hold();
    write("first");
    std::thread releaser([] {
        std::this_thread::sleep_for(milliseconds(50));
        SystemLogRecorder::release();
    });
    EXPECT_TRUE(TraceControl::waitForSystemLog(seconds(20)));
    EXPECT_THAT(SystemLogRecorder::lines(), SizeIs(1));
    releaser.join();
}

TEST_F(SystemLogTest, LosesCountsAndSaysWhatFindsTheQueueFull)
{
    TraceControl::setListener({});
    const std::uint64_t nLostBefore = TraceControl::lostSystemLogLines();
    const auto fill = [this] {
        SystemLogRecorder::hold();
        writeMany(CAPACITY + 5);
    };
    const std::vector<std::string> said = linesOf(standardErrorOf(fill));
    ASSERT_THAT(said, SizeIs(1));
    EXPECT_THAT(said[0], HasSubstr(" SystemLog 1 Platform/Trace/private/TraceOutput:"));
    EXPECT_THAT(said[0], HasSubstr("/dev/log is not keeping up: 8192 lines wait for it, and more are lost"));
    EXPECT_EQ(TraceControl::lostSystemLogLines() - nLostBefore, 5U);
    SystemLogRecorder::release();
    const std::vector<std::string> sent = sentTexts();
    ASSERT_EQ(sent.size(), CAPACITY);
    EXPECT_EQ(sent.front(), "Log: 0");
    EXPECT_EQ(sent.back(), "Log: 8191");
    // It has been empty, so it may be said again.
    EXPECT_THAT(linesOf(standardErrorOf(fill)), SizeIs(1));
    EXPECT_EQ(TraceControl::lostSystemLogLines() - nLostBefore, 10U);
}

TEST_F(SystemLogTest, TellsTheListenerOfALoss)
{
    std::map<std::string, std::size_t> records;
    TraceControl::setListener([&records](const TraceRecord& record) { ++records[record.sGroup]; });
    SystemLogRecorder::hold();
    writeMany(CAPACITY + 2);
    TraceControl::setListener({});
    EXPECT_EQ(records["SystemLog"], 1U);
    EXPECT_EQ(records["Log"], CAPACITY + 2);
}

TEST_F(SystemLogTest, SaysOnceThatThereIsNoLogger)
{
    EXPECT_EQ(saidWithLogger(0), "");
    const std::vector<std::string> said = linesOf(saidWithLogger(ENOENT));
    ASSERT_THAT(said, SizeIs(1));
    EXPECT_THAT(said[0], HasSubstr(" SystemLog 1 Platform/Trace/private/TraceOutput:"));
    EXPECT_THAT(said[0], HasSubstr("no system logger at /dev/log (No such file or directory)"));
    EXPECT_EQ(saidWithLogger(ECONNREFUSED), "");
    // One that came and went is another trouble.
    EXPECT_EQ(saidWithLogger(0), "");
    EXPECT_THAT(saidWithLogger(ECONNREFUSED, true), HasSubstr("no system logger at /dev/log (Connection refused)"));
}

TEST_F(SystemLogTest, KnowsALoggerOfEitherKindAndABusyOne)
{
    EXPECT_EQ(saidWithLogger(0), "");
    EXPECT_EQ(saidWithLogger(0, true), "");
    EXPECT_EQ(saidWithLogger(EAGAIN), "");
    EXPECT_EQ(saidWithLogger(EAGAIN, true), "");
}

TEST_F(SystemLogTest, HandsLinesOverWithoutALoggerToo)
{
    saidWithLogger(ENOENT);
    write("one that has come since gets it");
    EXPECT_THAT(sentTexts(), SizeIs(2));
}

TEST_F(SystemLogTest, KeepsQuietWhereItsGroupIsOff)
{
    saidWithLogger(0);
    TraceControl::setLevel("SystemLog", 0);
    EXPECT_EQ(saidWithLogger(ENOENT), "");
    TraceControl::setLevel("SystemLog", 1);
}

TEST_F(SystemLogTest, MarksLinesByTheSettingsTheyWereWrittenUnder)
{
    SystemLogRecorder::hold();
    write("first");
    TraceControl::setSystemLog({16, 5});
    write("second");
    TraceControl::setSystemLog({23, 0});
    write("third");
    SystemLogRecorder::release();
    std::vector<int> priorities;
    for (const SystemLogLine& line : systemLogLines()) {
        priorities.push_back(line.nPriority);
    }
    EXPECT_THAT(priorities, ElementsAre(LOG_USER | LOG_INFO, LOG_LOCAL0 | LOG_NOTICE, LOG_LOCAL7 | LOG_EMERG));
}

TEST_F(SystemLogTest, HandsOverWhatWasQueuedBeforeItWasSilenced)
{
    SystemLogRecorder::hold();
    write("before");
    TraceControl::setSystemLogEnabled(false);
    write("while silent");
    TraceControl::setSystemLogEnabled(true);
    write("after");
    SystemLogRecorder::release();
    EXPECT_THAT(sentTexts(), ElementsAre("Log: before", "Log: after"));
}

TEST_F(SystemLogTest, KeepsTheOrderOfEachOfManyWriters)
{
    constexpr int WRITERS = 4;
    constexpr int LINES = 1000;
    TraceControl::setListener({});
    std::vector<std::thread> writers;
    writers.reserve(WRITERS);
    for (int nWriter = 0; nWriter < WRITERS; ++nWriter) {
        writers.emplace_back([this, nWriter] {
            for (int nLine = 0; nLine < LINES; ++nLine) {
                m_trace.beginLogMsg(4, PATH, 1) << nWriter << " " << nLine << std::endl;
            }
        });
    }
    for (int nRound = 0; nRound < 20; ++nRound) {
        TraceControl::setSystemLog({16 + nRound % 8, nRound % 8});
        TraceControl::waitForSystemLog(milliseconds(1));
        TraceControl::lostSystemLogLines();
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    std::map<int, int> next;
    for (const std::string& sText : sentTexts()) {
        std::istringstream text(sText.substr(std::string("Log: ").size()));
        int nWriter = -1;
        int nLine = -1;
        text >> nWriter >> nLine;
        ASSERT_EQ(nLine, next[nWriter]++) << sText;
    }
    EXPECT_THAT(next, SizeIs(WRITERS));
    EXPECT_THAT(next, Each(Field(&std::pair<const int, int>::second, LINES)));
}

TEST(SystemLogNames, AreThoseOfTheCLibrary)
{
    const std::map<std::string, int> facilities = {
        {"user", LOG_USER},     {"mail", LOG_MAIL},         {"daemon", LOG_DAEMON}, {"auth", LOG_AUTH},
        {"syslog", LOG_SYSLOG}, {"lpr", LOG_LPR},           {"news", LOG_NEWS},     {"uucp", LOG_UUCP},
        {"cron", LOG_CRON},     {"authpriv", LOG_AUTHPRIV}, {"ftp", LOG_FTP},       {"ntp", 12 << 3},
        {"audit", 13 << 3},     {"alert", 14 << 3},         {"clock", 15 << 3},     {"local0", LOG_LOCAL0},
        {"local1", LOG_LOCAL1}, {"local2", LOG_LOCAL2},     {"local3", LOG_LOCAL3}, {"local4", LOG_LOCAL4},
        {"local5", LOG_LOCAL5}, {"local6", LOG_LOCAL6},     {"local7", LOG_LOCAL7}};
    const std::map<std::string, int> severities = {
        {"emerg", LOG_EMERG},     {"alert", LOG_ALERT},   {"crit", LOG_CRIT}, {"err", LOG_ERR},
        {"warning", LOG_WARNING}, {"notice", LOG_NOTICE}, {"info", LOG_INFO}, {"debug", LOG_DEBUG}};
    EXPECT_EQ(SystemLogNames::facilities().size(), facilities.size());
    for (const auto& [sName, nCode] : facilities) {
        EXPECT_EQ(SystemLogNames::facility(sName), nCode >> 3) << sName;
    }
    EXPECT_EQ(SystemLogNames::severities().size(), severities.size());
    for (const auto& [sName, nCode] : severities) {
        EXPECT_EQ(SystemLogNames::severity(sName), nCode) << sName;
    }
    for (const char* const pName : {"", "kern", "LOCAL0", "local8", "info"}) {
        EXPECT_EQ(SystemLogNames::facility(pName), std::nullopt) << pName;
    }
    for (const char* const pName : {"", "warn", "Info", "user"}) {
        EXPECT_EQ(SystemLogNames::severity(pName), std::nullopt) << pName;
    }
}

} // namespace
