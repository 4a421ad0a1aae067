/** @file
 * What stands around a controller and does nothing: handlers, calibration tables, observers.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Calibration/CCalibrationHandler.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

/** What calibration tables a controller meets. */
enum class ETables
{
    None,      /**< there are none: a step makes no call */
    Quiet,     /**< tables that return a constant */
    OfTheUnit, /**< the Linux unit's, interpolated */
};

/** The power that the handler measures, and a request that is met. */
inline constexpr int MEASURED_POWER = 300;
/** A request so far above or below the measured power that a limited step goes its full way. */
inline constexpr int FAR_OFF = 200;

/**
 * Hands out the doubles, quiet or recording; a quiet one returns constants, a recording one returns the same and notes
 * the call. Call everything from one thread.
 */
namespace Surroundings
{
inline constexpr std::size_t MAX_OBSERVERS = 4;

/** A set of observers, as many of each kind. */
struct Observers
{
    std::array<IOpcPctrlObserver, MAX_OBSERVERS> pctrl;
    std::array<IOpcPtargetObserver, MAX_OBSERVERS> ptarget;
    std::array<IOpcPredictedPctrlObserver, MAX_OBSERVERS> predictedPctrl;
};

IOutputPowerHandlerCStruct& handler();
Observers& observers();
/** @return the two tables that a controller fetches: target over bandwidth, frequency over temperature */
std::array<CCalibrationTable*, 2> tables();

/** Decides what tables are found from now on, and what those already found do. */
void setTables(ETables eTables);

/** Makes all doubles note calls, or not. */
void setRecording(bool bRecording);

/** @return the calls noted, in their order, which are forgotten */
std::vector<std::string> takeCalls();

/** Publishes handlers for the channels from 0 on; withdraw them with the same number. */
void publish(unsigned int nChannels);
void withdraw(unsigned int nChannels);
} // namespace Surroundings
