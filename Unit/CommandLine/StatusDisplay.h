/** @file
 * Shows how the channels are doing while the unit runs.
 */
#pragma once

#include "Unit/Process/StepSample.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/**
 * On a terminal a line per channel, redrawn in place; elsewhere a plain line per channel and second, and one at each
 * change of state. Use it from one thread.
 */
class StatusDisplay
{
public:
    /**
     * @param pStream written to; not owned
     * @param bTerminal whether it is a terminal
     */
    StatusDisplay(std::FILE* pStream, bool bTerminal, std::size_t nChannels);

    /** Takes a step in, and writes its line where lines are plain. */
    void add(const StepSample& sample);

    /** Redraws on a terminal; elsewhere sees that the lines get out. */
    void refresh();

    /** Writes a line above the status lines. */
    void note(const std::string& sText);

private:
    struct Channel
    {
        StepSample latest{};
        bool bSeen = false;
        std::uint64_t nNextLineUs = 0;
    };

    void eraseLines();
    void drawLines();

    std::FILE* m_pStream;
    bool m_bTerminal;
    std::vector<Channel> m_channels;
    std::size_t m_nLinesDrawn = 0;
};

/** @return a step as a plain line */
std::string plainStatusLine(const StepSample& sample);

/** @return the heading over the terminal's lines; at most 79 characters */
std::string terminalHeading();

/** @return a step as a terminal's line, in the columns of terminalHeading() */
std::string terminalStatusLine(const StepSample& sample);
