/** @file
 * An output power handler that lets the safety rules hear its calls.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler.h"

class TransmitterRules;

/**
 * Stands before another handler: passes each call on with its arguments, outputs and result, then tells the rules.
 *
 * An entry that the other table does not have is missing here too; the reserved ones are the other's own, since what
 * they take is not known. A null vpThis gives EAF_NULL_POINTER. Adds no allocation, lock or exception.
 */
class MonitoredHandler final : public IOutputPowerHandler
{
public:
    /** @param real and @param rules must outlive this */
    MonitoredHandler(const IOutputPowerHandlerCStruct& real, TransmitterRules& rules);

private:
    static EOPHResult setOutputPower(void* vpThis, std::int32_t nPctrl, std::int32_t nPtarget);
    static EOPHResult setTxState(void* vpThis, std::int32_t nStep);
    static EOPHResult setProductionTestSettings(void* vpThis, ERfDetectorLoopMode eLoopMode);
    static EOPHResult getReducedGainFromAmplifier(void* vpThis, std::uint32_t nAmplifier, std::int32_t* pReducedGain);
    static EOPHResult getTxPowerReadings(void* vpThis, std::int32_t* pReading, std::int32_t* pIfPower,
                                         std::int32_t* pRfGain);
    static EOPHResult calculateDetectorUsage(void* vpThis, std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                             EOPHDetectorState* pDetectorState);
    static EOPHResult getPmeasured(void* vpThis, std::int32_t* pPmeasured);
    static EOPHResult setZembraMlmTrafTx(void* vpThis, bool bEnable);
    static EOPHResult getPctrlLimits(void* vpThis, std::int32_t* pLower, std::int32_t* pUpper);

    const IOutputPowerHandlerCStruct& m_real;
    TransmitterRules& m_rules;
    IOutputPowerHandlerCStruct m_table;
};
