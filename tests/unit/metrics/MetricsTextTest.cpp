#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/FileText.h"
#include "Unit/Metrics/MetricsSite.h"
#include "tests/unit/SampleMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

using testing::HasSubstr;
using testing::Not;

namespace
{
StepSample stepOfChannel(unsigned int nChannel)
{
    StepSample sample = stepOnTheAir(0);
    sample.nChannelNumber = nChannel;
    sample.temperatureDegrees = 25.1F;
    sample.frequencyMhz = 5000.1F;
    sample.nSteps = 167;
    sample.nFailedSteps = 3;
    return sample;
}

/** @return a unit with one channel on the air, and one that has not taken a step */
UnitMetrics madeUpUnit()
{
    UnitMetrics metrics;
    metrics.sVersion = "1.2.3";
    metrics.sCompiler = "a \"compiler\\";
    metrics.sArchitecture = "one\ntwo";
    metrics.startSeconds = 1'600'000'000.25;
    metrics.intervalMs = 6;
    metrics.nOverruns = 4;
    metrics.latenessTimes.counts = {1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 5};
    metrics.latenessTimes.nTotalNs = 1'500'000'000;
    metrics.nDroppedSamples = 6;
    metrics.nLostSamples = 7;
    metrics.nCommands = 8;
    metrics.longestCommandSeconds = 0.0025;
    metrics.traffic.calls = {{"Unit.Status", {9, {}}}, {"unknown", {2, {{-32601, 2}}}}};
    metrics.traffic.nRefused = 10;
    metrics.traffic.connections = {3, 2};
    ChannelInside inside;
    inside.bOn = true;
    inside.nNotifications = 12;
    inside.nRamps = 1;
    inside.rampSeconds = 0.09;
    inside.nRefusedCalls = 13;
    inside.logs.bTransientLogRuns = true;
    TimeCounts stepTimes;
    stepTimes.counts = {0, 100, 60, 7};
    stepTimes.nTotalNs = 500'000;
    metrics.channels.push_back({0, stepOfChannel(0), stepTimes, inside, 200, 14});
    metrics.channels.push_back({7, std::nullopt, {}, std::nullopt, std::nullopt, std::nullopt});
    return metrics;
}

std::string textWith(const StepSample& sample)
{
    UnitMetrics metrics;
    metrics.channels.push_back({sample.nChannelNumber, sample, {}, std::nullopt, std::nullopt, std::nullopt});
    return metricsText(metrics);
}
} // namespace

TEST(MetricsText, TellsEverythingInTheTextFormat)
{
    EXPECT_EQ(metricsText(madeUpUnit()), readFileText(OPC_METRICS_TEXT));
}

TEST(MetricsText, EscapesLabels)
{
    EXPECT_THAT(metricsText(madeUpUnit()), HasSubstr(R"(compiler="a \"compiler\\",architecture="one\ntwo")"));
}

TEST(MetricsText, AddsTheBucketsUp)
{
    std::istringstream lines(metricsText(madeUpUnit()));
    std::uint64_t nLast = 0;
    int nBuckets = 0;
    for (std::string sLine; std::getline(lines, sLine);) {
        if (sLine.starts_with("opc_lateness_seconds_bucket")) {
            const std::uint64_t nCount = std::stoull(sLine.substr(sLine.rfind(' ')));
            EXPECT_GE(nCount, nLast) << sLine;
            nLast = nCount;
            ++nBuckets;
        }
    }
    EXPECT_EQ(nBuckets, 16);
    EXPECT_EQ(nLast, 11U);
    EXPECT_THAT(lines.str(), HasSubstr("opc_lateness_seconds_count 11\nopc_lateness_seconds_sum 1.5\n"));
}

TEST(MetricsText, LeavesOutPowersThatDoNotExist)
{
    StepSample sample = stepOfChannel(3);
    sample.nState = eOPC_TX_OFF;
    sample.nPtarget = sample.nPctrl = sample.nPredictedPctrl = OPC_POWER_OFF;
    sample.nIfPower = sample.nRfGain = OPC_POWER_UNKNOWN;
    const std::string sText = textWith(sample);
    for (const char* pName : {"opc_target_power_dbm", "opc_control_power_dbm", "opc_measured_power_dbm",
                              "opc_predicted_power_dbm", "opc_power_error_db", "opc_if_power_dbm", "opc_rf_gain_db"})
    {
        EXPECT_THAT(sText, Not(HasSubstr(pName)));
    }
    EXPECT_THAT(sText, HasSubstr("opc_requested_power_dbm{channel=\"3\"} 10\n"));
    EXPECT_THAT(sText, HasSubstr("opc_channel_state{channel=\"3\",state=\"TX_OFF\"} 1\n"));
}

TEST(MetricsText, TellsTheErrorWhileRampingOrOn)
{
    for (std::int32_t nState = eOPC_TX_OFF_INITIATED; nState <= eOPC_UNDEFINED; ++nState) {
        StepSample sample = stepOfChannel(3);
        sample.nState = nState;
        const bool bExpected = nState == eOPC_TX_ON_RAMPING || nState == eOPC_TX_ON;
        const bool bThere = textWith(sample).find("opc_power_error_db{channel=\"3\"} 0.02\n") != std::string::npos;
        EXPECT_EQ(bThere, bExpected) << nState;
    }
}

TEST(MetricsSite, ServesTheTextAtOnePathToWhoMayReadTheUnit)
{
    MetricsSite site(madeUpUnit);
    EXPECT_TRUE(site.owns("/metrics"));
    EXPECT_FALSE(site.owns("/metrics/"));
    EXPECT_FALSE(site.owns("/"));
    HttpRequest request;
    request.sMethod = "GET";
    request.sPath = "/metrics";
    request.headers = {{"Host", "localhost:8080"}};
    EXPECT_FALSE(site.refuse(request, AccessPolicy("127.0.0.1", 8080, "")).has_value());
    EXPECT_EQ(site.refuse(request, AccessPolicy("127.0.0.1", 8080, "0123456789abcdef"))->nStatus, 401U);
    const HttpResponse response = site.answer(request);
    EXPECT_EQ(response.nStatus, 200U);
    EXPECT_EQ(response.sContentType, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_EQ(response.sBody, metricsText(madeUpUnit()));
}
