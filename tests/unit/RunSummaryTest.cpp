#include "Unit/CommandLine/RunSummary.h"

#include "Unit/Recorder/ChannelMeasures.h"
#include "tests/unit/SampleMaker.h"

#include <gtest/gtest.h>

TEST(RunSummary, SaysWhatHappened)
{
    RunResult result;
    result.sEndedBy = "SIGINT";
    result.nOverruns = 3;
    for (int nTick = 0; nTick < 99; ++nTick) {
        result.lateness.add(100'000);
    }
    result.lateness.add(2'100'000);
    result.nDroppedSamples = 4;
    result.commands = {12, 345'678};
    result.nSafetyViolations = 5;
    result.sRecordedFile = "run.csv";
    result.nRecordedRows = 1000;
    ChannelResult channel;
    channel.nChannel = 2;
    channel.statistics.nSteps = 500;
    channel.statistics.nFailedSteps = 6;
    channel.statistics.nLastState = eOPC_TX_OFF;
    channel.statistics.nSwitchOnSteps = 20;
    channel.statistics.nSwitchOnTimeUs = 114'000;
    channel.statistics.bHasPctrl = true;
    channel.statistics.nPctrlMin = -150;
    channel.statistics.nPctrlMax = 1150;
    channel.statistics.nNotifications = 77;
    channel.nRefusedCalls = 0;
    channel.tracking.nSettledSteps = 400;
    channel.tracking.meanCentiDb = 1.25;
    channel.tracking.rmsCentiDb = 3.5;
    channel.tracking.p99CentiDb = 8;
    channel.tracking.p999CentiDb = 11;
    channel.tracking.maxCentiDb = 12;
    channel.tracking.shareWithinTenCentiDb = 0.9975;
    channel.tracking.nJumps = 2;
    channel.tracking.nJumpsSettled = 1;
    channel.tracking.meanSettlingSteps = 18.5;
    channel.tracking.maxSettlingSteps = 21;
    result.channels.push_back(channel);
    EXPECT_EQ(summaryText(result),
              "Summary\n"
              "  ended by              SIGINT\n"
              "  regulator interval    6 ms\n"
              "  overruns              3 deadlines skipped\n"
              "  lateness              mean 0.120 ms, 50 % 0.106 ms, 99 % 0.106 ms, 99.9 % 2.100 ms, max 2.100 ms\n"
              "  dropped samples       4\n"
              "  commands              12, the longest 0.346 ms\n"
              "  safety violations     5\n"
              "  recorded              1000 rows in run.csv\n"
              "channel 2\n"
              "  reached TX_ON         yes\n"
              "  switch-on             20 steps, 114 ms\n"
              "  last state            TX_OFF\n"
              "  steps                 500, 6 failed\n"
              "  Pctrl while on        -1.50 to 11.50 dBm\n"
              "  notifications         77\n"
              "  refused handler calls 0\n"
              "  settled steps         400\n"
              "  error                 mean 0.013 dB, rms 0.035 dB, 99 % 0.08 dB, 99.9 % 0.11 dB, "
              "max 0.12 dB\n"
              "  within 0.10 dB        99.75 %\n"
              "  jumps of the target   2, settled 1\n"
              "  settling to 0.10 dB   mean 18.5 steps (111 ms), max 21 steps (126 ms)\n");
}

TEST(RunSummary, SaysNothingOfWhatDidNotHappen)
{
    RunResult result;
    result.sEndedBy = "duration";
    result.channels.emplace_back();
    EXPECT_EQ(summaryText(result),
              "Summary\n"
              "  ended by              duration\n"
              "  regulator interval    6 ms\n"
              "  overruns              0 deadlines skipped\n"
              "  lateness              mean 0.000 ms, 50 % 0.000 ms, 99 % 0.000 ms, 99.9 % 0.000 ms, max 0.000 ms\n"
              "  dropped samples       0\n"
              "channel 0\n"
              "  reached TX_ON         no\n"
              "  last state            UNDEFINED\n"
              "  steps                 0, 0 failed\n"
              "  notifications         0\n"
              "  settled steps         0\n"
              "  jumps of the target   0, settled 0\n");
}

TEST(ChannelMeasures, TakesClosedLoopStepsThatDidNotFail)
{
    ChannelMeasures measures;
    const auto add = [&measures](EOPCState eBefore, EOPCState eAfter, std::int32_t nResult, unsigned int nTimes) {
        StepSample sample = makeSample();
        sample.nStateBefore = eBefore;
        sample.nState = eAfter;
        sample.nResult = nResult;
        for (unsigned int nTime = 0; nTime < nTimes; ++nTime) {
            measures.add(sample);
        }
    };
    add(eOPC_TX_ON, eOPC_TX_ON, EAF_OK, TrackingMeasures::SETTLING_STEPS + 10);
    const std::uint64_t nSettled = measures.tracking().nSettledSteps;
    EXPECT_GT(nSettled, 0U);
    add(eOPC_TX_ON_RAMPING, eOPC_TX_ON, EAF_OK, 1);
    add(eOPC_TX_ON, eOPC_TX_ON, EAF_FAILED, 1);
    add(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_IN_PROGRESS, EAF_OK, 1);
    EXPECT_EQ(measures.tracking().nSettledSteps, nSettled);
    add(eOPC_TX_ON, eOPC_TX_ON, EAF_OK, 1); // the loop was left: it has to settle anew
    EXPECT_EQ(measures.tracking().nSettledSteps, nSettled);
}
