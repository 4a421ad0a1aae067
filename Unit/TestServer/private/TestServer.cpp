#include "Unit/TestServer/TestServer.h"

#include "Unit/Process/RegulationLoop.h"
#include "Unit/TestServer/UnitMethods.h"
#include "Unit/TestServer/private/CommandEvent.h"
#include "Unit/TestServer/private/RefusalTrace.h"
#include "Unit/Token/TokenFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace
{
constexpr unsigned int NOT_FOUND = 404;
constexpr unsigned int UNAVAILABLE = 503;

std::string readToken(const TestInterfaceConfiguration& configuration)
{
    return configuration.sTokenFile.empty() ? std::string() : readTokenFile(configuration.sTokenFile);
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

void TestServer::serve(RegulationLoop& loop, std::vector<IHttpSite*> sites, CommandListener onCommand)
{
    m_pPolicy = std::make_unique<const AccessPolicy>(m_sAddress, m_http.port(), m_sToken);
    const auto tell = [&loop, onCommand = std::move(onCommand), nLastNumber = std::uint64_t{0}](
                          const Method& method, XMLRPC_REQUEST request, const std::string& sFault) mutable {
        const CommandMoment moment = loop.lastCommand();
        // What fails before it comes to the regulation has changed nothing.
        const bool bReached = std::exchange(nLastNumber, moment.nNumber) != moment.nNumber;
        std::optional<RunEvent> event =
            onCommand && (bReached || sFault.empty()) ? commandEvent(method, request, moment, sFault) : std::nullopt;
        if (event) {
            onCommand(std::move(*event));
        }
    };
    m_pService = std::make_unique<XmlRpcService>(unitMethods(loop), XmlRpcLimits(), tell);
    m_sites = std::move(sites);
    m_bServing = true;
}

void TestServer::serveSites(std::vector<IHttpSite*> sites)
{
    m_pPolicy = std::make_unique<const AccessPolicy>(m_sAddress, m_http.port(), m_sToken);
    m_sites = std::move(sites);
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

ServerTraffic TestServer::traffic() const
{
    ServerTraffic traffic;
    if (m_bServing && m_pService != nullptr) {
        traffic.calls = m_pService->calls();
    }
    traffic.nRefused = m_nRefused.load(std::memory_order_relaxed);
    traffic.connections = m_http.connections();
    return traffic;
}

std::optional<HttpResponse> TestServer::refuse(const HttpRequest& head)
{
    std::optional<HttpResponse> response = judge(head);
    if (response) {
        m_nRefused.fetch_add(1, std::memory_order_relaxed);
        const std::string sReason = response->sBody.substr(0, response->sBody.find('\n'));
        m_pTrace->write(fmt::format("{} {} {} refused: {} {}", head.sClientAddress, head.sMethod, head.sPath,
                                    response->nStatus, sReason));
    }
    return response;
}

std::optional<HttpResponse> TestServer::judge(const HttpRequest& head) const
{
    if (!m_bServing) {
        return httpRefusal(UNAVAILABLE, "the unit is starting; try again");
    }
    if (m_pService != nullptr && head.sPath == TEST_INTERFACE_PATH) {
        return m_pPolicy->refuseXmlPost(head);
    }
    if (const IHttpSite* const pSite = siteOf(head.sPath)) {
        return pSite->refuse(head, *m_pPolicy);
    }
    return httpRefusal(NOT_FOUND, m_pService == nullptr ? std::string("nothing is here; there is no test interface")
                                                        : fmt::format("nothing is here; the test interface is at {}",
                                                                      TEST_INTERFACE_PATH));
}

IHttpSite* TestServer::siteOf(const std::string& sPath) const
{
    const auto site =
        std::find_if(m_sites.begin(), m_sites.end(), [&sPath](const IHttpSite* pSite) { return pSite->owns(sPath); });
    return site == m_sites.end() ? nullptr : *site;
}

HttpResponse TestServer::answer(const HttpRequest& request)
{
    if (m_pService == nullptr || request.sPath != TEST_INTERFACE_PATH) {
        return siteOf(request.sPath)->answer(request);
    }
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
    m_nRefused.fetch_add(1, std::memory_order_relaxed);
    m_pTrace->write(fmt::format("{} turned away: {}", sClientAddress, sWhat));
}
