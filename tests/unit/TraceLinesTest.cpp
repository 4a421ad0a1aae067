#include "Unit/CommandLine/TraceLines.h"

#include "Platform/Trace/KmtTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
void trace(KmtTrace& group, int nLevel, const char* pText)
{
    group.beginLogMsg(nLevel, "Path", 1) << pText << std::endl;
}
} // namespace

TEST(TraceLines, HoldsTheLinesThatTheTraceWouldShow)
{
    TraceControl::setSystemLogEnabled(false);
    KmtTrace group("TraceLinesTest", 1);
    TraceControl::setLevel("TraceLinesTest", 1);
    TraceLines lines(true);
    trace(group, 1, "first");
    trace(group, 4, "to the system log only");
    trace(group, 1, "second");
    EXPECT_EQ(lines.take(), "TraceLinesTest 1 first\nTraceLinesTest 1 second");
    EXPECT_EQ(lines.take(), "");
}

TEST(TraceLines, CountsWhatItCannotHold)
{
    KmtTrace group("TraceLinesTest", 1);
    TraceControl::setLevel("TraceLinesTest", 1);
    TraceLines lines(true);
    for (std::size_t nLine = 0; nLine < TraceLines::MAX_LINES + 7; ++nLine) {
        trace(group, 1, "line");
    }
    EXPECT_THAT(lines.take(), testing::EndsWith("\n7 more trace lines"));
    trace(group, 1, "again");
    EXPECT_EQ(lines.take(), "TraceLinesTest 1 again");
}

TEST(TraceLines, LeavesTheTraceAloneWhenNotActive)
{
    KmtTrace group("TraceLinesTest", 1);
    TraceControl::setLevel("TraceLinesTest", 1);
    TraceLines lines(false);
    testing::internal::CaptureStderr();
    trace(group, 1, "line");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("line"));
    EXPECT_EQ(lines.take(), "");
}
