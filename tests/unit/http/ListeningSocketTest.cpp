#include "Platform/ConfigurationError.h"
#include "Unit/Http/HttpServer.h"
#include "tests/unit/http/HttpClient.h"
#include "tests/unit/http/TestHandler.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
std::string failureOf(const HttpServerSettings& settings)
{
    TestHandler handler;
    try {
        const HttpServer server(settings, handler);
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
    return "no failure";
}

HttpServerSettings on(const std::string& sAddress, std::uint16_t nPort = 0)
{
    HttpServerSettings settings;
    settings.sAddress = sAddress;
    settings.nPort = nPort;
    return settings;
}

std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}
} // namespace

TEST(ListeningSocket, TellsWhichPortItTook)
{
    TestHandler handler;
    const HttpServer first(testSettings(), handler);
    const HttpServer second(testSettings(), handler);
    EXPECT_NE(first.port(), 0);
    EXPECT_NE(first.port(), second.port());
}

TEST(ListeningSocket, SaysWhatToDoWhenThePortIsTaken)
{
    TestHandler handler;
    const HttpServer server(testSettings(), handler);
    const std::string sPlace = "cannot listen on 127.0.0.1:" + std::to_string(server.port()) + ": ";
    EXPECT_THAT(
        failureOf(on("127.0.0.1", server.port())),
        AllOf(StartsWith(sPlace + "Address already in use"), EndsWith("use another port, or 0 for any that is free")));
}

TEST(ListeningSocket, SaysWhatToDoWhenTheAddressIsNotOurs)
{
    EXPECT_THAT(failureOf(on("192.0.2.1", 80)), AllOf(StartsWith("cannot listen on 192.0.2.1:80: Cannot assign"),
                                                      HasSubstr("use an address of this machine")));
    EXPECT_THAT(failureOf(on("300.1.1.1", 80)), StartsWith("cannot listen on 300.1.1.1:80: "));
    EXPECT_THAT(failureOf(on("fe80::zz", 80)), StartsWith("cannot listen on [fe80::zz]:80: "));
    EXPECT_THAT(failureOf(on("")), HasSubstr("the address is empty"));
}

TEST(ListeningSocket, IsReachedByTheIpv4LoopbackWhenItListensOnLocalhost)
{
    TestHandler handler;
    const HttpServer server(on("localhost"), handler);
    EXPECT_EQ(HttpClient(server.port()).ask(post("x")).nStatus, 200);
}

TEST(ListeningSocket, IsFreeForTheNextServerAtOnce)
{
    TestHandler handler;
    std::uint16_t nPort = 0;
    for (int n = 0; n < 5; ++n) {
        const HttpServer server(on("127.0.0.1", nPort), handler);
        nPort = server.port();
        HttpClient client(nPort);
        ASSERT_EQ(client.ask(post("x")).nStatus, 200);
    }
}

TEST(ListeningSocket, LeavesNoDescriptorOpen)
{
    TestHandler handler;
    const auto nBefore = openDescriptors();
    for (int n = 0; n < 5; ++n) {
        const HttpServer server(testSettings(), handler);
        HttpClient(server.port()).ask(post("x"));
        failureOf(on("127.0.0.1", server.port()));
    }
    EXPECT_EQ(openDescriptors(), nBefore);
}
