#include "Unit/LivePage/LivePageSite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

using nlohmann::json;
using testing::HasSubstr;

namespace
{
using Headers = std::vector<std::pair<std::string, std::string>>;

class FakeReplay final : public IPageReplay
{
public:
    PageFeed feed() const override { return shown; }
    ReplayState state() const override { return now; }
    void change(const ReplayChange& change) override
    {
        if (change.nSpeed == 100U) {
            throw std::runtime_error("/var/lib/opc/unit.db: is gone");
        }
        now.nPositionUs = change.nPositionUs.value_or(now.nPositionUs);
        now.nSpeed = change.nSpeed.value_or(now.nSpeed);
        now.bPaused = change.bPaused.value_or(now.bPaused);
    }

    ReplayState now{1000, 9000, 5000, 1, false};
    PageFeed shown{"first", std::make_shared<RunFeed>(10, 10)};
};

class LivePageReplayTest : public testing::Test
{
protected:
    LivePageReplayTest()
    {
        m_run.channels = {10};
        m_run.intervalMs = [] { return 12U; };
        m_pSite = std::make_unique<LivePageSite>(m_run, PageAssets(), m_replay);
    }

    HttpResponse ask(const std::string& sPath, const std::string& sBody = "")
    {
        HttpRequest request;
        request.sMethod = sBody.empty() ? "GET" : "POST";
        request.sPath = sPath;
        request.sBody = sBody;
        return m_pSite->answer(request);
    }

    PageRun m_run;
    FakeReplay m_replay;
    std::unique_ptr<LivePageSite> m_pSite;
};
} // namespace

TEST_F(LivePageReplayTest, TellsHowItStands)
{
    const json unit = json::parse(ask("/api/unit").sBody);
    EXPECT_EQ(unit["run"], "first");
    EXPECT_EQ(unit["clock_us"], 5000);
    EXPECT_EQ(unit["replay"], json::parse(R"({"from_us":1000,"to_us":9000,"position_us":5000,"speed":1,"paused":false,
                                              "history_from_us":1000})"));
}

TEST_F(LivePageReplayTest, TakesChanges)
{
    const std::vector<std::pair<const char*, const char*>> cases = {
        {R"({"paused":true})", R"({"from_us":1000,"to_us":9000,"position_us":5000,"speed":1,"paused":true})"},
        {R"({"position_us":9000})", R"({"from_us":1000,"to_us":9000,"position_us":9000,"speed":1,"paused":true})"},
        {R"({"speed":10,"paused":false})",
         R"({"from_us":1000,"to_us":9000,"position_us":9000,"speed":10,"paused":false})"}};
    for (const auto& [pBody, pState] : cases) {
        const HttpResponse response = ask("/api/replay", pBody);
        EXPECT_EQ(response.nStatus, 200U) << pBody;
        EXPECT_EQ(json::parse(response.sBody), json::parse(pState)) << pBody;
    }
}

TEST_F(LivePageReplayTest, NamesWhatIsWrongWithAChangeAndChangesNothing)
{
    const std::vector<std::pair<std::string, const char*>> cases = {
        {"x", "JSON object"},
        {"{", "JSON object"},
        {"{}", "JSON object"},
        {"[]", "JSON object"},
        {"null", "JSON object"},
        {std::string(100'000, '['), "JSON object"},
        {R"({"paused":1})", "paused is 1; it has to be true or false"},
        {R"({"paused":true,"other":1})", "\"other\" is nothing"},
        {R"({"position_us":999})", "position_us is 999; it has to be whole microseconds from 1000 to 9000"},
        {R"({"position_us":9001})", "from 1000 to 9000"},
        {R"({"position_us":-1})", "from 1000 to 9000"},
        {R"({"position_us":1e3})", "from 1000 to 9000"},
        {R"({"position_us":"5000"})", "from 1000 to 9000"},
        {R"({"position_us":99999999999999999999})", "from 1000 to 9000"},
        {R"({"speed":2})", "speed is 2; it has to be one of 1, 10, 100"},
        {R"({"speed":-10})", "one of 1, 10, 100"},
        {R"({"speed":")" + std::string(1000, 'x') + R"("})", "xxx...; it has"}};
    for (const auto& [sBody, pText] : cases) {
        const HttpResponse response = ask("/api/replay", sBody);
        EXPECT_EQ(response.nStatus, 400U) << sBody.substr(0, 50);
        EXPECT_THAT(response.sBody, HasSubstr(pText));
        EXPECT_EQ(std::count(response.sBody.begin(), response.sBody.end(), '\n'), 1);
    }
    EXPECT_EQ(m_replay.now.nPositionUs, 5000U);
    EXPECT_FALSE(m_replay.now.bPaused);
}

TEST_F(LivePageReplayTest, SaysWhenTheRecordingIsGone)
{
    const HttpResponse response = ask("/api/replay", R"({"speed":100})");
    EXPECT_EQ(response.nStatus, 503U);
    EXPECT_EQ(response.sBody, "unit.db: is gone\n") << "without the folder that it is in";
}

TEST_F(LivePageReplayTest, StreamsWhatIsPlayedNow)
{
    const HttpResponse before = ask("/api/stream");
    EXPECT_THAT(before.pStream->next().value(), HasSubstr("first"));
    m_replay.shown = {"second", std::make_shared<RunFeed>(10, 10)};
    EXPECT_THAT(ask("/api/stream").pStream->next().value(), HasSubstr("second"));
    EXPECT_EQ(before.pStream->next(), "") << "of a feed that nobody else has any more";
}

TEST_F(LivePageReplayTest, IsChangedByTheSameClientsAsAUnitIs)
{
    const AccessPolicy policy("127.0.0.1", 8080, "0123456789abcdef");
    const Headers well = {
        {"Host", "localhost:8080"}, {"Authorization", "Bearer 0123456789abcdef"}, {"Content-Type", "application/json"}};
    const auto refusal = [&](const std::string& sMethod, const Headers& headers) {
        HttpRequest request;
        request.sMethod = sMethod;
        request.sPath = "/api/replay";
        request.headers = headers;
        const auto refused = m_pSite->refuse(request, policy);
        return refused ? refused->nStatus : 200U;
    };
    const auto with = [&](std::size_t nHeader, const std::string& sValue) {
        Headers headers = well;
        headers[nHeader].second = sValue;
        return headers;
    };
    Headers foreign = well;
    foreign.emplace_back("Origin", "http://example.org");
    EXPECT_EQ(refusal("POST", well), 200U);
    EXPECT_EQ(refusal("GET", well), 405U);
    EXPECT_EQ(refusal("POST", foreign), 403U);
    EXPECT_EQ(refusal("POST", with(0, "example.org:8080")), 403U);
    EXPECT_EQ(refusal("POST", with(1, "Bearer wrong")), 401U);
    EXPECT_EQ(refusal("POST", with(2, "text/plain")), 415U);
    EXPECT_EQ(refusal("POST", with(2, "application/json; charset=utf-8")), 200U);
}
