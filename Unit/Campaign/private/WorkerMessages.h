/** @file
 * What a campaign's process and its workers tell each other, a message each over a socket that keeps their ends.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"

#include <cstdint>
#include <type_traits>

/** What a worker is asked to do with a run. */
enum class EWorkerTask : std::uint32_t
{
    TryStart, /**< see whether it can start */
    Run
};

/** Goes to a worker. */
struct WorkerRequest
{
    std::uint64_t nRun;
    EWorkerTask eTask;
    std::uint32_t nReserved;
};

/** How a task ended. */
enum class EWorkerOutcome : std::uint32_t
{
    Well,
    Failed,  /**< with a text */
    BadInput /**< with a text */
};

/** Comes from a worker; the text of an error follows. */
struct WorkerReply
{
    std::uint64_t nRun;
    EWorkerOutcome eOutcome;
    std::uint32_t nReserved;
    RunMeasures measures;
};

static_assert(std::is_trivially_copyable_v<WorkerReply>);

/** Longest text of an error, in bytes. */
inline constexpr std::size_t MAX_WORKER_TEXT = 2000;
