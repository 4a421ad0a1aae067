#include "tests/module/matrix/FaultyHandler.h"

#include "tests/module/step/StepModel.h"

namespace
{
constexpr std::int32_t LOWER_LIMIT = -600;
constexpr std::int32_t UPPER_LIMIT = 1000;

FaultyHandler& self(void* vpThis)
{
    return *static_cast<FaultyHandler*>(vpThis);
}
} // namespace

const char* nameOf(EHandlerCall eCall)
{
    static constexpr std::array<const char*, static_cast<std::size_t>(EHandlerCall::Count)> NAMES = {
        "setOutputPower",
        "setTxState",
        "setProductionTestSettings",
        "getReducedGainFromAmplifier",
        "getTxPowerReadings",
        "calculateDetectorUsage",
        "getPmeasured",
        "setZembraMlmTrafTx",
        "getPctrlLimits"};
    return eCall == EHandlerCall::Count ? "no call" : NAMES[static_cast<std::size_t>(eCall)];
}

std::string textOf(const Event& event)
{
    static constexpr std::array<const char*, 5> TOLD = {"", "ptarget", "pctrl", "predictedPctrl", "powerMode"};
    if (!event.isCall()) {
        return std::string(TOLD[static_cast<std::size_t>(event.eKind)]) + " told " + std::to_string(event.nFirst);
    }
    return std::string(nameOf(event.eCall)) + "(" + std::to_string(event.nFirst) + ", " +
           std::to_string(event.nSecond) + ")" +
           (event.nResult == EAF_OK ? "" : " gives " + std::to_string(event.nResult));
}

std::string textOf(const std::vector<Event>& events)
{
    std::string sText;
    for (const Event& event : events) {
        sText += (sText.empty() ? "" : "; ") + textOf(event);
    }
    return sText.empty() ? "nothing" : sText;
}

FaultyHandler::FaultyHandler()
    : m_table{
          this,
          [](void* vpThis, std::int32_t nPctrl, std::int32_t nPtarget) {
              return self(vpThis).setOutputPower(nPctrl, nPtarget);
          },
          nullptr,
          nullptr,
          [](void* vpThis, std::int32_t nStep) { return self(vpThis).setTxState(nStep); },
          [](void* vpThis, ERfDetectorLoopMode eLoopMode) { return self(vpThis).setProductionTestSettings(eLoopMode); },
          nullptr,
          [](void* vpThis, std::uint32_t nAmplifier, std::int32_t* pReducedGain) {
              return self(vpThis).getReducedGainFromAmplifier(static_cast<std::int32_t>(nAmplifier), pReducedGain);
          },
          [](void* vpThis, std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain) {
              return self(vpThis).getTxPowerReadings(pReading, pIfPower, pRfGain);
          },
          [](void* vpThis, std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode, EOPHDetectorState* pState) {
              std::int32_t nState = *pState;
              const EOPHResult nResult = self(vpThis).calculateDetectorUsage(nPctrl, eLoopMode, &nState);
              *pState = static_cast<EOPHDetectorState>(nState);
              return nResult;
          },
          [](void* vpThis, std::int32_t* pPmeasured) { return self(vpThis).getPmeasured(pPmeasured); },
          [](void* vpThis, bool bEnable) { return self(vpThis).setTraffic(bEnable); },
          nullptr,
          [](void* vpThis, std::int32_t* pLower, std::int32_t* pUpper) {
              return self(vpThis).getPctrlLimits(pLower, pUpper);
          }}
{
    m_pCStruct = &m_table;
}

bool FaultyHandler::begin(EHandlerCall eCall, std::int32_t nFirst, std::int32_t nSecond)
{
    const std::size_t nOrdinal = ++m_anCalls[static_cast<std::size_t>(eCall)];
    const bool bFaulty =
        eCall == m_fault.eCall && nOrdinal >= m_fault.nOrdinal && nOrdinal - m_fault.nOrdinal < m_fault.nTimes;
    m_events.push_back({EEventKind::Call, eCall, nFirst, nSecond, bFaulty ? m_fault.nResult : EAF_OK});
    return bFaulty;
}

EOPHResult FaultyHandler::end(bool bFaulty) const
{
    if (bFaulty && m_meanwhile) {
        m_meanwhile(m_fault.eMeanwhile);
    }
    return bFaulty ? m_fault.nResult : EAF_OK;
}

void FaultyHandler::write(bool bFaulty, std::size_t nOutput, std::int32_t* pOutput, std::int32_t nValue) const
{
    if (!bFaulty) {
        *pOutput = nValue;
    }
    else if (m_fault.bWrites) {
        *pOutput = m_fault.values ? (*m_fault.values)[nOutput == 0 ? 0 : 1] : nValue;
    }
}

EOPHResult FaultyHandler::setOutputPower(std::int32_t nPctrl, std::int32_t nPtarget)
{
    m_nPctrlSent = nPctrl;
    return end(begin(EHandlerCall::SetOutputPower, nPctrl, nPtarget));
}

EOPHResult FaultyHandler::setTxState(std::int32_t nStep)
{
    return end(begin(EHandlerCall::SetTxState, nStep));
}

EOPHResult FaultyHandler::setProductionTestSettings(std::int32_t nLoopMode)
{
    return end(begin(EHandlerCall::SetProductionTestSettings, nLoopMode));
}

EOPHResult FaultyHandler::getReducedGainFromAmplifier(std::int32_t nAmplifier, std::int32_t* pReducedGain)
{
    const bool bFaulty = begin(EHandlerCall::GetReducedGainFromAmplifier, nAmplifier);
    write(bFaulty, 0, pReducedGain, 10 * nAmplifier + ordinal(EHandlerCall::GetReducedGainFromAmplifier) % 7);
    return end(bFaulty);
}

EOPHResult FaultyHandler::getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain)
{
    const bool bFaulty = begin(EHandlerCall::GetTxPowerReadings);
    const std::int32_t nOrdinal = ordinal(EHandlerCall::GetTxPowerReadings);
    write(bFaulty, 0, pReading, 1000 + nOrdinal);
    write(bFaulty, 1, pIfPower, 2000 - nOrdinal);
    write(bFaulty, 2, pRfGain, 3000 + nOrdinal);
    return end(bFaulty);
}

EOPHResult FaultyHandler::calculateDetectorUsage(std::int32_t nPctrl, std::int32_t nLoopMode,
                                                 std::int32_t* pDetectorState)
{
    const bool bFaulty = begin(EHandlerCall::CalculateDetectorUsage, nPctrl, nLoopMode);
    write(bFaulty, 0, pDetectorState, ordinal(EHandlerCall::CalculateDetectorUsage) % 3);
    return end(bFaulty);
}

EOPHResult FaultyHandler::getPmeasured(std::int32_t* pPmeasured)
{
    const bool bFaulty = begin(EHandlerCall::GetPmeasured);
    const std::int32_t nOffset = 7 * (ordinal(EHandlerCall::GetPmeasured) % 5) - 30;
    // Crossed limits send powers at the ends of the range.
    write(bFaulty, 0, pPmeasured, static_cast<std::int32_t>(StepModel::wrapped(std::int64_t{m_nPctrlSent} + nOffset)));
    return end(bFaulty);
}

EOPHResult FaultyHandler::setTraffic(bool bEnable)
{
    return end(begin(EHandlerCall::SetZembraMlmTrafTx, bEnable ? 1 : 0));
}

EOPHResult FaultyHandler::getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper)
{
    const bool bFaulty = begin(EHandlerCall::GetPctrlLimits);
    write(bFaulty, 0, pLower, LOWER_LIMIT);
    write(bFaulty, 1, pUpper, UPPER_LIMIT);
    return end(bFaulty);
}
