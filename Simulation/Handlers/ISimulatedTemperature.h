/** @file
 * The knob of the simulated temperature handler.
 */
#pragma once

/** Reach it by dynamic_cast from the interface published as "ITemperatureHandler". */
class ISimulatedTemperature
{
public:
    /**
     * Sets the temperature and tells the observers in the calling thread when it has changed.
     * @param nTemperature in the unit of the calibration tables' temperature axis, degrees Celsius in this unit
     */
    virtual void setTemperature(int nTemperature) = 0;

protected:
    ~ISimulatedTemperature() = default;
};
