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
    eOPH_DETECTOR_STATE_0 = 0,      /**< row 0 of the gain table */
    eOPH_DETECTOR_STATE_1 = 1,      /**< row 1 of the gain table */
    eOPH_DETECTOR_STATE_2 = 2,      /**< row 2 of the gain table */
    eOPH_DETECTOR_STATE_UNKNOWN = 3 /**< no row: the step moves nothing */
} EOPHDetectorState;

/** How production test wants the detector used; the values' meaning is the handler's. */
typedef enum ERfDetectorLoopMode
#ifdef __cplusplus
    : int32_t
#endif
{
    eRF_DETECTOR_LOOP_MODE_NORMAL = 0, /**< as the handler decides */
    eRF_DETECTOR_LOOP_MODE_CLOSED = 1, /**< the loop is to be closed over the detector */
    eRF_DETECTOR_LOOP_MODE_OPEN = 2    /**< the loop is to be open */
} ERfDetectorLoopMode;

/**
 * The handler's operations. Every function takes the table's vpThis first.
 *
 * All are called in the thread that regulates, setProductionTestSettings also in the thread that requests it.
 */
typedef struct IOutputPowerHandlerCStruct
{
    void* vpThis; /**< the handler */

    /**
     * Sets control power and target power.
     * @param vpThis the handler
     * @param nPctrl power to send with
     * @param nPtarget power that the loop is heading for
     * @return a failure ends the controller's step; the next one tries again
     */
    EOPHResult (*setOutputPower)(void* vpThis, int32_t nPctrl, int32_t nPtarget);
    void (*reserved2)(void); /**< never called */
    void (*reserved3)(void); /**< never called */

    /**
     * Takes a step of the transmitter.
     * @param vpThis the handler
     * @param nStep 2, 3, 4 switch on, the last at each step of the ramp; 0, 1 switch off
     * @return a failure ends the controller's step; the next one tries again
     */
    EOPHResult (*setTxState)(void* vpThis, int32_t nStep);

    /**
     * Tells how production test wants the detector used.
     * @param vpThis the handler
     * @param eLoopMode how to use the detector
     * @return a failure is passed on to whoever set production test
     */
    EOPHResult (*setProductionTestSettings)(void* vpThis, ERfDetectorLoopMode eLoopMode);
    void (*reserved6)(void); /**< never called */

    /**
     * Reads by how much the gain of an amplifier is reduced. For the logs alone: a failure stops nothing.
     * @param vpThis the handler
     * @param nAmplifier 1 to 6
     * @param[out] pReducedGain the reduction; 0 when it is not written
     * @return not judged
     */
    EOPHResult (*getReducedGainFromAmplifier)(void* vpThis, uint32_t nAmplifier, int32_t* pReducedGain);

    /**
     * Reads three values for the logs.
     * @param vpThis the handler
     * @param[out] pReading a value of the handler's own
     * @param[out] pIfPower IF power
     * @param[out] pRfGain RF gain
     * @return not judged
     */
    EOPHResult (*getTxPowerReadings)(void* vpThis, int32_t* pReading, int32_t* pIfPower, int32_t* pRfGain);

    /**
     * Decides which part of the detector's range serves at a control power.
     * @param vpThis the handler
     * @param nPctrl control power
     * @param eLoopMode how to use the detector
     * @param[out] pDetectorState row of the gain table to use
     * @return a failure ends the controller's step; the next one tries again
     */
    EOPHResult (*calculateDetectorUsage)(void* vpThis, int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                         EOPHDetectorState* pDetectorState);

    /**
     * Reads the measured output power.
     * @param vpThis the handler
     * @param[out] pPmeasured the measured power
     * @return a failure ends the controller's step; the next one tries again
     */
    EOPHResult (*getPmeasured)(void* vpThis, int32_t* pPmeasured);

    /**
     * Enables or disables the traffic modulation.
     * @param vpThis the handler
     * @param bEnable true once the transmitter is on, false before it goes off
     * @return a failure is only traced when switching on; when switching off the next step tries again
     */
    EOPHResult (*setZembraMlmTrafTx)(void* vpThis, bool bEnable);
    void (*reserved12)(void); /**< never called */

    /**
     * Reads the limits of the control power, once for each switch-on.
     * @param vpThis the handler
     * @param[out] pLower lower limit; -10000 for none, which keeps the one that the controller was given
     * @param[out] pUpper upper limit; never -10000, which stops the controller's state machine for good
     * @return not judged; a limit that is not written counts as 0
     */
    EOPHResult (*getPctrlLimits)(void* vpThis, int32_t* pLower, int32_t* pUpper);
} IOutputPowerHandlerCStruct;
