/** @file
 * A trace that tests may read.
 */
#pragma once

#include "Platform/Trace/KmtTrace.h"
#include "Platform/Trace/TraceControl.h"
#include "tests/platform/SystemLogRecorder.h"

#include <gmock/gmock.h>

/** Gathers the records of a test, whose lines reach standard error only where a test lets them. */
class TraceFixture : public testing::Test
{
protected:
    TraceFixture()
    {
        TraceControl::setStandardErrorEnabled(false);
        TraceControl::setListener([this](const TraceRecord& record) { m_records.push_back(record); });
        SystemLogRecorder::clear();
    }
    ~TraceFixture() override
    {
        SystemLogRecorder::clear();
        systemLogLines(); // nothing of this test is under way any more
        TraceControl::setListener({});
        TraceControl::setStandardErrorEnabled(true);
        TraceControl::setSystemLogEnabled(true);
        TraceControl::setSystemLog({});
        TraceControl::setLevel("OPC", 3);
        TraceControl::setLevel("TI", 3);
    }
    TraceFixture(const TraceFixture&) = delete;
    TraceFixture& operator=(const TraceFixture&) = delete;

    std::vector<std::string> texts() const
    {
        std::vector<std::string> result;
        for (const TraceRecord& record : m_records) {
            result.push_back(record.sText);
        }
        return result;
    }

    /** @return what the system log got, with all that is on its way to it */
    static std::vector<SystemLogLine> systemLogLines()
    {
        EXPECT_TRUE(TraceControl::waitForSystemLog(std::chrono::seconds(20)));
        return SystemLogRecorder::lines();
    }

    /** @return what a call writes to standard error */
    template <class TCall> static std::string standardErrorOf(TCall call)
    {
        TraceControl::setStandardErrorEnabled(true);
        testing::internal::CaptureStderr();
        call();
        TraceControl::setStandardErrorEnabled(false);
        return testing::internal::GetCapturedStderr();
    }

    std::vector<TraceRecord> m_records;
};
