/** @file
 * A run's samples and events as server-sent events.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Http/HttpMessage.h"
#include "Unit/Telemetry/RunFeed.h"

#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

/** Where a client wants its stream to begin. */
struct StreamBegin
{
    std::string sRun;                    /**< the run that it knows; empty for none */
    std::optional<std::uint64_t> nAfter; /**< the last sample that it has of that run; none: from the latest step of
                                              each channel on */
};

/** One client's stream. In its connection's thread. */
class FeedStream final : public IBodyStream
{
public:
    static constexpr std::chrono::milliseconds HEARTBEAT{5000};

    /**
     * @param pFeed not null
     * @param heartbeat how long there may be nothing to send until a line says that the stream is alive
     */
    FeedStream(std::shared_ptr<const RunFeed> pFeed, std::string sRun, const StreamBegin& begin,
               std::chrono::milliseconds heartbeat = HEARTBEAT);

    std::optional<std::string> next() override;

private:
    std::string beat();
    std::string messages();

    std::shared_ptr<const RunFeed> m_pFeed;
    std::string m_sRun;
    FeedPosition m_position;
    FeedBatch m_batch; // its memory is used again
    fmt::memory_buffer m_text;
    const std::chrono::milliseconds m_heartbeat;
    bool m_bGreeted = false;
    std::chrono::steady_clock::time_point m_sent;
    [[no_unique_address]] OwnedByThread m_owner;
};
