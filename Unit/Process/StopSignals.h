/** @file
 * Signals that stop the unit.
 */
#pragma once

#include <csignal>
#include <string>

/**
 * Takes SIGINT and SIGTERM, and SIGHUP unless it is ignored, so that they are read here instead of ending the process.
 *
 * Make it before any thread is started: threads inherit what it does. When it goes the signals are as before.
 */
class StopSignals
{
public:
    /** @throws std::system_error when the system does not let signals be read */
    StopSignals();
    ~StopSignals();

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /**
     * Waits for a signal.
     * @return its name, such as "SIGINT"; empty when the time passed without one
     */
    std::string wait(int timeoutMs) const;

private:
    sigset_t m_previous;
    int m_fd;
};
