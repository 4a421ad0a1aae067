/** @file
 * A list of observers that threads may share.
 */
#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

/**
 * Holds observers and calls them. Its lock is not held while they are called, so an observer may register another.
 * @tparam TObserver type of the observers; not owned
 */
template <class TObserver> class ObserverList
{
public:
    void add(TObserver* pObserver)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_observers.push_back(pObserver);
    }

    /** Takes every entry of an observer out. */
    void remove(const TObserver* pObserver)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), pObserver), m_observers.end());
    }

    /** Takes all observers out. */
    void clear()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_observers.clear();
    }

    /** Calls every observer in the order of registration. */
    template <class TCall> void forEach(TCall call) const
    {
        std::vector<TObserver*> observers;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            observers = m_observers;
        }
        for (TObserver* pObserver : observers) {
            call(*pObserver);
        }
    }

private:
    mutable std::mutex m_mutex;
    std::vector<TObserver*> m_observers;
};
