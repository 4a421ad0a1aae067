/** @file
 * A module like OutputPowerHandler that also writes down each call of its C table, one a line, in the file that the
 * environment variable OPC_TEST_CALLS names. One instance at a time.
 */
#include "Simulation/Handlers/private/ModuleEntryPoints.h"
#include "Simulation/Handlers/private/SimulatedOutputPowerHandler.h"

#include <cstdio>
#include <cstdlib>

namespace
{
IOutputPowerHandlerCStruct s_original; // NOLINT: the C table's functions have nothing else to reach it by
std::FILE* s_pFile = nullptr;          // NOLINT

using Handle = void*;

EOPHResult setOutputPower(Handle pThis, std::int32_t nPctrl, std::int32_t nPtarget)
{
    const EOPHResult nResult = s_original.setOutputPower(pThis, nPctrl, nPtarget);
    (void)std::fprintf(s_pFile, "setOutputPower %d %d = %lx\n", nPctrl, nPtarget, static_cast<long>(nResult));
    return nResult;
}

EOPHResult setTxState(Handle pThis, std::int32_t nStep)
{
    const EOPHResult nResult = s_original.setTxState(pThis, nStep);
    (void)std::fprintf(s_pFile, "setTxState %d = %lx\n", nStep, static_cast<long>(nResult));
    return nResult;
}

EOPHResult setProductionTestSettings(Handle pThis, ERfDetectorLoopMode eLoopMode)
{
    const EOPHResult nResult = s_original.setProductionTestSettings(pThis, eLoopMode);
    (void)std::fprintf(s_pFile, "setProductionTestSettings %d = %lx\n", eLoopMode, static_cast<long>(nResult));
    return nResult;
}

EOPHResult getReducedGainFromAmplifier(Handle pThis, std::uint32_t nAmplifier, std::int32_t* pReducedGain)
{
    const EOPHResult nResult = s_original.getReducedGainFromAmplifier(pThis, nAmplifier, pReducedGain);
    (void)std::fprintf(s_pFile, "getReducedGainFromAmplifier %u = %lx, %d\n", nAmplifier, static_cast<long>(nResult),
                       *pReducedGain);
    return nResult;
}

EOPHResult getTxPowerReadings(Handle pThis, std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain)
{
    const EOPHResult nResult = s_original.getTxPowerReadings(pThis, pReading, pIfPower, pRfGain);
    (void)std::fprintf(s_pFile, "getTxPowerReadings = %lx, %d %d %d\n", static_cast<long>(nResult), *pReading,
                       *pIfPower, *pRfGain);
    return nResult;
}

EOPHResult calculateDetectorUsage(Handle pThis, std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                  EOPHDetectorState* pState)
{
    const EOPHResult nResult = s_original.calculateDetectorUsage(pThis, nPctrl, eLoopMode, pState);
    (void)std::fprintf(s_pFile, "calculateDetectorUsage %d %d = %lx, %d\n", nPctrl, eLoopMode,
                       static_cast<long>(nResult), *pState);
    return nResult;
}

EOPHResult getPmeasured(Handle pThis, std::int32_t* pPmeasured)
{
    const EOPHResult nResult = s_original.getPmeasured(pThis, pPmeasured);
    (void)std::fprintf(s_pFile, "getPmeasured = %lx, %d\n", static_cast<long>(nResult), *pPmeasured);
    return nResult;
}

EOPHResult setZembraMlmTrafTx(Handle pThis, bool bEnable)
{
    const EOPHResult nResult = s_original.setZembraMlmTrafTx(pThis, bEnable);
    (void)std::fprintf(s_pFile, "setZembraMlmTrafTx %d = %lx\n", bEnable ? 1 : 0, static_cast<long>(nResult));
    return nResult;
}

EOPHResult getPctrlLimits(Handle pThis, std::int32_t* pLower, std::int32_t* pUpper)
{
    const EOPHResult nResult = s_original.getPctrlLimits(pThis, pLower, pUpper);
    (void)std::fprintf(s_pFile, "getPctrlLimits = %lx, %d %d\n", static_cast<long>(nResult), *pLower, *pUpper);
    return nResult;
}

/** Puts the recording functions in front of a handler's own. */
void record(SimulatedOutputPowerHandler& handler)
{
    auto& table = *static_cast<IOutputPowerHandlerCStruct*>(handler.getCStruct());
    s_original = table;
    table.setOutputPower = setOutputPower;
    table.setTxState = setTxState;
    table.setProductionTestSettings = setProductionTestSettings;
    table.getReducedGainFromAmplifier = getReducedGainFromAmplifier;
    table.getTxPowerReadings = getTxPowerReadings;
    table.calculateDetectorUsage = calculateDetectorUsage;
    table.getPmeasured = getPmeasured;
    table.setZembraMlmTrafTx = setZembraMlmTrafTx;
    table.getPctrlLimits = getPctrlLimits;
}
} // namespace

extern "C" {

EAF_PUBLIC void OutputPowerHandler_Construct(void** ppModule, unsigned int channel)
{
    const char* const pPath = std::getenv("OPC_TEST_CALLS");
    s_pFile = pPath == nullptr ? nullptr : std::fopen(pPath, "w");
    *ppModule = nullptr;
    if (s_pFile == nullptr) {
        return;
    }
    constructHandler<SimulatedOutputPowerHandler>(ppModule, channel);
    record(*static_cast<SimulatedOutputPowerHandler*>(*ppModule));
}

EAF_PUBLIC void OutputPowerHandler_Destruct(void* pModule)
{
    destructHandler<SimulatedOutputPowerHandler>(pModule);
    (void)std::fclose(s_pFile);
}

EAF_PUBLIC long OutputPowerHandler_Initialize(void* pModule)
{
    return initializeHandler<SimulatedOutputPowerHandler>(pModule);
}

EAF_PUBLIC long OutputPowerHandler_Uninitialize(void* pModule)
{
    return uninitializeHandler<SimulatedOutputPowerHandler>(pModule);
}
}
