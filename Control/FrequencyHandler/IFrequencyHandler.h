/** @file
 * The handler of a channel's transmit frequency.
 */
#pragma once

#include "Platform/Broker/IInterface.h"
#include "Platform/Observer.h"

/** Published as "IFrequencyHandler_Tx" for channel 0 and "IFrequencyHandler_Tx_" followed by the channel otherwise. */
class EAF_PUBLIC IFrequencyHandler : public virtual IInterface, public Subject<IFrequencyHandler>
{
public:
    /** @return the transmit frequency, in the unit of the calibration tables' frequency axis */
    virtual int getTxFrequency() const = 0;
};
