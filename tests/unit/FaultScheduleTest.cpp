#include "Unit/Process/FaultSchedule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
FaultConfiguration makeFault(double atSeconds, std::optional<double> forSeconds, EHandlerOperation eOperation)
{
    FaultConfiguration configuration;
    configuration.nChannel = 1;
    configuration.eOperation = eOperation;
    configuration.fault.eKind = EHandlerFault::Fail;
    configuration.atSeconds = atSeconds;
    configuration.forSeconds = forSeconds;
    return configuration;
}

std::vector<std::pair<EHandlerOperation, EHandlerFault>> dueAt(FaultSchedule& schedule, double seconds)
{
    std::vector<std::pair<EHandlerOperation, EHandlerFault>> due;
    schedule.forEachDue(seconds, [&due](const FaultSwitch& fault) {
        EXPECT_EQ(fault.nChannel, 1U);
        due.emplace_back(fault.eOperation, fault.fault.eKind);
    });
    return due;
}
} // namespace

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(FaultSchedule, SwitchesOnAndOffInTheOrderOfTimes)
{
    FaultSchedule schedule(
        {makeFault(2.0, 1.5, EHandlerOperation::SetTxState), makeFault(1.0, 5.0, EHandlerOperation::GetPmeasured)});
    EXPECT_THAT(dueAt(schedule, 0.99), IsEmpty());
    EXPECT_THAT(dueAt(schedule, 1.0), ElementsAre(Pair(EHandlerOperation::GetPmeasured, EHandlerFault::Fail)));
    EXPECT_THAT(dueAt(schedule, 1.5), IsEmpty()); // once is enough
    EXPECT_THAT(dueAt(schedule, 4.0), ElementsAre(Pair(EHandlerOperation::SetTxState, EHandlerFault::Fail),
                                                  Pair(EHandlerOperation::SetTxState, EHandlerFault::None)));
    EXPECT_THAT(dueAt(schedule, 100.0), ElementsAre(Pair(EHandlerOperation::GetPmeasured, EHandlerFault::None)));
}

TEST(FaultSchedule, KeepsAFaultWithoutAnEnd)
{
    FaultSchedule schedule({makeFault(0.0, std::nullopt, EHandlerOperation::GetPmeasured)});
    EXPECT_THAT(dueAt(schedule, 0.0), ElementsAre(Pair(EHandlerOperation::GetPmeasured, EHandlerFault::Fail)));
    EXPECT_THAT(dueAt(schedule, 1e9), IsEmpty());
}
