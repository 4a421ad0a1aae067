#include "Unit/SafetyMonitor/MonitoredController.h"

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/private/TableEntry.h"

namespace
{
using Table = IOutputPowerControllerCStruct;

MonitoredController& self(void* vpThis)
{
    // What a table's vpThis points to is the interface.
    return *static_cast<MonitoredController*>(static_cast<IOutputPowerController*>(vpThis));
}

/** An entry of the table that goes on to the real one of the same name. */
template <auto ENTRY> struct Forwarded;
template <class... TArguments, long (*Table::*ENTRY)(void*, TArguments...)> struct Forwarded<ENTRY>
{
    static long call(void* vpThis, TArguments... arguments)
    {
        if (vpThis == nullptr) {
            return EAF_NULL_POINTER;
        }
        const Table& real = self(vpThis).real();
        return (real.*ENTRY)(real.vpThis, arguments...);
    }

    /** Leaves an entry out that the real table does not have. */
    static void put(Table& table, const Table& real) { table.*ENTRY = real.*ENTRY != nullptr ? &call : nullptr; }
};
} // namespace

MonitoredController::MonitoredController(const Table& real, TransmitterRules& rules) : m_real(real), m_rules(rules)
{
    fillHeardEntries();
    fillForwardedEntries();
}

void MonitoredController::fillHeardEntries()
{
    m_cStruct.staticSetTxPminPmax = monitoredEntry<long(void*, long, long)>(
        m_real.staticSetTxPminPmax, [](void* vpThis, long nTxPmin, long nTxPmax) {
            return vpThis == nullptr ? EAF_NULL_POINTER : self(vpThis).setLimits(nTxPmin, nTxPmax);
        });
    m_cStruct.staticSetRequestedTxPowerState = monitoredEntry<long(void*, ERequestedTxPowerState, ETxPowerMode)>(
        m_real.staticSetRequestedTxPowerState, [](void* vpThis, ERequestedTxPowerState eState, ETxPowerMode eMode) {
            return vpThis == nullptr ? EAF_NULL_POINTER : self(vpThis).request(eState, eMode);
        });
    m_cStruct.staticSetProductionTestSettings = monitoredEntry<long(void*, unsigned int, ERfDetectorLoopMode)>(
        m_real.staticSetProductionTestSettings,
        [](void* vpThis, unsigned int nProductionTest, ERfDetectorLoopMode eLoopMode) {
            return vpThis == nullptr ? EAF_NULL_POINTER : self(vpThis).setProductionTest(nProductionTest, eLoopMode);
        });
    m_cStruct.staticSetRegulatorInterval =
        monitoredEntry<long(void*, long)>(m_real.staticSetRegulatorInterval, [](void* vpThis, long nIntervalMs) {
            return vpThis == nullptr ? EAF_NULL_POINTER : self(vpThis).setInterval(nIntervalMs);
        });
    m_cStruct.staticRegulate =
        monitoredEntry<long(void*, long)>(m_real.staticRegulate, [](void* vpThis, long nPtarget) {
            return vpThis == nullptr ? EAF_NULL_POINTER : self(vpThis).takeStep(nPtarget);
        });
}

void MonitoredController::fillForwardedEntries()
{
    Forwarded<&Table::staticGetOPCState>::put(m_cStruct, m_real);
    Forwarded<&Table::staticGetTxPowerActualStatus>::put(m_cStruct, m_real);
    Forwarded<&Table::staticGetPctrl>::put(m_cStruct, m_real);
    Forwarded<&Table::staticRegisterPctrlObserver>::put(m_cStruct, m_real);
    Forwarded<&Table::staticRegisterPtargetObserver>::put(m_cStruct, m_real);
    Forwarded<&Table::staticRegisterPredictedPctrlObserver>::put(m_cStruct, m_real);
    Forwarded<&Table::staticRegisterPowerModeObserver>::put(m_cStruct, m_real);
    Forwarded<&Table::staticGetLogData>::put(m_cStruct, m_real);
    Forwarded<&Table::staticGetPmeasured>::put(m_cStruct, m_real);
    Forwarded<&Table::staticSetGain>::put(m_cStruct, m_real);
    Forwarded<&Table::staticGetGain>::put(m_cStruct, m_real);
}

// --- What the rules hear ---------------------------------------------------------------------------------------------

long MonitoredController::setLimits(long nTxPmin, long nTxPmax)
{
    const long nResult = m_real.staticSetTxPminPmax(m_real.vpThis, nTxPmin, nTxPmax);
    m_rules.onSetTxPminPmax(static_cast<std::int32_t>(nTxPmin));
    return nResult;
}

long MonitoredController::request(ERequestedTxPowerState eState, ETxPowerMode eMode)
{
    m_rules.onRequestBegins(eMode);
    const long nResult = m_real.staticSetRequestedTxPowerState(m_real.vpThis, eState, eMode);
    m_rules.onRequestEnds(eState, eMode, static_cast<std::int32_t>(nResult));
    return nResult;
}

long MonitoredController::setProductionTest(unsigned int nProductionTest, ERfDetectorLoopMode eLoopMode)
{
    m_rules.onProductionTestBegins(nProductionTest != 0, eLoopMode);
    const long nResult = m_real.staticSetProductionTestSettings(m_real.vpThis, nProductionTest, eLoopMode);
    m_rules.onProductionTestEnds(static_cast<std::int32_t>(nResult));
    return nResult;
}

long MonitoredController::setInterval(long nIntervalMs)
{
    const long nResult = m_real.staticSetRegulatorInterval(m_real.vpThis, nIntervalMs);
    m_rules.onSetInterval(static_cast<std::int32_t>(nIntervalMs));
    return nResult;
}

long MonitoredController::takeStep(long nPtarget)
{
    m_rules.onStepBegins(static_cast<std::int32_t>(nPtarget));
    const long nResult = m_real.staticRegulate(m_real.vpThis, nPtarget);
    m_rules.onStepEnds(static_cast<std::int32_t>(nResult));
    return nResult;
}

// --- The class -------------------------------------------------------------------------------------------------------

void MonitoredController::setTxPminPmax(int nTxPmin, unsigned int nTxPmax)
{
    setLimits(nTxPmin, static_cast<long>(nTxPmax));
}

int MonitoredController::setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode)
{
    return static_cast<int>(request(eState, eMode));
}

int MonitoredController::setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode)
{
    return static_cast<int>(setProductionTest(bProductionTest ? 1U : 0U, eLoopMode));
}

void MonitoredController::setRegulatorInterval(int nIntervalMs)
{
    setInterval(nIntervalMs);
}

int MonitoredController::regulate(int nPtarget)
{
    return static_cast<int>(takeStep(nPtarget));
}

EOPCState MonitoredController::getOPCState() const
{
    EOPCState eState = eOPC_UNDEFINED;
    m_real.staticGetOPCState(m_real.vpThis, &eState);
    return eState;
}

ETxPowerActualStatus MonitoredController::getTxPowerActualStatus() const
{
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_OFF;
    m_real.staticGetTxPowerActualStatus(m_real.vpThis, &eStatus);
    return eStatus;
}

int MonitoredController::getPctrl() const
{
    long nPctrl = 0;
    m_real.staticGetPctrl(m_real.vpThis, &nPctrl);
    return static_cast<int>(nPctrl);
}

void MonitoredController::registerPctrlObserver(IOpcPctrlObserver* pObserver)
{
    m_real.staticRegisterPctrlObserver(m_real.vpThis, pObserver);
}

void MonitoredController::registerPtargetObserver(IOpcPtargetObserver* pObserver)
{
    m_real.staticRegisterPtargetObserver(m_real.vpThis, pObserver);
}

void MonitoredController::registerPredictedPctrlObserver(IOpcPredictedPctrlObserver* pObserver)
{
    m_real.staticRegisterPredictedPctrlObserver(m_real.vpThis, pObserver);
}

void MonitoredController::registerPowerModeObserver(IOpcPowerModeObserver* pObserver)
{
    m_real.staticRegisterPowerModeObserver(m_real.vpThis, pObserver);
}

void MonitoredController::getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin,
                                     int* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState) const
{
    long anValue[6] = {};
    m_real.staticGetLogData(m_real.vpThis, &anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4], &anValue[5],
                            pState, pDetectorState);
    *pPtarget = static_cast<int>(anValue[0]);
    *pPctrl = static_cast<int>(anValue[1]);
    *pPowerError = static_cast<int>(anValue[2]);
    *pPmeasured = static_cast<int>(anValue[3]);
    *pTxPmin = static_cast<int>(anValue[4]);
    *pPctrlMax = static_cast<int>(anValue[5]);
}

int MonitoredController::getPmeasured() const
{
    long nPmeasured = 0;
    m_real.staticGetPmeasured(m_real.vpThis, &nPmeasured);
    return static_cast<int>(nPmeasured);
}

void MonitoredController::setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent)
{
    m_real.staticSetGain(m_real.vpThis, eDetectorState, eState, nGainPercent);
}

int MonitoredController::getGain(EOPHDetectorState eDetectorState, EOPCState eState) const
{
    long nGainPercent = 0;
    m_real.staticGetGain(m_real.vpThis, eDetectorState, eState, &nGainPercent);
    return static_cast<int>(nGainPercent);
}
