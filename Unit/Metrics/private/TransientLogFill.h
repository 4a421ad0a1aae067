/** @file
 * How many samples a channel's transient log holds.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"

#include <cstddef>
#include <cstdint>
#include <optional>

/**
 * Asks the log as a test tool does, since there is no other way, but only when the answer can have changed: it costs
 * the regulation thread a command that makes a value of every sample.
 */
class TransientLogFill
{
public:
    /**
     * @param logs what the channel's logs were doing a moment ago
     * @return nothing when nobody has published the log
     * @throws RegulationOver
     */
    std::optional<std::size_t> read(CommandQueue& commands, unsigned int nChannel, const LogActivity& logs);

private:
    static std::optional<std::size_t> ask(CommandQueue& commands, unsigned int nChannel);

    std::uint64_t m_nBegins = 0;
    std::uint64_t m_nSteps = 0;
    std::size_t m_nSamples = 0;
};
