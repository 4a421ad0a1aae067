#include "Unit/SafetyMonitor/MonitoredHandler.h"

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/private/TableEntry.h"

namespace
{
/** @return what the caller finds in its variable; 0 when it has none */
template <class TValue> std::int32_t valueAt(const TValue* pValue)
{
    return pValue != nullptr ? static_cast<std::int32_t>(*pValue) : 0;
}

/** Calls a function with the monitored handler behind a C handle. */
template <class TCall> EOPHResult onHandler(void* vpThis, TCall call)
{
    return vpThis == nullptr ? EOPHResult{EAF_NULL_POINTER} : call(*static_cast<MonitoredHandler*>(vpThis));
}
} // namespace

MonitoredHandler::MonitoredHandler(const IOutputPowerHandlerCStruct& real, TransmitterRules& rules)
    : m_real(real), m_rules(rules), m_table(real)
{
    m_table.vpThis = this;
    m_table.setOutputPower = monitoredEntry(real.setOutputPower, &setOutputPower);
    m_table.setTxState = monitoredEntry(real.setTxState, &setTxState);
    m_table.setProductionTestSettings = monitoredEntry(real.setProductionTestSettings, &setProductionTestSettings);
    m_table.getReducedGainFromAmplifier =
        monitoredEntry(real.getReducedGainFromAmplifier, &getReducedGainFromAmplifier);
    m_table.getTxPowerReadings = monitoredEntry(real.getTxPowerReadings, &getTxPowerReadings);
    m_table.calculateDetectorUsage = monitoredEntry(real.calculateDetectorUsage, &calculateDetectorUsage);
    m_table.getPmeasured = monitoredEntry(real.getPmeasured, &getPmeasured);
    m_table.setZembraMlmTrafTx = monitoredEntry(real.setZembraMlmTrafTx, &setZembraMlmTrafTx);
    m_table.getPctrlLimits = monitoredEntry(real.getPctrlLimits, &getPctrlLimits);
    m_pCStruct = &m_table;
}

EOPHResult MonitoredHandler::setOutputPower(void* vpThis, std::int32_t nPctrl, std::int32_t nPtarget)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.setOutputPower(handler.m_real.vpThis, nPctrl, nPtarget);
        handler.m_rules.onSetOutputPower(nPctrl, nPtarget, nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::setTxState(void* vpThis, std::int32_t nStep)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.setTxState(handler.m_real.vpThis, nStep);
        handler.m_rules.onSetTxState(nStep, nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::setProductionTestSettings(void* vpThis, ERfDetectorLoopMode eLoopMode)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.setProductionTestSettings(handler.m_real.vpThis, eLoopMode);
        handler.m_rules.onTellProductionTest(eLoopMode, nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::getReducedGainFromAmplifier(void* vpThis, std::uint32_t nAmplifier,
                                                         std::int32_t* pReducedGain)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult =
            handler.m_real.getReducedGainFromAmplifier(handler.m_real.vpThis, nAmplifier, pReducedGain);
        handler.m_rules.onGetReducedGain(nAmplifier, valueAt(pReducedGain), nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::getTxPowerReadings(void* vpThis, std::int32_t* pReading, std::int32_t* pIfPower,
                                                std::int32_t* pRfGain)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult =
            handler.m_real.getTxPowerReadings(handler.m_real.vpThis, pReading, pIfPower, pRfGain);
        handler.m_rules.onGetTxPowerReadings(valueAt(pIfPower), valueAt(pRfGain), nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::calculateDetectorUsage(void* vpThis, std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                                    EOPHDetectorState* pDetectorState)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult =
            handler.m_real.calculateDetectorUsage(handler.m_real.vpThis, nPctrl, eLoopMode, pDetectorState);
        handler.m_rules.onCalculateDetectorUsage(nPctrl, valueAt(pDetectorState), nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::getPmeasured(void* vpThis, std::int32_t* pPmeasured)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.getPmeasured(handler.m_real.vpThis, pPmeasured);
        handler.m_rules.onGetPmeasured(valueAt(pPmeasured), nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::setZembraMlmTrafTx(void* vpThis, bool bEnable)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.setZembraMlmTrafTx(handler.m_real.vpThis, bEnable);
        handler.m_rules.onSetTraffic(bEnable, nResult);
        return nResult;
    });
}

EOPHResult MonitoredHandler::getPctrlLimits(void* vpThis, std::int32_t* pLower, std::int32_t* pUpper)
{
    return onHandler(vpThis, [=](MonitoredHandler& handler) {
        const EOPHResult nResult = handler.m_real.getPctrlLimits(handler.m_real.vpThis, pLower, pUpper);
        handler.m_rules.onGetPctrlLimits(valueAt(pLower), valueAt(pUpper), nResult);
        return nResult;
    });
}
