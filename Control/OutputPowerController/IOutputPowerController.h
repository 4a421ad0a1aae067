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
     * @return EAF_OK, or EAF_NULL_POINTER for an unknown state (the mode is taken all the same)
     */
    virtual int setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode) = 0;

    /**
     * Sets production-test mode, in which the mode's step limit is off and the limits are 2000 wider on each side.
     * @return EAF_OK, or EAF_FAILED when the handler refused the loop mode (both settings are kept all the same)
     */
    virtual int setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode) = 0;

    /** @param nIntervalMs period of regulate() in milliseconds; must not be 0 */
    virtual void setRegulatorInterval(int nIntervalMs) = 0;

    virtual EOPCState getOPCState() const = 0;
    virtual ETxPowerActualStatus getTxPowerActualStatus() const = 0;

    /** @return the control power, or OPC_POWER_OFF unless the transmitter counts as on */
    virtual int getPctrl() const = 0;

    /** Appends an observer; there is no way to take one out, and one registered twice is called twice. */
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

    /** Reads the last step's values; no pointer may be null. */
    virtual void getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin, int* pPctrlMax,
                            EOPCState* pState, EOPHDetectorState* pDetectorState) const = 0;

    virtual int getPmeasured() const = 0;

    /**
     * Sets the loop gain for a detector state and a controller state; only eOPC_TX_ON_RAMPING and eOPC_TX_ON are used.
     * @param eDetectorState 0 to 2, not checked
     * @param eState 0 to 8, not checked
     * @param nGainPercent gain in percent
     */
    virtual void setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent) = 0;

    /** @return the gain in percent; indices as for setGain(), not checked */
    virtual int getGain(EOPHDetectorState eDetectorState, EOPCState eState) const = 0;

    // The C function table's entries: each forwards to the operation of its name on vpThis.
    static long staticSetTxPminPmax(void* vpThis, long nTxPmin, long nTxPmax);
    static long staticSetRequestedTxPowerState(void* vpThis, ERequestedTxPowerState eState, ETxPowerMode eMode);
    static long staticSetProductionTestSettings(void* vpThis, unsigned int nProductionTest,
                                                ERfDetectorLoopMode eLoopMode);
    static long staticSetRegulatorInterval(void* vpThis, long nIntervalMs);
    static long staticGetOPCState(void* vpThis, EOPCState* pState);
    static long staticGetTxPowerActualStatus(void* vpThis, ETxPowerActualStatus* pStatus);
    static long staticGetPctrl(void* vpThis, long* pPctrl);
    static long staticRegisterPctrlObserver(void* vpThis, IOpcPctrlObserver* pObserver);
    static long staticRegisterPtargetObserver(void* vpThis, IOpcPtargetObserver* pObserver);
    static long staticRegisterPredictedPctrlObserver(void* vpThis, IOpcPredictedPctrlObserver* pObserver);
    static long staticRegisterPowerModeObserver(void* vpThis, IOpcPowerModeObserver* pObserver);
    static long staticRegulate(void* vpThis, long nPtarget);
    static long staticGetLogData(void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError, long* pPmeasured,
                                 long* pTxPmin, long* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState);
    static long staticGetPmeasured(void* vpThis, long* pPmeasured);
    static long staticSetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long nGainPercent);
    static long staticGetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState, long* pGainPercent);

protected:
    IOutputPowerController();

    IOutputPowerControllerCStruct m_cStruct;
};
