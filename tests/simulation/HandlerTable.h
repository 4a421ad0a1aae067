/** @file
 * An output power handler as its callers see it.
 */
#pragma once

#include "Simulation/Handlers/private/SimulatedOutputPowerHandler.h"

#include <gtest/gtest.h>

/** A handler of channel 0 and its C table. */
struct HandlerTable
{
    SimulatedOutputPowerHandler handler{0};
    IOutputPowerHandlerCStruct* pTable = static_cast<IOutputPowerHandlerCStruct*>(handler.getCStruct());

    EOPHResult setOutputPower(std::int32_t nPctrl) const { return pTable->setOutputPower(pTable->vpThis, nPctrl, 0); }
    EOPHResult setTxState(std::int32_t nStep) const { return pTable->setTxState(pTable->vpThis, nStep); }
    EOPHResult setTraffic(bool bEnable) const { return pTable->setZembraMlmTrafTx(pTable->vpThis, bEnable); }

    EOPHResult setLoopMode(std::int32_t nLoopMode) const
    {
        return pTable->setProductionTestSettings(pTable->vpThis, static_cast<ERfDetectorLoopMode>(nLoopMode));
    }

    /** Goes through the steps of switching on, at a control power. */
    void switchOn(std::int32_t nPctrl) const
    {
        EXPECT_EQ(setTxState(2), EAF_OK);
        EXPECT_EQ(setOutputPower(nPctrl), EAF_OK);
        EXPECT_EQ(setTxState(3), EAF_OK);
        EXPECT_EQ(setTxState(4), EAF_OK);
    }

    std::int32_t pMeasured() const
    {
        std::int32_t nValue = 0;
        EXPECT_EQ(pTable->getPmeasured(pTable->vpThis, &nValue), EAF_OK);
        return nValue;
    }

    std::int32_t reducedGain(std::uint32_t nAmplifier) const
    {
        std::int32_t nValue = 0;
        EXPECT_EQ(pTable->getReducedGainFromAmplifier(pTable->vpThis, nAmplifier, &nValue), EAF_OK);
        return nValue;
    }

    std::array<std::int32_t, 3> txPower() const
    {
        std::array<std::int32_t, 3> values{};
        EXPECT_EQ(pTable->getTxPowerReadings(pTable->vpThis, &values[0], &values[1], &values[2]), EAF_OK);
        return values;
    }

    std::int32_t detectorState(std::int32_t nPctrl, std::int32_t nLoopMode) const
    {
        EOPHDetectorState eState = eOPH_DETECTOR_STATE_UNKNOWN;
        EXPECT_EQ(pTable->calculateDetectorUsage(pTable->vpThis, nPctrl, static_cast<ERfDetectorLoopMode>(nLoopMode),
                                                 &eState),
                  EAF_OK);
        return eState;
    }

    std::array<std::int32_t, 2> limits() const
    {
        std::array<std::int32_t, 2> values{};
        EXPECT_EQ(pTable->getPctrlLimits(pTable->vpThis, &values[0], &values[1]), EAF_OK);
        return values;
    }
};

/** A transmitter whose readings can be told beforehand: no noise, no steps, no warming, no floor to speak of. */
inline TransmitterParameters exactParameters()
{
    TransmitterParameters parameters;
    parameters.selfHeatingDegrees = 0.0;
    parameters.psatAboveMaxDb = 30.0;
    parameters.detectorNoiseDb = 0.0;
    parameters.detectorStepDb = 0.0;
    parameters.detectorFloorBelowMaxDb = 100.0;
    return parameters;
}
