/** @file
 * What the page asks of a recording that is played.
 */
#pragma once

#include "Unit/Telemetry/RunFeed.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/** What the page shows, and what tells it from all else. */
struct PageFeed
{
    std::string sRun; /**< eight random bytes, hexadecimal */
    std::shared_ptr<const RunFeed> pFeed;
};

/** How a replay stands. Times are microseconds since the recorded run began. */
struct ReplayState
{
    std::uint64_t nFromUs = 0; /**< the first recorded step */
    std::uint64_t nToUs = 0;   /**< the last one */
    std::uint64_t nPositionUs = 0;
    unsigned int nSpeed = 1; /**< one of REPLAY_SPEEDS */
    bool bPaused = false;
};

/** How many times faster than it was recorded. */
inline constexpr unsigned int REPLAY_SPEEDS[] = {1, 10, 100};

/** What is to be different; the rest stays. */
struct ReplayChange
{
    std::optional<std::uint64_t> nPositionUs; /**< from the first to the last recorded step */
    std::optional<unsigned int> nSpeed;       /**< one of REPLAY_SPEEDS */
    std::optional<bool> bPaused;
};

/** A recording that is played. Any thread. */
class IPageReplay
{
public:
    virtual ~IPageReplay() = default;

    /** @return what is played now; after a jump another feed, of a run of its own, and the one before is closed */
    virtual PageFeed feed() const = 0;

    virtual ReplayState state() const = 0;

    /** @throws std::exception when the recording cannot be read */
    virtual void change(const ReplayChange& change) = 0;
};
