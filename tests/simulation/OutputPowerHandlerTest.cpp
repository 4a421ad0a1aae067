#include "Platform/Broker/InterfaceBroker.h"
#include "Simulation/Handlers/private/PowerScale.h"
#include "tests/simulation/HandlerTable.h"

#include <limits>

namespace
{
using Values3 = std::array<std::int32_t, 3>;

TEST(PowerScale, RoundsAndSaturates)
{
    EXPECT_EQ(toCentiDb(12.344), 1234);
    EXPECT_EQ(toCentiDb(12.346), 1235);
    EXPECT_EQ(toCentiDb(-12.346), -1235);
    EXPECT_EQ(toCentiDb(1e12), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(toCentiDb(-std::numeric_limits<double>::infinity()), std::numeric_limits<std::int32_t>::min());
    EXPECT_DOUBLE_EQ(toDb(-1235), -12.35);
}

TEST(OutputPowerHandler, GivesOneTableWithReservedEntriesNull)
{
    HandlerTable table;
    EXPECT_EQ(table.handler.getCStruct(), table.pTable);
    EXPECT_EQ(table.pTable->vpThis, &table.handler);
    EXPECT_EQ(table.pTable->reserved2, nullptr);
    EXPECT_EQ(table.pTable->reserved3, nullptr);
    EXPECT_EQ(table.pTable->reserved6, nullptr);
    EXPECT_EQ(table.pTable->reserved12, nullptr);
}

TEST(OutputPowerHandler, ReadsInHundredthsOfADecibel)
{
    HandlerTable table;
    table.handler.configure(exactParameters(), 1);
    EXPECT_EQ(table.limits(), (std::array<std::int32_t, 2>{-1000, 3000}));
    EXPECT_EQ(table.txPower(), (Values3{-10000, -300, -700})) << "at the lower limit, the detector not read yet";
    table.switchOn(1234);
    EXPECT_EQ(table.pMeasured(), 1234);
    EXPECT_NEAR(table.handler.outputPowerDbm(), 12.34, 1e-3);
    EXPECT_EQ(table.txPower(), (Values3{1234, -300, 3300 - 1766}));
    for (std::uint32_t nAmplifier = 1; nAmplifier <= 6; ++nAmplifier) {
        EXPECT_EQ(table.reducedGain(nAmplifier), 294) << nAmplifier; // 17.66 dB over six amplifiers
    }
    ASSERT_EQ(table.setOutputPower(3100), EAF_OK);
    EXPECT_EQ(table.txPower(), (Values3{1234, -200, 3300})) << "the reading is the latest one";
}

TEST(OutputPowerHandler, ReadsTheFloorWhileMuted)
{
    HandlerTable table;
    TransmitterParameters parameters = exactParameters();
    parameters.detectorFloorBelowMaxDb = 40.0;
    table.handler.configure(parameters, 1);
    EXPECT_EQ(table.pMeasured(), -1000);
}

TEST(OutputPowerHandler, ReadsNoReductionOfAmplifiersThatTheChainLacks)
{
    HandlerTable table;
    TransmitterParameters parameters = exactParameters();
    parameters.amplifierCount = 2.0;
    table.handler.configure(parameters, 1);
    table.switchOn(2000);
    EXPECT_EQ(table.reducedGain(1), 500);
    EXPECT_EQ(table.reducedGain(2), 500);
    for (std::uint32_t nAmplifier = 3; nAmplifier <= 6; ++nAmplifier) {
        EXPECT_EQ(table.reducedGain(nAmplifier), 0) << nAmplifier;
    }
    EXPECT_EQ(table.handler.refusedCalls(), 0U);
}

TEST(OutputPowerHandler, RefusesAmplifiersBeyondOneToSix)
{
    HandlerTable table;
    std::int32_t nValue = 77;
    for (const std::uint32_t nAmplifier : {0U, 7U, 0xffffffffU}) {
        EXPECT_EQ(table.pTable->getReducedGainFromAmplifier(table.pTable->vpThis, nAmplifier, &nValue), EAF_FAILED);
    }
    EXPECT_EQ(nValue, 77);
    EXPECT_EQ(table.handler.refusedCalls(), 3U);
}

TEST(OutputPowerHandler, TakesControlPowersAsFarAsProductionTestGoes)
{
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    const std::pair<std::int32_t, bool> cases[] = {{-3000, true},  {-3001, false},  {5000, true},    {5001, false},
                                                   {-9900, false}, {lowest, false}, {highest, false}};
    for (const auto& [nPctrl, bTaken] : cases) {
        HandlerTable table;
        ASSERT_EQ(table.setTxState(2), EAF_OK);
        const Values3 before = table.txPower();
        EXPECT_EQ(table.setOutputPower(nPctrl), bTaken ? EAF_OK : EAF_FAILED) << nPctrl;
        EXPECT_EQ(table.handler.refusedCalls(), bTaken ? 0U : 1U) << nPctrl;
        EXPECT_EQ(table.txPower() == before, !bTaken) << nPctrl;
    }
}

TEST(OutputPowerHandler, MeasuresTheControlPowerInTheOpenLoopModeOnly)
{
    HandlerTable table;
    TransmitterParameters parameters = exactParameters();
    parameters.detectorOffsetDb = 1.0;
    table.handler.configure(parameters, 1);
    table.switchOn(1500);
    EXPECT_EQ(table.pMeasured(), 1600);
    ASSERT_EQ(table.setLoopMode(eRF_DETECTOR_LOOP_MODE_OPEN), EAF_OK);
    EXPECT_EQ(table.pMeasured(), 1500);
    ASSERT_EQ(table.setLoopMode(eRF_DETECTOR_LOOP_MODE_CLOSED), EAF_OK);
    EXPECT_EQ(table.pMeasured(), 1600);
    ASSERT_EQ(table.setLoopMode(eRF_DETECTOR_LOOP_MODE_OPEN), EAF_OK);
    for (const std::int32_t nLoopMode : {-1, 3, 1000}) {
        EXPECT_EQ(table.setLoopMode(nLoopMode), EAF_FAILED) << nLoopMode;
        EXPECT_EQ(table.pMeasured(), 1500) << "the mode before stays";
    }
    EXPECT_EQ(table.handler.refusedCalls(), 3U);
    ASSERT_EQ(table.setLoopMode(eRF_DETECTOR_LOOP_MODE_NORMAL), EAF_OK);
    EXPECT_EQ(table.pMeasured(), 1600);
}

TEST(OutputPowerHandler, JudgesTheDetectorByItsFloorInTheNormalLoopMode)
{
    HandlerTable table; // floor -10 dBm
    const std::pair<std::int32_t, std::int32_t> cases[] = {{3000, 0}, {1000, 0},  {999, 1},  {0, 1},
                                                           {-1, 2},   {-1000, 2}, {5000, 0}, {-3000, 2}};
    for (const auto& [nPctrl, nState] : cases) {
        EXPECT_EQ(table.detectorState(nPctrl, eRF_DETECTOR_LOOP_MODE_NORMAL), nState) << nPctrl;
        EXPECT_EQ(table.detectorState(nPctrl, eRF_DETECTOR_LOOP_MODE_CLOSED), 0) << nPctrl;
        EXPECT_EQ(table.detectorState(nPctrl, eRF_DETECTOR_LOOP_MODE_OPEN), 2) << nPctrl;
    }
    EOPHDetectorState eState = eOPH_DETECTOR_STATE_UNKNOWN;
    for (const std::int32_t nLoopMode : {-1, 3}) {
        EXPECT_EQ(table.pTable->calculateDetectorUsage(table.pTable->vpThis, 0,
                                                       static_cast<ERfDetectorLoopMode>(nLoopMode), &eState),
                  EAF_FAILED);
    }
    EXPECT_EQ(eState, eOPH_DETECTOR_STATE_UNKNOWN);
    EXPECT_EQ(table.handler.refusedCalls(), 2U);
}

TEST(OutputPowerHandler, RefusesNullPointersWithoutCountingThem)
{
    HandlerTable table;
    const IOutputPowerHandlerCStruct& t = *table.pTable;
    std::int32_t nValue = 0;
    EOPHDetectorState eState = eOPH_DETECTOR_STATE_UNKNOWN;
    EXPECT_EQ(t.getPmeasured(t.vpThis, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(t.getReducedGainFromAmplifier(t.vpThis, 1, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(t.getTxPowerReadings(t.vpThis, nullptr, &nValue, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.getTxPowerReadings(t.vpThis, &nValue, nullptr, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.getTxPowerReadings(t.vpThis, &nValue, &nValue, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(t.calculateDetectorUsage(t.vpThis, 0, eRF_DETECTOR_LOOP_MODE_NORMAL, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(t.getPctrlLimits(t.vpThis, nullptr, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.getPctrlLimits(t.vpThis, &nValue, nullptr), EAF_NULL_POINTER);

    EXPECT_EQ(t.setOutputPower(nullptr, 0, 0), EAF_NULL_POINTER);
    EXPECT_EQ(t.setTxState(nullptr, 2), EAF_NULL_POINTER);
    EXPECT_EQ(t.setProductionTestSettings(nullptr, eRF_DETECTOR_LOOP_MODE_NORMAL), EAF_NULL_POINTER);
    EXPECT_EQ(t.getReducedGainFromAmplifier(nullptr, 1, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.getTxPowerReadings(nullptr, &nValue, &nValue, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.calculateDetectorUsage(nullptr, 0, eRF_DETECTOR_LOOP_MODE_NORMAL, &eState), EAF_NULL_POINTER);
    EXPECT_EQ(t.getPmeasured(nullptr, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(t.setZembraMlmTrafTx(nullptr, true), EAF_NULL_POINTER);
    EXPECT_EQ(t.getPctrlLimits(nullptr, &nValue, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(table.handler.refusedCalls(), 0U);
}

TEST(OutputPowerHandler, FollowsTheSurroundingsOfItsTransmitter)
{
    HandlerTable table;
    TransmitterParameters parameters = exactParameters();
    parameters.selfHeatingDegrees = 10.0;
    table.handler.configure(parameters, 1);
    table.switchOn(1500);
    table.handler.setAmbientTemperature(45.0);
    EXPECT_EQ(table.pMeasured(), 1400);
    table.handler.setFrequencyMhz(7000.0);
    EXPECT_EQ(table.pMeasured(), 1300);
    table.handler.advance(1e6);
    EXPECT_EQ(table.pMeasured(), 1250);
}

TEST(OutputPowerHandler, StartsAnewOffAndColdWhenConfigured)
{
    HandlerTable table;
    table.handler.configure(exactParameters(), 1);
    table.switchOn(2500);
    ASSERT_EQ(table.setLoopMode(eRF_DETECTOR_LOOP_MODE_OPEN), EAF_OK);
    EXPECT_EQ(table.setTxState(3), EAF_FAILED);
    table.handler.configure(exactParameters(), 1);
    EXPECT_EQ(table.setOutputPower(1000), EAF_FAILED);
    EXPECT_EQ(table.txPower(), (Values3{-10000, -300, -700}));
    EXPECT_EQ(table.pMeasured(), -7000) << "the floor, since the loop mode is normal again";
    EXPECT_EQ(table.handler.refusedCalls(), 2U);
}

TEST(OutputPowerHandler, GivesEveryChannelNoiseOfItsOwn)
{
    std::array<std::vector<std::int32_t>, 3> readings;
    const unsigned int channels[] = {0, 1, 0};
    for (std::size_t i = 0; i < readings.size(); ++i) {
        SimulatedOutputPowerHandler handler(channels[i]);
        for (int n = 0; n < 100; ++n) {
            std::int32_t nValue = 0;
            ASSERT_EQ(handler.getPmeasured(&nValue), EAF_OK);
            readings[i].push_back(nValue);
        }
    }
    EXPECT_NE(readings[0], readings[1]);
    EXPECT_EQ(readings[0], readings[2]);
}

TEST(OutputPowerHandler, PublishesItselfUnderItsTruncatedName)
{
    SimulatedOutputPowerHandler handler(12);
    SimulatedOutputPowerHandler other(1);
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    EXPECT_EQ(broker.getInterface("IOutputPowerHandler.1"), nullptr);
    EXPECT_EQ(handler.initialize(), EAF_OK);
    EXPECT_EQ(handler.initialize(), EAF_FAILED) << "already published";
    EXPECT_EQ(other.initialize(), EAF_FAILED) << "the name is taken";
    EXPECT_EQ(other.uninitialize(), EAF_FAILED);
    EXPECT_EQ(dynamic_cast<SimulatedOutputPowerHandler*>(broker.getInterface("IOutputPowerHandler.1")), &handler);
    EXPECT_EQ(handler.uninitialize(), EAF_OK);
    EXPECT_EQ(handler.uninitialize(), EAF_FAILED);
    EXPECT_EQ(broker.getInterface("IOutputPowerHandler.1"), nullptr);
}

TEST(OutputPowerHandler, WithdrawsItselfWhenItGoes)
{
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    {
        SimulatedOutputPowerHandler handler(3);
        ASSERT_EQ(handler.initialize(), EAF_OK);
        EXPECT_NE(broker.getInterface("IOutputPowerHandler.3"), nullptr);
    }
    EXPECT_EQ(broker.getInterface("IOutputPowerHandler.3"), nullptr);
}
} // namespace
