/** @file
 * Observers of a controller that record what they are told.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController.h"

#include <string>

/**
 * One observer of each kind. Records into the recording platform's call log: "pctrl(channel, value)",
 * "ptarget(channel, value)", "predictedPctrl(channel, value)", "powerMode(channel, mode)", each after the set's name.
 */
class RecordingObservers
{
public:
    /** @param sName put before each record, to tell sets apart */
    explicit RecordingObservers(std::string sName = {});
    ~RecordingObservers() = default;

    RecordingObservers(const RecordingObservers&) = delete;
    RecordingObservers& operator=(const RecordingObservers&) = delete;

    /** Registers all four. */
    void registerWith(IOutputPowerController& controller);

    IOpcPctrlObserver m_pctrl;
    IOpcPtargetObserver m_ptarget;
    IOpcPredictedPctrlObserver m_predictedPctrl;
    IOpcPowerModeObserver m_powerMode;

private:
    static void record(void* vpThis, const char* pWhat, unsigned int nChannel, int nValue);

    std::string m_sName;
};
