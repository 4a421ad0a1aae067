#include "benchmarks/control_step/rig/StepFloor.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace
{
constexpr std::size_t GAINS = 6;
constexpr std::size_t FIRST_GAIN = 5;
constexpr int CHANNEL_SPACING = 28000; // kHz, as the controllers read it from storage

void keep(StepStores::Quantity& quantity, int nValue)
{
    quantity.nActual = nValue;
    quantity.nMin = std::min(nValue, quantity.nMin);
    quantity.nMax = std::max(nValue, quantity.nMax);
}

template <int nObservers, class TObserver> void tell(TObserver* pObserver, int nValue)
{
    for (int n = 0; n < nObservers; ++n) {
        pObserver[n].pfnNotify(pObserver[n].vpThis, 0, nValue);
    }
}

/** Reads what the logs ask for, and stores it where it is to. */
template <bool bTransientLog, bool bOpcLog, bool bStores>
void feedLogs(IOutputPowerHandlerCStruct& oph, StepStores& stores, int nPtarget, int nPmeasured)
{
    int nReading = 0;
    std::array<int, 5 + GAINS> anValue = {nPtarget, nPtarget, nPmeasured};
    oph.getTxPowerReadings(oph.vpThis, &nReading, &anValue[3], &anValue[4]);
    if constexpr (bTransientLog && bStores) {
        std::copy_n(anValue.begin(), stores.sample.size(), stores.sample.begin());
    }
    if constexpr (bOpcLog) {
        for (std::size_t n = 0; n < GAINS; ++n) {
            // cppcheck-suppress containerOutOfBounds ; it takes the size for 5, without the gains
            oph.getReducedGainFromAmplifier(oph.vpThis, static_cast<uint32_t>(n + 1), &anValue[FIRST_GAIN + n]);
        }
        if constexpr (bStores) {
            for (std::size_t n = 0; n < anValue.size(); ++n) {
                keep(stores.quantities[n], anValue[n]);
            }
        }
    }
}
} // namespace

template <bool bTables, bool bTransientLog, bool bOpcLog, int nObservers, bool bStores>
long StepFloor::step(void* vpThis, long nRequested)
{
    StepFloor& self = *static_cast<StepFloor*>(vpThis);
    StepFloorTargets& targets = self.m_targets;
    const int nPtarget = static_cast<int>(nRequested);
    int nValue = 0;
    if constexpr (bTables) {
        CCalibrationTable_IsValid(targets.tables[0], &nValue);
        CCalibrationTable_BiLinearInterpolate(targets.tables[0], nPtarget, CHANNEL_SPACING, &nValue);
        CCalibrationTable_IsValid(targets.tables[1], &nValue);
        CCalibrationTable_BiLinearInterpolate(targets.tables[1], 0, 0, &nValue);
    }
    IOutputPowerHandlerCStruct& oph = *targets.pHandler;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    oph.getPmeasured(oph.vpThis, &nValue);
    oph.calculateDetectorUsage(oph.vpThis, nPtarget, eRF_DETECTOR_LOOP_MODE_NORMAL, &eDetectorState);
    tell<nObservers>(targets.pPredictedPctrl, nPtarget);
    oph.setOutputPower(oph.vpThis, nPtarget, nPtarget);
    if constexpr (bTransientLog || bOpcLog) {
        feedLogs<bTransientLog, bOpcLog, bStores>(oph, self.m_stores, nPtarget, nValue);
    }
    tell<nObservers>(targets.pPtarget, nPtarget);
    tell<nObservers>(targets.pPctrl, nPtarget);
    return EAF_OK;
}

/** Finds the sequence of a shape: turns one choice after the other into an argument of the template. */
template <bool... bChosen> StepFloor::Step StepFloor::choose(const std::array<bool, 5>& choices)
{
    constexpr std::size_t CHOSEN = sizeof...(bChosen);
    if constexpr (CHOSEN == 5) {
        constexpr std::array<bool, 5> CHOICES = {bChosen...};
        constexpr int OBSERVERS = CHOICES[3] ? 4 : 0;
        return &step<CHOICES[0], CHOICES[1], CHOICES[2], OBSERVERS, CHOICES[4]>;
    }
    else {
        return choices[CHOSEN] ? choose<bChosen..., true>(choices) : choose<bChosen..., false>(choices);
    }
}
StepFloor::StepFloor(const StepFloorTargets& targets, const StepShape& shape, bool bStores) : m_targets(targets)
{
    if (shape.nObservers != 0 && shape.nObservers != 4) {
        throw std::invalid_argument("the floor has sequences for 0 and for 4 observers only");
    }
    m_table.vpThis = this;
    m_table.staticRegulate = choose<>(
        {shape.bTables, shape.bTransientLog, shape.bOpcLog, shape.nObservers != 0 && !shape.bSettled, bStores});
}
