#include "Unit/Http/HttpServer.h"

#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

using testing::IsEmpty;

TEST(HttpServer, AnswersARequestWithTheUsualHeaders)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());

    const Answer answer = client.ask(post("hello"));

    EXPECT_EQ(answer.nStatus, 200);
    EXPECT_EQ(answer.sBody, "hello");
    EXPECT_EQ(answer.headers.at("content-type"), "text/plain; charset=utf-8");
    EXPECT_EQ(answer.headers.at("x-content-type-options"), "nosniff");
    EXPECT_EQ(answer.headers.at("cache-control"), "no-store");
    EXPECT_EQ(answer.headers.at("cross-origin-resource-policy"), "same-origin");
    EXPECT_EQ(answer.headers.at("content-security-policy"), "default-src 'none'; frame-ancestors 'none'");
    EXPECT_THAT(handler.told(), IsEmpty());
}

TEST(HttpServer, LetsGoOfWhatABodyKeepsOnceItIsOut)
{
    TestHandler handler;
    const auto pKept = std::make_shared<int>();
    handler.onAnswer = [&pKept](const HttpRequest&) {
        HttpResponse response = okResponse("kept");
        response.pKept = pKept;
        return response;
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    EXPECT_EQ(client.ask(post("")).sBody, "kept");
    server.stop();
    EXPECT_EQ(pKept.use_count(), 1);
}

TEST(HttpServer, GivesNobodyAPathWithANul)
{
    TestHandler handler;
    std::string sPath;
    handler.onAnswer = [&sPath](const HttpRequest& request) {
        sPath = request.sPath;
        return okResponse("");
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    client.ask("GET /RPC2%00.js?a=%00 HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(sPath, "%00");
    client.ask("GET /RPC2?a=%00 HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(sPath, "/RPC2");
}

TEST(HttpServer, SendsStatusTypeAndHeadersOfTheHandler)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) {
        return HttpResponse{404, "text/html", "nothing", {{"X-Own", "1"}, {"Cache-Control", "max-age=60"}}};
    };
    HttpServer server(testSettings(), handler);

    const Answer answer = HttpClient(server.port()).ask(post(""));

    EXPECT_EQ(answer.nStatus, 404);
    EXPECT_EQ(answer.sBody, "nothing");
    EXPECT_EQ(answer.headers.at("content-type"), "text/html");
    EXPECT_EQ(answer.headers.at("x-own"), "1");
    EXPECT_EQ(answer.headers.at("cache-control"), "max-age=60");
}

TEST(HttpServer, GivesTheHandlerTheWholeRequest)
{
    TestHandler handler;
    HttpRequest seen;
    handler.onAnswer = [&seen](const HttpRequest& request) {
        seen = request;
        return okResponse("");
    };
    HttpServer server(testSettings(), handler);

    HttpClient(server.port())
        .ask("PUT /a%20b?c=d HTTP/1.1\r\nHost: here\r\nX-Mixed-Case: v\r\nContent-Length: 3\r\n\r\nxyz");

    EXPECT_EQ(seen.sMethod, "PUT");
    EXPECT_EQ(seen.sPath, "/a b");
    EXPECT_EQ(seen.sBody, "xyz");
    EXPECT_EQ(seen.sClientAddress, "127.0.0.1");
    EXPECT_EQ(seen.header("x-mixed-CASE"), "v");
    EXPECT_EQ(seen.header("missing"), std::nullopt);
}

TEST(HttpServer, KeepsAConnectionForFurtherRequests)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    for (int n = 0; n < 100; ++n) {
        const std::string sBody = std::to_string(n);
        ASSERT_EQ(client.ask(n % 2 == 0 ? post(sBody) : postChunked(sBody)).sBody, sBody);
    }
}

TEST(HttpServer, AnswersRequestsSentAheadInTheirOrder)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    client.send(post("one") + post("two") + postChunked("three"));
    EXPECT_EQ(client.receive().sBody, "one");
    EXPECT_EQ(client.receive().sBody, "two");
    EXPECT_EQ(client.receive().sBody, "three");
}

TEST(HttpServer, ClosesWhenTheClientWantsItAndForHttp10)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    for (const char* pRequest : {"GET / HTTP/1.1\r\nHost: here\r\nConnection: close\r\n\r\n", "GET / HTTP/1.0\r\n\r\n"})
    {
        HttpClient client(server.port());
        EXPECT_EQ(client.ask(pRequest).nStatus, 200) << pRequest;
        EXPECT_TRUE(client.isEndedWithin(std::chrono::seconds(10))) << pRequest;
    }
}

TEST(HttpServer, LetsAClientThatExpectsToContinueSendItsBody)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    EXPECT_EQ(client.ask("POST / HTTP/1.1\r\nHost: here\r\nExpect: 100-continue\r\nContent-Length: 4\r\n\r\n").nStatus,
              100);
    EXPECT_EQ(client.ask("body").sBody, "body");
}

TEST(HttpServer, SendsLargeAnswersWhole)
{
    TestHandler handler;
    std::string sLarge(std::size_t{4} * 1024 * 1024, 'x');
    handler.onAnswer = [&sLarge](const HttpRequest&) { return okResponse(sLarge); };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    for (int n = 0; n < 3; ++n) {
        EXPECT_EQ(client.ask(post("")).sBody.size(), sLarge.size());
    }
}

TEST(HttpServer, MakesAnExceptionAnAnswerWithStatus500)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest& request) -> HttpResponse {
        if (request.sBody == "odd") {
            throw 1; // NOLINT(hicpp-exception-baseclass): what a library's callback might do
        }
        throw std::runtime_error("the reason");
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    for (const char* pBody : {"even", "odd"}) {
        const Answer answer = client.ask(post(pBody));
        EXPECT_EQ(answer.nStatus, 500);
        EXPECT_EQ(answer.sBody.find("the reason"), std::string::npos) << "for the log, not for strangers";
        EXPECT_EQ(answer.sBody.back(), '\n');
    }
    EXPECT_TRUE(handler.wasTold("127.0.0.1: POST /RPC2 failed: the reason"));
    EXPECT_TRUE(handler.wasTold("unknown exception"));
}

TEST(HttpServer, MakesAnExceptionWhileJudgingTheHeadAnAnswerWithStatus500)
{
    TestHandler handler;
    handler.onRefuse = [](const HttpRequest&) -> std::optional<HttpResponse> { throw std::runtime_error("judge"); };
    HttpServer server(testSettings(), handler);
    EXPECT_EQ(HttpClient(server.port()).ask(post("x")).nStatus, 500);
    EXPECT_TRUE(handler.wasTold("judge"));
}

TEST(HttpServer, ClosesWhenAResponseCannotBeSent)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) {
        return HttpResponse{200, "text/plain", "", {{"X-Split", "a\r\nX-Injected: b"}}};
    };
    HttpServer server(testSettings(), handler);
    EXPECT_EQ(HttpClient(server.port()).ask(post("x")).nStatus, 0);
    EXPECT_TRUE(handler.wasTold("cannot be sent"));
}

TEST(HttpServer, AnswersFastRequestsBesideASlowOne)
{
    TestHandler handler;
    Gate gate;
    handler.onAnswer = [&gate](const HttpRequest& request) {
        if (request.sBody == "slow") {
            gate.wait();
        }
        return okResponse(request.sBody);
    };
    HttpServer server(testSettings(), handler);
    HttpClient slow(server.port());
    slow.send(post("slow"));
    ASSERT_TRUE(handler.hasBegun(1));
    HttpClient fast(server.port());
    for (int n = 0; n < 20; ++n) {
        ASSERT_EQ(fast.ask(post("fast")).sBody, "fast");
    }
    gate.open();
    EXPECT_EQ(slow.receive().sBody, "slow");
}

TEST(HttpServer, AnswersManyClientsAtOnce)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    std::atomic<int> nGood{0};
    std::vector<std::jthread> threads;
    threads.reserve(16);
    for (int nClient = 0; nClient < 16; ++nClient) {
        threads.emplace_back([&, nClient] {
            HttpClient client(server.port());
            for (int n = 0; n < 20; ++n) {
                const std::string sBody = std::to_string(nClient) + "/" + std::to_string(n);
                nGood += client.ask(post(sBody)).sBody == sBody ? 1 : 0;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(nGood, 16 * 20);
}
