/** @file
 * The handler of the unit's temperature.
 */
#pragma once

#include "Platform/Broker/IInterface.h"

/** Record of an observer of the temperature; a C callback. */
struct ITemperatureObserver
{
    void* vpThis; /**< passed back as first argument */

    /**
     * Told the temperature, in the thread that reports it.
     * @param vpThis the observer
     * @param nTemperature in the unit of the calibration tables' temperature axis
     */
    void (*pfnNotifyTemperature)(void* vpThis, int nTemperature);
};

/** One per unit, published as "ITemperatureHandler". */
class EAF_PUBLIC ITemperatureHandler : public virtual IInterface
{
public:
    /**
     * Adds an observer to the unit's one temperature handler.
     * @param pObserver record of the observer; not owned, must stay where it is for as long as the handler reports
     * @return EAF_OK, or a failure when it was not taken
     */
    static EAFResult registerObserver(ITemperatureObserver* pObserver);
};
