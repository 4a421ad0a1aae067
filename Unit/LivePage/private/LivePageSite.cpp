#include "Unit/LivePage/LivePageSite.h"

#include "Unit/LivePage/SampleJson.h"
#include "Unit/LivePage/private/AnswerSlots.h"
#include "Unit/LivePage/private/BadRequest.h"
#include "Unit/LivePage/private/FeedStream.h"
#include "Unit/LivePage/private/ReplayJson.h"
#include "Unit/LivePage/private/RunHistory.h"
#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <climits>
#include <iterator>
#include <memory>
#include <sstream>
#include <utility>

namespace
{
constexpr unsigned int NOT_FOUND = 404;
constexpr unsigned int BAD_REQUEST = 400;
constexpr unsigned int NOT_MODIFIED = 304;
constexpr unsigned int UNAVAILABLE = 503;
constexpr const char* JSON = "application/json";
constexpr const char* REPLAY_PATH = "/api/replay";
constexpr std::size_t MOST_POINTS = 100000; // a minute at 1 ms, and some
constexpr std::uint64_t USUAL_POINTS = 2000;
constexpr std::int64_t LATEST_US = std::int64_t{1} << 62U;
constexpr std::size_t MOST_EVENTS = 10000;
constexpr std::size_t MOST_ANSWERS = 8; // of history and events, being made or on their way out
constexpr std::chrono::seconds LONGEST_SLOT_WAIT{5};

// The page asks nobody but this server, and nobody may put it into a page of theirs.
constexpr const char* CONTENT_POLICY =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/** @return a whole number; nothing when the query does not have it. @param pKind what it has to be */
template <class TNumber> std::optional<TNumber> number(const HttpRequest& request, const char* pName, const char* pKind)
{
    const std::optional<std::string> text = request.queryValue(pName);
    if (!text) {
        return std::nullopt;
    }
    TNumber nValue = 0;
    const char* const pEnd = text->data() + text->size();
    const auto [pRead, error] = std::from_chars(text->data(), pEnd, nValue);
    if (error != std::errc{} || pRead != pEnd) {
        throw BadRequest(fmt::format("{} has to be {}", pName, pKind));
    }
    return nValue;
}

std::optional<std::uint64_t> count(const HttpRequest& request, const char* pName)
{
    return number<std::uint64_t>(request, pName, "a whole number from 0");
}

/** A range of times; none when it is over before the run began. */
struct TimeRange
{
    std::uint64_t nFromUs = 0;
    std::uint64_t nToUs = 0; // included
};

std::optional<TimeRange> timeRange(const HttpRequest& request)
{
    constexpr const char* KIND = "whole microseconds since the run began";
    const std::int64_t nFromUs = number<std::int64_t>(request, "from_us", KIND).value_or(0);
    const std::int64_t nToUs = number<std::int64_t>(request, "to_us", KIND).value_or(LATEST_US);
    if (nToUs <= nFromUs || nToUs > LATEST_US) {
        throw BadRequest("to_us has to be later than from_us, and 2^62 at most");
    }
    return nToUs < 0 ? std::nullopt
                     : std::optional(TimeRange{static_cast<std::uint64_t>(std::max<std::int64_t>(nFromUs, 0)),
                                               static_cast<std::uint64_t>(nToUs)});
}

/** @return the first line of what went wrong, in which files have lost their folders: those are nobody's business */
HttpResponse unavailable(const std::exception& error)
{
    const std::string sText = error.what();
    std::istringstream words(sText.substr(0, sText.find('\n')));
    std::string sShown;
    for (std::string sWord; words >> sWord;) {
        sShown += (sShown.empty() ? "" : " ") + sWord.substr(sWord.rfind('/') + 1);
    }
    return httpRefusal(UNAVAILABLE, sShown);
}

HttpResponse jsonResponse(std::string sBody)
{
    HttpResponse response;
    response.sContentType = JSON;
    response.sBody = std::move(sBody);
    return response;
}

/** @return when the latest step was; 0 before the first */
std::uint64_t latestTimeUs(const RunFeed& feed)
{
    FeedPosition position = feed.newest();
    position.nSample -= std::min<std::uint64_t>(position.nSample, 1);
    FeedBatch last;
    feed.read(position, last, 1);
    return last.samples.empty() ? 0 : last.samples.back().nTimeUs;
}

nlohmann::ordered_json recordingJson(const PageRun& run)
{
    const std::optional<PageRecording> recording = run.recording ? run.recording() : std::nullopt;
    if (!recording) {
        return nullptr;
    }
    const std::optional<std::uint64_t> nEarliestUs = run.pPast ? run.pPast->earliestUs() : std::nullopt;
    return {{"file", recording->sFile},
            {"state", recording->bPaused ? "paused" : "recording"},
            {"reason", recording->sReason},
            {"from_us", nEarliestUs ? nlohmann::ordered_json(*nEarliestUs) : nullptr}};
}
} // namespace

LivePageSite::LivePageSite(PageRun run, PageAssets assets, PageFeed feed)
    : m_run(std::move(run)), m_assets(std::move(assets)), m_feed(std::move(feed)),
      m_pSlots(std::make_unique<AnswerSlots>(MOST_ANSWERS))
{}

LivePageSite::LivePageSite(PageRun run, PageAssets assets, IPageReplay& replay)
    : m_run(std::move(run)), m_assets(std::move(assets)), m_pReplay(&replay),
      m_pSlots(std::make_unique<AnswerSlots>(MOST_ANSWERS))
{}

LivePageSite::~LivePageSite() = default;

bool LivePageSite::owns(const std::string& sPath) const
{
    return sPath == "/" || sPath.starts_with("/assets/") || sPath.starts_with("/api/");
}

std::optional<HttpResponse> LivePageSite::refuse(const HttpRequest& head, const AccessPolicy& policy) const
{
    if (m_pReplay != nullptr && head.sPath == REPLAY_PATH) {
        return policy.refuseJsonPost(head);
    }
    return policy.refuseGet(head, head.sPath.starts_with("/api/") ? EHttpContent::Unit : EHttpContent::Public);
}

HttpResponse LivePageSite::answer(const HttpRequest& request)
{
    try {
        if (request.sPath == "/api/unit") {
            return unit();
        }
        if (request.sPath == "/api/stream") {
            return stream(request);
        }
        if (request.sPath == "/api/history") {
            return withSlot(request, &LivePageSite::history);
        }
        if (request.sPath == "/api/events") {
            return withSlot(request, &LivePageSite::events);
        }
        if (m_pReplay != nullptr && request.sPath == REPLAY_PATH) {
            return changeReplay(request);
        }
        return asset(request);
    }
    catch (const BadRequest& error) {
        return httpRefusal(BAD_REQUEST, error.what());
    }
}

// A large answer to a client that reads slowly stays in memory until it is out.
HttpResponse LivePageSite::withSlot(const HttpRequest& request,
                                    HttpResponse (LivePageSite::*pMake)(const HttpRequest&) const)
{
    std::shared_ptr<void> pSlot = m_pSlots->take(LONGEST_SLOT_WAIT);
    if (pSlot == nullptr) {
        return httpRefusal(UNAVAILABLE, "too many ask for history at once; try again");
    }
    HttpResponse response = (this->*pMake)(request);
    response.pKept = std::move(pSlot);
    return response;
}

HttpResponse LivePageSite::asset(const HttpRequest& request) const
{
    const std::optional<PageAsset> found = m_assets.find(request.sPath);
    if (!found) {
        return httpRefusal(NOT_FOUND, m_assets.isEmpty()
                                          ? "this program was built without the page; build it where npm is"
                                          : "nothing is here; the page is at /");
    }
    HttpResponse response;
    response.sContentType = found->sContentType;
    response.headers = {{"Cache-Control", "no-cache"},
                        {"ETag", found->sTag},
                        {"Content-Security-Policy", CONTENT_POLICY},
                        {"Referrer-Policy", "no-referrer"}};
    if (request.header("If-None-Match") == found->sTag) {
        response.nStatus = NOT_MODIFIED;
    }
    else {
        response.sBody = found->sContent;
    }
    return response;
}

HttpResponse LivePageSite::unit() const
{
    const PageFeed shown = feed();
    nlohmann::ordered_json channels = nlohmann::ordered_json::array();
    for (const unsigned int nChannel : m_run.channels) {
        channels.push_back({{"number", nChannel}, {"index", channels.size()}});
    }
    nlohmann::ordered_json unit = {{"run", shown.sRun},
                                   {"interval_ms", m_run.intervalMs()},
                                   {"version", m_run.sVersion},
                                   {"started", isoTime(m_run.nStartedUnixUs)},
                                   {"clock_us", latestTimeUs(*shown.pFeed)},
                                   {"demo", m_run.bSimulated},
                                   {"replay", nullptr},
                                   {"recording", recordingJson(m_run)},
                                   {"channels", channels}};
    if (m_pReplay != nullptr) {
        const ReplayState state = m_pReplay->state();
        unit["clock_us"] = state.nPositionUs;
        unit["replay"] = replayJson(state);
        unit["replay"]["history_from_us"] =
            m_run.pPast == nullptr ? state.nFromUs : m_run.pPast->earliestUs().value_or(state.nFromUs);
    }
    return jsonResponse(unit.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

HttpResponse LivePageSite::changeReplay(const HttpRequest& request) const
{
    const ReplayChange change = readReplayChange(request.sBody, m_pReplay->state());
    try {
        m_pReplay->change(change);
    }
    catch (const std::exception& error) {
        return unavailable(error);
    }
    return jsonResponse(replayJson(m_pReplay->state()).dump());
}

HttpResponse LivePageSite::stream(const HttpRequest& request) const
{
    const StreamBegin begin{request.queryValue("run").value_or(""), count(request, "after")};
    PageFeed shown = feed();
    HttpResponse response;
    response.sContentType = "text/event-stream";
    response.pStream = std::make_shared<FeedStream>(std::move(shown.pFeed), std::move(shown.sRun), begin);
    return response;
}

HttpResponse LivePageSite::history(const HttpRequest& request) const
{
    const std::optional<TimeRange> range = timeRange(request);
    const std::uint64_t nFirstChannel = m_run.channels.empty() ? 0 : m_run.channels.front();
    const std::uint64_t nChannel = count(request, "channel").value_or(nFirstChannel);
    const std::uint64_t nPoints = count(request, "points").value_or(USUAL_POINTS);
    HistoryQuestion question;
    question.nChannel = static_cast<unsigned int>(std::min<std::uint64_t>(nChannel, UINT_MAX));
    question.nPoints = static_cast<std::size_t>(std::clamp<std::uint64_t>(nPoints, 1, MOST_POINTS));
    question.intervalMs = std::max(m_run.intervalMs(), 1U);
    ChannelHistory found;
    if (range) {
        question.nFromUs = range->nFromUs;
        question.nToUs = range->nToUs;
        try {
            found = channelHistory(m_feed.pFeed.get(), m_run.pPast.get(), question);
        }
        catch (const BadRequest&) {
            throw;
        }
        catch (const std::exception& error) {
            return unavailable(error);
        }
    }
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), "{{\"run\":\"{}\",\"source\":\"{}\",\"channels\":", feed().sRun,
                   historySourceName(found.eSource));
    if (found.parts.empty()) {
        appendSamples(text, found.steps);
    }
    else {
        text.push_back('[');
        appendSummaries(text, question.nChannel, found.parts);
        text.push_back(']');
    }
    text.push_back('}');
    return jsonResponse(fmt::to_string(text));
}

HttpResponse LivePageSite::events(const HttpRequest& request) const
{
    const std::optional<TimeRange> range = timeRange(request);
    const auto nLimit =
        static_cast<std::size_t>(std::min<std::uint64_t>(count(request, "limit").value_or(200), MOST_EVENTS));
    std::vector<RunEvent> found;
    if (range) {
        try {
            found = latestEvents(m_feed.pFeed.get(), m_run.pPast.get(), range->nFromUs, range->nToUs, nLimit);
        }
        catch (const std::exception& error) {
            return unavailable(error);
        }
    }
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), "{{\"run\":\"{}\",\"events\":", feed().sRun);
    appendEvents(text, found);
    text.push_back('}');
    return jsonResponse(fmt::to_string(text));
}
