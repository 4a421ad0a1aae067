#include "Unit/Client/UnitClient.h"

#include "Platform/ConfigurationError.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

using nlohmann::ordered_json;
using testing::HasSubstr;

namespace
{
constexpr int WAIT_MS = 10000;

/** Takes one request on a port of the loopback and sends an answer. */
class OneAnswer
{
public:
    /** @param sReply empty for silence until the client goes */
    explicit OneAnswer(std::string sReply) : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t nSize = sizeof(address);
        EXPECT_EQ(bind(m_fd, reinterpret_cast<sockaddr*>(&address), nSize), 0);
        EXPECT_EQ(listen(m_fd, 1), 0);
        EXPECT_EQ(getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &nSize), 0);
        m_sAddress = fmt::format("http://127.0.0.1:{}", ntohs(address.sin_port));
        m_thread = std::jthread([this, reply = std::move(sReply)] { serve(reply); });
    }

    ~OneAnswer()
    {
        m_thread.join();
        close(m_fd);
    }

    OneAnswer(const OneAnswer&) = delete;
    OneAnswer& operator=(const OneAnswer&) = delete;

    const std::string& address() const { return m_sAddress; }

    /** @return the request, once it has been answered */
    const std::string& request()
    {
        if (m_thread.joinable()) {
            m_thread.join();
        }
        m_thread = std::jthread([] {});
        return m_sRequest;
    }

private:
    bool readSome(int fd)
    {
        pollfd waiting = {fd, POLLIN, 0};
        char block[4096];
        const ssize_t nRead = poll(&waiting, 1, WAIT_MS) == 1 ? read(fd, block, sizeof(block)) : 0;
        m_sRequest.append(block, nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
        return nRead > 0;
    }

    void serve(const std::string& sReply)
    {
        pollfd waiting = {m_fd, POLLIN, 0};
        if (poll(&waiting, 1, WAIT_MS) != 1) {
            return;
        }
        const int fd = accept(m_fd, nullptr, nullptr);
        while (readSome(fd) && (sReply.empty() || m_sRequest.find("</methodCall>") == std::string::npos)) {
        }
        EXPECT_EQ(send(fd, sReply.data(), sReply.size(), MSG_NOSIGNAL), static_cast<ssize_t>(sReply.size()));
        close(fd);
    }

    int m_fd;
    std::string m_sAddress;
    std::string m_sRequest;
    std::jthread m_thread;
};

std::string reply(int nStatus, const std::string& sBody)
{
    return fmt::format("HTTP/1.1 {} X\r\nContent-Length: {}\r\nConnection: close\r\n\r\n{}", nStatus, sBody.size(),
                       sBody);
}

std::string response(const std::string& sInside)
{
    return reply(200, "<?xml version=\"1.0\"?><methodResponse>" + sInside + "</methodResponse>");
}

const std::string OK = "<params><param><value><struct><member><name>StandardResponse</name><value><string>OK</string>"
                       "</value></member></struct></value></param></params>";

UnitClient::Settings settingsFor(const OneAnswer& server)
{
    UnitClient::Settings settings;
    settings.sAddress = server.address();
    return settings;
}
} // namespace

TEST(UnitClient, SendsAMethodCall)
{
    OneAnswer server(response(OK));
    UnitClient::Settings settings = settingsFor(server);
    settings.sToken = "secret";
    const ordered_json answer =
        UnitClient(settings).call("Unit.SetTxPower", {{"RadioChannelID", 3}, {"State", "<on>"}});
    EXPECT_EQ(answer.dump(), "{\"StandardResponse\":\"OK\"}");
    const std::string& sRequest = server.request();
    EXPECT_THAT(sRequest, testing::StartsWith("POST /RPC2 HTTP/1.1\r\n"));
    EXPECT_THAT(sRequest, HasSubstr("\r\nContent-Type: text/xml\r\n"));
    EXPECT_THAT(sRequest, HasSubstr("\r\nAuthorization: Bearer secret\r\n"));
    EXPECT_THAT(sRequest, HasSubstr("<methodName>Unit.SetTxPower</methodName>"));
    EXPECT_THAT(sRequest, HasSubstr("<name>RadioChannelID</name><value><int>3</int></value>"));
    EXPECT_THAT(sRequest, testing::Not(HasSubstr("<on>")));
}

TEST(UnitClient, LeavesOutAnEmptyStruct)
{
    OneAnswer server(response(OK));
    (void)UnitClient(settingsFor(server)).call("Unit.TraceLevels", ordered_json::object());
    EXPECT_THAT(server.request(), testing::Not(HasSubstr("<param>")));
}

TEST(UnitClient, SaysWhyTheUnitRefused)
{
    struct Case
    {
        std::string sReply;
        std::string sText;
    };
    const std::vector<Case> cases = {
        {response("<fault><value><struct><member><name>faultCode</name><value><int>4</int></value></member><member>"
                  "<name>faultString</name><value><string>eTI_E_FAILED, no\nchannel 7</string></value></member>"
                  "</struct></value></fault>"),
         "Unit.Gains was refused: eTI_E_FAILED, no channel 7 (fault 4)"},
        {reply(403, "foreign Host\n"), "refused the request: HTTP status 403, foreign Host"},
        {reply(401, ""), "refused the request: HTTP status 401; give the unit's token with --token-file"},
    };
    for (const Case& refusal : cases) {
        const OneAnswer server(refusal.sReply);
        try {
            (void)UnitClient(settingsFor(server)).call("Unit.Gains", ordered_json::object());
            ADD_FAILURE() << refusal.sText;
        }
        catch (const UnitRefused& error) {
            EXPECT_THAT(error.what(), testing::EndsWith(refusal.sText));
        }
    }
}

TEST(UnitClient, SaysThatThereIsNoUnit)
{
    for (const std::string& sReply : {reply(200, "<html></html>"), reply(200, ""), std::string("garbage\r\n\r\n"),
                                      response("<params><param><value><int>x</int></value></param></params>")})
    {
        const OneAnswer server(sReply);
        try {
            (void)UnitClient(settingsFor(server)).call("Unit.Gains", ordered_json::object());
            ADD_FAILURE() << sReply;
        }
        catch (const UnitUnreachable& error) {
            EXPECT_THAT(error.what(), HasSubstr(server.address() + "/RPC2"));
            EXPECT_THAT(error.what(), HasSubstr("test interface?"));
        }
    }
}

TEST(UnitClient, GivesUpWhenItTakesTooLong)
{
    const OneAnswer server("");
    UnitClient::Settings settings = settingsFor(server);
    settings.answerSeconds = 0.1;
    EXPECT_THROW((void)UnitClient(settings).call("Unit.Gains", ordered_json::object()), UnitUnreachable);
}

TEST(UnitClient, GivesUpWhenItIsToldTo)
{
    const OneAnswer server("");
    UnitClient::Settings settings = settingsFor(server);
    const auto begin = std::chrono::steady_clock::now();
    settings.stopRequested = [begin] {
        return std::chrono::steady_clock::now() > begin + std::chrono::milliseconds(50);
    };
    EXPECT_THROW((void)UnitClient(settings).call("Unit.Gains", ordered_json::object()), UnitCallStopped);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(UnitClient, TakesALargeAnswer)
{
    std::string sElements;
    for (int nElement = 0; nElement < 60'000; ++nElement) {
        sElements += "<value><int>1</int></value>";
    }
    const OneAnswer server(
        response("<params><param><value><array><data>" + sElements + "</data></array></value></param></params>"));
    EXPECT_EQ(UnitClient(settingsFor(server)).call("Unit.Gains", ordered_json::object()).size(), 60'000U);
}

TEST(UnitClient, RefusesAWrongAddress)
{
    UnitClient::Settings settings;
    settings.sAddress = "ftp://127.0.0.1";
    EXPECT_THROW(UnitClient{settings}, ConfigurationError);
}
