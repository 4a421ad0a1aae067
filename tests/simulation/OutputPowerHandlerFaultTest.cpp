#include "tests/simulation/HandlerTable.h"

#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace
{
using EOp = EHandlerOperation;

HandlerFault faultOf(EHandlerFault eKind)
{
    HandlerFault fault;
    fault.eKind = eKind;
    return fault;
}

HandlerFault wrongValue(std::int32_t nValue)
{
    HandlerFault fault;
    fault.eKind = EHandlerFault::WrongValue;
    fault.nValue = nValue;
    return fault;
}

/** A handler that is on at 15 dBm. */
std::unique_ptr<HandlerTable> handlerAt15Dbm()
{
    auto pTable = std::make_unique<HandlerTable>();
    pTable->handler.configure(exactParameters(), 1);
    pTable->switchOn(1500);
    return pTable;
}

struct OperationCase
{
    EOp eOperation;
    /** Calls the operation so that it works; out values go to the second argument. */
    std::function<EOPHResult(const IOutputPowerHandlerCStruct&, std::vector<std::int32_t>&)> call;
    /** What it reads at 15 dBm; empty for a setting. */
    std::vector<std::int32_t> values;
};

std::vector<OperationCase> operationCases()
{
    using T = const IOutputPowerHandlerCStruct&;
    using V = std::vector<std::int32_t>&;
    return {
        {EOp::SetOutputPower, [](T t, V) { return t.setOutputPower(t.vpThis, 1500, 1500); }, {}},
        {EOp::SetTxState, [](T t, V) { return t.setTxState(t.vpThis, 4); }, {}},
        {EOp::SetProductionTestSettings,
         [](T t, V) { return t.setProductionTestSettings(t.vpThis, eRF_DETECTOR_LOOP_MODE_NORMAL); },
         {}},
        {EOp::GetReducedGainFromAmplifier,
         [](T t, V v) { return t.getReducedGainFromAmplifier(t.vpThis, 6, &v[0]); },
         {250}},
        {EOp::GetTxPowerReadings,
         [](T t, V v) { return t.getTxPowerReadings(t.vpThis, &v[0], &v[1], &v[2]); },
         {-10000, -300, 1800}},
        {EOp::CalculateDetectorUsage,
         [](T t, V v) {
             auto eState = static_cast<EOPHDetectorState>(v[0]);
             const EOPHResult nResult =
                 t.calculateDetectorUsage(t.vpThis, -6000, eRF_DETECTOR_LOOP_MODE_NORMAL, &eState);
             v[0] = eState;
             return nResult;
         },
         {1}},
        {EOp::GetPmeasured, [](T t, V v) { return t.getPmeasured(t.vpThis, &v[0]); }, {1500}},
        {EOp::SetZembraMlmTrafTx, [](T t, V) { return t.setZembraMlmTrafTx(t.vpThis, true); }, {}},
        {EOp::GetPctrlLimits, [](T t, V v) { return t.getPctrlLimits(t.vpThis, &v[0], &v[1]); }, {-1000, 3000}},
    };
}

std::vector<std::int32_t> untouched()
{
    return {77, 77, 77};
}

/** @return the first values, as many as an operation reads */
std::vector<std::int32_t> firstOf(const std::vector<std::int32_t>& values, const OperationCase& c)
{
    return {values.begin(), values.begin() + static_cast<std::ptrdiff_t>(c.values.size())};
}

TEST(HandlerFaults, CoverEveryOperation)
{
    EXPECT_EQ(operationCases().size(), static_cast<std::size_t>(EOp::Count));
}

TEST(HandlerFaults, FailEveryCallUntilTakenAway)
{
    for (const OperationCase& c : operationCases()) {
        SCOPED_TRACE(handlerOperationName(c.eOperation));
        const auto pTable = handlerAt15Dbm();
        pTable->handler.setFault(c.eOperation, faultOf(EHandlerFault::Fail));
        std::vector<std::int32_t> values = untouched();
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(c.call(*pTable->pTable, values), EAF_FAILED);
        }
        EXPECT_EQ(values, untouched());
        pTable->handler.setFault(c.eOperation, {});
        EXPECT_EQ(c.call(*pTable->pTable, values), EAF_OK);
        EXPECT_EQ(firstOf(values, c), c.values);
        EXPECT_EQ(pTable->handler.refusedCalls(), 0U) << "a fault is not a refusal";
    }
}

TEST(HandlerFaults, FailTheGivenNumberOfCalls)
{
    for (const OperationCase& c : operationCases()) {
        SCOPED_TRACE(handlerOperationName(c.eOperation));
        const auto pTable = handlerAt15Dbm();
        HandlerFault fault = faultOf(EHandlerFault::FailTimes);
        fault.nTimes = 3;
        pTable->handler.setFault(c.eOperation, fault);
        std::vector<std::int32_t> values = untouched();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(c.call(*pTable->pTable, values), EAF_FAILED);
        }
        EXPECT_EQ(values, untouched());
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(c.call(*pTable->pTable, values), EAF_OK);
        }
        EXPECT_EQ(firstOf(values, c), c.values);
    }
}

TEST(HandlerFaults, TouchNoOtherOperation)
{
    for (const OperationCase& faulty : operationCases()) {
        const auto pTable = handlerAt15Dbm();
        pTable->handler.setFault(faulty.eOperation, faultOf(EHandlerFault::Fail));
        for (const OperationCase& c : operationCases()) {
            std::vector<std::int32_t> values = untouched();
            const EOPHResult nExpected = c.eOperation == faulty.eOperation ? EAF_FAILED : EAF_OK;
            EXPECT_EQ(c.call(*pTable->pTable, values), nExpected)
                << handlerOperationName(c.eOperation) << " with " << handlerOperationName(faulty.eOperation);
        }
    }
}

TEST(HandlerFaults, ReadAWrongValueEverywhere)
{
    for (const OperationCase& c : operationCases()) {
        if (c.values.empty()) {
            continue;
        }
        SCOPED_TRACE(handlerOperationName(c.eOperation));
        const auto pTable = handlerAt15Dbm();
        pTable->handler.setFault(c.eOperation, wrongValue(2));
        std::vector<std::int32_t> values = untouched();
        EXPECT_EQ(c.call(*pTable->pTable, values), EAF_OK);
        EXPECT_EQ(firstOf(values, c), std::vector<std::int32_t>(c.values.size(), 2));
        pTable->handler.setFault(c.eOperation, {});
        EXPECT_EQ(c.call(*pTable->pTable, values), EAF_OK);
        EXPECT_EQ(firstOf(values, c), c.values);
    }
}

TEST(HandlerFaults, RepeatTheLastReadingWhenStuck)
{
    const auto pTable = handlerAt15Dbm();
    EXPECT_EQ(pTable->pMeasured(), 1500);
    EXPECT_EQ(pTable->reducedGain(2), 250);
    EXPECT_EQ(pTable->txPower()[2], 1800);
    EXPECT_EQ(pTable->detectorState(3000, eRF_DETECTOR_LOOP_MODE_NORMAL), 0);
    EXPECT_EQ(pTable->limits()[0], -1000);
    for (const OperationCase& c : operationCases()) {
        if (!c.values.empty()) {
            pTable->handler.setFault(c.eOperation, faultOf(EHandlerFault::Stuck));
        }
    }
    ASSERT_EQ(pTable->setOutputPower(900), EAF_OK);
    EXPECT_NEAR(pTable->handler.outputPowerDbm(), 9.0, 1e-3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(pTable->pMeasured(), 1500);
        EXPECT_EQ(pTable->reducedGain(2), 250);
        EXPECT_EQ(pTable->txPower()[2], 1800);
        EXPECT_EQ(pTable->detectorState(-7000, eRF_DETECTOR_LOOP_MODE_NORMAL), 0);
        EXPECT_EQ(pTable->limits()[0], -1000);
    }
    EXPECT_EQ(pTable->reducedGain(3), 350) << "never read before: read once and then stuck";
    pTable->handler.setFault(EOp::GetPmeasured, {});
    EXPECT_EQ(pTable->pMeasured(), 900);
}

TEST(HandlerFaults, StayWhenTheTransmitterIsMadeAnewButTheReadingsDoNot)
{
    const auto pTable = handlerAt15Dbm();
    EXPECT_EQ(pTable->pMeasured(), 1500);
    pTable->handler.setFault(EOp::GetPmeasured, faultOf(EHandlerFault::Stuck));
    pTable->handler.configure(exactParameters(), 1);
    EXPECT_EQ(pTable->pMeasured(), -7000) << "the new transmitter's floor";
    pTable->switchOn(1500);
    EXPECT_EQ(pTable->pMeasured(), -7000) << "still stuck";
}

TEST(HandlerFaults, TakeSettingsWithoutEffectWhenStuck)
{
    const auto pTable = handlerAt15Dbm();
    for (const EOp eOperation :
         {EOp::SetOutputPower, EOp::SetTxState, EOp::SetProductionTestSettings, EOp::SetZembraMlmTrafTx})
    {
        pTable->handler.setFault(eOperation, faultOf(EHandlerFault::Stuck));
    }
    EXPECT_EQ(pTable->setOutputPower(900), EAF_OK);
    EXPECT_EQ(pTable->pMeasured(), 1500);
    EXPECT_EQ(pTable->setTxState(0), EAF_OK);
    EXPECT_TRUE(std::isfinite(pTable->handler.outputPowerDbm()));
    pTable->handler.setAmbientTemperature(45.0);
    EXPECT_EQ(pTable->setLoopMode(eRF_DETECTOR_LOOP_MODE_OPEN), EAF_OK);
    EXPECT_EQ(pTable->pMeasured(), 1400) << "not the open loop's 1500";
    EXPECT_EQ(pTable->setTraffic(true), EAF_OK);
}

TEST(HandlerFaults, ApplyAWrongSetting)
{
    const auto pTable = handlerAt15Dbm();
    pTable->handler.setFault(EOp::SetOutputPower, wrongValue(700));
    EXPECT_EQ(pTable->setOutputPower(1500), EAF_OK);
    EXPECT_EQ(pTable->pMeasured(), 700);
    pTable->handler.setFault(EOp::SetOutputPower, wrongValue(9999));
    EXPECT_EQ(pTable->setOutputPower(1500), EAF_FAILED) << "beyond the limits, as if it had been asked for";

    pTable->handler.setAmbientTemperature(45.0);
    pTable->handler.setFault(EOp::SetProductionTestSettings, wrongValue(eRF_DETECTOR_LOOP_MODE_OPEN));
    EXPECT_EQ(pTable->setLoopMode(eRF_DETECTOR_LOOP_MODE_CLOSED), EAF_OK);
    EXPECT_EQ(pTable->pMeasured(), 700) << "the open loop's control power, not the drifted 600";

    pTable->handler.setFault(EOp::SetTxState, wrongValue(0));
    EXPECT_EQ(pTable->setTxState(4), EAF_OK);
    EXPECT_FALSE(std::isfinite(pTable->handler.outputPowerDbm()));
    EXPECT_EQ(pTable->setTraffic(true), EAF_FAILED);
    pTable->handler.setFault(EOp::SetZembraMlmTrafTx, wrongValue(0));
    EXPECT_EQ(pTable->setTraffic(true), EAF_OK) << "disables instead";
    EXPECT_EQ(pTable->handler.refusedCalls(), 2U);
}

TEST(HandlerFaults, TakeTheirTimeWhenSlow)
{
    for (const OperationCase& c : operationCases()) {
        SCOPED_TRACE(handlerOperationName(c.eOperation));
        const auto pTable = handlerAt15Dbm();
        HandlerFault fault = faultOf(EHandlerFault::Slow);
        fault.delayUs = 5000;
        pTable->handler.setFault(c.eOperation, fault);
        std::vector<std::int32_t> values = untouched();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(c.call(*pTable->pTable, values), EAF_OK);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
        EXPECT_EQ(firstOf(values, c), c.values);
    }
}

TEST(HandlerFaults, CountTheirTimeWhereItIsNotReal)
{
    const auto pTable = handlerAt15Dbm();
    HandlerFault fault = faultOf(EHandlerFault::Slow);
    fault.delayUs = 10'000'000;
    pTable->handler.setFault(EOp::GetPmeasured, fault);
    pTable->handler.countDelays();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pTable->pMeasured(), 1500);
    EXPECT_EQ(pTable->pMeasured(), 1500);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(pTable->handler.takeDelayUs(), 20'000'000U);
    EXPECT_EQ(pTable->handler.takeDelayUs(), 0U);
}

TEST(HandlerFaults, TellTheLowerLimitThatWasGiven)
{
    const auto pTable = handlerAt15Dbm();
    EXPECT_EQ(pTable->handler.givenLowerLimit(), std::nullopt);
    pTable->limits();
    EXPECT_EQ(pTable->handler.givenLowerLimit(), -1000);
    pTable->handler.setFault(EOp::GetPctrlLimits, wrongValue(250));
    pTable->limits();
    EXPECT_EQ(pTable->handler.givenLowerLimit(), 250);
}

TEST(HandlerFaults, AreRefusedForAnUnknownOperation)
{
    HandlerTable table;
    EXPECT_THROW(table.handler.setFault(EOp::Count, {}), std::out_of_range);
}
} // namespace
