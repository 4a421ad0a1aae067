/** @file
 * The output power controller of a radio channel as C++ callers see it.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Broker/IInterface_c.h"

/**
 * Switches a channel's transmitter and regulates its output power.
 *
 * Published as "IOutputPowerController" for channel 0 and "IOutputPowerController_" followed by the channel otherwise.
 * Nothing here locks: regulate() has one periodic caller; requests, limits, production-test settings and gains may come
 * from other threads as plain 32-bit stores that the next step reads. Observers are registered before regulation
 * begins and are called in the thread that regulates or requests.
 */
class EAF_PUBLIC IOutputPowerController : public IInterface_c
{
public:
    /**
     * Sets the lower limit of the control power.
     * @param nTxPmin lower limit, OPC_POWER_UNKNOWN stops the state machine until a limit is set
     * @param nTxPmax traced only: the upper limit is the handler's
     */
    virtual void setTxPminPmax(int nTxPmin, unsigned int nTxPmax) = 0;

    /**
     * Requests the transmitter on or off; the next regulator calls carry it out.
     *
     * Judged by the actual status: an off request while switching on and an on request while switching off are ignored.
     * @param eState on or off
     * @param eMode power mode; its observers are told, in the calling thread, when it differs from the one kept
     * @return EAF_OK, or EAF_NULL_POINTER for an unknown state (the mode is taken all the same)
     */
    virtual int setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode) = 0;

    /**
     * Sets production-test mode, in which the mode's step limit is off and the limits are 2000 wider on each side.
     *
     * Calls the handler in the calling thread.
     * @param bProductionTest whether production test is on
     * @param eLoopMode how the handler is to use the detector
     * @return EAF_OK, or EAF_FAILED when the handler refused the loop mode (both settings are kept all the same)
     */
    virtual int setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode) = 0;

    /**
     * Tells the period of regulate(), which decides how many calls a switch-on waits and how far a limited step goes.
     * @param nIntervalMs period in milliseconds; must not be 0
     */
    virtual void setRegulatorInterval(int nIntervalMs) = 0;

    /** @return the state that the next step acts in */
    virtual EOPCState getOPCState() const = 0;

    /** @return whether the transmitter counts as on, which requests are judged by */
    virtual ETxPowerActualStatus getTxPowerActualStatus() const = 0;

    /** @return the control power, or OPC_POWER_OFF unless the transmitter counts as on */
    virtual int getPctrl() const = 0;

    /**
     * Appends an observer; there is no way to take one out, and one registered twice is called twice.
     * @param pObserver not null; not owned, must outlive the controller
     */
    virtual void registerPctrlObserver(IOpcPctrlObserver* pObserver) = 0;
    /** @copydoc registerPctrlObserver */
    virtual void registerPtargetObserver(IOpcPtargetObserver* pObserver) = 0;
    /** @copydoc registerPctrlObserver */
    virtual void registerPredictedPctrlObserver(IOpcPredictedPctrlObserver* pObserver) = 0;
    /** @copydoc registerPctrlObserver */
    virtual void registerPowerModeObserver(IOpcPowerModeObserver* pObserver) = 0;

    /**
     * Takes one step: of the state machine, or of the closed loop once the transmitter is on.
     * @param nPtarget requested output power, before the calibration offsets
     * @return EAF_OK, or EAF_FAILED when the handler failed; the next call tries again
     */
    virtual int regulate(int nPtarget) = 0;

    /**
     * Reads the last step's values; no pointer may be null.
     * @param[out] pPtarget target power: the requested one with the calibration offsets
     * @param[out] pPctrl control power
     * @param[out] pPowerError target less measured power
     * @param[out] pPmeasured measured power
     * @param[out] pTxPmin lower limit that was set by setTxPminPmax()
     * @param[out] pPctrlMax upper limit that the handler told at the last switch-on
     * @param[out] pState state
     * @param[out] pDetectorState part of the detector's range in use
     */
    virtual void getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin, int* pPctrlMax,
                            EOPCState* pState, EOPHDetectorState* pDetectorState) const = 0;

    /** @return the power measured in the last step; while ramping the control power stands for it */
    virtual int getPmeasured() const = 0;

    /**
     * Sets the loop gain for a detector state and a controller state; only eOPC_TX_ON_RAMPING and eOPC_TX_ON are used.
     * @param eDetectorState 0 to 2, not checked
     * @param eState 0 to 8, not checked
     * @param nGainPercent gain in percent
     */
    virtual void setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent) = 0;

    /**
     * @param eDetectorState 0 to 2, not checked
     * @param eState 0 to 8, not checked
     * @return the gain in percent
     */
    virtual int getGain(EOPHDetectorState eDetectorState, EOPCState eState) const = 0;

    // The C function table's entries: each forwards to the operation of its name on vpThis.
    /** @copydoc IOutputPowerControllerCStruct::staticSetTxPminPmax */
    static long staticSetTxPminPmax(void* vpThis, long nTxPmin, long nTxPmax);
    /** @copydoc IOutputPowerControllerCStruct::staticSetRequestedTxPowerState */
    static long staticSetRequestedTxPowerState(void* vpThis, ERequestedTxPowerState eState, ETxPowerMode eMode);
    /** @copydoc IOutputPowerControllerCStruct::staticSetProductionTestSettings */
    static long staticSetProductionTestSettings(void* vpThis, unsigned int nProductionTest,
                                                ERfDetectorLoopMode eLoopMode);
    /** @copydoc IOutputPowerControllerCStruct::staticSetRegulatorInterval */
    static long staticSetRegulatorInterval(void* vpThis, long nIntervalMs);
    /** @copydoc IOutputPowerControllerCStruct::staticGetOPCState */
    static long staticGetOPCState(void* vpThis, EOPCState* pState);
    /** @copydoc IOutputPowerControllerCStruct::staticGetTxPowerActualStatus */
    static long staticGetTxPowerActualStatus(void* vpThis, ETxPowerActualStatus* pStatus);
    /** @copydoc IOutputPowerControllerCStruct::staticGetPctrl */
    static long staticGetPctrl(void* vpThis, long* pPctrl);
    /** @copydoc IOutputPowerControllerCStruct::staticRegisterPctrlObserver */
    static long staticRegisterPctrlObserver(void* vpThis, IOpcPctrlObserver* pObserver);
    /** @copydoc IOutputPowerControllerCStruct::staticRegisterPtargetObserver */
    static long staticRegisterPtargetObserver(void* vpThis, IOpcPtargetObserver* pObserver);
    /** @copydoc IOutputPowerControllerCStruct::staticRegisterPredictedPctrlObserver */
    static long staticRegisterPredictedPctrlObserver(void* vpThis, IOpcPredictedPctrlObserver* pObserver);
    /** @copydoc IOutputPowerControllerCStruct::staticRegisterPowerModeObserver */
    static long staticRegisterPowerModeObserver(void* vpThis, IOpcPowerModeObserver* pObserver);
    /** @copydoc IOutputPowerControllerCStruct::staticRegulate */
    static long staticRegulate(void* vpThis, long nPtarget);
    /** @copydoc IOutputPowerControllerCStruct::staticGetLogData */
    static long staticGetLogData(void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError, long* pPmeasured,
                                 long* pTxPmin, long* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState);
    /** @copydoc IOutputPowerControllerCStruct::staticGetPmeasured */
    static long staticGetPmeasured(void* vpThis, long* pPmeasured);
    /** @copydoc IOutputPowerControllerCStruct::staticSetGain */
    static long staticSetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);
    /** @copydoc IOutputPowerControllerCStruct::staticGetGain */
    static long staticGetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long* pGainPercent);

protected:
    /** Fills the function table and hands it to getCStruct(). */
    IOutputPowerController();

    IOutputPowerControllerCStruct m_cStruct; /**< the function table; its vpThis is this object */
};
