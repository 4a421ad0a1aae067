#include "Unit/SafetyMonitor/ViolationStore.h"

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "tests/support/AllocationCount.h"
#include "tests/unit/safety/HeardSequence.h"

#include <gmock/gmock.h>

#include <set>

using ::testing::HasSubstr;

namespace
{
SafetyViolation violationOf(ESafetyRule eRule)
{
    SafetyViolation violation;
    violation.eRule = eRule;
    return violation;
}

void tell(TransmitterRules& rules, const Heard& sequence)
{
    for (const auto& call : sequence) {
        call(rules);
    }
}

TEST(ViolationStore, CountsAllAndKeepsTheFirstOfEachRule)
{
    ViolationStore store;
    for (int nTime = 0; nTime < 100; ++nTime) {
        store.onViolation(violationOf(ESafetyRule::Silence));
    }
    store.onViolation(violationOf(ESafetyRule::StepSize));
    EXPECT_EQ(store.total(), 101U);
    EXPECT_EQ(store.count(ESafetyRule::Silence), 100U);
    EXPECT_EQ(store.count(ESafetyRule::StepSize), 1U);
    ASSERT_EQ(store.kept(), ViolationStore::KEPT_OF_EACH_RULE + 1);
    EXPECT_EQ(store.at(store.kept() - 1).eRule, ESafetyRule::StepSize);
}

TEST(ViolationStore, HasRoomForEveryRule)
{
    ViolationStore store;
    for (std::size_t nRule = 0; nRule < SAFETY_RULES; ++nRule) {
        for (std::size_t nTime = 0; nTime <= ViolationStore::KEPT_OF_EACH_RULE; ++nTime) {
            store.onViolation(violationOf(static_cast<ESafetyRule>(nRule)));
        }
    }
    EXPECT_EQ(store.kept(), ViolationStore::CAPACITY);
}

TEST(ViolationStore, CallsBackAfterItHasStored)
{
    std::size_t nKept = 0;
    ViolationStore* pStore = nullptr;
    ViolationStore store([&](const SafetyViolation&) { nKept = pStore->kept(); });
    pStore = &store;
    store.onViolation(violationOf(ESafetyRule::AfterStop));
    EXPECT_EQ(nKept, 1U);
}

TEST(SafetyRuleNames, AreAllDifferent)
{
    std::set<std::string> names;
    for (std::size_t nRule = 0; nRule < SAFETY_RULES; ++nRule) {
        names.insert(safetyRuleName(static_cast<ESafetyRule>(nRule)));
    }
    EXPECT_EQ(names.size(), SAFETY_RULES);
    EXPECT_STREQ(safetyRuleName(ESafetyRule::Count), "unknown");
}

TEST(SafetyViolation, TellsRuleChannelStepAndValues)
{
    ViolationStore store;
    TransmitterRules rules(3, EHeardSides::Both, store);
    tell(rules, heard::untilOn(0, -500, 700) + heard::loopStep(701));
    ASSERT_EQ(store.kept(), 1U);
    EXPECT_EQ(violationText(store.at(0)),
              "upper-limit: channel 3, step 7: control power 701 is above the upper limit 700");
}

TEST(SafetyViolation, SaysWhatToDoAboutCrossedLimits)
{
    ViolationStore store;
    TransmitterRules rules(0, EHeardSides::Both, store);
    tell(rules, heard::limits(500) + heard::on() + heard::firstStep(500, -500, 499));
    ASSERT_EQ(store.kept(), 1U);
    EXPECT_EQ(violationText(store.at(0)),
              "crossed-limits: channel 0, step 1: control power 500 is above the upper limit 499, because the lower "
              "limit 500 is: lower the one or raise the other");
    EXPECT_TRUE(isHazardOfBehaviour(store.at(0).eRule));
}

TEST(SafetyViolation, EndsItsCallsWithTheOneThatBrokeTheRule)
{
    ViolationStore store;
    TransmitterRules rules(0, EHeardSides::Both, store);
    tell(rules, heard::limits(-5) + heard::on(2) + heard::step(heard::readLimits(-9, 9) + heard::tx(2, EAF_FAILED)) +
                    heard::power(1, 2));
    ASSERT_EQ(store.kept(), 1U);
    EXPECT_EQ(violationCalls(store.at(0)), "    step 0: setTxPminPmax(-5)\n"
                                           "    step 0: setRequestedTxPowerState(1, mode 2)\n"
                                           "    step 1: regulate(0) begins\n"
                                           "    step 1: getPctrlLimits() gave -9, 9\n"
                                           "    step 1: setTxState(2) = 0x8000\n"
                                           "    step 1: regulate ends\n"
                                           "    step 1: setOutputPower(1, 2)\n");
}

TEST(SafetyViolation, CarriesTheLatestCallsOnly)
{
    ViolationStore store;
    TransmitterRules rules(0, EHeardSides::Both, store);
    tell(rules, heard::untilOn(0) + times(50, heard::loopStep(0)) + heard::tx(1));
    ASSERT_EQ(store.kept(), 1U);
    EXPECT_EQ(store.at(0).nCalls, SafetyViolation::MOST_CALLS);
    EXPECT_THAT(violationCalls(store.at(0)), HasSubstr("    step 56: setTxState(1)\n"));
    EXPECT_EQ(store.at(0).calls.front().nStep, 50U);
}

TEST(TransmitterRules, AllocateNothingEvenWhenOneIsBroken)
{
    ViolationStore store;
    TransmitterRules rules(0, EHeardSides::Both, store);
    const Heard sequence = heard::untilOn(0) + times(50, heard::loopStep(5000)) + heard::tx(1) + heard::switchOff();
    const std::size_t nBefore = allocationCount();
    tell(rules, sequence);
    EXPECT_EQ(allocationCount(), nBefore);
    EXPECT_EQ(store.count(ESafetyRule::UpperLimit), 50U);
}
} // namespace
