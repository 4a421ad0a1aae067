// What the live page's server makes of a request: the first line is a method, a path and a query, headers follow, and a
// body after an empty line. Whatever comes, the answer is one that the page understands.
#include "Unit/LivePage/LivePageSite.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/unit/SampleMaker.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <memory>

namespace
{
/** Takes what the page may ask for only. */
class StrictReplay final : public IPageReplay
{
public:
    explicit StrictReplay(PageFeed feed) : m_feed(std::move(feed)) {}

    PageFeed feed() const override { return m_feed; }
    ReplayState state() const override { return m_state; }
    void change(const ReplayChange& change) override
    {
        m_state.nPositionUs = change.nPositionUs.value_or(m_state.nPositionUs);
        m_state.nSpeed = change.nSpeed.value_or(m_state.nSpeed);
        m_state.bPaused = change.bPaused.value_or(m_state.bPaused);
        require(m_state.nPositionUs >= m_state.nFromUs && m_state.nPositionUs <= m_state.nToUs,
                "a position beyond the recording");
        require(std::find(std::begin(REPLAY_SPEEDS), std::end(REPLAY_SPEEDS), m_state.nSpeed) !=
                    std::end(REPLAY_SPEEDS),
                "a speed that there is not");
    }

private:
    PageFeed m_feed;
    ReplayState m_state{5, 300'000, 5, 1, false};
};

PageFeed filledFeed()
{
    auto pFeed = std::make_shared<RunFeed>(100, 10);
    for (std::uint64_t nStep = 0; nStep < 80; ++nStep) {
        pFeed->add(std::vector<StepSample>{stepOnTheAir(nStep * 6000, 0), stepOnTheAir(nStep * 6000, 1)});
    }
    RunEvent event;
    event.nTimeUs = 66'000;
    event.sText = "an \"event\"";
    pFeed->add(event);
    return {"0123456789abcdef", pFeed};
}

PageRun pageRun()
{
    PageRun run;
    run.sVersion = "1.2.3";
    run.channels = {10, 11};
    run.intervalMs = [] { return 6U; };
    return run;
}

std::pair<std::string, std::string> splitAt(const std::string& sText, char cSeparator)
{
    const std::size_t nAt = sText.find(cSeparator);
    return nAt == std::string::npos ? std::pair(sText, std::string())
                                    : std::pair(sText.substr(0, nAt), sText.substr(nAt + 1));
}

HttpRequest requestOf(const std::string& sText)
{
    HttpRequest request;
    auto [sHead, sRest] = splitAt(sText, '\n');
    auto [sMethod, sTarget] = splitAt(sHead, ' ');
    request.sMethod = sMethod;
    auto [sPath, sQuery] = splitAt(sTarget, '?');
    request.sPath = sPath;
    if (!sQuery.empty()) {
        for (const std::string& sPair : splitText(sQuery, '&')) {
            request.query.push_back(splitAt(sPair, '='));
        }
    }
    while (!sRest.empty() && sRest.front() != '\n') {
        auto [sHeader, sLeft] = splitAt(sRest, '\n');
        request.headers.push_back(splitAt(sHeader, ':'));
        sRest = sLeft;
    }
    request.sBody = sRest.empty() ? std::string() : sRest.substr(1);
    return request;
}

void checkResponse(const HttpResponse& response)
{
    constexpr std::array<unsigned int, 7> STATUSES = {200, 304, 400, 401, 403, 404, 405};
    const bool bKnown = std::find(STATUSES.begin(), STATUSES.end(), response.nStatus) != STATUSES.end() ||
                        response.nStatus == 415 || response.nStatus == 503;
    require(bKnown, "a status that nobody expects: " + std::to_string(response.nStatus));
    for (const auto& [sName, sValue] : response.headers) {
        requireOneLine(sName + sValue);
    }
    if (response.sContentType == "application/json") {
        require(!nlohmann::json::parse(response.sBody, nullptr, false).is_discarded(), "no JSON: " + response.sBody);
    }
    if (response.nStatus >= 400) {
        requireOneLine(response.sBody.substr(0, response.sBody.find_last_not_of('\n') + 1));
    }
    if (response.pStream != nullptr) {
        const auto text = response.pStream->next();
        require(!text || text->empty() || text->ends_with("\n\n"), "half an event");
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    static const PageFeed FEED = filledFeed();
    static const AccessPolicy POLICY("127.0.0.1", 8080, "");
    StrictReplay replay(FEED);
    LivePageSite live(pageRun(), PageAssets(), FEED);
    LivePageSite replayed(pageRun(), PageAssets(), replay);
    const HttpRequest request = requestOf(inputText(pData, nSize));
    for (LivePageSite* pSite : {&live, &replayed}) {
        if (!pSite->owns(request.sPath)) {
            continue;
        }
        if (const auto refused = pSite->refuse(request, POLICY)) {
            checkResponse(*refused);
        }
        checkResponse(pSite->answer(request));
    }
    return 0;
}
