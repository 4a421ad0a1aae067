/** @file
 * A frequency handler whose frequency is set by whoever simulates.
 */
#pragma once

#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Platform/ObserverList.h"
#include "Simulation/Handlers/ISimulatedFrequency.h"
#include "Simulation/Handlers/private/PublishedInterface.h"

#include <atomic>

/** The frequency of one channel. May be used from any thread. */
class SimulatedFrequencyHandler final : public IFrequencyHandler, public ISimulatedFrequency
{
public:
    /** Frequency before the first setting, in MHz. */
    static constexpr int DEFAULT_FREQUENCY_MHZ = 5000;

    explicit SimulatedFrequencyHandler(unsigned int nChannel) : m_nChannel(nChannel) {}

    /** Publishes the handler under its channel's name. */
    EAFResult initialize();
    EAFResult uninitialize() { return m_published.withdraw(); }

    EAFResult registerObserver(Observer<IFrequencyHandler>* pObserver) override;
    int getTxFrequency() const override { return m_nFrequency; }

    /** The first setting counts as a change, also to the default frequency. */
    void setTxFrequency(int nFrequency) override;

private:
    const unsigned int m_nChannel;
    std::atomic<int> m_nFrequency = DEFAULT_FREQUENCY_MHZ;
    std::atomic<bool> m_bSet = false;
    ObserverList<Observer<IFrequencyHandler>> m_observers;
    PublishedInterface m_published; // withdrawn before the rest goes
};
