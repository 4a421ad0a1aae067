/** @file
 * A controller whose members tests may read and set.
 */
#pragma once

#include "Control/OutputPowerController/private/OutputPowerController.h"

/** Makes the controller's data public; changes nothing else. */
class ExposedController : public OutputPowerController
{
public:
    using OutputPowerController::OutputPowerController;

    using OutputPowerController::m_anGain;
    using OutputPowerController::m_bModuleInitDone;
    using OutputPowerController::m_bProductionTestMode;
    using OutputPowerController::m_calTableFrequencyOverTemperatureToPTargetOffset;
    using OutputPowerController::m_calTablePtargetOverBandwidthToPTargetOffset;
    using OutputPowerController::m_eOPCState;
    using OutputPowerController::m_eOPHDetectorState;
    using OutputPowerController::m_ePreviousOPCState;
    using OutputPowerController::m_eRfDetectorLoopMode;
    using OutputPowerController::m_eTxPowerActualStatus;
    using OutputPowerController::m_eTxPowerMode;
    using OutputPowerController::m_nChannel;
    using OutputPowerController::m_nChannelSpacing;
    using OutputPowerController::m_nLastNotifiedPctrl;
    using OutputPowerController::m_nLastNotifiedPredictedPctrl;
    using OutputPowerController::m_nLastNotifiedPtarget;
    using OutputPowerController::m_nMaxPctrlStep;
    using OutputPowerController::m_nNumberOfGainBlocks;
    using OutputPowerController::m_nPctrl;
    using OutputPowerController::m_nPctrlMax;
    using OutputPowerController::m_nPctrlMin;
    using OutputPowerController::m_nPmeasured;
    using OutputPowerController::m_nPowerError;
    using OutputPowerController::m_nPredictedPctrl;
    using OutputPowerController::m_nPtarget;
    using OutputPowerController::m_nRampingCount;
    using OutputPowerController::m_nRampingCycles;
    using OutputPowerController::m_nRegulatorInterval;
    using OutputPowerController::m_nTemperature;
    using OutputPowerController::m_nTxFrequency;
    using OutputPowerController::m_nTxOnInProgressCount;
    using OutputPowerController::m_nTxOnInProgressCycles;
    using OutputPowerController::m_nTxPmin;
    using OutputPowerController::m_pLog;
    using OutputPowerController::m_pOutputPowerHandler;
    using OutputPowerController::m_pPhaseFilter;
    using OutputPowerController::m_temperatureObserver;
    using OutputPowerController::m_tsDelayedTxOnStart;
    using OutputPowerController::m_vecPctrlObservers;
    using OutputPowerController::m_vecPowerModeObservers;
    using OutputPowerController::m_vecPredictedPctrlObservers;
    using OutputPowerController::m_vecPtargetObservers;
};
