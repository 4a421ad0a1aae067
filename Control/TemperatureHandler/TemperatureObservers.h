/** @file
 * For whoever implements the temperature handler: the observers to tell.
 */
#pragma once

#include "Control/TemperatureHandler/ITemperatureHandler.h"

/** The observers that registered through ITemperatureHandler::registerObserver(). May be used from any thread. */
class EAF_PUBLIC TemperatureObservers
{
public:
    /**
     * Tells every observer, in the order of registration and in the calling thread.
     * @param nTemperature in the unit of the calibration tables' temperature axis
     */
    static void notify(int nTemperature);

    /** Forgets all observers, as a handler does when it goes: they cannot take themselves out. */
    static void clear();
};
