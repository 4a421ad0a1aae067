#include "tests/support/RecordingOutputPowerHandler.h"

#include "tests/support/RecordingPlatform.h"

namespace
{
/** Records "operation(a, b)". */
template <class... TArguments> void recordCall(const char* pOperation, TArguments... arguments)
{
    RecordingPlatform::get().recordCall([&] {
        std::string sArguments;
        ((sArguments += (sArguments.empty() ? "" : ", ") + std::to_string(arguments)), ...);
        return pOperation + (sArguments.empty() ? std::string() : "(" + sArguments + ")");
    });
}
} // namespace

RecordingOutputPowerHandler::RecordingOutputPowerHandler()
    : m_table{this,
              &setOutputPower,
              nullptr,
              nullptr,
              &setTxState,
              &setProductionTestSettings,
              nullptr,
              &getReducedGainFromAmplifier,
              &getTxPowerReadings,
              &calculateDetectorUsage,
              &getPmeasured,
              &setZembraMlmTrafTx,
              nullptr,
              &getPctrlLimits}
{
    m_pCStruct = &m_table;
}

void RecordingOutputPowerHandler::setResultOfCall(EHandlerCall eCall, std::size_t nCall, EOPHResult nResult)
{
    behaviour(eCall).resultOfCall[behaviour(eCall).nCalls + nCall] = nResult;
}

void RecordingOutputPowerHandler::succeed(EHandlerCall eCall)
{
    behaviour(eCall).nResult = EAF_OK;
    behaviour(eCall).bWrites = true;
    behaviour(eCall).resultOfCall.clear();
}

EOPHResult RecordingOutputPowerHandler::count(EHandlerCall eCall)
{
    Behaviour& called = behaviour(eCall);
    ++called.nCalls;
    const auto found = called.resultOfCall.find(called.nCalls);
    return found == called.resultOfCall.end() ? called.nResult : found->second;
}

RecordingOutputPowerHandler& RecordingOutputPowerHandler::self(void* vpThis)
{
    return *static_cast<RecordingOutputPowerHandler*>(vpThis);
}

EOPHResult RecordingOutputPowerHandler::setOutputPower(void* vpThis, int32_t nPctrl, int32_t nPtarget)
{
    recordCall("setOutputPower", nPctrl, nPtarget);
    self(vpThis).m_nPctrlSent = nPctrl;
    self(vpThis).m_nPtargetSent = nPtarget;
    return self(vpThis).count(EHandlerCall::SetOutputPower);
}

EOPHResult RecordingOutputPowerHandler::setTxState(void* vpThis, int32_t nStep)
{
    recordCall("setTxState", nStep);
    return self(vpThis).count(EHandlerCall::SetTxState);
}

EOPHResult RecordingOutputPowerHandler::setProductionTestSettings(void* vpThis, ERfDetectorLoopMode eLoopMode)
{
    recordCall("setProductionTestSettings", static_cast<int32_t>(eLoopMode));
    return self(vpThis).count(EHandlerCall::SetProductionTestSettings);
}

EOPHResult RecordingOutputPowerHandler::getReducedGainFromAmplifier(void* vpThis, uint32_t nAmplifier,
                                                                    int32_t* pReducedGain)
{
    recordCall("getReducedGainFromAmplifier", nAmplifier);
    const RecordingOutputPowerHandler& handler = self(vpThis);
    if (handler.writes(EHandlerCall::GetReducedGainFromAmplifier)) {
        *pReducedGain = handler.m_anReducedGain.at(nAmplifier - 1);
    }
    return self(vpThis).count(EHandlerCall::GetReducedGainFromAmplifier);
}

EOPHResult RecordingOutputPowerHandler::getTxPowerReadings(void* vpThis, int32_t* pReading, int32_t* pIfPower,
                                                           int32_t* pRfGain)
{
    recordCall("getTxPowerReadings");
    const RecordingOutputPowerHandler& handler = self(vpThis);
    if (handler.writes(EHandlerCall::GetTxPowerReadings)) {
        *pReading = handler.m_nFirstReading;
        *pIfPower = handler.m_nIfPower;
        *pRfGain = handler.m_nRfGain;
    }
    return self(vpThis).count(EHandlerCall::GetTxPowerReadings);
}

EOPHResult RecordingOutputPowerHandler::calculateDetectorUsage(void* vpThis, int32_t nPctrl,
                                                               ERfDetectorLoopMode eLoopMode,
                                                               EOPHDetectorState* pDetectorState)
{
    recordCall("calculateDetectorUsage", nPctrl, static_cast<int32_t>(eLoopMode));
    if (self(vpThis).writes(EHandlerCall::CalculateDetectorUsage)) {
        *pDetectorState = self(vpThis).m_eDetectorState;
    }
    return self(vpThis).count(EHandlerCall::CalculateDetectorUsage);
}

EOPHResult RecordingOutputPowerHandler::getPmeasured(void* vpThis, int32_t* pPmeasured)
{
    recordCall("getPmeasured");
    if (self(vpThis).writes(EHandlerCall::GetPmeasured)) {
        *pPmeasured = self(vpThis).m_measure();
    }
    return self(vpThis).count(EHandlerCall::GetPmeasured);
}

EOPHResult RecordingOutputPowerHandler::setZembraMlmTrafTx(void* vpThis, bool bEnable)
{
    RecordingPlatform::get().recordCall(
        [bEnable] { return std::string(bEnable ? "setZembraMlmTrafTx(true)" : "setZembraMlmTrafTx(false)"); });
    return self(vpThis).count(EHandlerCall::SetZembraMlmTrafTx);
}

EOPHResult RecordingOutputPowerHandler::getPctrlLimits(void* vpThis, int32_t* pLower, int32_t* pUpper)
{
    recordCall("getPctrlLimits");
    if (self(vpThis).writes(EHandlerCall::GetPctrlLimits)) {
        *pLower = self(vpThis).m_nPctrlLower;
        *pUpper = self(vpThis).m_nPctrlUpper;
    }
    return self(vpThis).count(EHandlerCall::GetPctrlLimits);
}
