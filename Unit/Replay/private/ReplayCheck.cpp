#include "Unit/Replay/ReplayCheck.h"

#include "Platform/Conversions.h"
#include "Unit/Replay/RecordedPace.h"
#include "Unit/Replay/private/RecordedInputs.h"
#include "Unit/Replay/private/ReplayedUnit.h"
#include "Unit/Replay/private/StepComparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>
#include <memory>
#include <utility>

namespace
{
constexpr std::size_t QUEUED_TICKS = 2; // they are taken out after each

/** What a look at the recording says before anything is run. */
struct Extent
{
    RecordedRange range;
    std::uint64_t nLastTickSteps = 0;
    bool bStopRecorded = false;

    /** The ticks behind this one may belong to a switch-off whose begin is not recorded. */
    std::uint64_t nLastSteps = std::numeric_limits<std::uint64_t>::max();
};

std::uint64_t stepsAt(const Recording& recording, const RecordedRun& run, std::uint64_t nTimeUs)
{
    std::uint64_t nSteps = 0;
    recording.forEachStep({.nRun = run.nId, .nChannel = {}, .nFromUs = nTimeUs, .nToUs = nTimeUs},
                          [&](const StepSample& sample) { nSteps = std::max(nSteps, sample.nSteps); });
    return nSteps;
}

Extent extentOf(const Recording& recording, const RecordedRun& run, const RecordedTimes& times)
{
    Extent extent;
    extent.range = {.nRun = run.nId, .nChannel = {}, .nFromUs = 0, .nToUs = times.nLastUs};
    extent.nLastTickSteps = stepsAt(recording, run, times.nLastUs);
    recording.forEachEvent({.nRun = run.nId, .nChannel = {}}, [&](const RunEvent& event) {
        extent.bStopRecorded = extent.bStopRecorded || isStop(event);
    });
    if (run.nEndedUs && !extent.bStopRecorded) {
        extent.nLastSteps =
            extent.nLastTickSteps - std::min<std::uint64_t>(extent.nLastTickSteps, RegulationLoop::MAX_STOP_CALLS);
    }
    return extent;
}

/** @return the recorded ticks one after the other, up to a number of steps */
TickSource tickSource(const Recording& recording, const Extent& extent)
{
    auto pSteps = std::make_shared<RecordedWindows<StepSample>>(
        [&recording](const RecordedRange& range, const std::function<void(const StepSample&)>& add) {
            recording.forEachStep(range, add);
        },
        extent.range);
    return [pSteps, nLastSteps = extent.nLastSteps](RecordedTick& tick) {
        const StepSample* pStep = pSteps->peek();
        if (pStep == nullptr || pStep->nSteps > nLastSteps) {
            return false;
        }
        tick.nTimeUs = pStep->nTimeUs;
        tick.nSteps = pStep->nSteps;
        tick.nOverruns = pStep->nOverruns;
        tick.samples.clear();
        for (; pStep != nullptr && pStep->nTimeUs == tick.nTimeUs; pStep = pSteps->peek()) {
            tick.samples.push_back(*pStep);
            pSteps->pop();
        }
        return true;
    };
}

/** Leads a regulation along a recording and looks at what it does. */
class Replay final : public IReplayListener
{
public:
    Replay(const Recording& recording, const Extent& extent, ReplayedUnit& unit, const ReplayProgress& progress)
        : m_progress(progress), m_pace(tickSource(recording, extent), *this),
          m_queue(QUEUED_TICKS * unit.process().channels().size()),
          m_loop(unit.settings(), unit.wantOn(), unit.process().temperature(), unit.faults(), m_queue, &m_pace),
          m_inputs(recording, extent.range, m_loop)
    {}

    /** Until the end of the recording, or until something is found. */
    ReplayOutcome run()
    {
        m_loop.run();
        if (m_error) {
            std::rethrow_exception(m_error);
        }
        m_outcome.nSteps = m_pace.takenTicks();
        m_outcome.nUnrecordedSteps = m_pace.missingTicks();
        m_outcome.nCommands = m_inputs.commands();
        if (m_outcome.eResult == EReplayResult::Equal) {
            judgeEnd();
        }
        if (m_outcome.eResult != EReplayResult::Equal) {
            m_outcome.precedingEvents.assign(m_inputs.latestEvents().begin(), m_inputs.latestEvents().end());
        }
        return std::move(m_outcome);
    }

    bool onTick(const RecordedTick* pRecorded) override
    {
        return guarded([&] {
            m_taken.clear();
            m_queue.consumeAll([this](const StepSample& sample) { m_taken.push_back(sample); });
            return pRecorded == nullptr || compare(*pRecorded);
        });
    }

    bool onGap(std::uint64_t nSteps, std::uint64_t nNextUs) override
    {
        return guarded([&] {
            if (m_progress) {
                m_progress(nNextUs);
            }
            const CommandTrouble trouble = m_inputs.bring(nSteps, nNextUs);
            if (!trouble.sText.empty()) {
                m_outcome.eResult = trouble.bFails ? EReplayResult::Different : EReplayResult::NotRepeated;
                m_outcome.sReason = trouble.sText;
            }
            return trouble.sText.empty();
        });
    }

private:
    /** The regulation would take an exception for one of its own. */
    template <class TFunction> bool guarded(const TFunction& function)
    {
        try {
            return function();
        }
        catch (...) {
            m_error = std::current_exception();
            return false;
        }
    }

    bool compare(const RecordedTick& recorded)
    {
        for (const StepSample& sample : recorded.samples) {
            const auto taken = std::find_if(m_taken.begin(), m_taken.end(), [&](const StepSample& now) {
                return now.nChannelNumber == sample.nChannelNumber;
            });
            if (taken == m_taken.end()) {
                return differ(fmt::format("channel {} is recorded, and is not there now", sample.nChannelNumber));
            }
            std::vector<StepDifference> differences = differencesOf(sample, *taken);
            if (!differences.empty()) {
                m_outcome.eResult = EReplayResult::Different;
                m_outcome.step = {sample.nTimeUs, sample.nChannelNumber, sample.nSteps, std::move(differences)};
                return false;
            }
        }
        return true;
    }

    bool differ(std::string sReason)
    {
        m_outcome.eResult = EReplayResult::Different;
        m_outcome.sReason = std::move(sReason);
        return false;
    }

    /** Nothing was found on the way. */
    void judgeEnd()
    {
        if (!m_pace.trouble().empty()) {
            m_outcome.eResult = EReplayResult::NotRepeated;
            m_outcome.sReason = m_pace.trouble();
        }
        else if (m_pace.hasMore()) {
            differ(fmt::format("the run is over after {} steps now, and was not when it was recorded{}",
                               m_pace.takenTicks(), m_loop.error().empty() ? "" : ": " + m_loop.error()));
        }
    }

    const ReplayProgress& m_progress;
    RecordedPace m_pace;
    SampleQueue m_queue;
    RegulationLoop m_loop;
    RecordedInputs m_inputs;
    std::vector<StepSample> m_taken; // at the last deadline
    ReplayOutcome m_outcome;
    std::exception_ptr m_error;
};

ReplayOutcome notRepeated(std::string sReason)
{
    ReplayOutcome outcome;
    outcome.eResult = EReplayResult::NotRepeated;
    outcome.sReason = std::move(sReason);
    return outcome;
}

void addNotes(ReplayOutcome& outcome, const RecordedRun& run, const RecordedTimes& times, const Extent& extent)
{
    if (outcome.nUnrecordedSteps > 0) {
        outcome.notes.push_back(fmt::format("{} of the {} steps are not recorded, or no more; they were taken again "
                                            "and not compared",
                                            outcome.nUnrecordedSteps, outcome.nSteps));
    }
    if (!run.nEndedUs) {
        outcome.notes.push_back(fmt::format("the run has no end: the unit was killed, or goes on; compared to {:.6f} s",
                                            static_cast<double>(times.nLastUs) / US_PER_S));
    }
    else if (outcome.eResult == EReplayResult::Equal && !extent.bStopRecorded) {
        outcome.eResult = EReplayResult::NotRepeated;
        outcome.sReason = fmt::format("when the unit began to switch off is not recorded, so that the last {} steps "
                                      "are left out; all before are equal",
                                      extent.nLastTickSteps - outcome.nSteps);
    }
    else if (*run.nEndedUs > times.nLastUs) {
        outcome.notes.push_back(fmt::format("the run ended at {:.6f} s; its last steps are not recorded",
                                            static_cast<double>(*run.nEndedUs) / US_PER_S));
    }
}
} // namespace

const char* replayResultName(EReplayResult eResult)
{
    return eResult == EReplayResult::Equal       ? "equal"
           : eResult == EReplayResult::Different ? "different"
                                                 : "not repeated";
}

ReplayOutcome checkReplay(const Recording& recording, const RecordedRun& run, const ReplayProgress& progress)
{
    const auto begin = std::chrono::steady_clock::now();
    const auto times = recording.times(EResolution::Steps, run.nId);
    if (!times) {
        return notRepeated("no step of it is recorded, or no more");
    }
    const Extent extent = extentOf(recording, run, *times);
    ReplayedUnit unit(recording, run);
    unit.start();
    const std::string sHandler = unit.unrepeatableHandler();
    if (!sHandler.empty()) {
        return notRepeated(
            fmt::format("{} is not a simulated one, and what it told the unit is not recorded", sHandler));
    }
    ReplayOutcome outcome = Replay(recording, extent, unit, progress).run();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    addNotes(outcome, run, *times, extent);
    return outcome;
}
