/** @file
 * Turns a signal into a stop.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"
#include "Unit/Process/StopSignals.h"

#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/** Stops the regulation at a signal, also while the main thread waits for whoever reads its output. */
class SignalWatcher
{
public:
    SignalWatcher(const StopSignals& signals, RegulationLoop& loop)
        : m_thread([this, &signals, &loop](const std::stop_token& end) {
              while (!end.stop_requested()) {
                  const std::string sSignal = signals.wait(WAIT_MS);
                  if (!sSignal.empty()) {
                      loop.requestStop();
                      const std::lock_guard<std::mutex> lock(m_mutex);
                      m_signals.push_back(sSignal);
                  }
              }
          })
    {}

    /** @return the signals that came since the last call */
    std::vector<std::string> take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_signals, {});
    }

private:
    static constexpr int WAIT_MS = 50;

    std::mutex m_mutex;
    std::vector<std::string> m_signals;
    std::jthread m_thread; // last, since it uses the others
};
