/** @file
 * A closed-loop step's calls, bare and through the safety monitor; the difference is what the monitor costs.
 *
 * The controller and the handler do nothing but call and answer, so that little else is measured.
 */
#include "Unit/SafetyMonitor/MonitoredController.h"
#include "Unit/SafetyMonitor/MonitoredHandler.h"
#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"

#include <benchmark/benchmark.h>

namespace
{
constexpr std::int32_t UPPER_LIMIT = 2000;
constexpr int MOST_GAINS = 6;

/** Answers at once. */
IOutputPowerHandlerCStruct answeringHandler()
{
    IOutputPowerHandlerCStruct table{};
    table.vpThis = &table;
    table.setOutputPower = [](void*, std::int32_t, std::int32_t) { return EOPHResult{EAF_OK}; };
    table.setTxState = [](void*, std::int32_t) { return EOPHResult{EAF_OK}; };
    table.setZembraMlmTrafTx = [](void*, bool) { return EOPHResult{EAF_OK}; };
    table.getPctrlLimits = [](void*, std::int32_t* pLower, std::int32_t* pUpper) {
        *pLower = -UPPER_LIMIT;
        *pUpper = UPPER_LIMIT;
        return EOPHResult{EAF_OK};
    };
    table.getPmeasured = [](void*, std::int32_t* pPmeasured) {
        *pPmeasured = 0;
        return EOPHResult{EAF_OK};
    };
    table.calculateDetectorUsage = [](void*, std::int32_t, ERfDetectorLoopMode, EOPHDetectorState* pState) {
        *pState = eOPH_DETECTOR_STATE_0;
        return EOPHResult{EAF_OK};
    };
    table.getTxPowerReadings = [](void*, std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain) {
        *pReading = *pIfPower = *pRfGain = 0;
        return EOPHResult{EAF_OK};
    };
    table.getReducedGainFromAmplifier = [](void*, std::uint32_t, std::int32_t* pGain) {
        *pGain = 0;
        return EOPHResult{EAF_OK};
    };
    return table;
}

/** Makes a closed-loop step's calls. */
struct CallingController
{
    IOutputPowerControllerCStruct table{};
    const IOutputPowerHandlerCStruct* pHandler = nullptr;
    int nGains = 0; /**< amplifiers to read, as with the OPC log; 0 without logs */

    CallingController()
    {
        table.vpThis = this;
        table.staticRegulate = [](void* vpThis, long nPtarget) {
            return static_cast<CallingController*>(vpThis)->step(static_cast<std::int32_t>(nPtarget));
        };
        table.staticSetRequestedTxPowerState = [](void*, ERequestedTxPowerState, ETxPowerMode) -> long {
            return EAF_OK;
        };
    }

    long step(std::int32_t nPtarget) const
    {
        const IOutputPowerHandlerCStruct& handler = *pHandler;
        std::int32_t nValue = 0;
        EOPHDetectorState eState = eOPH_DETECTOR_STATE_UNKNOWN;
        handler.getPmeasured(handler.vpThis, &nValue);
        handler.calculateDetectorUsage(handler.vpThis, nPtarget, eRF_DETECTOR_LOOP_MODE_NORMAL, &eState);
        const EOPHResult nResult = handler.setOutputPower(handler.vpThis, nPtarget, nPtarget);
        if (nGains > 0) {
            handler.getTxPowerReadings(handler.vpThis, &nValue, &nValue, &nValue);
        }
        for (int nGain = 1; nGain <= nGains; ++nGain) {
            handler.getReducedGainFromAmplifier(handler.vpThis, static_cast<std::uint32_t>(nGain), &nValue);
        }
        return nResult;
    }
};

/** Takes rules to the closed loop. */
void switchOn(TransmitterRules& rules)
{
    rules.onRequestEnds(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE, EAF_OK);
    rules.onStepBegins(0);
    rules.onGetPctrlLimits(-UPPER_LIMIT, UPPER_LIMIT, EAF_OK);
    rules.onSetTxState(2, EAF_OK);
    rules.onSetOutputPower(0, 0, EAF_OK);
    rules.onStepEnds(EAF_OK);
    for (int nWait = 0; nWait < 3; ++nWait) {
        rules.onStepBegins(0);
        rules.onStepEnds(EAF_OK);
    }
    rules.onStepBegins(0);
    rules.onSetTxState(3, EAF_OK);
    rules.onSetOutputPower(0, 0, EAF_OK);
    rules.onStepEnds(EAF_OK);
    rules.onStepBegins(0);
    rules.onSetTxState(4, EAF_OK);
    rules.onCalculateDetectorUsage(0, 0, EAF_OK);
    rules.onSetOutputPower(0, 0, EAF_OK);
    rules.onSetTraffic(true, EAF_OK);
    rules.onStepEnds(EAF_OK);
}

void takeSteps(benchmark::State& state, const IOutputPowerControllerCStruct& table)
{
    long nPtarget = 0;
    for (auto _ : state) {
        nPtarget = nPtarget == 0 ? 1 : 0;
        benchmark::DoNotOptimize(table.staticRegulate(table.vpThis, nPtarget));
    }
}

void bareStep(benchmark::State& state)
{
    const IOutputPowerHandlerCStruct handler = answeringHandler();
    CallingController controller;
    controller.pHandler = &handler;
    controller.nGains = static_cast<int>(state.range(0));
    takeSteps(state, controller.table);
}

void monitoredStep(benchmark::State& state)
{
    ViolationStore store;
    TransmitterRules rules(0, EHeardSides::Both, store);
    const IOutputPowerHandlerCStruct handler = answeringHandler();
    MonitoredHandler monitoredHandler(handler, rules);
    CallingController controller;
    controller.pHandler = static_cast<const IOutputPowerHandlerCStruct*>(monitoredHandler.getCStruct());
    controller.nGains = static_cast<int>(state.range(0));
    MonitoredController monitoredController(controller.table, rules);
    IInterface_c& interface = monitoredController;
    switchOn(rules);
    takeSteps(state, *static_cast<const IOutputPowerControllerCStruct*>(interface.getCStruct()));
    if (store.total() != 0) {
        state.SkipWithError(violationText(store.at(0)).c_str());
    }
}

BENCHMARK(bareStep)->Arg(0)->Arg(MOST_GAINS);
BENCHMARK(monitoredStep)->Arg(0)->Arg(MOST_GAINS);
} // namespace

BENCHMARK_MAIN();
