/** @file
 * The floor under a closed-loop step: its calls without a controller around them.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Calibration/CCalibrationHandler.h"

#include <array>
#include <cstddef>

/** Which calls a step makes. */
struct StepShape
{
    bool bTables = true;        /**< both calibration tables are there */
    bool bTransientLog = false; /**< it records: the readings are read */
    bool bOpcLog = false;       /**< it records: the readings and six gains are read */
    std::size_t nObservers = 0; /**< of each of the three kinds, all told: 0 or 4 */
    bool bSettled = false;      /**< nothing has changed, so that nobody is told */
};

/** What the floor calls. Everything pointed to must outlive it. */
struct StepFloorTargets
{
    IOutputPowerHandlerCStruct* pHandler = nullptr;
    std::array<CCalibrationTable*, 2> tables{};
    IOpcPctrlObserver* pPctrl = nullptr; /**< the first of an array, as the next two */
    IOpcPtargetObserver* pPtarget = nullptr;
    IOpcPredictedPctrlObserver* pPredictedPctrl = nullptr;
};

/** What logs keep of a step. */
struct StepStores
{
    struct Quantity
    {
        int nMin;
        int nActual;
        int nMax;
    };

    std::array<int, 5> sample{};
    std::array<Quantity, 11> quantities{};
};

/**
 * Makes a controller's calls in a controller's order and nothing else: no test, no arithmetic, no memory of its own but
 * for what the calls write. It lies in a library of its own, since a module's calls leave a library too.
 */
class EAF_PUBLIC StepFloor
{
public:
    /**
     * @param bStores lets it store what the logs that record must keep besides: five numbers of a transient sample; the
     *                minimum, the maximum and the last value of eleven quantities
     * @throws std::invalid_argument for a number of observers that there is no sequence for
     */
    StepFloor(const StepFloorTargets& targets, const StepShape& shape, bool bStores);

    ~StepFloor() = default;

    StepFloor(const StepFloor&) = delete;
    StepFloor& operator=(const StepFloor&) = delete;

    /** @return a table of which only staticRegulate may be called */
    const IOutputPowerControllerCStruct& table() const { return m_table; }

private:
    using Step = long (*)(void*, long);

    template <bool bTables, bool bTransientLog, bool bOpcLog, int nObservers, bool bStores>
    static long step(void* vpThis, long nRequested);
    template <bool... bChosen> static Step choose(const std::array<bool, 5>& choices);

    IOutputPowerControllerCStruct m_table{};
    StepFloorTargets m_targets;
    StepStores m_stores;
};
