/** @file
 * The output power controller as C callers see it: its enumerations, the observer records and its function table.
 *
 * Powers are signed 32-bit integers on the scale of the output power handler and the calibration tables; the controller
 * never converts them. Its own constants read best in hundredths of a decibel.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Platform/EAFResult.h"

/** A power limit that is not known yet. */
#define OPC_POWER_UNKNOWN (-10000)
/** The power reported while the transmitter is off. */
#define OPC_POWER_OFF (-9900)

/** States of the controller on the way between off and on. */
typedef enum EOPCState
#ifdef __cplusplus
    : int32_t
#endif
{
    eOPC_TX_OFF_INITIATED = 0,          /**< counts as on; traffic modulation and transmitter go off next */
    eOPC_TX_OFF_IN_PROGRESS = 1,        /**< counts as on; the power is reported as off next */
    eOPC_TX_OFF = 2,                    /**< off; a step does nothing */
    eOPC_DELAYED_TX_ON_INITIATED = 3,   /**< off; no operation enters it yet */
    eOPC_DELAYED_TX_ON_IN_PROGRESS = 4, /**< off; goes on to eOPC_TX_ON_INITIATED 1100 ms later */
    eOPC_TX_ON_INITIATED = 5,           /**< counts as off; limits are read and the start power is set next */
    eOPC_TX_ON_IN_PROGRESS = 6,         /**< counts as off; waits for the transmitter to settle */
    eOPC_TX_ON_RAMPING = 7,             /**< counts as off; the power moves towards the target */
    eOPC_TX_ON = 8,                     /**< on; each step is one of the closed loop */
    eOPC_UNDEFINED = 9                  /**< never acted in; the previous state of a new controller */
} EOPCState;

/** What a request asks for. */
typedef enum ERequestedTxPowerState
#ifdef __cplusplus
    : int32_t
#endif
{
    eREQUESTED_TX_POWER_OFF = 0, /**< switch off, if it counts as on */
    eREQUESTED_TX_POWER_ON = 1   /**< switch on, if it counts as off; begins a switch-on under way anew */
} ERequestedTxPowerState;

/** Whether the transmitter counts as switched on. */
typedef enum ETxPowerActualStatus
#ifdef __cplusplus
    : int32_t
#endif
{
    eTX_POWER_ACTUAL_OFF = 0, /**< off, or still on its way to on */
    eTX_POWER_ACTUAL_ON = 1   /**< on, or still on its way to off */
} ETxPowerActualStatus;

/** Power mode of a request; any other value is taken and reported as it is. */
typedef enum ETxPowerMode
#ifdef __cplusplus
    : int32_t
#endif
{
    eTX_POWER_MODE_STEP_LIMITED = 0,      /**< the closed loop's step is limited */
    eTX_POWER_MODE_FREE = 1,              /**< the closed loop's step is not limited by the mode */
    eTX_POWER_MODE_REPORT_THEN_LIMIT = 2, /**< reported to the observers, then kept as 0 */
    eTX_POWER_MODE_INITIAL = 3            /**< what a new controller holds */
} ETxPowerMode;

/** Is told the control power. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPctrlObserver
{
    void* vpThis; /**< the observer */

    /**
     * Called in the thread that regulates: at each ramp step, then when the value has changed.
     * @param vpThis the observer
     * @param nChannel radio channel
     * @param nPctrl control power, OPC_POWER_OFF once the transmitter is off
     */
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPctrl);
} IOpcPctrlObserver;

/** Is told the target power. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPtargetObserver
{
    void* vpThis; /**< the observer */

    /**
     * Called in the thread that regulates: at each ramp step, then when the value has changed.
     * @param vpThis the observer
     * @param nChannel radio channel
     * @param nPtarget target power; during the ramp the control power, OPC_POWER_OFF once the transmitter is off
     */
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPtarget);
} IOpcPtargetObserver;

/** Is told the predicted control power. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPredictedPctrlObserver
{
    void* vpThis; /**< the observer */

    /**
     * Called in the thread that regulates: at each ramp step, then when the value has changed.
     * @param vpThis the observer
     * @param nChannel radio channel
     * @param nPredictedPctrl predicted power; during the ramp the control power, OPC_POWER_OFF once the transmitter
     *                        is off
     */
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPredictedPctrl);
} IOpcPredictedPctrlObserver;

/** Is told the power mode. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPowerModeObserver
{
    void* vpThis; /**< the observer */

    /**
     * Called in the thread that requests, for each mode that differs from the one kept.
     * @param vpThis the observer
     * @param nChannel radio channel
     * @param eMode mode as it was requested
     */
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, ETxPowerMode eMode);
} IOpcPowerModeObserver;

/**
 * The controller's operations. Pass vpThis first; a null vpThis gives EAF_NULL_POINTER and touches nothing else.
 *
 * Setters, registrations and getters give EAF_OK; requests, production-test settings and regulation give their own
 * result. Out pointers must not be null. Numbers are cut to 32 bits where long is wider. The order of the members is
 * part of the interface. The table belongs to the controller; IInterface_c::getCStruct() hands it out. Threads are as
 * IOutputPowerController says.
 */
typedef struct IOutputPowerControllerCStruct
{
    void* vpThis; /**< the controller */

    /**
     * Sets the lower limit of the control power, as IOutputPowerController::setTxPminPmax().
     * @param vpThis the controller
     * @param nTxPmin lower limit; OPC_POWER_UNKNOWN stops the state machine until a limit is set
     * @param nTxPmax traced only: the upper limit is the handler's
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticSetTxPminPmax)(void* vpThis, long nTxPmin, long nTxPmax);

    /**
     * Requests the transmitter on or off, as IOutputPowerController::setRequestedTxPowerState().
     * @param vpThis the controller
     * @param eState on or off
     * @param eMode power mode
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller or an unknown state
     */
    long (*staticSetRequestedTxPowerState)(void* vpThis, ERequestedTxPowerState eState, ETxPowerMode eMode);

    /**
     * Sets production-test mode, as IOutputPowerController::setProductionTestSettings().
     * @param vpThis the controller
     * @param nProductionTest 0 for off, anything else for on
     * @param eLoopMode how the handler is to use the detector
     * @return EAF_OK; EAF_FAILED when the handler refused; EAF_NULL_POINTER for a null controller
     */
    long (*staticSetProductionTestSettings)(void* vpThis, unsigned int nProductionTest, ERfDetectorLoopMode eLoopMode);

    /**
     * Tells the period of the steps, as IOutputPowerController::setRegulatorInterval().
     * @param vpThis the controller
     * @param nIntervalMs period in milliseconds; must not be 0
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticSetRegulatorInterval)(void* vpThis, long nIntervalMs);

    /**
     * Reads the state.
     * @param vpThis the controller
     * @param[out] pState the state
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetOPCState)(void* vpThis, EOPCState* pState);

    /**
     * Reads whether the transmitter counts as on.
     * @param vpThis the controller
     * @param[out] pStatus the status
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetTxPowerActualStatus)(void* vpThis, ETxPowerActualStatus* pStatus);

    /**
     * Reads the control power.
     * @param vpThis the controller
     * @param[out] pPctrl the control power, OPC_POWER_OFF unless the transmitter counts as on
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetPctrl)(void* vpThis, long* pPctrl);

    /**
     * Appends an observer of the control power, before regulation begins.
     * @param vpThis the controller
     * @param pObserver not null; not owned, must outlive the controller
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticRegisterPctrlObserver)(void* vpThis, IOpcPctrlObserver* pObserver);

    /**
     * Appends an observer of the target power, before regulation begins.
     * @param vpThis the controller
     * @param pObserver not null; not owned, must outlive the controller
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticRegisterPtargetObserver)(void* vpThis, IOpcPtargetObserver* pObserver);

    /**
     * Appends an observer of the predicted power, before regulation begins.
     * @param vpThis the controller
     * @param pObserver not null; not owned, must outlive the controller
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticRegisterPredictedPctrlObserver)(void* vpThis, IOpcPredictedPctrlObserver* pObserver);

    /**
     * Appends an observer of the power mode, before regulation begins.
     * @param vpThis the controller
     * @param pObserver not null; not owned, must outlive the controller
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticRegisterPowerModeObserver)(void* vpThis, IOpcPowerModeObserver* pObserver);

    /**
     * Takes one step, as IOutputPowerController::regulate().
     * @param vpThis the controller
     * @param nPtarget requested output power, before the calibration offsets
     * @return EAF_OK; EAF_FAILED when the handler failed; EAF_NULL_POINTER for a null controller
     */
    long (*staticRegulate)(void* vpThis, long nPtarget);

    /**
     * Reads the last step's values, as IOutputPowerController::getLogData().
     * @param vpThis the controller
     * @param[out] pPtarget target power
     * @param[out] pPctrl control power
     * @param[out] pPowerError target less measured power
     * @param[out] pPmeasured measured power
     * @param[out] pTxPmin lower limit that was set
     * @param[out] pPctrlMax upper limit of the handler
     * @param[out] pState state
     * @param[out] pDetectorState part of the detector's range in use
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetLogData)(void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError, long* pPmeasured,
                             long* pTxPmin, long* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState);

    /**
     * Reads the power measured in the last step.
     * @param vpThis the controller
     * @param[out] pPmeasured the measured power
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetPmeasured)(void* vpThis, long* pPmeasured);

    /**
     * Sets a loop gain, as IOutputPowerController::setGain().
     * @param vpThis the controller
     * @param eDetectorState 0 to 2, not checked
     * @param eState 0 to 8, not checked
     * @param nGainPercent gain in percent
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticSetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);

    /**
     * Reads a loop gain.
     * @param vpThis the controller
     * @param eDetectorState 0 to 2, not checked
     * @param eState 0 to 8, not checked
     * @param[out] pGainPercent gain in percent
     * @return EAF_OK, or EAF_NULL_POINTER for a null controller
     */
    long (*staticGetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long* pGainPercent);
} IOutputPowerControllerCStruct;
