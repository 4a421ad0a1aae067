#include "Unit/LivePage/private/RunHistory.h"

#include "Unit/LivePage/private/BadRequest.h"
#include "Unit/LivePage/private/HistoryParts.h"
#include "Unit/Recorder/RecordedTime.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace
{
constexpr std::size_t SAMPLES_A_READ = 10'000;
constexpr std::size_t SAMPLES_OF_A_MOMENT = 256; // more than there are channels
constexpr std::uint64_t US_PER_MS = 1000;
constexpr std::uint64_t NEVER = std::numeric_limits<std::uint64_t>::max();

/** What the feed holds of a range. */
struct Held
{
    std::vector<StepSample> steps;
    std::uint64_t nCompleteFromUs = NEVER; // it lacks nothing that is not earlier
};

void keep(Held& held, const FeedBatch& batch, const HistoryQuestion& question)
{
    for (const StepSample& sample : batch.samples) {
        if (sample.nChannelNumber == question.nChannel && sample.nTimeUs >= held.nCompleteFromUs &&
            sample.nTimeUs >= question.nFromUs && sample.nTimeUs <= question.nToUs)
        {
            held.steps.push_back(sample);
        }
    }
}

/** @return from when on a feed that has lost what was before a batch has every step of a channel */
std::uint64_t completeFrom(const FeedBatch& batch, unsigned int nChannel)
{
    for (const StepSample& sample : batch.samples) {
        if (sample.nChannelNumber == nChannel) {
            return sample.nTimeUs;
        }
    }
    return batch.samples.back().nTimeUs + 1;
}

Held heldBy(const RunFeed& feed, const HistoryQuestion& question)
{
    Held held;
    FeedBatch batch;
    FeedPosition first = feed.oldest();
    held.nCompleteFromUs = 0;
    if (first.nSample > 0) {
        feed.read(first, batch, SAMPLES_OF_A_MOMENT);
        held.nCompleteFromUs = completeFrom(batch, question.nChannel);
    }
    FeedPosition position = feed.atTime(std::max(question.nFromUs, held.nCompleteFromUs));
    const std::uint64_t nEnd = feed.atTime(question.nToUs + 1).nSample;
    while (position.nSample < nEnd) {
        const std::uint64_t nLeft = nEnd - position.nSample;
        feed.read(position, batch, static_cast<std::size_t>(std::min<std::uint64_t>(nLeft, SAMPLES_A_READ)));
        if (batch.nLostSamples > 0 && !batch.samples.empty()) { // overtaken: begin where it is whole again
            held.steps.clear();
            held.nCompleteFromUs = completeFrom(batch, question.nChannel);
        }
        keep(held, batch, question);
    }
    return held;
}

std::uint64_t lengthOf(EResolution eResolution)
{
    return eResolution == EResolution::Minutes ? MINUTE_US : eResolution == EResolution::Seconds ? SECOND_US : 1;
}

EHistorySource sourceOf(EResolution eResolution)
{
    switch (eResolution) {
    case EResolution::Steps:
        return EHistorySource::Steps;
    case EResolution::Seconds:
        return EHistorySource::Seconds;
    case EResolution::Minutes:
        break;
    }
    return EHistorySource::Minutes;
}

/** What a recording has of a channel at each resolution, and which of them to take. */
class Choice
{
public:
    Choice(const Recording& recording, std::int64_t nRun, const HistoryQuestion& question) : m_question(question)
    {
        for (const EResolution eResolution : RESOLUTIONS) {
            m_times.at(indexOf(eResolution)) = recording.times(eResolution, nRun, question.nChannel);
        }
    }

    /** @return the closest that reaches back far enough and is not too much; else the coarsest. None without any */
    std::optional<EResolution> best() const
    {
        std::optional<EResolution> coarsest;
        for (const EResolution eResolution : RESOLUTIONS) {
            if (m_times.at(indexOf(eResolution))) {
                coarsest = eResolution;
                if (reachesBack(eResolution) && isBearable(eResolution)) {
                    return eResolution;
                }
            }
        }
        return coarsest;
    }

    std::uint64_t firstUs(EResolution eResolution) const { return m_times.at(indexOf(eResolution))->nFirstUs; }

    /** @return when the last one ends */
    std::uint64_t lastUs(EResolution eResolution) const
    {
        return m_times.at(indexOf(eResolution))->nLastUs + lengthOf(eResolution) - 1;
    }

    /** @throws BadRequest when even minutes are too many */
    void checkMinutes() const
    {
        const std::uint64_t nFromUs = std::max(m_question.nFromUs, firstUs(EResolution::Minutes));
        const std::uint64_t nToUs = std::min(m_question.nToUs, lastUs(EResolution::Minutes));
        if (nToUs > nFromUs && (nToUs - nFromUs) / MINUTE_US > MOST_HISTORY_MINUTES) {
            throw BadRequest("the range holds more than " + std::to_string(MOST_HISTORY_MINUTES) +
                             " recorded minutes; ask for a shorter one");
        }
    }

private:
    static constexpr std::array<EResolution, 3> RESOLUTIONS = {EResolution::Steps, EResolution::Seconds,
                                                               EResolution::Minutes};

    static std::size_t indexOf(EResolution eResolution) { return static_cast<std::size_t>(eResolution); }

    // Far enough is back to what is asked for, or to where the coarser ones begin as well.
    bool reachesBack(EResolution eResolution) const
    {
        const std::uint64_t nFirstUs = firstUs(eResolution);
        if (nFirstUs <= m_question.nFromUs || eResolution == EResolution::Minutes) {
            return true;
        }
        const EResolution eCoarser = eResolution == EResolution::Steps ? EResolution::Seconds : EResolution::Minutes;
        return !m_times.at(indexOf(eCoarser)) ||
               (nFirstUs - nFirstUs % lengthOf(eCoarser) <= firstUs(eCoarser) && reachesBack(eCoarser));
    }

    bool isBearable(EResolution eResolution) const
    {
        const std::uint64_t nFromUs = std::max(m_question.nFromUs, firstUs(eResolution));
        const std::uint64_t nToUs = std::min(m_question.nToUs, lastUs(eResolution));
        const std::uint64_t nEachUs =
            eResolution == EResolution::Steps ? m_question.intervalMs * US_PER_MS : lengthOf(eResolution);
        return eResolution == EResolution::Minutes || nToUs <= nFromUs ||
               (nToUs - nFromUs) / nEachUs <= MOST_HISTORY_ROWS;
    }

    const HistoryQuestion& m_question;
    std::array<std::optional<RecordedTimes>, 3> m_times;
};

/** Takes rows in the order of their times. */
struct RowSink
{
    std::function<void(const StepSample&)> onStep;
    std::function<void(const StepSummary&, std::uint64_t nLengthUs)> onSummary;
};

/**
 * Reads a range whose end may be in the midst of a second, since the feed goes on from there: what the last whole
 * minute leaves is read as seconds, and what the last whole second leaves as steps.
 * @param nEndUs not included
 */
void readRecorded(const Recording& recording, RecordedRange range, EResolution eResolution, std::uint64_t nEndUs,
                  const RowSink& sink)
{
    if (range.nFromUs >= nEndUs) {
        return;
    }
    if (eResolution == EResolution::Steps) {
        range.nToUs = nEndUs - 1;
        recording.forEachStep(range, sink.onStep);
        return;
    }
    const std::uint64_t nLengthUs = lengthOf(eResolution);
    const std::uint64_t nWholeUs = nEndUs - nEndUs % nLengthUs;
    if (range.nFromUs < nWholeUs) {
        range.nToUs = nWholeUs - 1;
        recording.forEachSummary(eResolution, range,
                                 [&](const StepSummary& summary) { sink.onSummary(summary, nLengthUs); });
        range.nFromUs = nWholeUs;
    }
    readRecorded(recording, range, eResolution == EResolution::Minutes ? EResolution::Seconds : EResolution::Steps,
                 nEndUs, sink);
}

/** @return where the feed goes on; before that, the end of the second or the minute that the range ends in */
std::uint64_t endOfRecorded(std::uint64_t nLastUs, std::uint64_t nFeedFromUs, EResolution eResolution)
{
    if (nLastUs >= nFeedFromUs) {
        return nFeedFromUs;
    }
    const std::uint64_t nLengthUs = lengthOf(eResolution);
    return (nLastUs / nLengthUs + 1) * nLengthUs;
}

ChannelHistory inParts(const std::vector<StepSample>& steps, std::size_t nPoints)
{
    ChannelHistory history;
    HistoryParts parts(steps.front().nTimeUs, steps.back().nTimeUs, nPoints);
    for (const StepSample& step : steps) {
        parts.add(step);
    }
    history.parts = parts.parts();
    return history;
}

ChannelHistory ofSteps(std::vector<StepSample> steps, EHistorySource eSource, std::size_t nPoints)
{
    ChannelHistory history;
    if (steps.size() > nPoints) {
        history = inParts(steps, nPoints);
    }
    else {
        history.steps = std::move(steps);
    }
    history.eSource = eSource;
    return history;
}

/** @return the recorded part before what the feed holds, and that */
ChannelHistory recordedHistory(const Recording& recording, const RecordedRun& run, const HistoryQuestion& question,
                               Held held)
{
    const Choice choice(recording, run.nId, question);
    const std::optional<EResolution> eResolution = choice.best();
    if (!eResolution) {
        return ofSteps(std::move(held.steps), EHistorySource::Ring, question.nPoints);
    }
    if (*eResolution == EResolution::Minutes) {
        choice.checkMinutes();
    }
    RecordedRange range;
    range.nRun = run.nId;
    range.nChannel = question.nChannel;
    range.nFromUs = question.nFromUs;
    const std::uint64_t nLastUs = std::min(question.nToUs, choice.lastUs(*eResolution));
    const std::uint64_t nEndUs = endOfRecorded(nLastUs, held.nCompleteFromUs, *eResolution);
    if (*eResolution == EResolution::Steps) {
        std::vector<StepSample> steps;
        const auto keepStep = [&](const StepSample& step) { steps.push_back(step); };
        readRecorded(recording, range, *eResolution, nEndUs, {keepStep, nullptr});
        steps.insert(steps.end(), held.steps.begin(), held.steps.end());
        return ofSteps(std::move(steps), EHistorySource::Steps, question.nPoints);
    }
    HistoryParts parts(std::max(question.nFromUs, choice.firstUs(*eResolution)),
                       held.steps.empty() ? nLastUs : held.steps.back().nTimeUs, question.nPoints);
    readRecorded(recording, range, *eResolution, nEndUs,
                 {[&](const StepSample& step) { parts.add(step); },
                  [&](const StepSummary& summary, std::uint64_t nLengthUs) { parts.add(summary, nLengthUs); }});
    for (const StepSample& step : held.steps) {
        parts.add(step);
    }
    return {sourceOf(*eResolution), {}, parts.parts()};
}
} // namespace

const char* historySourceName(EHistorySource eSource)
{
    switch (eSource) {
    case EHistorySource::Ring:
        return "ring";
    case EHistorySource::Steps:
        return "steps";
    case EHistorySource::Seconds:
        return "seconds";
    case EHistorySource::Minutes:
        break;
    }
    return "minutes";
}

ChannelHistory channelHistory(const RunFeed* pFeed, RecordedPast* pPast, const HistoryQuestion& question)
{
    Held held = pFeed == nullptr ? Held() : heldBy(*pFeed, question);
    std::optional<ChannelHistory> history;
    if (pPast != nullptr && question.nFromUs < held.nCompleteFromUs) {
        (void)pPast->read([&](const Recording& recording, const RecordedRun& run) {
            if (std::find(run.channels.begin(), run.channels.end(), question.nChannel) != run.channels.end()) {
                history = recordedHistory(recording, run, question, std::move(held));
            }
        });
    }
    return history ? std::move(*history) : ofSteps(std::move(held.steps), EHistorySource::Ring, question.nPoints);
}

std::vector<RunEvent> latestEvents(const RunFeed* pFeed, RecordedPast* pPast, std::uint64_t nFromUs,
                                   std::uint64_t nToUs, std::size_t nMost)
{
    FeedBatch held;
    std::uint64_t nFirstHeld = NEVER;
    if (pFeed != nullptr) {
        FeedPosition position = pFeed->oldest();
        pFeed->read(position, held, 0);
        nFirstHeld = position.nEvent - held.events.size();
        std::erase_if(held.events,
                      [=](const RunEvent& event) { return event.nTimeUs < nFromUs || event.nTimeUs > nToUs; });
    }
    const std::size_t nHeld = std::min(nMost, held.events.size());
    std::vector<RunEvent> events;
    if (pPast != nullptr && nHeld < nMost && nFirstHeld > 0) {
        (void)pPast->read([&](const Recording& recording, const RecordedRun& run) {
            events = recording.lastEvents({run.nId, std::nullopt, nFromUs, nToUs}, nFirstHeld, nMost - nHeld);
        });
    }
    events.insert(events.end(), held.events.end() - static_cast<std::ptrdiff_t>(nHeld), held.events.end());
    return events;
}
