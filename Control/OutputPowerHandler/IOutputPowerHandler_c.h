/** @file
 * C function table of the hardware-side output power handler.
 *
 * Powers are signed integers in hundredths of a decibel (dBm for absolute powers) unless a handler's makers say
 * otherwise; callers never convert them.
 */
#pragma once

#include "Platform/EAFResult.h"

/** Result of a handler operation; judged by EAF_isFailure(). */
typedef int32_t EOPHResult;

/** Which part of the power detector's range is in use: a row of the controller's gain table. */
typedef enum EOPHDetectorState
#ifdef __cplusplus
    : int32_t
#endif
{
    eOPH_DETECTOR_STATE_0 = 0,
    eOPH_DETECTOR_STATE_1 = 1,
    eOPH_DETECTOR_STATE_2 = 2,
    eOPH_DETECTOR_STATE_UNKNOWN = 3
} EOPHDetectorState;

/** How production test wants the detector used; the values' meaning is the handler's. */
typedef enum ERfDetectorLoopMode
#ifdef __cplusplus
    : int32_t
#endif
{
    eRF_DETECTOR_LOOP_MODE_NORMAL = 0,
    eRF_DETECTOR_LOOP_MODE_CLOSED = 1,
    eRF_DETECTOR_LOOP_MODE_OPEN = 2
} ERfDetectorLoopMode;

/**
 * The handler's operations. Every function takes the table's vpThis first.
 *
 * All are called in the thread that regulates, setProductionTestSettings also in the thread that requests it.
 */
typedef struct IOutputPowerHandlerCStruct
{
    void* vpThis; /**< the handler */

    /** Sets control power and target power. */
    EOPHResult (*setOutputPower)(void* vpThis, int32_t nPctrl, int32_t nPtarget);
    void (*reserved2)(void);
    void (*reserved3)(void);
    /** Takes a step of the transmitter: 2, 3, 4 switch on, 0, 1 switch off. */
    EOPHResult (*setTxState)(void* vpThis, int32_t nStep);
    EOPHResult (*setProductionTestSettings)(void* vpThis, ERfDetectorLoopMode eLoopMode);
    void (*reserved6)(void);
    /** Reads by how much the gain of amplifier 1 to 6 is reduced. */
    EOPHResult (*getReducedGainFromAmplifier)(void* vpThis, uint32_t nAmplifier, int32_t* pReducedGain);
    /** Reads a first value of the handler's own, the IF power and the RF gain. */
    EOPHResult (*getTxPowerReadings)(void* vpThis, int32_t* pReading, int32_t* pIfPower, int32_t* pRfGain);
    /** Decides which part of the detector's range serves at a control power. */
    EOPHResult (*calculateDetectorUsage)(void* vpThis, int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                         EOPHDetectorState* pDetectorState);
    /** Reads the measured output power. */
    EOPHResult (*getPmeasured)(void* vpThis, int32_t* pPmeasured);
    /** Enables or disables the traffic modulation. */
    EOPHResult (*setZembraMlmTrafTx)(void* vpThis, bool bEnable);
    void (*reserved12)(void);
    /** Reads the limits of the control power. */
    EOPHResult (*getPctrlLimits)(void* vpThis, int32_t* pLower, int32_t* pUpper);
} IOutputPowerHandlerCStruct;
