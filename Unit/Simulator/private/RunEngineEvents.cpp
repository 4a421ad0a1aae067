#include "Platform/EAFResult.h"
#include "Unit/Simulator/private/RunEngine.h"
#include "Unit/Simulator/private/VirtualTime.h"

#include <fmt/format.h>

void RunEngine::happen(std::int64_t nNowNs)
{
    if (!m_events.isDue(nNowNs)) {
        return;
    }
    while (const auto due = m_events.takeDue(nNowNs)) {
        act(*due);
    }
}

void RunEngine::act(const EventQueue::Due& due)
{
    const ScenarioEvent& event = m_scenario.events[due.nEvent];
    const ChannelConfiguration& now = m_pChannel->configuration();
    m_timeline.begin(event, due.nNs);
    if (event.txPminDbm || event.txPmaxDbm) {
        judge(m_pChannel->setLimits(event.txPminDbm.value_or(now.txPminDbm), event.txPmaxDbm.value_or(now.txPmaxDbm)),
              due, "setting the power limits");
    }
    setGains(event.gainPercentRamping, eOPC_TX_ON_RAMPING, due);
    setGains(event.gainPercentOn, eOPC_TX_ON, due);
    if (event.productionTest || event.nLoopMode) {
        judge(m_pChannel->setProductionTest(event.productionTest.value_or(now.bProductionTest),
                                            event.nLoopMode.value_or(now.nLoopMode)),
              due, "setting production test");
    }
    if (event.nPowerMode) {
        judge(m_pChannel->setPowerMode(*event.nPowerMode), due, "setting the power mode");
    }
    if (event.on) {
        m_pChannel->want(*event.on ? eREQUESTED_TX_POWER_ON : eREQUESTED_TX_POWER_OFF);
    }
}

void RunEngine::setGains(const std::optional<GainPercent>& gain, EOPCState eState, const EventQueue::Due& due)
{
    for (std::size_t nDetectorState = 0; gain && nDetectorState < gain->size(); ++nDetectorState) {
        judge(m_pChannel->setGain(static_cast<EOPHDetectorState>(nDetectorState), eState, gain->at(nDetectorState)),
              due, "setting a gain");
    }
}

void RunEngine::judge(long nResult, const EventQueue::Due& due, const char* pWhat)
{
    if (!EAF_isFailure(nResult) || m_warnedOf[due.nEvent]) {
        return;
    }
    m_warnedOf[due.nEvent] = true; // once is enough for an event that repeats
    m_warnings.push_back(
        fmt::format("event {} at {} s: {} failed: {:#x}", due.nEvent, toSeconds(due.nNs), pWhat, nResult));
}
