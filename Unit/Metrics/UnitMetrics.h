/** @file
 * The figures of a running unit.
 */
#pragma once

#include "Unit/Clock/TimeHistogram.h"
#include "Unit/Process/LogActivity.h"
#include "Unit/Process/StepSample.h"
#include "Unit/TestServer/TestServer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What only the regulation thread knows of a channel. */
struct ChannelInside
{
    bool bOn = false; /**< whether the transmitter counts as on */
    std::uint64_t nNotifications = 0;
    std::uint64_t nRamps = 0;
    double rampSeconds = 0.0; /**< from the latest ramp's begin until TX_ON with an error within 1 dB, or until now */
    std::optional<std::uint64_t> nRefusedCalls{}; /**< none when the handler is not a simulated one */
    LogActivity logs{};
};

/** What is told of a channel. */
struct ChannelMetrics
{
    unsigned int nNumber = 0;
    std::optional<StepSample> lastStep{}; /**< none before the first */
    TimeCounts stepTimes{};
    std::optional<ChannelInside> inside{};            /**< none once the regulation is over */
    std::optional<std::size_t> nTransientSamples{};   /**< likewise */
    std::optional<std::uint64_t> nSafetyViolations{}; /**< none when no safety monitor watches */
};

/** What is told of a unit. */
struct UnitMetrics
{
    std::string sVersion;
    std::string sCompiler;
    std::string sArchitecture;
    double startSeconds = 0.0; /**< when the run began, since 1970 */
    unsigned int intervalMs = 0;
    std::uint64_t nOverruns = 0;
    TimeCounts latenessTimes{};
    std::uint64_t nDroppedSamples = 0;
    std::uint64_t nLostSamples = 0;
    std::uint64_t nCommands = 0;
    double longestCommandSeconds = 0.0;
    ServerTraffic traffic{};
    std::vector<ChannelMetrics> channels;
};

/** @return the figures in the text format 0.0.4 of Prometheus. Powers that do not exist are left out. */
std::string metricsText(const UnitMetrics& metrics);
