#include "tests/platform/TraceFixture.h"
#include "tests/support/AllocationCount.h"

#include <regex>
#include <sstream>
#include <thread>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

using TraceTest = TraceFixture;

constexpr const char* STREAM_PATH = "Control/Some/private/File";

TEST_F(TraceTest, HandsARecordToTheListener)
{
    KmtTrace trace("Test.Record", 5);
    trace.beginLogMsg(5, STREAM_PATH, 42) << "regulate"
                                          << "(): value " << -7 << std::endl;
    ASSERT_EQ(m_records.size(), 1U);
    EXPECT_EQ(m_records[0].sGroup, "Test.Record");
    EXPECT_EQ(m_records[0].nLevel, 5);
    EXPECT_EQ(m_records[0].sSourcePath, STREAM_PATH);
    EXPECT_EQ(m_records[0].nLine, 42);
    EXPECT_EQ(m_records[0].sText, "regulate(): value -7");
}

TEST_F(TraceTest, WritesOneLinePerRecordToStandardError)
{
    KmtTrace trace("Test.Line", 5);
    const std::string sWritten = standardErrorOf([&trace] {
        trace.beginLogMsg(1, STREAM_PATH, 42) << "first" << std::endl;
        trace.beginLogMsg(6, STREAM_PATH, 43) << "dropped" << std::endl;
    });
    EXPECT_THAT(sWritten, MatchesRegex("[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]T[0-9][0-9]:[0-9][0-9]:[0-9][0-9]"
                                       "[.][0-9][0-9][0-9] Test[.]Line 1 Control/Some/private/File:42: first\n"));
}

TEST_F(TraceTest, WritesFormatCharactersAsTheyAre)
{
    KmtTrace trace("Test.Format", 5);
    const std::string sWritten =
        standardErrorOf([&trace] { trace.beginLogMsg(4, STREAM_PATH, 1) << "100 % {} %s %n" << std::endl; });
    EXPECT_NE(sWritten.find(": 100 % {} %s %n\n"), std::string::npos) << sWritten;
    ASSERT_EQ(systemLogLines().size(), 1U);
    EXPECT_EQ(systemLogLines()[0].sText, "Test.Format: 100 % {} %s %n");
}

TEST_F(TraceTest, MakesAMessageOfSeveralLinesOne)
{
    KmtTrace trace("Test.Lines", 5);
    trace.beginLogMsg(5, STREAM_PATH, 1) << "a\nb\r\nc\t\x1B[31md "
                                         << "\n"
                                         << std::endl;
    EXPECT_THAT(texts(), ElementsAre("a b  c  [31md "));
}

TEST_F(TraceTest, WritesAnEmptyMessage)
{
    KmtTrace trace("Test.Empty", 5);
    trace.beginLogMsg(5, STREAM_PATH, 1) << std::endl;
    trace.beginLogMsg(5, STREAM_PATH, 2) << std::flush;
    EXPECT_THAT(texts(), ElementsAre(""));
}

TEST_F(TraceTest, BeginsEachMessageWithTheUsualFormat)
{
    KmtTrace trace("Test.Flags", 5);
    std::ostream& message = trace.beginLogMsg(5, STREAM_PATH, 1);
    message.width(6);
    message.fill('*');
    message << std::hex << std::showbase << 255 << std::endl;
    message.precision(2);
    message.width(9);
    trace.beginLogMsg(5, STREAM_PATH, 2) << 255 << " " << 1.23456 << std::endl;
    EXPECT_THAT(texts(), ElementsAre("**0xff", "255 1.23456"));
}

TEST_F(TraceTest, RecoversFromAStreamThatACallerSpoiled)
{
    KmtTrace trace("Test.Spoiled", 5);
    std::ostream& message = trace.beginLogMsg(5, STREAM_PATH, 1);
    message.setstate(std::ios_base::failbit);
    message.exceptions(std::ios_base::goodbit);
    trace.beginLogMsg(7, STREAM_PATH, 2) << "dropped" << std::endl;
    trace.beginLogMsg(5, STREAM_PATH, 3) << "kept" << std::endl;
    trace.beginLogMsg(5, STREAM_PATH, 4).exceptions(std::ios_base::badbit);
    EXPECT_NO_THROW(trace.beginLogMsg(7, STREAM_PATH, 5) << "dropped" << std::endl);
    EXPECT_THAT(texts(), ElementsAre("kept"));
}

TEST_F(TraceTest, KeepsAMessageThatWasNotEnded)
{
    KmtTrace trace("Test.Unended", 5);
    trace.beginLogMsg(5, STREAM_PATH, 1) << "first";
    trace.beginLogMsg(7, STREAM_PATH, 2) << "dropped";
    trace.beginLogMsg(5, STREAM_PATH, 3) << "second" << std::endl;
    EXPECT_THAT(texts(), ElementsAre("first", "second"));
    EXPECT_EQ(m_records[0].nLine, 1);
    EXPECT_EQ(m_records[1].nLine, 3);
}

TEST_F(TraceTest, TakesNullTextsForEmptyOnes)
{
    KmtTrace trace(nullptr, 5);
    trace.beginLogMsg(5, nullptr, 1) << "text" << std::endl;
    ASSERT_EQ(m_records.size(), 1U);
    EXPECT_EQ(m_records[0].sGroup, "");
    EXPECT_EQ(m_records[0].sSourcePath, "");
}

TEST_F(TraceTest, AllocatesNothingForADroppedMessage)
{
    KmtTrace trace("Test.Allocation", 3);
    trace.beginLogMsg(3, STREAM_PATH, 1) << "first of this thread" << std::endl;
    const std::size_t nBefore = allocationCount();
    for (int nMessage = 0; nMessage < 100; ++nMessage) {
        trace.beginLogMsg(5, "a path that is too long to be kept inside a string object", nMessage)
            << "a text that is too long to be kept inside a string object " << nMessage << " " << 1.5 << std::endl;
    }
    EXPECT_EQ(allocationCount(), nBefore);
    EXPECT_EQ(m_records.size(), 1U);
}

TEST_F(TraceTest, DoesNotMixTheMessagesOfThreads)
{
    constexpr int MESSAGES = 300;
    KmtTrace trace("Test.Threads", 5);
    TraceControl::setListener({});
    const std::string sWritten = standardErrorOf([&trace] {
        const auto write = [&trace](char cFill) {
            for (int nMessage = 0; nMessage < MESSAGES; ++nMessage) {
                std::ostream& message = trace.beginLogMsg(5, STREAM_PATH, nMessage);
                for (int nPart = 0; nPart < 20; ++nPart) {
                    message << cFill << cFill;
                }
                message << std::endl;
            }
        };
        std::thread first(write, 'a');
        std::thread second(write, 'b');
        first.join();
        second.join();
    });
    std::istringstream lines(sWritten);
    const std::regex wholeLine("\\S+ Test\\.Threads 5 \\S+:[0-9]+: (a{40}|b{40})");
    std::string sLine;
    int nLines = 0;
    while (std::getline(lines, sLine)) {
        ++nLines;
        EXPECT_TRUE(std::regex_match(sLine, wholeLine)) << sLine;
    }
    EXPECT_EQ(nLines, 2 * MESSAGES);
}

TEST_F(TraceTest, ServesAThreadThatTracesWhileItEnds)
{
    static KmtTrace trace("Test.Late", 5);
    struct LateTracer
    {
        LateTracer() = default;
        ~LateTracer() { trace.beginLogMsg(5, STREAM_PATH, 2) << "late" << std::endl; }
        LateTracer(const LateTracer&) = delete;
        LateTracer& operator=(const LateTracer&) = delete;
        int nUse = 0;
    };
    std::thread([] {
        static thread_local LateTracer t_tracer;
        t_tracer.nUse = 1;
        trace.beginLogMsg(5, STREAM_PATH, 1) << "early" << std::endl;
    }).join();
    EXPECT_THAT(texts(), ElementsAre("early", "late"));
}

TEST_F(TraceTest, KeepsAListenersTroubleFromTheCaller)
{
    KmtTrace trace("Test.Listener", 5);
    int nCalls = 0;
    TraceControl::setListener([&nCalls](const TraceRecord&) {
        ++nCalls;
        throw std::runtime_error("listener");
    });
    EXPECT_NO_THROW(trace.beginLogMsg(5, STREAM_PATH, 1) << "a" << std::endl);
    TraceControl::setListener([&nCalls, &trace](const TraceRecord&) {
        ++nCalls;
        trace.beginLogMsg(5, STREAM_PATH, 2) << "traced by the listener" << std::endl;
    });
    trace.beginLogMsg(5, STREAM_PATH, 3) << "b" << std::endl;
    EXPECT_EQ(nCalls, 2);
}

TEST_F(TraceTest, ReplacesTheListener)
{
    KmtTrace trace("Test.Replace", 5);
    int nSecond = 0;
    TraceControl::setListener([&nSecond](const TraceRecord&) { ++nSecond; });
    trace.beginLogMsg(5, STREAM_PATH, 1) << "a" << std::endl;
    TraceControl::setListener({});
    trace.beginLogMsg(5, STREAM_PATH, 2) << "b" << std::endl;
    EXPECT_EQ(nSecond, 1);
    EXPECT_THAT(texts(), IsEmpty());
}

} // namespace
