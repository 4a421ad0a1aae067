/** @file
 * What the generated sequences have reached.
 */
#pragma once

#include "tests/module/differential/Operation.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Differential
{
inline constexpr std::size_t STATES = 10;

/** How a handler call came out. */
enum class EOutcome
{
    Succeeded,
    Failed,
    SucceededSilently, /**< without writing its outputs */
    FailedSilently,
    Count
};

/** Corners of the behaviour that have to be met. */
enum class ECorner
{
    RampAboveUpperLimit,
    RampBelowRequestedMinimum,
    RampBelowRequestedMinimumNotLoopMinimum,
    RampOutOfTime,
    RampErrorOfExactlyOneHundred,
    RampErrorOfOneHundredAndOne,
    LoopAboveUpperLimit,
    LoopBelowLowerLimit,
    PredictionAboveUpperLimit,
    PredictionBelowLowerLimit,
    ProductionTestAboveUpperLimit,
    ProductionTestBelowLowerLimit,
    StepBeyondHundredThousand,
    StepLimitedToTen,
    StepLimitedToTwenty,
    StepInModeZeroUnlimited,
    NegativeProductRounded,
    ProductWrapped,
    TargetWrapped,
    ErrorWrapped,
    PowerWrapped,
    DetectorWithoutRow,
    GainDiffersByRow,
    GainDiffersByColumn,
    RequestedMinimumUnknown,
    UpperLimitUnknown,
    HandlerLowerLimitUnknown,
    HandlerLowerLimitTaken,
    ModeReportedThenLimited,
    OnRequestWhileSwitchingOn,
    OffRequestWhileSwitchingOn,
    OnRequestWhileSwitchingOff,
    UnknownRequest,
    RampToldUnchangedPower,
    ChangeComparedWithBeforeTheRamp,
    ObserverToldTwice,
    OpcLogSeeded,
    OpcLogMinimumFell,
    OpcLogMaximumRose,
    OpcLogNegativeSeedHasNoZero,
    OpcLogReadWithSamples,
    TransientLogLastSample,
    TransientLogFull,
    TransientLogReadFull,
    TransientLogReadEmpty,
    LogsRestarted,
    NegativeGainBlocks,
    FewGainBlocks,
    NoGainBlocks,
    TableMissing,
    TableInvalid,
    TableFailing,
    SpacingUnknown,
    SpacingFractional,
    StorageContentMissing,
    HandlerMissing,
    HandlerKeptFromBefore,
    FrequencyHandlerMissing,
    FrequencyEntryRefused,
    TemperatureHandlerMissing,
    NotifiedTwice,
    DelayNotOver,
    DelayOver,
    DelayWrapped,
    DelayJustOver,
    DelayOneMillisecondShort,
    IntervalAboveWaits,
    IntervalNegative,
    Count
};

/** Counts what was reached, and knows what must be. */
class Coverage
{
public:
    void count(ECorner eCorner) { ++m_anCorner[static_cast<std::size_t>(eCorner)]; }
    void count(std::int64_t nState, EHandlerCall eCall, EOutcome eOutcome);
    void count(std::int64_t nState, EOperation eKind);

    /** @return names of what must be reached and was not; without the private door delayed switch-on cannot be */
    std::vector<std::string> missing(bool bPrivateDoor) const;
    /** @return one line on how much there is and what was reached least often */
    std::string summary(bool bPrivateDoor) const;

private:
    template <class TVisitor> void visit(bool bPrivateDoor, TVisitor visitor) const;

    using Outcomes = std::array<std::uint64_t, static_cast<std::size_t>(EOutcome::Count)>;
    std::array<std::uint64_t, static_cast<std::size_t>(ECorner::Count)> m_anCorner{};
    std::array<std::array<Outcomes, HANDLER_CALLS>, STATES> m_anCall{};
    std::array<std::array<std::uint64_t, OPERATIONS>, STATES> m_anOperation{};
};
} // namespace Differential
