/** @file
 * Fixture of a log object whose members tests may read and set.
 */
#pragma once

#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "Platform/Trace/GtTrace.h"
#include "tests/module/log/XmlRpcCalls.h"
#include "tests/module/log/XmlRpcText.h"
#include "tests/support/RecordingPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

/** Makes the log's data public; changes nothing else. */
class ExposedLog : public OutputPowerControlLog
{
public:
    using OutputPowerControlLog::OutputPowerControlLog;

    using OutputPowerControlLog::m_bOpcLogActive;
    using OutputPowerControlLog::m_bOpcLogFirstSample;
    using OutputPowerControlLog::m_bTransientLogActive;
    using OutputPowerControlLog::m_cStruct;
    using OutputPowerControlLog::m_manageLogsCStruct;
    using OutputPowerControlLog::m_nChannel;
    using OutputPowerControlLog::m_opcLog;
    using OutputPowerControlLog::m_tiMethodCStruct;
    using OutputPowerControlLog::m_vTransientLog;

    /** @return the pointer that the log's records pass to its handlers */
    void* handle() { return static_cast<OutputPowerControlLog*>(this); }

    /** Writes one sample whose eleven quantities are all the same. */
    void write(int nValue)
    {
        writeToOpcLog(nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue);
    }

    /** Records a number of samples: sample n is (100n, 100n + 1, ... 100n + 4), but for the correction of the third. */
    void addSamples(int nSamples)
    {
        setTransientLogActive(true);
        for (int i = 0; i < nSamples; ++i) {
            const int nBase = 100 * (static_cast<int>(m_vTransientLog.size()) + 1);
            addSampleToTransientLog(nBase, nBase + 1, nBase + 2, nBase + 3, nBase + 4);
        }
    }
};

/** A log of channel 3. Every message that a test's code traces must be ended rightly and say where it comes from. */
class LogTest : public ::testing::Test
{
protected:
    LogTest() { m_platform.clearRecords(); }

    void TearDown() override
    {
        EXPECT_TRUE(m_platform.areTracesWellFormed());
        for (const RecordedTrace& trace : m_platform.traces()) {
            EXPECT_EQ(trace.sSourcePath, "Control/OutputPowerController/private/OutputPowerControlLog");
            EXPECT_GT(trace.nLine, 0);
        }
        m_platform.reset();
    }

    /** @return "group level: text" of each trace so far, which are forgotten */
    Texts takeTraces()
    {
        Texts texts;
        for (const RecordedTrace& trace : m_platform.traces()) {
            texts.push_back(trace.sGroup + " " + std::to_string(trace.nLevel) + ": " + trace.sText);
        }
        m_platform.clearRecords();
        return texts;
    }

    /** @return the record of a test-interface trace whose code has the recording platform's default level */
    static std::string tiTrace(const std::string& sText, const std::string& sCode)
    {
        return "TI 1: " + sText + "      code: " + sCode + "\n";
    }

    RecordingPlatform& m_platform = []() -> RecordingPlatform& {
        RecordingPlatform::get().reset();
        return RecordingPlatform::get();
    }();
    ExposedLog m_log{3};
};
