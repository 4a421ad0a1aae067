#include "Unit/Http/HttpServer.h"
#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;

namespace
{
constexpr seconds STOP_BOUND{5};
const std::string GET = "GET /stream?after=12&name=a%20b HTTP/1.1\r\nHost: h\r\n\r\n";

using Next = std::function<std::optional<std::string>()>;

class Stream : public IBodyStream
{
public:
    Stream(Next next, std::atomic<int>& nAlive) : m_next(std::move(next)), m_nAlive(nAlive) { ++m_nAlive; }
    ~Stream() override { --m_nAlive; }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    std::optional<std::string> next() override { return m_next(); }

private:
    Next m_next;
    std::atomic<int>& m_nAlive;
};

std::optional<std::string> nothingYet()
{
    std::this_thread::sleep_for(milliseconds(20));
    return std::string();
}

/** A server whose answers are streams. */
class HttpStream : public testing::Test
{
protected:
    void serve(const std::function<Next()>& makeNext, const HttpServerSettings& settings = testSettings())
    {
        m_handler.onAnswer = [this, makeNext](const HttpRequest& /*request*/) {
            HttpResponse response;
            response.sContentType = "text/event-stream";
            response.pStream = std::make_shared<Stream>(makeNext(), m_nAlive);
            return response;
        };
        m_pServer = std::make_unique<HttpServer>(settings, m_handler);
    }

    bool allStreamsGo() const
    {
        const auto end = std::chrono::steady_clock::now() + PATIENCE;
        while (m_nAlive > 0 && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(milliseconds(5));
        }
        return m_nAlive == 0;
    }

    std::atomic<int> m_nAlive{0};
    TestHandler m_handler;
    std::unique_ptr<HttpServer> m_pServer;
};
} // namespace

TEST_F(HttpStream, SendsEachPartAsItComesAndEndsWithTheStream)
{
    Gate gate;
    serve([&gate] {
        return [&gate, nPart = 0]() mutable -> std::optional<std::string> {
            ++nPart;
            if (nPart == 1) {
                return "first";
            }
            if (nPart == 2) {
                gate.wait();
                return "second";
            }
            return std::nullopt;
        };
    });
    HttpClient client(m_pServer->port());
    client.send(GET);
    std::string sReceived;
    while (sReceived.find("first") == std::string::npos) {
        const std::string sMore = client.receiveSome();
        ASSERT_FALSE(sMore.empty());
        sReceived += sMore;
    }
    EXPECT_THAT(sReceived, HasSubstr("HTTP/1.1 200"));
    EXPECT_THAT(sReceived, HasSubstr("Content-Type: text/event-stream\r\n"));
    EXPECT_THAT(sReceived, HasSubstr("Cache-Control: no-store\r\n"));
    EXPECT_EQ(sReceived.find("second"), std::string::npos);
    const HttpClient another(m_pServer->port());
    for (int nWait = 0; nWait < 1000 && m_pServer->connections().nOpen < 2; ++nWait) {
        std::this_thread::sleep_for(milliseconds(5)); // until the server has seen it
    }
    EXPECT_EQ(m_pServer->connections().nOpen, 2U);
    EXPECT_EQ(m_pServer->connections().nStreams, 1U);
    gate.open();
    for (std::string sMore = client.receiveSome(); !sMore.empty(); sMore = client.receiveSome()) {
        sReceived += sMore;
    }
    EXPECT_THAT(sReceived, HasSubstr("second"));
    EXPECT_THAT(sReceived, testing::EndsWith("0\r\n\r\n"));
    EXPECT_TRUE(allStreamsGo());
}

TEST_F(HttpStream, SendsAPartThatIsLargerThanAnyBufferWhole)
{
    const std::string sPart(1'000'000, 'x');
    serve([&sPart] {
        return [&sPart, bGiven = false]() mutable -> std::optional<std::string> {
            return std::exchange(bGiven, true) ? std::nullopt : std::optional(sPart);
        };
    });
    HttpClient client(m_pServer->port());
    client.send(GET);
    std::size_t nReceived = 0;
    for (std::string sMore = client.receiveSome(); !sMore.empty(); sMore = client.receiveSome()) {
        nReceived += static_cast<std::size_t>(std::count(sMore.begin(), sMore.end(), 'x'));
    }
    EXPECT_EQ(nReceived, sPart.size() + 1) << "one in the head's \"text\"";
}

TEST_F(HttpStream, OutlivesTheDeadlineOfAnAnswerWhileItSends)
{
    HttpServerSettings settings = testSettings();
    settings.limits.deadline = milliseconds(200);
    const auto end = std::chrono::steady_clock::now() + seconds(1);
    serve(
        [end] {
            return [end]() -> std::optional<std::string> {
                std::this_thread::sleep_for(milliseconds(20));
                return std::chrono::steady_clock::now() < end ? std::optional<std::string>(".") : std::nullopt;
            };
        },
        settings);
    HttpClient client(m_pServer->port());
    client.send(GET);
    std::string sReceived;
    for (std::string sMore = client.receiveSome(); !sMore.empty(); sMore = client.receiveSome()) {
        sReceived += sMore;
    }
    EXPECT_THAT(sReceived, testing::EndsWith("0\r\n\r\n"));
    EXPECT_TRUE(m_handler.told().empty());
}

TEST_F(HttpStream, EndsWhenTheClientTakesNothingAnyMore)
{
    HttpServerSettings settings = testSettings();
    settings.limits.inactivity = seconds(1);
    serve([] { return []() -> std::optional<std::string> { return std::string(10'000, 'x'); }; }, settings);
    HttpClient client(m_pServer->port(), 4096);
    client.send(GET);
    EXPECT_TRUE(m_handler.wasTold("silent"));
    EXPECT_TRUE(allStreamsGo());
}

TEST_F(HttpStream, EndsWhenTheClientIsGone)
{
    serve([] { return [] { return std::optional<std::string>("."); }; });
    {
        HttpClient client(m_pServer->port());
        client.send(GET);
        EXPECT_FALSE(client.receiveSome().empty());
        EXPECT_EQ(m_nAlive, 1);
    }
    EXPECT_TRUE(allStreamsGo());
}

TEST_F(HttpStream, EndsAtOnceWhenTheServerStops)
{
    serve([] { return [] { return nothingYet(); }; });
    std::vector<HttpClient> clients;
    for (int nClient = 0; nClient < 3; ++nClient) {
        clients.emplace_back(m_pServer->port()).send(GET);
    }
    ASSERT_TRUE(m_handler.hasBegun(3));
    const auto begin = std::chrono::steady_clock::now();
    m_pServer->stop(PATIENCE);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, STOP_BOUND) << "a stream is no answer to wait for";
    EXPECT_TRUE(allStreamsGo());
}

TEST_F(HttpStream, IsCutOffWhenItThrows)
{
    serve([] {
        return [nPart = 0]() mutable -> std::optional<std::string> {
            if (++nPart == 1) {
                return "first";
            }
            throw std::runtime_error("broken");
        };
    });
    HttpClient client(m_pServer->port());
    client.send(GET);
    std::string sReceived;
    for (std::string sMore = client.receiveSome(); !sMore.empty(); sMore = client.receiveSome()) {
        sReceived += sMore;
    }
    EXPECT_THAT(sReceived, HasSubstr("first"));
    EXPECT_THAT(sReceived, testing::Not(testing::EndsWith("0\r\n\r\n")));
    EXPECT_TRUE(allStreamsGo());
}

TEST_F(HttpStream, IsRefusedBeyondTheirNumberWhileOtherRequestsAreAnswered)
{
    HttpServerSettings settings = testSettings();
    settings.limits.nMaxStreams = 2;
    serve([] { return nothingYet; }, settings);
    std::vector<HttpClient> clients;
    for (int nClient = 0; nClient < 2; ++nClient) {
        clients.emplace_back(m_pServer->port()).send(GET);
        ASSERT_TRUE(m_handler.hasBegun(nClient + 1));
    }
    while (m_pServer->connections().nStreams < 2) {
        std::this_thread::sleep_for(milliseconds(5));
    }
    const Answer refused = HttpClient(m_pServer->port()).ask(GET);
    EXPECT_EQ(refused.nStatus, 503);
    EXPECT_THAT(refused.sBody, HasSubstr("all 2 streams are taken"));
    EXPECT_TRUE(m_handler.wasTold("all 2 streams are taken"));
}

TEST_F(HttpStream, IsRefusedBeyondTheNumberOfAnAddress)
{
    HttpServerSettings settings = testSettings();
    settings.limits.nMaxStreamsPerAddress = 1;
    serve([] { return nothingYet; }, settings);
    const HttpClient client(m_pServer->port());
    client.send(GET);
    while (m_pServer->connections().nStreams < 1) {
        std::this_thread::sleep_for(milliseconds(5));
    }
    const Answer refused = HttpClient(m_pServer->port()).ask(GET);
    EXPECT_EQ(refused.nStatus, 503);
    EXPECT_THAT(refused.sBody, HasSubstr("this address has 1 streams already"));
}

TEST(HttpQuery, IsDecodedAndKeepsItsOrder)
{
    TestHandler handler;
    HttpRequest seen;
    handler.onAnswer = [&seen](const HttpRequest& request) {
        seen = request;
        return okResponse("");
    };
    HttpServer server(testSettings(), handler);
    HttpClient client(server.port());
    client.ask("GET /stream?after=12&name=a%20b&after=13&flag HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(seen.sPath, "/stream");
    EXPECT_EQ(seen.queryValue("after"), "12");
    EXPECT_EQ(seen.queryValue("name"), "a b");
    EXPECT_EQ(seen.queryValue("flag"), "");
    EXPECT_EQ(seen.queryValue("other"), std::nullopt);
    EXPECT_EQ(seen.query.size(), 4U);
}
