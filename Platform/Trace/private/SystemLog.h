/** @file
 * The way to the system log: a bounded queue, and a thread that hands its lines over.
 */
#pragma once

#include "Platform/Trace/SystemLogSettings.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

/**
 * Hands lines to syslog(3) in the order that they were written in. May be used from any thread; no writer waits for the
 * system logger, however long that takes. Must not be destroyed, since its thread runs until the process ends.
 */
class SystemLog
{
public:
    /** How many lines may wait, with the one that is being handed over: some 40 dumps of a full transient log. */
    static constexpr std::size_t CAPACITY = 8192;

    /** @param complain is called in the thread that met with trouble, with a text for people; must not write here */
    explicit SystemLog(std::function<void(const std::string&)> complain);

    /** Marks the lines written from now on, and starts the thread, so that no writer has to. */
    void setSettings(const SystemLogSettings& settings);

    /** Queues a line, or loses it when the queue is full. */
    void write(std::string sText);

    /** @return whether every line queued before the call was handed over within the time */
    bool wait(std::chrono::milliseconds limit);

    /** @return how many lines found the queue full */
    std::uint64_t lostLines() const;

private:
    struct Line
    {
        int nPriority;
        std::string sText;
    };

    void start();
    [[noreturn]] void run();
    void handOver(const Line& line) noexcept;
    void lookForLogger();

    const std::function<void(const std::string&)> m_complain;
    std::atomic<int> m_nPriority;

    mutable std::mutex m_mutex; // guards what follows; never held while a line is handed over
    std::condition_variable m_written;
    std::condition_variable m_handedOver;
    std::deque<Line> m_lines;
    std::uint64_t m_nQueued = 0; // since the process began, as the next two
    std::uint64_t m_nHandedOver = 0;
    std::uint64_t m_nLost = 0;
    bool m_bStarted = false;
    bool m_bLossTold = false;

    std::optional<std::chrono::steady_clock::time_point> m_probedAt; // this and the next are the thread's own
    bool m_bLoggerMissing = false;
};
