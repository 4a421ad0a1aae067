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
    eOPC_TX_OFF_INITIATED = 0,
    eOPC_TX_OFF_IN_PROGRESS = 1,
    eOPC_TX_OFF = 2,
    eOPC_DELAYED_TX_ON_INITIATED = 3,
    eOPC_DELAYED_TX_ON_IN_PROGRESS = 4,
    eOPC_TX_ON_INITIATED = 5,
    eOPC_TX_ON_IN_PROGRESS = 6,
    eOPC_TX_ON_RAMPING = 7,
    eOPC_TX_ON = 8,
    eOPC_UNDEFINED = 9
} EOPCState;

/** What a request asks for. */
typedef enum ERequestedTxPowerState
#ifdef __cplusplus
    : int32_t
#endif
{
    eREQUESTED_TX_POWER_OFF = 0,
    eREQUESTED_TX_POWER_ON = 1
} ERequestedTxPowerState;

/** Whether the transmitter counts as switched on. */
typedef enum ETxPowerActualStatus
#ifdef __cplusplus
    : int32_t
#endif
{
    eTX_POWER_ACTUAL_OFF = 0,
    eTX_POWER_ACTUAL_ON = 1
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
    void* vpThis;
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPctrl);
} IOpcPctrlObserver;

/** Is told the target power. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPtargetObserver
{
    void* vpThis;
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPtarget);
} IOpcPtargetObserver;

/** Is told the predicted control power. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPredictedPctrlObserver
{
    void* vpThis;
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, int nPredictedPctrl);
} IOpcPredictedPctrlObserver;

/** Is told the power mode. Owned by whoever registers it; must outlive the controller. */
typedef struct IOpcPowerModeObserver
{
    void* vpThis;
    void (*pfnNotify)(void* vpThis, unsigned int nChannel, ETxPowerMode eMode);
} IOpcPowerModeObserver;

/**
 * The controller's operations. Pass vpThis first; a null vpThis gives EAF_NULL_POINTER and touches nothing else.
 *
 * Setters, registrations and getters give EAF_OK; requests, production-test settings and regulation give their own
 * result. Out pointers must not be null. The order of the members is part of the interface.
 */
typedef struct IOutputPowerControllerCStruct
{
    void* vpThis; /**< the controller */

    long (*staticSetTxPminPmax)(void* vpThis, long nTxPmin, long nTxPmax);
    long (*staticSetRequestedTxPowerState)(void* vpThis, ERequestedTxPowerState eState, ETxPowerMode eMode);
    long (*staticSetProductionTestSettings)(void* vpThis, unsigned int nProductionTest, ERfDetectorLoopMode eLoopMode);
    long (*staticSetRegulatorInterval)(void* vpThis, long nIntervalMs);
    long (*staticGetOPCState)(void* vpThis, EOPCState* pState);
    long (*staticGetTxPowerActualStatus)(void* vpThis, ETxPowerActualStatus* pStatus);
    long (*staticGetPctrl)(void* vpThis, long* pPctrl);
    long (*staticRegisterPctrlObserver)(void* vpThis, IOpcPctrlObserver* pObserver);
    long (*staticRegisterPtargetObserver)(void* vpThis, IOpcPtargetObserver* pObserver);
    long (*staticRegisterPredictedPctrlObserver)(void* vpThis, IOpcPredictedPctrlObserver* pObserver);
    long (*staticRegisterPowerModeObserver)(void* vpThis, IOpcPowerModeObserver* pObserver);
    long (*staticRegulate)(void* vpThis, long nPtarget);
    long (*staticGetLogData)(void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError, long* pPmeasured,
                             long* pTxPmin, long* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState);
    long (*staticGetPmeasured)(void* vpThis, long* pPmeasured);
    long (*staticSetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);
    long (*staticGetGain)(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long* pGainPercent);
} IOutputPowerControllerCStruct;
