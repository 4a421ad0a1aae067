#include "Unit/Http/HttpServer.h"
#include "tests/support/BrokenRule.h"
#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <gtest/gtest.h>

#include <thread>

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace
{

// Far beyond what a stop may take, far below what the limits of a connection would allow.
constexpr seconds BOUND{5};

milliseconds stopTime(HttpServer& server, milliseconds grace)
{
    const auto begin = std::chrono::steady_clock::now();
    server.stop(grace);
    return std::chrono::ceil<milliseconds>(std::chrono::steady_clock::now() - begin);
}
} // namespace

TEST(HttpStop, LetsAnAnswerUnderWayGoOut)
{
    TestHandler handler;
    Gate gate;
    handler.onAnswer = [&gate](const HttpRequest& request) {
        gate.wait();
        return okResponse(request.sBody);
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    client.send(post("last"));
    ASSERT_TRUE(handler.hasBegun(1));
    std::jthread opener([&gate] {
        std::this_thread::sleep_for(milliseconds(200));
        gate.open();
    });

    EXPECT_LT(stopTime(server, PATIENCE), BOUND) << "it ends with the answer, not with the grace";

    EXPECT_EQ(client.receive().sBody, "last");
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
}

TEST(HttpStop, EndsSilentClientsAtOnce)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    std::vector<HttpClient> clients;
    for (const std::string& sText : {std::string(), std::string("POST /RPC2 HT"), post("whole").substr(0, 60),
                                     std::string("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 9\r\n\r\nhalf")})
    {
        clients.emplace_back(server.port()).send(sText);
    }
    clients.emplace_back(server.port()).ask(post("kept"));

    EXPECT_LT(stopTime(server, PATIENCE), BOUND);

    for (const HttpClient& client : clients) {
        EXPECT_TRUE(client.isEndedWithin(PATIENCE));
    }
}

TEST(HttpStop, WaitsForAClientThatDoesNotReadForTheGraceOnly)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) { return okResponse(std::string(std::size_t{32} * 1024 * 1024, 'x')); };
    HttpServer server(testSettings(), handler);
    const HttpClient client(server.port(), 4096);
    client.send(post("large"));
    ASSERT_TRUE(handler.hasBegun(1));

    const milliseconds time = stopTime(server, milliseconds(300));

    EXPECT_GE(time, milliseconds(290));
    EXPECT_LT(time, BOUND);
}

TEST(HttpStop, EndsBusyClientsInTheMiddleOfTheirRequests)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    std::vector<std::jthread> threads;
    threads.reserve(8);
    for (int n = 0; n < 8; ++n) {
        threads.emplace_back([&server] {
            const std::uint16_t nPort = server.port();
            HttpClient client(nPort);
            while (client.ask(post("again")).nStatus == 200) {
            }
        });
    }
    ASSERT_TRUE(handler.hasBegun(100));
    EXPECT_LT(stopTime(server, PATIENCE), BOUND);
}

TEST(HttpStop, TakesNoConnectionsAfterwards)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    server.stop();
    EXPECT_FALSE(HttpClient(server.port()).isConnected());
}

TEST(HttpStop, IsHarmlessWhenRepeated)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    server.stop();
    server.stop();
    EXPECT_NE(server.port(), 0);
}

TEST(HttpStop, FollowsAStartAtOnce)
{
    TestHandler handler;
    for (int n = 0; n < 50; ++n) {
        HttpServer server(testSettings(), handler);
        const HttpClient client(server.port());
        client.send(post("x"));
    }
}

TEST(HttpStop, IsNotForAConnectionsThreadWhichItWouldWaitFor)
{
    EXPECT_BROKEN_RULE(
        {
            TestHandler handler;
            HttpServer* pServer = nullptr;
            handler.onAnswer = [&pServer](const HttpRequest& request) {
                pServer->stop();
                return okResponse(request.sBody);
            };
            HttpServer server(testSettings(), handler);
            pServer = &server;
            HttpClient client(server.port());
            client.ask(post("stop"));
        },
        "HttpServer::stop");
}
