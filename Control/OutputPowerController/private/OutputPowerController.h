/** @file
 * The output power controller of a radio channel.
 */
#pragma once

#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerController/IOutputPowerController.h"
#include "Control/OutputPowerController/private/TraceLine.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Observer.h"
#include "Platform/Trace/KmtTrace.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

class OutputPowerControlLog;

/**
 * Module object, frequency observer and brokered interface in one.
 *
 * Construction, phases and destruction come from the platform's loader and module manager; see IOutputPowerController
 * for the threads of the rest. The registrations with the frequency and temperature handlers are not withdrawn: they
 * live as long as the unit.
 */
class OutputPowerController : public ModuleInterface, public Observer<IFrequencyHandler>, public IOutputPowerController
{
public:
    /** Registers the module, creates the channel's log and publishes the interface. */
    explicit OutputPowerController(unsigned int channel);
    ~OutputPowerController() override;

    OutputPowerController(const OutputPowerController&) = delete;
    OutputPowerController& operator=(const OutputPowerController&) = delete;
    OutputPowerController(OutputPowerController&&) = delete;
    OutputPowerController& operator=(OutputPowerController&&) = delete;

    // The declaration order of the virtual operations is their order in the primary table.

    /** Connects to the power handler, the frequency and temperature handlers and the calibration tables. */
    long onModuleInit() override;
    /** Reads the number of gain blocks. */
    long onPhaseModuleStorageObjectsRetreived() override;
    /** Reads the channel spacing. */
    long onPhasePostFrameformatLoad() override;
    long onPhaseStop() override;

    void onChange(IFrequencyHandler* pHandler) override;

    void setTxPminPmax(int nTxPmin, unsigned int nTxPmax) override;
    int setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode) override;
    int setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode) override;
    void setRegulatorInterval(int nInterval) override;
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

    /** Publishes the log. @return EAF_OK */
    long initialize();
    /** Withdraws the log. @return EAF_OK */
    long unInitialize();

    /**
     * Takes one step of the state machine; regulate() calls it unless the state is eOPC_TX_ON.
     * @return EAF_OK, or EAF_FAILED when the handler failed, which leaves the state to be tried again
     */
    int handleOPCStateMachine();

    /**
     * Sends the control power to the handler and feeds the logs that record.
     * @return EAF_OK, or EAF_FAILED when the handler refused the power
     */
    int setPctrl();

    void notifyPctrlObservers(int nPctrl);
    void notifyPtargetObservers(int nPtarget);
    void notifyPredictedPctrlObservers(int nPredictedPctrl);
    void notifyPowerModeObservers(ETxPowerMode eMode);
    /** Notifies the three power lists, each only if its value has changed since it was last notified from here. */
    void notifyObservers();

    void notifyTemperature(int nTemperature);
    /** The temperature handler's callback; a null vpThis is ignored. */
    static void staticNotifyTemperature(void* vpThis, int nTemperature);

    /** @return the state's name; eState is not checked and must be one of the enumeration */
    const char* getOPCStateName(EOPCState eState) const;

    /** Interpolates a table; no table, an invalid or a failing one gives 0. @return EAF_OK always */
    int getBilinearTableValue(CCalibrationTable* pTable, int nX, int nY, int* pValue) const;

    /** @return milliseconds from *pStart to now on the monotonic clock */
    unsigned int calculateElapsedTimeMillisec(timespec* pStart) const;

protected:
    static constexpr int DETECTOR_STATES = 3;
    static constexpr int GAIN_STATES = 9;
    static constexpr int MAX_GAIN_BLOCKS = 6;

    static KmtTrace ms_trace;
    static unsigned long m_pPhaseFilter[4];

    ITemperatureObserver m_temperatureObserver{};
    int m_nTemperature = 0;
    unsigned int m_nChannel;
    bool m_bModuleInitDone = false;
    std::unique_ptr<OutputPowerControlLog> m_pLog;
    int m_nNumberOfGainBlocks = 0;
    int m_nChannelSpacing = 0;
    IOutputPowerHandlerCStruct* m_pOutputPowerHandler = nullptr;
    int m_nTxFrequency = 0;
    ETxPowerMode m_eTxPowerMode = eTX_POWER_MODE_INITIAL;
    int m_nPctrl = OPC_POWER_UNKNOWN;
    int m_nPtarget = OPC_POWER_UNKNOWN;
    int m_nPmeasured = 0;
    int m_nPredictedPctrl = OPC_POWER_UNKNOWN;
    int m_nLastNotifiedPtarget = 0;
    int m_nLastNotifiedPctrl = 0;
    int m_nLastNotifiedPredictedPctrl = 0;
    EOPCState m_eOPCState = eOPC_TX_OFF;
    EOPCState m_ePreviousOPCState = eOPC_UNDEFINED;
    int m_nTxPmin = 0;
    int m_nPctrlMax = 0;
    ETxPowerActualStatus m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
    timespec m_tsDelayedTxOnStart{};
    int m_nPctrlMin = OPC_POWER_UNKNOWN;
    int m_nTxOnInProgressCount = 0;
    unsigned int m_nTxOnInProgressCycles = 0;
    int m_nRampingCount = 0;
    unsigned int m_nRampingCycles = 0;
    int m_nRegulatorInterval = 6;
    ERfDetectorLoopMode m_eRfDetectorLoopMode = eRF_DETECTOR_LOOP_MODE_NORMAL;
    EOPHDetectorState m_eOPHDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    int m_nPowerError = 0;
    int m_anGain[DETECTOR_STATES][GAIN_STATES]{};
    bool m_bProductionTestMode = false;
    // No effective limit until the first setRegulatorInterval(), although that call would set 10 for this interval.
    int m_nMaxPctrlStep = 100000;
    CCalibrationTable* m_calTablePtargetOverBandwidthToPTargetOffset = nullptr;
    CCalibrationTable* m_calTableFrequencyOverTemperatureToPTargetOffset = nullptr;
    std::vector<IOpcPctrlObserver*> m_vecPctrlObservers;
    std::vector<IOpcPtargetObserver*> m_vecPtargetObservers;
    std::vector<IOpcPredictedPctrlObserver*> m_vecPredictedPctrlObservers;
    std::vector<IOpcPowerModeObserver*> m_vecPowerModeObservers;

private:
    void deriveCyclesFromInterval();

    long connectOutputPowerHandler();
    long connectFrequencyHandler();
    long connectTemperatureHandler();
    void fetchCalibrationTable(const char* pTableName, CCalibrationTable** ppTable) const;

    void traceStateChange();
    int stepTxOffInitiated();
    int stepTxOffInProgress();
    int stepDelayedTxOnInitiated();
    int stepDelayedTxOnInProgress();
    int stepTxOnInitiated();
    int stepTxOnInProgress();
    int stepTxOnRamping();
    void finishTxOn();

    int regulateClosedLoop();
    void applyClosedLoopStep();
    void feedOpcLog(int nIfPower, int nRfGain);
    int gainInUse(EOPCState eState) const;

    /**
     * Traces a failure at level 1.
     * @param pOperation name of the operation
     * @param pText what follows the name
     * @param nLine the caller's line
     * @return EAF_FAILED
     */
    static int traceFailure(const char* pOperation, const char* pText, int nLine = __builtin_LINE());
    /** Traces an operation's entry at level 5. */
    static void traceEntry(const char* pOperation, int nLine = __builtin_LINE());
    /** Begins a message with this class' source path. */
    static TraceLine beginTrace(int nLevel, int nLine = __builtin_LINE());
};
