#include "Simulation/Handlers/private/SimulatedOutputPowerHandler.h"

#include "Simulation/Handlers/private/PowerScale.h"

#include <cstdio>

namespace
{
// The steps of the transmitter.
constexpr std::int32_t STEP_MUTED = 0;
constexpr std::int32_t STEP_OFF = 1;
constexpr std::int32_t STEP_ON_INITIATED = 2;
constexpr std::int32_t STEP_CARRIER = 3;
constexpr std::int32_t STEP_ON = 4;

/** Production test may go this far beyond the limits of the control power. */
constexpr double PRODUCTION_TEST_MARGIN_DB = 20.0;

/** Far enough above the floor, in dB, that it adds less than 0.05 dB to a reading: 10 log10(1 + 1/100). */
constexpr double TRUSTED_ABOVE_FLOOR_DB = 20.0;
/** Far enough above the floor, in dB, that it adds less than 0.5 dB to a reading: 10 log10(1 + 1/10). */
constexpr double USABLE_ABOVE_FLOOR_DB = 10.0;

/** Given as the detector's latest reading before there was one. */
constexpr std::int32_t NOT_READ = -10000;

/** The name that callers look for is this long, so that a channel of more than one digit loses the others. */
constexpr std::size_t NAME_SIZE = 22;

bool isLoopMode(std::int32_t nLoopMode)
{
    return nLoopMode >= eRF_DETECTOR_LOOP_MODE_NORMAL && nLoopMode <= eRF_DETECTOR_LOOP_MODE_OPEN;
}

bool isStepAllowed(std::int32_t nStep, std::int32_t nLastStep)
{
    switch (nStep) {
    case STEP_ON_INITIATED:
        return true;
    case STEP_CARRIER:
        return nLastStep == STEP_ON_INITIATED || nLastStep == STEP_CARRIER;
    case STEP_ON:
        return nLastStep == STEP_CARRIER || nLastStep == STEP_ON;
    case STEP_MUTED:
        return nLastStep != STEP_OFF;
    case STEP_OFF:
        return nLastStep == STEP_MUTED || nLastStep == STEP_OFF;
    default:
        return false;
    }
}
} // namespace

SimulatedOutputPowerHandler::SimulatedOutputPowerHandler(unsigned int nChannel)
    : m_nChannel(nChannel), m_nTxStep(STEP_OFF)
{
    buildTable();
    SimulatedOutputPowerHandler::configure({}, std::uint64_t{1} + nChannel);
}

EAFResult SimulatedOutputPowerHandler::initialize()
{
    std::array<char, NAME_SIZE> name{};
    if (std::snprintf(name.data(), name.size(), "IOutputPowerHandler.%lu", static_cast<unsigned long>(m_nChannel)) < 0)
    {
        return EAF_FAILED;
    }
    return m_published.publish(name.data(), this);
}

void SimulatedOutputPowerHandler::configure(const TransmitterParameters& parameters, std::uint64_t nSeed)
{
    m_transmitter = Transmitter(parameters, nSeed);
    m_faults.seed(nSeed);
    m_latest = {};
    m_nTxStep = STEP_OFF;
    m_nPctrl = toCentiDb(parameters.minPowerDbm);
    m_nDetectorReading = NOT_READ;
    m_nLoopMode = eRF_DETECTOR_LOOP_MODE_NORMAL;
}

void SimulatedOutputPowerHandler::setFault(EHandlerOperation eOperation, const HandlerFault& fault)
{
    m_faults.set(eOperation, fault);
}

EOPHResult SimulatedOutputPowerHandler::refuse()
{
    ++m_nRefusedCalls;
    return EAF_FAILED;
}

template <class TApply>
EOPHResult SimulatedOutputPowerHandler::set(EHandlerOperation eOperation, std::int32_t nValue, TApply apply)
{
    switch (m_faults.next(eOperation)) {
    case EFaultAction::Fail:
        return EAF_FAILED;
    case EFaultAction::Stuck:
        return EAF_OK;
    case EFaultAction::WrongValue:
        return apply(m_faults.wrongValue(eOperation));
    case EFaultAction::Work:
        break;
    }
    return apply(nValue);
}

/** Leaves what the caller is to get in latest.values. */
template <std::size_t COUNT, class TRead>
EOPHResult SimulatedOutputPowerHandler::read(EHandlerOperation eOperation, Latest<COUNT>& latest, TRead readNow)
{
    const EFaultAction eAction = m_faults.next(eOperation);
    if (eAction == EFaultAction::Fail) {
        return EAF_FAILED;
    }
    if (eAction == EFaultAction::WrongValue) {
        latest.values.fill(m_faults.wrongValue(eOperation));
    }
    else if (eAction == EFaultAction::Work || !latest.bRead) {
        latest.values = readNow();
    }
    latest.bRead = true;
    return EAF_OK;
}

EOPHResult SimulatedOutputPowerHandler::setOutputPower(std::int32_t nPctrl, std::int32_t /*nPtarget*/)
{
    return set(EHandlerOperation::SetOutputPower, nPctrl,
               [this](std::int32_t nValue) { return applyOutputPower(nValue); });
}

EOPHResult SimulatedOutputPowerHandler::applyOutputPower(std::int32_t nPctrl)
{
    const TransmitterParameters& parameters = m_transmitter.parameters();
    if (m_nTxStep == STEP_OFF || nPctrl < toCentiDb(parameters.minPowerDbm - PRODUCTION_TEST_MARGIN_DB) ||
        nPctrl > toCentiDb(parameters.maxPowerDbm + PRODUCTION_TEST_MARGIN_DB))
    {
        return refuse();
    }
    m_nPctrl = nPctrl;
    m_transmitter.setControlPowerDbm(toDb(nPctrl));
    return EAF_OK;
}

EOPHResult SimulatedOutputPowerHandler::setTxState(std::int32_t nStep)
{
    return set(EHandlerOperation::SetTxState, nStep, [this](std::int32_t nValue) { return applyTxStep(nValue); });
}

EOPHResult SimulatedOutputPowerHandler::applyTxStep(std::int32_t nStep)
{
    if (!isStepAllowed(nStep, m_nTxStep)) {
        return refuse();
    }
    m_nTxStep = nStep;
    m_transmitter.setRadiating(nStep == STEP_CARRIER || nStep == STEP_ON);
    return EAF_OK;
}

EOPHResult SimulatedOutputPowerHandler::setProductionTestSettings(ERfDetectorLoopMode eLoopMode)
{
    return set(EHandlerOperation::SetProductionTestSettings, eLoopMode, [this](std::int32_t nValue) {
        if (!isLoopMode(nValue)) {
            return refuse();
        }
        m_nLoopMode = nValue;
        return EOPHResult{EAF_OK};
    });
}

EOPHResult SimulatedOutputPowerHandler::getReducedGainFromAmplifier(std::uint32_t nAmplifier,
                                                                    std::int32_t* pReducedGain)
{
    if (pReducedGain == nullptr) {
        return EAF_NULL_POINTER;
    }
    if (nAmplifier < 1 || nAmplifier > MAX_AMPLIFIERS) {
        return refuse();
    }
    const std::size_t nIndex = nAmplifier - 1;
    Latest<1>& latest = m_latest.reducedGain[nIndex];
    const EOPHResult nResult = read(EHandlerOperation::GetReducedGainFromAmplifier, latest, [this, nIndex] {
        return std::array<std::int32_t, 1>{toCentiDb(m_transmitter.setting().gainReductionDb[nIndex])};
    });
    if (!EAF_isFailure(nResult)) {
        *pReducedGain = latest.values[0];
    }
    return nResult;
}

EOPHResult SimulatedOutputPowerHandler::getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower,
                                                           std::int32_t* pRfGain)
{
    if (pReading == nullptr || pIfPower == nullptr || pRfGain == nullptr) {
        return EAF_NULL_POINTER;
    }
    Latest<3>& latest = m_latest.txPower;
    const EOPHResult nResult = read(EHandlerOperation::GetTxPowerReadings, latest, [this] {
        const ChainSetting& setting = m_transmitter.setting();
        return std::array<std::int32_t, 3>{m_nDetectorReading, toCentiDb(setting.ifPowerDbm),
                                           toCentiDb(setting.rfGainDb)};
    });
    if (!EAF_isFailure(nResult)) {
        *pReading = latest.values[0];
        *pIfPower = latest.values[1];
        *pRfGain = latest.values[2];
    }
    return nResult;
}

EOPHResult SimulatedOutputPowerHandler::calculateDetectorUsage(std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                                               EOPHDetectorState* pDetectorState)
{
    if (pDetectorState == nullptr) {
        return EAF_NULL_POINTER;
    }
    if (!isLoopMode(eLoopMode)) {
        return refuse();
    }
    Latest<1>& latest = m_latest.detectorState;
    const EOPHResult nResult = read(EHandlerOperation::CalculateDetectorUsage, latest, [this, nPctrl, eLoopMode] {
        return std::array<std::int32_t, 1>{detectorStateAt(nPctrl, eLoopMode)};
    });
    if (!EAF_isFailure(nResult)) {
        *pDetectorState = static_cast<EOPHDetectorState>(latest.values[0]);
    }
    return nResult;
}

EOPHDetectorState SimulatedOutputPowerHandler::detectorStateAt(std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode) const
{
    if (eLoopMode == eRF_DETECTOR_LOOP_MODE_CLOSED) {
        return eOPH_DETECTOR_STATE_0;
    }
    if (eLoopMode == eRF_DETECTOR_LOOP_MODE_OPEN) {
        return eOPH_DETECTOR_STATE_2;
    }
    const TransmitterParameters& parameters = m_transmitter.parameters();
    const double floorDbm = parameters.maxPowerDbm - parameters.detectorFloorBelowMaxDb;
    if (nPctrl >= toCentiDb(floorDbm + TRUSTED_ABOVE_FLOOR_DB)) {
        return eOPH_DETECTOR_STATE_0;
    }
    return nPctrl >= toCentiDb(floorDbm + USABLE_ABOVE_FLOOR_DB) ? eOPH_DETECTOR_STATE_1 : eOPH_DETECTOR_STATE_2;
}

EOPHResult SimulatedOutputPowerHandler::getPmeasured(std::int32_t* pPmeasured)
{
    if (pPmeasured == nullptr) {
        return EAF_NULL_POINTER;
    }
    Latest<1>& latest = m_latest.pMeasured;
    const EOPHResult nResult =
        read(EHandlerOperation::GetPmeasured, latest, [this] { return std::array<std::int32_t, 1>{readDetector()}; });
    if (!EAF_isFailure(nResult)) {
        *pPmeasured = latest.values[0];
    }
    return nResult;
}

std::int32_t SimulatedOutputPowerHandler::readDetector()
{
    m_nDetectorReading = toCentiDb(m_transmitter.readDetectorDbm());
    return m_nLoopMode == eRF_DETECTOR_LOOP_MODE_OPEN ? m_nPctrl : m_nDetectorReading;
}

EOPHResult SimulatedOutputPowerHandler::setZembraMlmTrafTx(bool bEnable)
{
    // The modulation does not change the mean power, so that there is nothing to keep.
    return set(EHandlerOperation::SetZembraMlmTrafTx, bEnable ? 1 : 0, [this](std::int32_t nValue) {
        return nValue == 0 || m_nTxStep == STEP_ON ? EOPHResult{EAF_OK} : refuse();
    });
}

EOPHResult SimulatedOutputPowerHandler::getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper)
{
    if (pLower == nullptr || pUpper == nullptr) {
        return EAF_NULL_POINTER;
    }
    Latest<2>& latest = m_latest.pctrlLimits;
    const EOPHResult nResult = read(EHandlerOperation::GetPctrlLimits, latest, [this] {
        const TransmitterParameters& parameters = m_transmitter.parameters();
        return std::array<std::int32_t, 2>{toCentiDb(parameters.minPowerDbm), toCentiDb(parameters.maxPowerDbm)};
    });
    m_nGivenLowerLimit.reset();
    if (!EAF_isFailure(nResult)) {
        *pLower = latest.values[0];
        *pUpper = latest.values[1];
        m_nGivenLowerLimit = latest.values[0];
    }
    return nResult;
}
