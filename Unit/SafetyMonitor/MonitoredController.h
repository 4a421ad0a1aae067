/** @file
 * An output power controller that lets the safety rules hear what it is asked for.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController.h"

class TransmitterRules;

/**
 * Stands before another controller, as a class and as a C function table: passes each call on, and tells the rules of
 * those that the transmitter's safety depends on.
 *
 * The table passes arguments and results on as they are; an entry that the other table does not have is missing here
 * too. The operations of the class go the same way. Adds no allocation, lock or exception.
 */
class MonitoredController final : public IOutputPowerController
{
public:
    /** @param real table of the other controller. It and @param rules must outlive this */
    MonitoredController(const IOutputPowerControllerCStruct& real, TransmitterRules& rules);

    void setTxPminPmax(int nTxPmin, unsigned int nTxPmax) override;
    int setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode) override;
    int setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode) override;
    void setRegulatorInterval(int nIntervalMs) override;
    EOPCState getOPCState() const override;
    ETxPowerActualStatus getTxPowerActualStatus() const override;
    int getPctrl() const override;
    void registerPctrlObserver(IOpcPctrlObserver* pObserver) override;
    void registerPtargetObserver(IOpcPtargetObserver* pObserver) override;
    void registerPredictedPctrlObserver(IOpcPredictedPctrlObserver* pObserver) override;
    void registerPowerModeObserver(IOpcPowerModeObserver* pObserver) override;
    int regulate(int nPtarget) override;
    void getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin, int* pPctrlMax,
                    EOPCState* pState, EOPHDetectorState* pDetectorState) const override;
    int getPmeasured() const override;
    void setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent) override;
    int getGain(EOPHDetectorState eDetectorState, EOPCState eState) const override;

    /** @return the table that the calls go to */
    const IOutputPowerControllerCStruct& real() const { return m_real; }

private:
    void fillHeardEntries();
    void fillForwardedEntries();

    long setLimits(long nTxPmin, long nTxPmax);
    long request(ERequestedTxPowerState eState, ETxPowerMode eMode);
    long setProductionTest(unsigned int nProductionTest, ERfDetectorLoopMode eLoopMode);
    long setInterval(long nIntervalMs);
    long takeStep(long nPtarget);

    const IOutputPowerControllerCStruct& m_real;
    TransmitterRules& m_rules;
};
