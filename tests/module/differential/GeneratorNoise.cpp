// What may happen at any time between the operations of an episode.
#include "tests/module/differential/Generator.h"

#include <array>

namespace Differential
{
void Generator::noise()
{
    using G = Generator;
    static constexpr std::array<void (*)(G&), 20> NOISE = {
        [](G& g) {
            g.add(EOperation::Request, {g.oneIn(4) ? g.any() : g.below(2), g.mode()});
        },
        [](G& g) {
            g.add(EOperation::Request, {g.below(2), g.mode()});
        },
        [](G& g) {
            g.add(EOperation::SetLimits, {g.oneIn(8) ? g.power() : g.between(-2500, 500), g.any()});
        },
        [](G& g) {
            g.add(EOperation::SetProductionTest, {g.below(2), g.oneIn(3) ? g.any() : g.below(3)});
        },
        [](G& g) { g.refuseProductionTest(); },
        [](G& g) {
            g.add(EOperation::SetGain, {g.below(3), g.below(9), g.oneIn(20) ? g.any() : g.between(-50, 200)});
        },
        [](G& g) {
            g.add(EOperation::GetGain, {g.below(3), g.below(9)});
        },
        [](G& g) { g.add(EOperation::SetInterval, {g.oneIn(3) ? g.interval() : g.between(1, 30)}); },
        [](G& g) { g.add(EOperation::ChangeFrequency, {g.oneIn(4) ? g.any() : g.between(6000, 8000)}); },
        [](G& g) { g.add(EOperation::ReportTemperature, {g.oneIn(4) ? g.any() : g.between(-40, 90)}); },
        [](G& g) {
            g.add(EOperation::RegisterObserver, {g.below(4), g.below(3)});
        },
        [](G& g) { g.add(EOperation::OpcLogCommand, {g.below(OPC_LOG_OPTIONS.size())}); },
        [](G& g) { g.add(EOperation::TransientLogCommand, {g.below(TRANSIENT_LOG_OPTIONS.size())}); },
        [](G& g) { g.add(EOperation::RestartLogs); },
        [](G& g) { g.add(EOperation::RunPhase, {g.below(10)}); },
        [](G& g) { g.add(g.oneIn(3) ? EOperation::Uninitialize : EOperation::Initialize); },
        [](G& g) { g.add(EOperation::TraceLevel, {g.between(-1, 7)}); },
        [](G& g) {
            g.add(EOperation::FaultOf, {g.below(HANDLER_CALLS), g.failure(), g.below(2), g.between(1, 3)});
        },
        [](G& g) {
            g.add(EOperation::FaultOf, {g.below(HANDLER_CALLS), g.result(), g.below(2), g.between(1, 2)});
        },
        [](G& g) { g.privateNoise(); }};
    NOISE[static_cast<std::size_t>(below(NOISE.size()))](*this);
}

void Generator::refuseProductionTest()
{
    add(EOperation::FaultOf, {static_cast<std::int32_t>(EHandlerCall::SetProductionTestSettings), failure(), 1, 1});
    add(EOperation::SetProductionTest, {below(2), below(3)});
}

void Generator::privateNoise()
{
    if (!m_bPrivateDoor) {
        return;
    }
    if (oneIn(6)) {
        add(EOperation::EnterState, {between(3, 4)});
    }
    else if (oneIn(2)) {
        add(EOperation::StepStateMachine);
    }
    else {
        add(EOperation::WriteInitialGain, {any()});
    }
}
} // namespace Differential
