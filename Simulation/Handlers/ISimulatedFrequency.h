/** @file
 * The knob of a simulated frequency handler.
 */
#pragma once

/** Reach it by dynamic_cast from the interface published as "IFrequencyHandler_Tx" (with "_n" for other channels). */
class ISimulatedFrequency
{
public:
    /**
     * Sets the frequency and tells the observers in the calling thread when it has changed.
     * @param nFrequency in the unit of the calibration tables' frequency axis, MHz in this unit
     */
    virtual void setTxFrequency(int nFrequency) = 0;

protected:
    ~ISimulatedFrequency() = default;
};
