#include "Unit/LivePage/LivePageSite.h"

#include "tests/unit/SampleMaker.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>

using nlohmann::json;
using testing::HasSubstr;

namespace
{
using Query = std::vector<std::pair<std::string, std::string>>;

class LivePageSiteTest : public testing::Test
{
protected:
    LivePageSiteTest()
    {
        m_folder.write("assets.txt", "/ index.html\n/assets/main.js main.js\n");
        m_folder.write("index.html", "<p>the page</p>");
        m_folder.write("main.js", "1;");
        PageRun run;
        run.sVersion = "1.2.3";
        run.nStartedUnixUs = 1'600'000'000'000'042;
        run.channels = {10, 11};
        run.intervalMs = [] { return 12U; };
        m_pSite = std::make_unique<LivePageSite>(std::move(run), PageAssets::inFolder(m_folder.path("")), shown());
    }

    HttpResponse get(const std::string& sPath, const Query& query = {}, const Query& headers = {})
    {
        HttpRequest request;
        request.sMethod = "GET";
        request.sPath = sPath;
        request.query = query;
        request.headers = headers;
        return m_pSite->answer(request);
    }

    json answerOf(const std::string& sPath, const Query& query = {})
    {
        const HttpResponse response = get(sPath, query);
        EXPECT_EQ(response.nStatus, 200U);
        EXPECT_EQ(response.sContentType, "application/json");
        return json::parse(response.sBody);
    }

    PageFeed shown() const { return {"0123456789abcdef", m_pFeed}; }

    void fill(std::uint64_t nFrom, std::uint64_t nTo)
    {
        for (std::uint64_t nTimeUs = nFrom; nTimeUs < nTo; ++nTimeUs) {
            m_pFeed->add(std::vector<StepSample>{stepOnTheAir(nTimeUs, 0), stepOnTheAir(nTimeUs, 1)});
        }
    }

    TemporaryFolder m_folder;
    std::shared_ptr<RunFeed> m_pFeed = std::make_shared<RunFeed>(1000, 100);
    std::unique_ptr<LivePageSite> m_pSite;
};
} // namespace

TEST_F(LivePageSiteTest, OwnsThePageItsFilesAndItsData)
{
    for (const char* pPath : {"/", "/assets/main.js", "/assets/other", "/api/unit", "/api/other"}) {
        EXPECT_TRUE(m_pSite->owns(pPath)) << pPath;
    }
    for (const char* pPath : {"/RPC2", "/metrics", "/index.html", "/assets", "/api", ""}) {
        EXPECT_FALSE(m_pSite->owns(pPath)) << pPath;
    }
}

TEST_F(LivePageSiteTest, LetsEverybodyHaveThePageButAsksForTheTokenForItsData)
{
    const AccessPolicy policy("127.0.0.1", 8080, "0123456789abcdef");
    HttpRequest request;
    request.sMethod = "GET";
    request.headers = {{"Host", "localhost:8080"}};
    request.sPath = "/";
    EXPECT_FALSE(m_pSite->refuse(request, policy).has_value());
    request.sPath = "/api/stream";
    EXPECT_EQ(m_pSite->refuse(request, policy)->nStatus, 401U);
}

TEST_F(LivePageSiteTest, ServesThePageWithAPolicyThatKeepsItToItself)
{
    const HttpResponse page = get("/");
    EXPECT_EQ(page.sBody, "<p>the page</p>");
    EXPECT_THAT(page.headers,
                testing::Contains(testing::Pair("Content-Security-Policy", HasSubstr("default-src 'none'"))));
    EXPECT_THAT(page.headers, testing::Contains(testing::Pair("Cache-Control", "no-cache")));
    EXPECT_EQ(get("/assets/main.js").sContentType, "text/javascript; charset=utf-8");
}

TEST_F(LivePageSiteTest, SendsAFileAgainOnlyWhenItHasChanged)
{
    const HttpResponse first = get("/assets/main.js");
    std::string sTag;
    for (const auto& [sName, sValue] : first.headers) {
        sTag = sName == "ETag" ? sValue : sTag;
    }
    const HttpResponse second = get("/assets/main.js", {}, {{"If-None-Match", sTag}});
    EXPECT_EQ(second.nStatus, 304U);
    EXPECT_EQ(second.sBody, "");
    m_folder.write("main.js", "2;");
    EXPECT_EQ(get("/assets/main.js", {}, {{"If-None-Match", sTag}}).sBody, "2;");
}

TEST_F(LivePageSiteTest, RefusesMoreLargeAnswersThanMayBeOnTheirWayOut)
{
    std::vector<HttpResponse> underWay;
    for (int nAnswer = 0; nAnswer < 8; ++nAnswer) {
        underWay.push_back(get("/api/history", {{"from_us", "0"}}));
        EXPECT_EQ(underWay.back().nStatus, 200U);
    }
    EXPECT_EQ(get("/api/events").nStatus, 503U); // after it has waited for five seconds
    underWay.pop_back();
    EXPECT_EQ(get("/api/events").nStatus, 200U);
}

TEST_F(LivePageSiteTest, KnowsNoOtherPaths)
{
    for (const char* pPath : {"/assets/other.js", "/assets/", "/assets/../main.js", "/api/other", "/api/"}) {
        EXPECT_EQ(get(pPath).nStatus, 404U) << pPath;
    }
    LivePageSite empty(PageRun{}, PageAssets(), shown());
    HttpRequest request;
    request.sPath = "/";
    EXPECT_THAT(empty.answer(request).sBody, HasSubstr("built without the page"));
}

TEST_F(LivePageSiteTest, TellsWhatRunItShows)
{
    const json expected = json::parse(R"({"run":"0123456789abcdef","interval_ms":12,"version":"1.2.3",
        "started":"2020-09-13T12:26:40.000042Z","clock_us":0,"demo":true,"replay":null,"recording":null,
        "channels":[{"number":10,"index":0},{"number":11,"index":1}]})");
    EXPECT_EQ(answerOf("/api/unit"), expected);
    fill(5, 8);
    EXPECT_EQ(answerOf("/api/unit")["clock_us"], 7);
}

TEST_F(LivePageSiteTest, TellsHowTheRecordingGoes)
{
    PageRun run;
    run.intervalMs = [] { return 12U; };
    PageRecording recording{"unit.db", false, ""};
    run.recording = [&recording] { return recording; };
    LivePageSite site(run, PageAssets(), shown());
    HttpRequest request;
    request.sPath = "/api/unit";
    EXPECT_EQ(json::parse(site.answer(request).sBody)["recording"],
              json::parse(R"({"file":"unit.db","state":"recording","reason":"","from_us":null})"));
    recording = {"unit.db", true, "the disk is full"};
    EXPECT_EQ(json::parse(site.answer(request).sBody)["recording"],
              json::parse(R"({"file":"unit.db","state":"paused","reason":"the disk is full","from_us":null})"));
}

TEST_F(LivePageSiteTest, TellsOfARecordingWhoseNameIsNoUtf8)
{
    PageRun run;
    run.intervalMs = [] { return 12U; };
    run.recording = [] { return PageRecording{"unit-\xff.db", false, ""}; };
    LivePageSite site(run, PageAssets(), shown());
    HttpRequest request;
    request.sPath = "/api/unit";
    EXPECT_EQ(json::parse(site.answer(request).sBody)["recording"]["file"], "unit-\xef\xbf\xbd.db");
}

TEST_F(LivePageSiteTest, StreamsFromWhereTheClientIs)
{
    fill(0, 4);
    const HttpResponse response = get("/api/stream", {{"run", "0123456789abcdef"}, {"after", "5"}});
    EXPECT_EQ(response.sContentType, "text/event-stream");
    ASSERT_NE(response.pStream, nullptr);
    EXPECT_THAT(response.pStream->next().value(), HasSubstr("event: run"));
    EXPECT_THAT(response.pStream->next().value(), HasSubstr("id: 7\n"));
}

TEST_F(LivePageSiteTest, GivesEverySampleOfAShortHistoryOfOneChannel)
{
    fill(0, 100);
    const json found = answerOf("/api/history", {{"channel", "11"}, {"from_us", "10"}, {"to_us", "13"}});
    EXPECT_EQ(found["source"], "ring");
    ASSERT_EQ(found["channels"].size(), 1U);
    EXPECT_EQ(found["channels"][0]["c"], 11);
    EXPECT_EQ(found["channels"][0]["t_us"], json({10, 11, 12, 13}));
    EXPECT_EQ(answerOf("/api/history", {{"from_us", "98"}})["channels"][0]["c"], 10);
    EXPECT_EQ(answerOf("/api/history", {{"from_us", "100"}})["channels"], json::array());
    EXPECT_EQ(answerOf("/api/history", {{"channel", "99"}})["channels"], json::array());
}

TEST_F(LivePageSiteTest, SumsUpALongHistory)
{
    fill(0, 100);
    const json found = answerOf("/api/history", {{"points", "4"}});
    EXPECT_EQ(found["channels"][0]["n"], json({25, 25, 25, 25}));
    EXPECT_EQ(found["channels"][0]["pctrl_cdb"]["max"], json({1010, 1010, 1010, 1010}));
}

TEST_F(LivePageSiteTest, HasNothingOfTheTimeBeforeTheRun)
{
    fill(0, 10);
    EXPECT_EQ(answerOf("/api/history", {{"from_us", "-20"}, {"to_us", "-10"}})["channels"], json::array());
    EXPECT_EQ(answerOf("/api/history", {{"from_us", "-20"}, {"to_us", "2"}})["channels"][0]["t_us"], json({0, 1, 2}));
    EXPECT_EQ(answerOf("/api/events", {{"from_us", "-20"}, {"to_us", "-10"}})["events"], json::array());
}

TEST_F(LivePageSiteTest, SaysInALineWhenTheRecordingCannotBeRead)
{
    PageRun run;
    run.channels = {10};
    run.intervalMs = [] { return 12U; };
    run.pPast = std::make_shared<RecordedPast>(
        []() -> Recording { throw std::runtime_error("unit.db: is damaged\nand more"); }, "0123456789abcdef");
    fill(0, 1000); // more than is held
    LivePageSite site(run, PageAssets(), shown());
    HttpRequest request;
    for (const char* pPath : {"/api/history", "/api/events"}) {
        request.sPath = pPath;
        RunEvent event;
        for (int nEvent = 0; nEvent < 101; ++nEvent) { // more than are held
            m_pFeed->add(event);
        }
        request.query = {{"limit", "10000"}};
        EXPECT_EQ(site.answer(request).nStatus, 503U) << pPath;
        EXPECT_EQ(site.answer(request).sBody, "unit.db: is damaged\n") << pPath;
    }
    request.sPath = "/api/unit";
    EXPECT_EQ(site.answer(request).nStatus, 200U);
}

TEST_F(LivePageSiteTest, NamesWhatIsWrongWithAQuery)
{
    const std::vector<std::pair<Query, std::string>> cases = {{{{"channel", "x"}}, "channel"},
                                                              {{{"channel", ""}}, "channel"},
                                                              {{{"from_us", "-x"}}, "from_us"},
                                                              {{{"from_us", "1.5"}}, "from_us"},
                                                              {{{"to_us", "99999999999999999999"}}, "to_us"},
                                                              {{{"points", "1e3"}}, "points"},
                                                              {{{"from_us", "5"}, {"to_us", "5"}}, "later"},
                                                              {{{"to_us", "9223372036854775807"}}, "2^62"}};
    for (const auto& [query, sText] : cases) {
        const HttpResponse response = get("/api/history", query);
        EXPECT_EQ(response.nStatus, 400U) << sText;
        EXPECT_THAT(response.sBody, HasSubstr(sText));
    }
    EXPECT_EQ(get("/api/stream", {{"after", "x"}}).nStatus, 400U);
    EXPECT_EQ(get("/api/events", {{"limit", "x"}}).nStatus, 400U);
}

TEST_F(LivePageSiteTest, GivesTheLatestEventsOfARange)
{
    for (std::uint64_t nEvent = 0; nEvent < 10; ++nEvent) {
        RunEvent event;
        event.nTimeUs = nEvent * 10;
        m_pFeed->add(event);
    }
    const auto ids = [this](const Query& query) {
        const json answer = answerOf("/api/events", query);
        json found = json::array();
        for (const json& event : answer["events"]) {
            found.push_back(event["id"]);
        }
        return found;
    };
    EXPECT_EQ(ids({{"from_us", "30"}, {"to_us", "50"}}), json({3, 4, 5}));
    EXPECT_EQ(ids({{"limit", "2"}}), json({8, 9}));
    EXPECT_EQ(ids({{"limit", "0"}}), json::array());
}

TEST_F(LivePageSiteTest, OfARunHasNothingToReplay)
{
    HttpRequest request;
    request.sMethod = "POST";
    request.sPath = "/api/replay";
    request.headers = {{"Host", "localhost:8080"}, {"Content-Type", "application/json"}};
    EXPECT_EQ(m_pSite->refuse(request, AccessPolicy("127.0.0.1", 8080, ""))->nStatus, 405U);
    EXPECT_EQ(get("/api/replay").nStatus, 404U);
}
