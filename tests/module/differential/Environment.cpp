#include "tests/module/differential/Environment.h"

namespace Differential
{
namespace
{
constexpr std::int32_t FAILED = 0x8000;
constexpr std::int64_t NANOSECONDS = 1'000'000'000;
constexpr std::array<std::string_view, 4> LISTS = {"pctrl ", "ptarget ", "predicted ", "mode "};

std::int32_t low32(std::int64_t nValue)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nValue));
}

std::size_t index(std::int32_t nArgument, std::size_t nCount)
{
    return static_cast<std::uint32_t>(nArgument) % nCount;
}
} // namespace

bool Environment::apply(const Operation& operation)
{
    const auto& an = operation.anArgument;
    switch (operation.eKind) {
    case EOperation::AnswerOf:
    case EOperation::FaultOf:
    case EOperation::OutputOf:
        scriptHandler(operation);
        return true;
    case EOperation::FollowPower:
        m_bFollows = an[0] != 0;
        m_nAbovePower = an[1];
        return true;
    case EOperation::Heal:
        heal();
        return true;
    case EOperation::TableAnswer: {
        Table& table = m_tables[index(an[0], 2)];
        table.nFetch = an[1];
        table.nValid = an[2];
        table.nInterpolate = an[3] & 0xFFFF;
        table.bWrites = (an[3] & 0x10000) == 0;
        return true;
    }
    case EOperation::TableOffset:
        m_tables[index(an[0], 2)].anFactor = {an[1], an[2], an[3]};
        return true;
    case EOperation::Storage:
        m_variables[index(an[0], 2)] = {an[1], an[2], an[3] != 0};
        return true;
    case EOperation::Publish:
        m_published[index(an[0], 3)] = static_cast<EPublished>(index(an[1], 4));
        return true;
    case EOperation::FrequencyEntry:
        m_nFrequencyEntry = an[0];
        return true;
    case EOperation::AdvanceClock:
        advanceClock(an[0], an[1]);
        return true;
    case EOperation::TraceLevel:
        m_nTestTraceLevel = an[0];
        return true;
    case EOperation::ChangeFrequency:
        m_nFrequency = an[0];
        return false;
    default:
        return false;
    }
}

void Environment::scriptHandler(const Operation& operation)
{
    const auto& an = operation.anArgument;
    Call& scripted = m_calls[index(an[0], HANDLER_CALLS)];
    if (operation.eKind == EOperation::OutputOf) {
        scripted.anOutput = {an[1], an[2], an[3]};
    }
    else if (operation.eKind == EOperation::AnswerOf) {
        scripted.answer = {an[1], an[2] != 0};
    }
    else {
        scripted.fault = {an[1], an[2] != 0};
        scripted.nCallsToFault = an[3] > 0 ? an[3] : 0;
    }
}

void Environment::heal()
{
    m_calls = {};
    call(EHandlerCall::GetPctrlLimits).anOutput = {-2000, 2000, 0};
    call(EHandlerCall::GetTxPowerReadings).anOutput = {11, 22, 33};
    call(EHandlerCall::GetReducedGain).anOutput = {40, 1, 0};
    m_bFollows = true;
    m_nAbovePower = -37;
}

void Environment::advanceClock(std::int32_t nSeconds, std::int32_t nNanoseconds)
{
    if (nSeconds < 0 || nNanoseconds < 0 || m_now.nSeconds + nSeconds >= INT32_MAX - 1) {
        return; // the clock does not go back, and stays within 32 bits
    }
    m_now.nNanoseconds += nNanoseconds % NANOSECONDS;
    m_now.nSeconds += nSeconds + m_now.nNanoseconds / NANOSECONDS;
    m_now.nNanoseconds %= NANOSECONDS;
}

Environment::Answer Environment::answer(EHandlerCall eCall)
{
    Call& scripted = call(eCall);
    const bool bFault = scripted.nCallsToFault > 0 && --scripted.nCallsToFault == 0;
    const Answer given = bFault ? scripted.fault : scripted.answer;
    if (m_pCoverage != nullptr) {
        const bool bFailed = given.nResult >= FAILED;
        m_pCoverage->count(m_nState, eCall,
                           given.bWrites ? (bFailed ? EOutcome::Failed : EOutcome::Succeeded)
                                         : (bFailed ? EOutcome::FailedSilently : EOutcome::SucceededSilently));
    }
    return given;
}

std::int32_t Environment::setOutputPower(std::int32_t nPctrl, std::int32_t nPtarget)
{
    m_log.line("setOutputPower ", nPctrl, " ", nPtarget);
    m_nPowerSent = nPctrl;
    return answer(EHandlerCall::SetOutputPower).nResult;
}

std::int32_t Environment::setTxState(std::int32_t nStep)
{
    m_log.line("setTxState ", nStep);
    return answer(EHandlerCall::SetTxState).nResult;
}

std::int32_t Environment::setProductionTestSettings(std::int32_t nLoopMode)
{
    m_log.line("setProductionTestSettings ", nLoopMode);
    return answer(EHandlerCall::SetProductionTestSettings).nResult;
}

std::int32_t Environment::getReducedGain(std::uint32_t nAmplifier, std::int32_t* pReducedGain)
{
    m_log.line("getReducedGainFromAmplifier ", nAmplifier);
    const Answer given = answer(EHandlerCall::GetReducedGain);
    if (given.bWrites) {
        // One value for each amplifier.
        const auto& anOutput = call(EHandlerCall::GetReducedGain).anOutput;
        *pReducedGain = low32(anOutput[0] + std::int64_t{anOutput[1]} * nAmplifier);
    }
    return given.nResult;
}

std::int32_t Environment::getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain)
{
    m_log.line("getTxPowerReadings");
    const Answer given = answer(EHandlerCall::GetTxPowerReadings);
    if (given.bWrites) {
        const auto& anOutput = call(EHandlerCall::GetTxPowerReadings).anOutput;
        *pReading = anOutput[0];
        *pIfPower = anOutput[1];
        *pRfGain = anOutput[2];
    }
    return given.nResult;
}

std::int32_t Environment::calculateDetectorUsage(std::int32_t nPctrl, std::int32_t nLoopMode,
                                                 std::int32_t* pDetectorState)
{
    m_log.line("calculateDetectorUsage ", nPctrl, " ", nLoopMode);
    const Answer given = answer(EHandlerCall::CalculateDetectorUsage);
    if (given.bWrites) {
        *pDetectorState = call(EHandlerCall::CalculateDetectorUsage).anOutput[0];
    }
    return given.nResult;
}

std::int32_t Environment::getPmeasured(std::int32_t* pPmeasured)
{
    m_log.line("getPmeasured");
    const Answer given = answer(EHandlerCall::GetPmeasured);
    if (given.bWrites) {
        *pPmeasured = m_bFollows ? low32(std::int64_t{m_nPowerSent} + m_nAbovePower)
                                 : call(EHandlerCall::GetPmeasured).anOutput[0];
    }
    return given.nResult;
}

std::int32_t Environment::setTraffic(bool bEnable)
{
    m_log.line(bEnable ? "setZembraMlmTrafTx true" : "setZembraMlmTrafTx false");
    return answer(EHandlerCall::SetTraffic).nResult;
}

std::int32_t Environment::getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper)
{
    m_log.line("getPctrlLimits");
    const Answer given = answer(EHandlerCall::GetPctrlLimits);
    if (given.bWrites) {
        *pLower = call(EHandlerCall::GetPctrlLimits).anOutput[0];
        *pUpper = call(EHandlerCall::GetPctrlLimits).anOutput[1];
    }
    return given.nResult;
}

std::int32_t Environment::getTable(std::string_view sName, int* pTable)
{
    m_log.line("GetTable ", sName);
    const int nTable = sName.ends_with("Bandwidth.To.OPC.Target.Offset") ? 0 : 1;
    const std::int32_t nFetch = m_tables[static_cast<std::size_t>(nTable)].nFetch;
    if (nFetch == 0 || nFetch == 3) {
        *pTable = nTable;
    }
    return nFetch == 1 || nFetch == 3 ? FAILED : 0;
}

std::int32_t Environment::isValid(int nTable, std::int32_t* pValid)
{
    m_log.line("IsValid ", nTable);
    const std::int32_t nValid = m_tables[static_cast<std::size_t>(nTable)].nValid;
    *pValid = nValid;
    return nValid < 0 ? FAILED : 0;
}

std::int32_t Environment::interpolate(int nTable, std::int32_t nX, std::int32_t nY, std::int32_t* pValue)
{
    m_log.line("BiLinearInterpolate ", nTable, " ", nX, " ", nY);
    const Table& table = m_tables[static_cast<std::size_t>(nTable)];
    if (table.bWrites) {
        const std::int32_t nFromX = low32(std::int64_t{table.anFactor[0]} * nX);
        const std::int32_t nFromY = low32(std::int64_t{table.anFactor[1]} * nY);
        *pValue = low32(std::int64_t{nFromX} + nFromY + table.anFactor[2]);
    }
    return table.nInterpolate;
}

std::int32_t Environment::getVariable(std::string_view sName, const std::int32_t** ppContent)
{
    m_log.line("GetVariable ", sName);
    const Variable& variable = m_variables[sName == "ChannelSpacing" ? 1 : 0];
    // The spacing's content is not asked for: the platform has it whenever it succeeds.
    const bool bContent = variable.bContent || (&variable == &m_variables[1] && variable.nResult < FAILED);
    *ppContent = bContent ? &variable.nValue : nullptr;
    return variable.nResult;
}

EPublished Environment::find(std::string_view sName)
{
    m_log.line("getInterface ", sName);
    if (sName.starts_with("IOutputPowerHandler.")) {
        return m_published[0];
    }
    return sName.starts_with("IFrequencyHandler_Tx") ? m_published[1] : m_published[2];
}

std::int32_t Environment::registerFrequencyObserver()
{
    m_log.line("IFrequencyHandler::registerObserver");
    m_nFrequencyObservers += m_nFrequencyEntry >= FAILED ? 0U : 1U;
    return m_nFrequencyEntry;
}

void Environment::registerTemperatureObserver()
{
    m_log.line("ITemperatureHandler::registerObserver");
    ++m_nTemperatureObservers;
}

std::int32_t Environment::frequency()
{
    m_log.line("getTxFrequency");
    return m_nFrequency;
}

void Environment::tellObserver(std::int32_t nList, std::int32_t nObserver, std::uint32_t nChannel, std::int32_t nValue)
{
    m_log.line(LISTS[static_cast<std::size_t>(nList)], nObserver, " ", nChannel, " ", nValue);
}
} // namespace Differential
