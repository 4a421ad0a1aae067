// Inputs, requests and read-outs.
#include "tests/module/differential/ReferenceController.h"

namespace Differential
{
namespace
{
constexpr std::int64_t UNSIGNED_TURN = std::int64_t{1} << 32;

std::int64_t asUnsigned(std::int64_t nValue)
{
    return nValue < 0 ? nValue + UNSIGNED_TURN : nValue;
}

/** @return how many whole intervals fit into a time that is an interval shorter, in unsigned 32-bit arithmetic */
std::int64_t cycles(std::int64_t nTime, std::int64_t nInterval)
{
    return asUnsigned(wrapped(nTime - nInterval)) / asUnsigned(nInterval);
}
} // namespace

void ReadOuts::write(EventLog& log) const
{
    log.add("state ", nState, " status ", nStatus, " pctrl ", nPctrl, " pmeasured ", nPmeasured, " log data");
    for (const std::int64_t nValue : anLogData) {
        log.add(" ", nValue);
    }
    log.line();
}

ReadOuts ReferenceController::readOuts() const
{
    return {m_nState,
            m_nStatus,
            m_nStatus == 1 ? m_nPctrl : -9900,
            m_nPmeasured,
            {m_nPtarget, m_nPctrl, m_nError, m_nPmeasured, m_nTxPmin, m_nPctrlMax, m_nState, m_nDetector}};
}

bool ReferenceController::isDefined(const Operation& operation) const
{
    const auto& an = operation.anArgument;
    const auto isIndex = [](std::int32_t nValue, std::size_t nCount) {
        return nValue >= 0 && static_cast<std::size_t>(nValue) < nCount;
    };
    switch (operation.eKind) {
    case EOperation::SetGain:
    case EOperation::GetGain:
        return isIndex(an[0], 3) && isIndex(an[1], 9);
    case EOperation::SetInterval:
        return an[0] != 0;
    case EOperation::RegisterObserver:
        return isIndex(an[0], 4) && isIndex(an[1], 3);
    // The commands are found by their names, which are published when the logs are initialised.
    case EOperation::OpcLogCommand:
        return m_bPublished && isIndex(an[0], OPC_LOG_OPTIONS.size());
    case EOperation::TransientLogCommand:
        return m_bPublished && isIndex(an[0], TRANSIENT_LOG_OPTIONS.size());
    case EOperation::RestartLogs:
        return m_bPublished;
    case EOperation::RunPhase:
        return isIndex(an[0], 10);
    case EOperation::EnterState:
        return an[0] == 3 || an[0] == 4;
    // Without a handler only the states that do not call it can act.
    case EOperation::SetProductionTest:
        return m_bHandler;
    case EOperation::Regulate:
    case EOperation::StepStateMachine:
        return m_bHandler || (m_nState >= 2 && m_nState <= 4);
    default:
        return true;
    }
}

void ReferenceController::trace(int nLevel, const std::string& sText)
{
    m_environment.log().line("trace ", nLevel,
                             " RQX.OPC Control/OutputPowerController/private/OutputPowerController: ", sText);
}

void ReferenceController::apply(const Operation& operation)
{
    const auto& an = operation.anArgument;
    EventLog& log = m_environment.log();
    m_coverage.count(m_nState, operation.eKind);
    m_environment.countFor(&m_coverage, m_nState);
    switch (operation.eKind) {
    case EOperation::Regulate:
        log.line("result ", regulate(an[0]));
        break;
    case EOperation::Request:
        log.line("result ", request(an[0], an[1]));
        break;
    case EOperation::SetLimits:
        setLimits(an[0], an[1]);
        break;
    case EOperation::SetProductionTest:
        log.line("result ", setProductionTest(an[0] != 0, an[1]));
        break;
    case EOperation::SetGain:
        m_anGain[static_cast<std::size_t>(an[0])][static_cast<std::size_t>(an[1])] = an[2];
        break;
    case EOperation::GetGain:
        log.line("gain ", m_anGain[static_cast<std::size_t>(an[0])][static_cast<std::size_t>(an[1])]);
        break;
    case EOperation::SetInterval:
        setInterval(an[0]);
        break;
    case EOperation::ChangeFrequency:
        for (std::uint32_t i = 0; i < m_environment.frequencyObservers(); ++i) {
            changeFrequency();
        }
        break;
    case EOperation::ReportTemperature:
        reportTemperature(an[0]);
        break;
    case EOperation::RegisterObserver:
        m_observed[static_cast<std::size_t>(an[0])].observers.push_back(an[1]);
        break;
    case EOperation::OpcLogCommand:
        m_logs.opcCommand(static_cast<std::size_t>(an[0]));
        break;
    case EOperation::TransientLogCommand:
        m_logs.transientCommand(static_cast<std::size_t>(an[0]));
        break;
    case EOperation::RestartLogs:
        m_logs.restart();
        log.line("result 0");
        break;
    case EOperation::RunPhase:
        log.line("result ", runPhase(static_cast<std::size_t>(an[0])));
        break;
    default:
        applyPrivate(operation);
        break;
    }
}

void ReferenceController::applyPrivate(const Operation& operation)
{
    EventLog& log = m_environment.log();
    switch (operation.eKind) {
    case EOperation::Initialize:
        trace(5, "Enter: initialize()");
        m_logs.initialize();
        m_bPublished = true;
        log.line("result 0");
        break;
    case EOperation::Uninitialize:
        trace(5, "Enter: unInitialize()");
        m_logs.uninitialize();
        log.line("result 0");
        break;
    case EOperation::EnterState:
        m_nState = operation.anArgument[0];
        m_nStatus = 0;
        break;
    case EOperation::StepStateMachine:
        log.line("result ", stepStateMachine());
        break;
    case EOperation::WriteInitialGain:
        m_logs.writeInitialGain(operation.anArgument[0]);
        break;
    default:
        break;
    }
}

std::int64_t ReferenceController::request(std::int64_t nState, std::int64_t nMode)
{
    trace(5, std::string("setRequestedTxPowerState(): Turn transmitter ") + (nState != 0 ? "ON" : "OFF"));
    if (nMode != m_nMode) {
        m_nMode = nMode;
        tell(3, nMode);
        if (nMode == 2) {
            m_coverage.count(ECorner::ModeReportedThenLimited);
            m_nMode = m_constants.nModeKeptForTwo;
        }
    }
    if (nState != 0 && nState != 1) {
        m_coverage.count(ECorner::UnknownRequest);
        trace(1, "setRequestedTxPowerState(): called with unknown power state " + std::to_string(nState));
        return 0x8002;
    }
    if (m_nState >= 5 && m_nState <= 7) {
        m_coverage.count(nState == 1 ? ECorner::OnRequestWhileSwitchingOn : ECorner::OffRequestWhileSwitchingOn);
    }
    if (m_nState <= 1 && nState == 1) {
        m_coverage.count(ECorner::OnRequestWhileSwitchingOff);
    }
    if (nState != m_nStatus) {
        m_nState = nState == 1 ? 5 : 0;
    }
    return 0;
}

std::int64_t ReferenceController::setProductionTest(bool bOn, std::int32_t nLoopMode)
{
    m_bProductionTest = bOn;
    m_nLoopMode = nLoopMode;
    if (isRefused(m_environment.setProductionTestSettings(nLoopMode))) {
        trace(1, "setProductionTestSettings(): failed to set production test settings in OPH");
        return 0x8000;
    }
    return 0;
}

void ReferenceController::setLimits(std::int64_t nTxPmin, std::int64_t nTxPmax)
{
    trace(5,
          "setTxPminPmax(): txPmin= " + std::to_string(nTxPmin) + ", txPmax = " + std::to_string(asUnsigned(nTxPmax)));
    m_nTxPmin = nTxPmin;
    m_nPctrlMin = nTxPmin;
}

void ReferenceController::setInterval(std::int64_t nInterval)
{
    m_nWaitCycles = wrapped(cycles(24, nInterval));
    m_nRampCycles = wrapped(cycles(100, nInterval));
    m_nStepLimit = nInterval == 6 ? 10 : 20;
    if (nInterval < 0) {
        m_coverage.count(ECorner::IntervalNegative);
    }
    else if (nInterval > 24) {
        m_coverage.count(ECorner::IntervalAboveWaits);
    }
}

void ReferenceController::changeFrequency()
{
    const std::int64_t nFrequency = m_environment.frequency();
    trace(5, "onChange(): Tx frequency changed from " + std::to_string(m_nFrequency) + " to " +
                 std::to_string(nFrequency));
    m_nFrequency = nFrequency;
    if (m_environment.frequencyObservers() > 1) {
        m_coverage.count(ECorner::NotifiedTwice);
    }
}

void ReferenceController::reportTemperature(std::int64_t nTemperature)
{
    for (std::uint32_t i = 0; i < m_environment.temperatureObservers(); ++i) {
        m_nTemperature = nTemperature;
        trace(5, "notifyTemperature(): New temperature = " + std::to_string(nTemperature) + " for channel " +
                     std::to_string(m_nChannel));
    }
}
} // namespace Differential
