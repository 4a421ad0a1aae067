#include "Unit/Http/HttpServer.h"
#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace
{

HttpServerSettings withDeadline(milliseconds deadline)
{
    HttpServerSettings settings = testSettings();
    settings.limits.deadline = deadline;
    return settings;
}
} // namespace

TEST(HttpLimits, TurnAwayConnectionsBeyondTheirNumberAtOnce)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.nMaxConnections = 20;
    settings.limits.nMaxConnectionsPerAddress = 1000;
    HttpServer server(settings, handler);
    std::vector<HttpClient> clients;
    clients.reserve(200);
    int nAnswered = 0;
    int nEnded = 0;
    for (int n = 0; n < 200; ++n) {
        HttpClient& client = clients.emplace_back(server.port());
        (client.ask(post("x")).nStatus == 200 ? nAnswered : nEnded) += 1;
    }
    EXPECT_EQ(nAnswered, 20);
    EXPECT_EQ(nEnded, 180);
    EXPECT_TRUE(handler.wasTold("127.0.0.1: connection refused: all 20 are taken"));
    EXPECT_EQ(handler.told().size(), 180U);

    EXPECT_EQ(clients.front().ask(post("still served")).nStatus, 200);
    clients.clear();
    int nStatus = 0;
    for (int n = 0; n < 1000 && nStatus != 200; ++n) { // the server sees their ends a little later
        nStatus = HttpClient(server.port()).ask(post("x")).nStatus;
    }
    EXPECT_EQ(nStatus, 200);
}

TEST(HttpLimits, ServeSomeOfManyClientsThatComeTogether)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    std::atomic<int> nAnswered{0};
    std::vector<std::jthread> threads;
    threads.reserve(200);
    for (int n = 0; n < 200; ++n) {
        threads.emplace_back([&] {
            HttpClient client(server.port());
            nAnswered += client.ask(post("x")).nStatus == 200 ? 1 : 0;
        });
    }
    threads.clear();
    EXPECT_GE(nAnswered, 48);
    EXPECT_EQ(HttpClient(server.port()).ask(post("after")).sBody, "after");
}

TEST(HttpLimits, TurnAwayConnectionsBeyondTheNumberOfAnAddress)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.nMaxConnectionsPerAddress = 2;
    HttpServer server(settings, handler);
    HttpClient first(server.port());
    HttpClient second(server.port());
    HttpClient third(server.port());
    EXPECT_EQ(first.ask(post("x")).nStatus, 200);
    EXPECT_EQ(second.ask(post("x")).nStatus, 200);
    EXPECT_EQ(third.ask(post("x")).nStatus, 0);
    EXPECT_TRUE(handler.wasTold("127.0.0.1: connection refused: this address has 2 already"));
}

TEST(HttpLimits, EndAClientThatSendsNothing)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = seconds(1);
    HttpServer server(settings, handler);
    const HttpClient silent(server.port());
    const HttpClient halfway(server.port());
    halfway.send("POST /RPC2 HTTP/1.1\r\nHost: he");
    EXPECT_TRUE(silent.isEndedWithin(PATIENCE));
    EXPECT_TRUE(halfway.isEndedWithin(PATIENCE));
    EXPECT_TRUE(handler.wasTold("127.0.0.1: connection closed: silent for 1 s"));
}

TEST(HttpLimits, EndAnIdleConnectionWithoutAWord)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = seconds(1);
    HttpServer server(settings, handler);
    HttpClient client(server.port());
    ASSERT_EQ(client.ask(post("x")).nStatus, 200);
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
    EXPECT_TRUE(handler.told().empty());
}

TEST(HttpLimits, DoNotTakeASlowHandlerForASilentClient)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) {
        std::this_thread::sleep_for(milliseconds(1500));
        return okResponse("late");
    };
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = seconds(1);
    HttpServer server(settings, handler);
    EXPECT_EQ(HttpClient(server.port()).ask(post("x")).sBody, "late");
}

TEST(HttpLimits, EndAClientThatTricklesWhileOthersAreServed)
{
    TestHandler handler;
    HttpServer server(withDeadline(milliseconds(1000)), handler);
    std::jthread trickler([&server](const std::stop_token& stop) {
        const HttpClient client(server.port());
        const std::string sRequest = post(std::string(100000, 'x'));
        for (std::size_t n = 0; !stop.stop_requested() && client.send(sRequest.substr(n, 1)); ++n) {
            std::this_thread::sleep_for(milliseconds(5));
        }
    });
    HttpClient fast(server.port());
    const auto end = std::chrono::steady_clock::now() + milliseconds(1500);
    while (std::chrono::steady_clock::now() < end) { // longer than the deadline: it counts from answer to answer
        ASSERT_EQ(fast.ask(post("fast")).sBody, "fast");
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_TRUE(handler.wasTold("127.0.0.1: connection closed: no answer finished within 1000 ms"));
    EXPECT_EQ(handler.told().size(), 1U);
}

TEST(HttpLimits, EndAClientThatDoesNotReadItsAnswer)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest& request) {
        return okResponse(request.sBody == "large" ? std::string(std::size_t{32} * 1024 * 1024, 'x') : "small");
    };
    HttpServer server(withDeadline(milliseconds(500)), handler);
    const HttpClient client(server.port(), 4096);
    client.send(post("large"));
    EXPECT_TRUE(handler.wasTold("no answer finished within 500 ms"));
    EXPECT_EQ(HttpClient(server.port()).ask(post("x")).sBody, "small");
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
}

TEST(HttpLimits, EndAClientThatStopsReadingItsAnswerForItsSilence)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) { return okResponse(std::string(std::size_t{32} * 1024 * 1024, 'x')); };
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = seconds(1);
    HttpServer server(settings, handler);
    const HttpClient client(server.port(), 4096);
    client.send(post("large"));
    EXPECT_TRUE(handler.wasTold("silent for 1 s"));
}
