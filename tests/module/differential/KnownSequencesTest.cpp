// Sequences that once told the two apart, or stand for a corner that is reached by few others.
#include "tests/module/differential/Comparison.h"

#include <gtest/gtest.h>

using Differential::EOperation;
using Differential::Sequence;

namespace
{
/** Expects the controller to do what the reference does. */
void expectNoDifference(const Sequence& sequence)
{
    const std::unique_ptr<Differential::ModuleDoor> pDoor = Differential::openDoor();
    Differential::Coverage coverage;
    const auto difference = Differential::Comparison(*pDoor).run(sequence, coverage);
    EXPECT_FALSE(difference.has_value()) << Differential::textOf(sequence, *difference);
}
} // namespace

TEST(KnownSequences, ADelayThatNobodyBeganCountsFromTheClocksStart)
{
    expectNoDifference({0, {{EOperation::EnterState, {4}}, {EOperation::Regulate, {0}}}});
}

TEST(KnownSequences, AChannelBeyondThirtyOneBitsIsSentAsANegativeNumber)
{
    expectNoDifference({4294967295,
                        {{EOperation::Initialize},
                         {EOperation::RunPhase, {0}},
                         {EOperation::TransientLogCommand, {0}},
                         {EOperation::Request, {1, 0}},
                         {EOperation::SetInterval, {24}},
                         {EOperation::Regulate, {0}},
                         {EOperation::Regulate, {0}},
                         {EOperation::Regulate, {0}},
                         {EOperation::TransientLogCommand, {2}}}});
}
