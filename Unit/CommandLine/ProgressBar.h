/** @file
 * Shows how far something long has come.
 */
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>

/** How far something has come. */
struct Progress
{
    double done = 0.0;
    double total = 0.0;
    double perSecond = 0.0;              /**< 0 while it is not known */
    std::optional<double> timesRealTime; /**< simulated time over real time; none where nothing is simulated */
    std::string sUnit;                   /**< what is counted, such as "steps" */
};

/** @return a line of less than so many columns, such as "[####    ]  50 %  1.20 M steps/s  7200 x real time  0:42 left"
 */
std::string progressText(const Progress& progress, std::size_t nColumns);

/** @return a number with a letter for thousands, such as "12.3 k" */
std::string shortNumber(double value);

/** @return a time as "0:07", "12:34" or "3:07:09" */
std::string durationText(double seconds);

/**
 * A line on a terminal, redrawn in place a few times a second; elsewhere nothing. Use it from one thread.
 */
class ProgressBar
{
public:
    /** What is counted. */
    struct Task
    {
        std::string sUnit; /**< such as "steps" */
        double total = 0.0;
        double doneBefore = 0.0;              /**< does not count for the rate */
        double simulatedSecondsPerUnit = 0.0; /**< 0 where nothing is simulated */
    };

    /** @param pStream written to; not owned. @param bTerminal whether it is a terminal; false shows nothing */
    ProgressBar(std::FILE* pStream, bool bTerminal, Task task);

    /** Erases the line. */
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /** Tells how much is done, the part done before included. Costs little when called often. */
    void update(double done);

    /** Writes a line above; also where there is no terminal. */
    void note(const std::string& sText);

private:
    using Clock = std::chrono::steady_clock;

    void erase();

    std::FILE* m_pStream;
    bool m_bTerminal;
    Task m_task;
    Clock::time_point m_began;
    Clock::time_point m_nextDraw;
    bool m_bDrawn = false;
};
