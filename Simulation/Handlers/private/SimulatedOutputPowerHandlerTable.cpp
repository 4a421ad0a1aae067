#include "Simulation/Handlers/private/SimulatedOutputPowerHandler.h"

#include <exception>

namespace
{
using Handler = SimulatedOutputPowerHandler;

/** An entry of the C table: calls an operation on vpThis and lets no exception through. */
template <auto OPERATION, class... TArguments> EOPHResult call(void* vpThis, TArguments... arguments)
{
    if (vpThis == nullptr) {
        return EAF_NULL_POINTER;
    }
    try {
        return (static_cast<Handler*>(vpThis)->*OPERATION)(arguments...);
    }
    catch (const std::exception&) {
        return EAF_FAILED;
    }
}
} // namespace

void SimulatedOutputPowerHandler::buildTable()
{
    m_cStruct.vpThis = this;
    m_cStruct.setOutputPower = &call<&Handler::setOutputPower>;
    m_cStruct.setTxState = &call<&Handler::setTxState>;
    m_cStruct.setProductionTestSettings = &call<&Handler::setProductionTestSettings>;
    m_cStruct.getReducedGainFromAmplifier = &call<&Handler::getReducedGainFromAmplifier>;
    m_cStruct.getTxPowerReadings = &call<&Handler::getTxPowerReadings>;
    m_cStruct.calculateDetectorUsage = &call<&Handler::calculateDetectorUsage>;
    m_cStruct.getPmeasured = &call<&Handler::getPmeasured>;
    m_cStruct.setZembraMlmTrafTx = &call<&Handler::setZembraMlmTrafTx>;
    m_cStruct.getPctrlLimits = &call<&Handler::getPctrlLimits>;
    m_pCStruct = &m_cStruct;
}
