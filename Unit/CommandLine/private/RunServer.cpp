#include "Unit/CommandLine/private/RunServer.h"

#include <fmt/format.h>

#include <cstdio>

std::unique_ptr<TestServer> openTestServer(const TestInterfaceConfiguration& configuration)
{
    if (!configuration.bEnabled) {
        return nullptr;
    }
    auto pServer = std::make_unique<TestServer>(configuration);
    if (!pServer->demandsToken() && !isLoopback(configuration.sAddress)) {
        fmt::print(stderr,
                   "opc run: warning: everyone who reaches {} can switch the transmitters; give [test_interface] a "
                   "token_file, or the address 127.0.0.1\n",
                   pServer->url());
    }
    return pServer;
}

std::string serverNotice(const TestServer* pServer)
{
    return pServer == nullptr ? std::string()
                              : fmt::format("test interface: {}{}", pServer->url(), TEST_INTERFACE_PATH);
}

Serving::Serving(TestServer* pServer, RegulationLoop& loop) : m_pServer(pServer)
{
    if (m_pServer != nullptr) {
        m_pServer->serve(loop);
    }
}

Serving::~Serving()
{
    if (m_pServer != nullptr) {
        m_pServer->stop();
    }
}
