#include "Unit/Process/RadioChannel.h"

#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Simulation/Handlers/ISimulatedFrequency.h"
#include "Simulation/Handlers/ISimulatedTransmitter.h"
#include "Unit/Process/LoadedModule.h"
#include "Unit/SafetyMonitor/ViolationStore.h"
#include "Unit/Text/PowerText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace
{
template <class TKnob> TKnob* findKnob(const std::string& sName)
{
    return dynamic_cast<TKnob*>(InterfaceBroker::getInstance().getInterface(sName));
}

void require(long nResult, unsigned int nChannel, const char* pWhat)
{
    if (EAF_isFailure(nResult)) {
        throw UnitStartError(fmt::format("channel {}: {} failed: {:#x}", nChannel, pWhat, nResult));
    }
}
} // namespace

RadioChannel::RadioChannel(const ChannelConfiguration& configuration)
    : m_configuration(configuration), m_pctrlObserver{this, onPctrl}, m_ptargetObserver{this, onPctrl},
      m_predictedPctrlObserver{this, onPredictedPctrl}, m_powerModeObserver{this, onPowerMode},
      m_requestedPowerDbm(configuration.requestedPowerDbm), m_frequencyMhz(configuration.frequencyMhz)
{}

void RadioChannel::configureSimulation()
{
    m_owner.check("RadioChannel::configureSimulation");
    m_pTransmitter = findKnob<ISimulatedTransmitter>(outputPowerHandlerName(number()));
    m_pFrequency = findKnob<ISimulatedFrequency>(channelInterfaceName("IFrequencyHandler_Tx", number()));
    if (m_pTransmitter != nullptr) {
        m_pTransmitter->configure(m_configuration.transmitter, m_configuration.nSeed);
    }
}

std::string RadioChannel::controllerName() const
{
    return channelInterfaceName("IOutputPowerController", number());
}

bool RadioChannel::connect()
{
    m_owner.check("RadioChannel::connect");
    void* pBroker = nullptr;
    void* pTable = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_GetInterface(pBroker, controllerName().c_str(), &pTable);
    CInterfaceBroker_DestroyInstance(pBroker);
    if (pTable == nullptr) {
        return false;
    }
    m_pController = static_cast<const IOutputPowerControllerCStruct*>(pTable);
    registerObservers();
    return true;
}

void RadioChannel::registerObservers()
{
    const IOutputPowerControllerCStruct& table = *m_pController;
    require(table.staticRegisterPctrlObserver(table.vpThis, &m_pctrlObserver), number(), "registering an observer");
    require(table.staticRegisterPtargetObserver(table.vpThis, &m_ptargetObserver), number(), "registering an observer");
    require(table.staticRegisterPredictedPctrlObserver(table.vpThis, &m_predictedPctrlObserver), number(),
            "registering an observer");
    require(table.staticRegisterPowerModeObserver(table.vpThis, &m_powerModeObserver), number(),
            "registering an observer");
}

void RadioChannel::configureController(unsigned int intervalMs)
{
    m_owner.check("RadioChannel::configureController");
    const ChannelConfiguration& settings = m_configuration;
    require(setInterval(intervalMs), number(), "setting the regulator interval");
    require(setLimits(settings.txPminDbm, settings.txPmaxDbm), number(), "setting the power limits");
    setGains(eOPC_TX_ON_RAMPING, settings.gainPercentRamping);
    setGains(eOPC_TX_ON, settings.gainPercentOn);
    if (settings.bProductionTest || settings.nLoopMode != eRF_DETECTOR_LOOP_MODE_NORMAL) {
        require(setProductionTest(settings.bProductionTest, settings.nLoopMode), number(), "setting production test");
    }
}

void RadioChannel::setGains(EOPCState eState, const std::optional<GainPercent>& gain)
{
    if (!gain) {
        return;
    }
    for (std::size_t nDetectorState = 0; nDetectorState < gain->size(); ++nDetectorState) {
        require(setGain(static_cast<EOPHDetectorState>(nDetectorState), eState, gain->at(nDetectorState)), number(),
                "setting a gain");
    }
}

void RadioChannel::requestOn()
{
    m_owner.check("RadioChannel::requestOn");
    require(m_pController->staticSetRequestedTxPowerState(m_pController->vpThis, eREQUESTED_TX_POWER_ON,
                                                          static_cast<ETxPowerMode>(m_configuration.nPowerMode)),
            number(), "requesting the transmitter on");
}

void RadioChannel::simulate(const StepInputs& inputs)
{
    if (m_pTransmitter != nullptr) {
        m_pTransmitter->setAmbientTemperature(inputs.temperatureDegrees);
        m_pTransmitter->setFrequencyMhz(inputs.frequencyMhz);
        m_pTransmitter->advance(inputs.simulatedSeconds);
    }
    const int nFrequency = nearestInteger(inputs.frequencyMhz);
    if (m_pFrequency != nullptr && m_nNotifiedFrequency != nFrequency) {
        m_pFrequency->setTxFrequency(nFrequency);
        m_nNotifiedFrequency = nFrequency;
    }
}

void RadioChannel::step(const StepSurroundings& surroundings, StepSample& sample)
{
    const ProfilePoint& profile = surroundings.profile;
    stepWith(StepInputs{.requestedPowerDbm = m_requestedPowerDbm.next(profile.requestedPowerDbm),
                        .frequencyMhz = m_frequencyMhz.next(profile.frequencyMhz),
                        .temperatureDegrees = surroundings.temperatureDegrees,
                        .simulatedSeconds = surroundings.simulatedSeconds},
             sample);
    readChain(sample);
}

void RadioChannel::stepWith(const StepInputs& inputs, StepSample& sample)
{
    m_owner.check("RadioChannel::stepWith");
    simulate(inputs);
    followRequest();
    sample.nChannelNumber = number();
    sample.nStateBefore = state();
    sample.nRequestedPower = centiDb(inputs.requestedPowerDbm);
    sample.temperatureDegrees = static_cast<float>(inputs.temperatureDegrees);
    sample.frequencyMhz = static_cast<float>(inputs.frequencyMhz);
    sample.nResult =
        static_cast<std::int32_t>(m_pController->staticRegulate(m_pController->vpThis, sample.nRequestedPower));
    if (sample.nStateBefore == eOPC_TX_ON_INITIATED) {
        noteLowerLimit();
    }
    readController(sample);
    count(sample);
    sample.nSteps = m_statistics.nSteps;
    sample.nFailedSteps = m_statistics.nFailedSteps;
    m_lastSample = sample;
}

void RadioChannel::readController(StepSample& sample)
{
    const IOutputPowerControllerCStruct& table = *m_pController;
    long nPtarget = 0;
    long nPctrl = 0;
    long nPowerError = 0;
    long nPmeasured = 0;
    long nTxPmin = 0;
    long nPctrlMax = 0;
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    table.staticGetLogData(table.vpThis, &nPtarget, &nPctrl, &nPowerError, &nPmeasured, &nTxPmin, &nPctrlMax, &eState,
                           &eDetectorState);
    sample.nState = eState;
    sample.nPtarget = static_cast<std::int32_t>(nPtarget);
    sample.nPctrl = static_cast<std::int32_t>(nPctrl);
    sample.nPmeasured = static_cast<std::int32_t>(nPmeasured);
    sample.nPredictedPctrl = m_nPredictedPctrl;
    sample.nPowerError = static_cast<std::int32_t>(nPowerError);
    sample.nDetectorState = eDetectorState;
    m_nPctrlMax = static_cast<std::int32_t>(nPctrlMax);
}

// Past the handler's operations: a call of one would use up a fault that is meant for the controller's.
void RadioChannel::readChain(StepSample& sample) const
{
    if (m_pTransmitter == nullptr) {
        sample.nIfPower = OPC_POWER_UNKNOWN;
        sample.nRfGain = OPC_POWER_UNKNOWN;
        sample.reducedGain.fill(OPC_POWER_UNKNOWN);
        return;
    }
    const ChainSetting& chain = m_pTransmitter->chain();
    sample.nIfPower = centiDb(chain.ifPowerDbm);
    sample.nRfGain = centiDb(chain.rfGainDb);
    static_assert(MAX_AMPLIFIERS == std::tuple_size_v<decltype(sample.reducedGain)>);
    for (std::size_t nAmplifier = 0; nAmplifier < sample.reducedGain.size(); ++nAmplifier) {
        sample.reducedGain.at(nAmplifier) = centiDb(chain.gainReductionDb.at(nAmplifier));
    }
}

/** Follows what the controller takes from the handler as it begins to switch on. */
void RadioChannel::noteLowerLimit()
{
    // Without an upper limit the controller does nothing, and asks nothing.
    if (m_pTransmitter == nullptr || m_nPctrlMax == OPC_POWER_UNKNOWN) {
        return;
    }
    const std::int32_t nGiven = m_pTransmitter->givenLowerLimit().value_or(0); // what a failed call leaves
    m_nPctrlMin = nGiven == OPC_POWER_UNKNOWN ? m_nPctrlMin : nGiven;
}

ControlPowerLimits RadioChannel::controlPowerLimits() const
{
    m_owner.check("RadioChannel::controlPowerLimits");
    constexpr std::int32_t PRODUCTION_TEST_MARGIN = 2000;
    const std::int32_t nMargin = m_configuration.bProductionTest ? PRODUCTION_TEST_MARGIN : 0;
    return {m_nPctrlMin - nMargin, m_nPctrlMax + nMargin};
}

void RadioChannel::count(const StepSample& sample)
{
    ChannelStatistics& statistics = m_statistics;
    ++statistics.nSteps;
    statistics.nFailedSteps += EAF_isFailure(sample.nResult) ? 1 : 0;
    statistics.nLastState = sample.nState;
    countRamp(sample);
    if (sample.nStateBefore == eOPC_TX_ON && sample.nState == eOPC_TX_ON && !EAF_isFailure(sample.nResult)) {
        m_logs.onRegulated();
    }
    if (sample.nState != eOPC_TX_ON) {
        return;
    }
    if (statistics.nSwitchOnSteps == 0) {
        statistics.nSwitchOnSteps = statistics.nSteps;
        statistics.nSwitchOnTimeUs = sample.nTimeUs;
    }
    statistics.nPctrlMin = statistics.bHasPctrl ? std::min(statistics.nPctrlMin, sample.nPctrl) : sample.nPctrl;
    statistics.nPctrlMax = statistics.bHasPctrl ? std::max(statistics.nPctrlMax, sample.nPctrl) : sample.nPctrl;
    statistics.bHasPctrl = true;
}

void RadioChannel::countRamp(const StepSample& sample)
{
    constexpr std::int32_t BAND = 100;
    const bool bRamping = sample.nState == eOPC_TX_ON_RAMPING;
    const bool bOn = sample.nState == eOPC_TX_ON;
    if (bRamping && sample.nStateBefore != eOPC_TX_ON_RAMPING) {
        ++m_statistics.nRamps;
        m_nRampBeganUs = sample.nTimeUs;
        m_bRising = true;
    }
    if (m_bRising && (bRamping || bOn)) {
        m_statistics.nRampUs = sample.nTimeUs - m_nRampBeganUs;
    }
    const bool bThere = bOn && std::abs(sample.nPowerError) <= BAND && !EAF_isFailure(sample.nResult);
    m_bRising = m_bRising && !bThere && (bRamping || bOn);
}

EOPCState RadioChannel::state() const
{
    m_owner.check("RadioChannel::state");
    EOPCState eState = eOPC_UNDEFINED;
    m_pController->staticGetOPCState(m_pController->vpThis, &eState);
    return eState;
}

bool RadioChannel::isOn() const
{
    m_owner.check("RadioChannel::isOn");
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_OFF;
    m_pController->staticGetTxPowerActualStatus(m_pController->vpThis, &eStatus);
    return eStatus == eTX_POWER_ACTUAL_ON;
}

std::optional<std::uint64_t> RadioChannel::refusedCalls() const
{
    m_owner.check("RadioChannel::refusedCalls");
    return m_pTransmitter == nullptr ? std::nullopt : std::optional<std::uint64_t>(m_pTransmitter->refusedCalls());
}

void RadioChannel::setViolations(const ViolationStore& violations)
{
    m_owner.check("RadioChannel::setViolations");
    m_pViolations = &violations;
}

std::optional<std::uint64_t> RadioChannel::safetyViolations() const
{
    return m_pViolations == nullptr ? std::nullopt : std::optional(m_pViolations->total());
}

void RadioChannel::onPctrl(void* vpThis, unsigned int /*nChannel*/, int /*nPctrl*/)
{
    ++static_cast<RadioChannel*>(vpThis)->m_statistics.nNotifications;
}

void RadioChannel::onPredictedPctrl(void* vpThis, unsigned int /*nChannel*/, int nPredictedPctrl)
{
    auto* pThis = static_cast<RadioChannel*>(vpThis);
    ++pThis->m_statistics.nNotifications;
    pThis->m_nPredictedPctrl = nPredictedPctrl;
}

void RadioChannel::onPowerMode(void* vpThis, unsigned int /*nChannel*/, ETxPowerMode /*eMode*/)
{
    ++static_cast<RadioChannel*>(vpThis)->m_statistics.nNotifications;
}
