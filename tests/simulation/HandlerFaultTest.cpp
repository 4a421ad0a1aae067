#include "Simulation/Handlers/HandlerFault.h"

#include <gtest/gtest.h>

namespace
{
TEST(HandlerFault, NamesEveryOperationAsTheTableDoes)
{
    const char* const names[] = {"setOutputPower",
                                 "setTxState",
                                 "setProductionTestSettings",
                                 "getReducedGainFromAmplifier",
                                 "getTxPowerReadings",
                                 "calculateDetectorUsage",
                                 "getPmeasured",
                                 "setZembraMlmTrafTx",
                                 "getPctrlLimits"};
    ASSERT_EQ(std::size(names), static_cast<std::size_t>(EHandlerOperation::Count));
    for (std::size_t i = 0; i < std::size(names); ++i) {
        const auto eOperation = static_cast<EHandlerOperation>(i);
        EXPECT_STREQ(handlerOperationName(eOperation), names[i]);
        EXPECT_EQ(handlerOperationByName(names[i]), eOperation);
    }
}

TEST(HandlerFault, NamesEveryKind)
{
    const std::pair<EHandlerFault, const char*> kinds[] = {{EHandlerFault::None, "none"},
                                                           {EHandlerFault::Fail, "fail"},
                                                           {EHandlerFault::FailTimes, "fail-times"},
                                                           {EHandlerFault::Stuck, "stuck"},
                                                           {EHandlerFault::WrongValue, "wrong-value"},
                                                           {EHandlerFault::Slow, "slow"},
                                                           {EHandlerFault::Intermittent, "intermittent"}};
    for (const auto& [eKind, pName] : kinds) {
        EXPECT_STREQ(handlerFaultName(eKind), pName);
        EXPECT_EQ(handlerFaultByName(pName), eKind);
    }
}

TEST(HandlerFault, KnowsOtherWordsForTwoKinds)
{
    EXPECT_EQ(handlerFaultByName("off"), EHandlerFault::Fail);
    EXPECT_EQ(handlerFaultByName("wrong"), EHandlerFault::WrongValue);
}

TEST(HandlerFault, KnowsNoOtherNames)
{
    for (const char* pName : {"", "GetPmeasured", "getpmeasured", "Fail", "fail ", "?"}) {
        EXPECT_EQ(handlerOperationByName(pName), std::nullopt) << pName;
        EXPECT_EQ(handlerFaultByName(pName), std::nullopt) << pName;
    }
    EXPECT_STREQ(handlerOperationName(EHandlerOperation::Count), "?");
    EXPECT_STREQ(handlerFaultName(static_cast<EHandlerFault>(17)), "?");
}
} // namespace
