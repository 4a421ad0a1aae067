#include "Unit/TestServer/TestServer.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Trace/TraceControl.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/TestServer/private/RefusalTrace.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

namespace
{
TestInterfaceConfiguration anyPort()
{
    TestInterfaceConfiguration configuration;
    configuration.nPort = 0;
    return configuration;
}

std::string errorWithToken(const std::string& sContent)
{
    const TemporaryFolder folder;
    TestInterfaceConfiguration configuration = anyPort();
    configuration.sTokenFile = folder.write("token", sContent);
    try {
        const TestServer server(configuration);
        return server.demandsToken() ? "" : "no token";
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
}
} // namespace

TEST(TestServer, SaysWhereItListens)
{
    const TestServer server(anyPort());
    EXPECT_THAT(server.url(), testing::MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+"));
    EXPECT_FALSE(server.demandsToken());
}

TEST(TestServer, AnswersThatTheUnitIsStartingUntilItServes)
{
    TestServer server(anyPort());
    HttpRequest request;
    request.sMethod = "POST";
    request.sPath = "/RPC2";
    EXPECT_EQ(server.refuse(request)->nStatus, 503U);
    request.sPath = "/";
    EXPECT_EQ(server.refuse(request)->nStatus, 503U);
}

TEST(TestServer, GivesAPathToTheFirstSiteThatOwnsIt)
{
    class Site : public IHttpSite
    {
    public:
        explicit Site(std::string sPath) : m_sPath(std::move(sPath)) {}
        bool owns(const std::string& sPath) const override { return sPath.starts_with(m_sPath); }
        std::optional<HttpResponse> refuse(const HttpRequest& head, const AccessPolicy& policy) const override
        {
            return policy.refuseGet(head, EHttpContent::Unit);
        }
        HttpResponse answer(const HttpRequest& request) override
        {
            return {200, "text/plain", m_sPath + request.sPath, {}};
        }

    private:
        std::string m_sPath;
    };
    Site first("/a");
    Site second("/");
    SampleQueue queue(1);
    RegulationLoop loop({}, {}, nullptr, {}, queue);
    TestServer server(anyPort());
    server.serve(loop, {&first, &second});
    HttpRequest request;
    request.sMethod = "GET";
    request.headers = {{"Host", server.url().substr(std::string("http://").size())}};
    for (const auto& [pPath, pAnswer] : {std::pair("/a/b", "/a/a/b"), {"/b", "//b"}}) {
        request.sPath = pPath;
        EXPECT_FALSE(server.refuse(request).has_value()) << pPath;
        EXPECT_EQ(server.answer(request).sBody, pAnswer);
    }
    request.headers.clear();
    EXPECT_EQ(server.refuse(request)->nStatus, 403U);
    request.sPath = "/RPC2";
    EXPECT_EQ(server.refuse(request)->nStatus, 405U) << "the test interface is no site's";
}

TEST(TestServer, TakesTheFirstLineOfTheTokenFile)
{
    EXPECT_EQ(errorWithToken("0123456789abcdef\nmore\n"), "");
    EXPECT_EQ(errorWithToken("0123456789abcdef"), "");
}

TEST(TestServer, RefusesATokenThatIsShortOrHasBlanks)
{
    for (const char* pContent :
         {"", "\n0123456789abcdef", "0123456789abcde", "0123456789 abcdef", "0123456789\xc3\xa4xyz123"})
    {
        EXPECT_THAT(errorWithToken(pContent), testing::HasSubstr("16 to 4096 characters")) << pContent;
    }
}

TEST(TestServer, NamesThePortThatIsInUse)
{
    const TestServer first(anyPort());
    TestInterfaceConfiguration configuration;
    configuration.nPort = static_cast<std::uint16_t>(std::stoi(first.url().substr(first.url().rfind(':') + 1)));
    try {
        const TestServer second(configuration);
        FAIL();
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("127.0.0.1:" + std::to_string(configuration.nPort)));
    }
}

TEST(RefusalTrace, WritesSoManyLinesASecondAndCountsTheOthers)
{
    std::vector<std::string> lines;
    TraceControl::setListener([&lines](const TraceRecord& record) { lines.push_back(record.sText); });
    TraceControl::setStandardErrorEnabled(false);
    RefusalTrace trace;
    for (int nLine = 0; nLine < 25; ++nLine) {
        trace.write("refused " + std::to_string(nLine));
    }
    EXPECT_EQ(lines.size(), std::size_t{RefusalTrace::MAX_LINES_PER_SECOND});
    std::this_thread::sleep_for(std::chrono::milliseconds(1010));
    trace.write("refused again");
    EXPECT_EQ(lines.back(), "refused again (and 15 more before)");
    TraceControl::setStandardErrorEnabled(true);
    TraceControl::setListener({});
}
