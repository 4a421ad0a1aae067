#include "Unit/Http/HttpServer.h"
#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AnyOf;
using testing::HasSubstr;

namespace
{

HttpServerSettings smallBodies()
{
    HttpServerSettings settings = testSettings();
    settings.limits.nMaxBodyBytes = 1000;
    return settings;
}

std::string head(const std::string& sHeaders)
{
    return "POST /RPC2 HTTP/1.1\r\nHost: here\r\n" + sHeaders + "\r\n";
}
} // namespace

TEST(HttpRefusals, RefuseByTheHeadBeforeTheBodyAndClose)
{
    TestHandler handler;
    handler.onRefuse = [](const HttpRequest& request) {
        return std::optional(HttpResponse{403, "text/plain", "no " + request.sMethod + "\n", {{"X-Why", "because"}}});
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());

    const Answer answer = client.ask(head("Content-Length: 1000\r\n"));

    EXPECT_EQ(answer.nStatus, 403);
    EXPECT_EQ(answer.sBody, "no POST\n");
    EXPECT_EQ(answer.headers.at("x-why"), "because");
    EXPECT_EQ(answer.headers.at("connection"), "close");
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
}

TEST(HttpRefusals, ReachAClientThatSendsItsLargeBodyFirst)
{
    TestHandler handler;
    HttpServer server(smallBodies(), handler);
    const std::string sLarge(std::size_t{2} * 1024 * 1024, 'x');
    for (int n = 0; n < 10; ++n) {
        EXPECT_EQ(HttpClient(server.port()).ask(post(sLarge)).nStatus, 413);
        EXPECT_EQ(HttpClient(server.port()).ask(postChunked(sLarge)).nStatus, 413);
    }
    EXPECT_FALSE(handler.told().empty());
}

TEST(HttpRefusals, RefuseABodyByItsAnnouncedLength)
{
    TestHandler handler;
    HttpServer server(smallBodies(), handler);
    EXPECT_EQ(HttpClient(server.port()).ask(post(std::string(1000, 'x'))).nStatus, 200);
    HttpClient client(server.port());

    const Answer answer = client.ask(head("Content-Length: 1001\r\n"));

    EXPECT_EQ(answer.nStatus, 413);
    EXPECT_EQ(answer.sBody, "send a body of at most 1000 bytes\n");
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
    EXPECT_TRUE(handler.wasTold("127.0.0.1: POST /RPC2: send a body of at most 1000 bytes"));
}

TEST(HttpRefusals, RefuseAChunkedBodyAsSoonAsItIsTooLarge)
{
    TestHandler handler;
    HttpServer server(smallBodies(), handler);
    EXPECT_EQ(HttpClient(server.port()).ask(postChunked(std::string(1000, 'x'))).nStatus, 200);
    HttpClient client(server.port());

    // The chunk is not whole and no end follows.
    const Answer answer = client.ask(head("Transfer-Encoding: chunked\r\n") + "1000\r\n" + std::string(1001, 'x'));

    EXPECT_EQ(answer.nStatus, 413);
    EXPECT_EQ(answer.headers.at("connection"), "close");
    EXPECT_EQ(answer.headers.at("x-content-type-options"), "nosniff");
    EXPECT_EQ(answer.sBody, "send a body of at most 1000 bytes\n");
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
    EXPECT_TRUE(handler.wasTold("at most 1000 bytes"));
    EXPECT_EQ(HttpClient(server.port()).ask(post("next")).sBody, "next");
}

TEST(HttpRefusals, RefuseBodiesWhoseEndIsInDoubt)
{
    struct Case
    {
        const char* pHeaders;
        int nStatus;
    };
    const Case cases[] = {
        {"Content-Length: abc\r\n", 400},
        {"Content-Length: -1\r\n", 400},
        {"Content-Length: 1x\r\n", 400},
        {"Content-Length: 0x10\r\n", 400},
        {"Content-Length:\r\n", 400},
        {"Content-Length: 99999999999999999999999999\r\n", 413},
        {"Content-Length: 3\r\nContent-Length: 4\r\n", 400},
        {"Content-Length: 3\r\nTransfer-Encoding: chunked\r\n", 400},
        {"Transfer-Encoding: gzip\r\n", 501},
        {"Transfer-Encoding: gzip, chunked\r\n", 501},
    };
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    for (const Case& test : cases) {
        HttpClient client(server.port());
        EXPECT_EQ(client.ask(head(test.pHeaders)).nStatus, test.nStatus) << test.pHeaders;
        EXPECT_TRUE(client.isEndedWithin(PATIENCE)) << test.pHeaders;
    }
}

TEST(HttpRefusals, RefuseABrokenChunk)
{
    TestHandler handler;
    HttpServer server(testSettings(), handler);
    for (const char* pChunks : {"xyz\r\n", "3\r\nabcdef\r\n0\r\n\r\n", "-1\r\n"}) {
        HttpClient client(server.port());
        const Answer answer = client.ask(head("Transfer-Encoding: chunked\r\n") + pChunks);
        EXPECT_EQ(answer.nStatus, 400) << pChunks;
        EXPECT_TRUE(client.isEndedWithin(PATIENCE)) << pChunks;
    }
    EXPECT_TRUE(handler.wasTold("127.0.0.1: malformed request refused with status 400"));
}

TEST(HttpRefusals, RefuseAHeadThatIsLargerThanTheMemory)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.nConnectionMemory = 4096;
    HttpServer server(settings, handler);
    HttpClient client(server.port());
    EXPECT_EQ(client.ask(head("X-Large: " + std::string(5000, 'x') + "\r\n")).nStatus, 431);
    EXPECT_TRUE(client.isEndedWithin(PATIENCE));
    EXPECT_TRUE(handler.wasTold("127.0.0.1: malformed request refused with status 431"));
}

TEST(HttpRefusals, RefuseWhatIsNoHttp)
{
    TestHandler handler;
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = std::chrono::seconds(1); // what may be empty lines before a request is waited for
    HttpServer server(settings, handler);
    const std::string sZeros("\0\0\0\0\r\n\r\n", 8);
    for (const std::string& sText :
         {std::string("no http at all\r\n\r\n"), sZeros, std::string("GET / HTTP/3.7\r\nHost: here\r\n\r\n"),
          std::string("GET / HTTP/1.1\r\n\r\n")})
    {
        HttpClient client(server.port());
        EXPECT_THAT(client.ask(sText).nStatus, AnyOf(400, 505, 0)) << sText;
        EXPECT_TRUE(client.isEndedWithin(PATIENCE)) << sText;
    }
    EXPECT_EQ(HttpClient(server.port()).ask(post("next")).sBody, "next");
}

TEST(HttpRefusals, LeaveUnknownVerbsToTheHandler)
{
    TestHandler handler;
    handler.onRefuse = [](const HttpRequest& request) {
        return request.sMethod == "POST" ? std::nullopt
                                         : std::optional(HttpResponse{405, "text/plain", "send a POST\n", {}});
    };
    HttpServer server(testSettings(), handler);
    for (const std::string sVerb : {"BREW", "TRACE", "CONNECT", "post"}) {
        HttpClient client(server.port());
        EXPECT_EQ(client.ask(sVerb + " /RPC2 HTTP/1.1\r\nHost: here\r\n\r\n").nStatus, 405) << sVerb;
        EXPECT_TRUE(client.isEndedWithin(PATIENCE)) << sVerb;
    }
}

TEST(HttpRefusals, SurviveClientsThatGoAwayAtAnyPoint)
{
    TestHandler handler;
    handler.onAnswer = [](const HttpRequest&) { return okResponse(std::string(100000, 'x')); };
    HttpServer server(testSettings(), handler);
    const std::string sRequest = post("0123456789");
    for (std::size_t nBytes = 0; nBytes <= sRequest.size(); nBytes += 3) {
        const HttpClient client(server.port());
        EXPECT_TRUE(client.send(sRequest.substr(0, nBytes)));
    }
    EXPECT_EQ(HttpClient(server.port()).ask(post("next")).nStatus, 200);
}
