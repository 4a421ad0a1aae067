/** @file
 * How many large answers there may be at once.
 */
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

/** Slots that answers hold from their making until they are out, so that all of them together stay bounded. Any thread.
 */
class AnswerSlots
{
public:
    /** @param nSlots at least 1 */
    explicit AnswerSlots(std::size_t nSlots) : m_pState(std::make_shared<State>(nSlots)) {}

    /** Waits for a slot. @return what holds it; null when there was none in time */
    std::shared_ptr<void> take(std::chrono::milliseconds longest)
    {
        {
            std::unique_lock lock(m_pState->mutex);
            if (!m_pState->changed.wait_for(lock, longest, [this] { return m_pState->nFree > 0; })) {
                return nullptr;
            }
            --m_pState->nFree;
        }
        return std::make_shared<Slot>(m_pState);
    }

private:
    struct State
    {
        explicit State(std::size_t nSlots) : nFree(nSlots) {}
        std::mutex mutex;
        std::condition_variable changed;
        std::size_t nFree;
    };

    // May outlive the slots, in an answer that is still going out.
    class Slot
    {
    public:
        explicit Slot(std::shared_ptr<State> pState) : m_pState(std::move(pState)) {}
        ~Slot()
        {
            {
                const std::lock_guard lock(m_pState->mutex);
                ++m_pState->nFree;
            }
            m_pState->changed.notify_one();
        }
        Slot(const Slot&) = delete;
        Slot& operator=(const Slot&) = delete;

    private:
        std::shared_ptr<State> m_pState;
    };

    std::shared_ptr<State> m_pState;
};
