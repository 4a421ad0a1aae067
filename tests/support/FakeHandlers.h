/** @file
 * Frequency and temperature handlers whose values a test sets.
 */
#pragma once

#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"

#include <vector>

/** Records "IFrequencyHandler::registerObserver"; keeps whoever it accepted. */
class FakeFrequencyHandler : public IFrequencyHandler
{
public:
    int getTxFrequency() const override;
    EAFResult registerObserver(Observer<IFrequencyHandler>* pObserver) override;

    /** Takes a frequency and tells the observers. */
    void change(int nTxFrequency);

    int m_nTxFrequency = 0;
    int m_nChangePerRead = 0; /**< added after each reading, so that a second reading differs */
    EAFResult m_nRegistrationResult = EAF_OK;
    std::vector<Observer<IFrequencyHandler>*> m_observers;
    mutable int m_nReads = 0;
};

/** Reaches the observers that registered with the recording platform. */
class FakeTemperatureHandler : public ITemperatureHandler
{
public:
    /** Tells the observers a temperature. */
    static void report(int nTemperature);
};

/** A brokered object that is none of the handlers. */
class PlainInterface : public virtual IInterface
{
};
