/** @file
 * Ctrl-C as something to ask about.
 */
#pragma once

#include <csignal>

/** Keeps SIGINT and SIGTERM from ending the program while it stands. One thread, and one at a time. */
class Interrupt
{
public:
    Interrupt();
    ~Interrupt();

    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /** Waits for a signal. @return whether one has come, also before */
    bool waitFor(double seconds);

private:
    sigset_t m_signals{};
    sigset_t m_maskBefore{};
    bool m_bCame = false;
};
