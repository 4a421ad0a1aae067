#include "Unit/TestServer/TestServer.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/TestServer/private/RefusalTrace.h"
#include "Unit/TestServer/private/UnitMethods.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
constexpr std::size_t SHORTEST_TOKEN = 16;
constexpr unsigned int NOT_FOUND = 404;
constexpr unsigned int UNAVAILABLE = 503;

bool isTokenCharacter(char c)
{
    return c > ' ' && c <= '~';
}

std::string readToken(const TestInterfaceConfiguration& configuration)
{
    if (configuration.sTokenFile.empty()) {
        return {};
    }
    std::string sToken = readFileText(configuration.sTokenFile);
    sToken.erase(std::find_if(sToken.begin(), sToken.end(), [](char c) { return c == '\n' || c == '\r'; }),
                 sToken.end());
    if (sToken.size() < SHORTEST_TOKEN || !std::all_of(sToken.begin(), sToken.end(), isTokenCharacter)) {
        throw ConfigurationError(fmt::format("{}: its first line is the token that clients send; it must have at least "
                                             "{} characters, none of them a blank",
                                             configuration.sTokenFile, SHORTEST_TOKEN));
    }
    return sToken;
}

HttpServerSettings httpSettings(const TestInterfaceConfiguration& configuration)
{
    HttpServerSettings settings;
    settings.sAddress = configuration.sAddress;
    settings.nPort = configuration.nPort;
    return settings;
}

} // namespace

TestServer::TestServer(const TestInterfaceConfiguration& configuration)
    : m_sAddress(configuration.sAddress), m_sToken(readToken(configuration)),
      m_pTrace(std::make_unique<RefusalTrace>()), m_http(httpSettings(configuration), *this)
{}

TestServer::~TestServer()
{
    stop();
}

void TestServer::serve(RegulationLoop& loop)
{
    m_pPolicy = std::make_unique<const AccessPolicy>(m_sAddress, m_http.port(), m_sToken);
    m_pService = std::make_unique<XmlRpcService>(unitMethods(loop));
    m_bServing = true;
}

void TestServer::stop()
{
    m_http.stop();
}

std::string TestServer::url() const
{
    const bool bIpv6 = m_sAddress.find(':') != std::string::npos;
    return fmt::format("http://{}:{}", bIpv6 ? "[" + m_sAddress + "]" : m_sAddress, m_http.port());
}

std::optional<HttpResponse> TestServer::refuse(const HttpRequest& head)
{
    std::optional<HttpResponse> response = judge(head);
    if (response) {
        const std::string sReason = response->sBody.substr(0, response->sBody.find('\n'));
        m_pTrace->write(fmt::format("{} {} {} refused: {} {}", head.sClientAddress, head.sMethod, head.sPath,
                                    response->nStatus, sReason));
    }
    return response;
}

std::optional<HttpResponse> TestServer::judge(const HttpRequest& head) const
{
    if (head.sPath != TEST_INTERFACE_PATH) {
        return httpRefusal(NOT_FOUND, fmt::format("nothing is here; the test interface is at {}", TEST_INTERFACE_PATH));
    }
    if (!m_bServing) {
        return httpRefusal(UNAVAILABLE, "the unit is starting; try again");
    }
    return m_pPolicy->refuseXmlPost(head);
}

HttpResponse TestServer::answer(const HttpRequest& request)
{
    HttpResponse response;
    response.sContentType = "text/xml; charset=utf-8";
    response.sBody = m_pService->answer(request.sBody, [this, &request](const std::string& sWhy) {
        m_pTrace->write(
            fmt::format("{} {} {} refused: {}", request.sClientAddress, request.sMethod, request.sPath, sWhy));
    });
    return response;
}

void TestServer::onTurnedAway(const std::string& sClientAddress, const std::string& sWhat)
{
    m_pTrace->write(fmt::format("{} turned away: {}", sClientAddress, sWhat));
}
