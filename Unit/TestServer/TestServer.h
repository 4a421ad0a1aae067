/** @file
 * The unit's test interface: XML-RPC over HTTP.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Http/AccessPolicy.h"
#include "Unit/Http/HttpServer.h"
#include "Unit/Http/HttpSite.h"
#include "Unit/Telemetry/RunEvent.h"
#include "Unit/TestServer/XmlRpcService.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class RefusalTrace;
class RegulationLoop;

/** Path of the test interface. */
inline constexpr const char* TEST_INTERFACE_PATH = "/RPC2";

/** What the server had to do so far. */
struct ServerTraffic
{
    std::map<std::string, CallCounts> calls; /**< by method of the test interface */
    std::uint64_t nRefused = 0;              /**< requests that were refused by their head, and what was turned away */
    HttpConnections connections;             /**< at this moment */
};

/** Serves the methods of the unit and of its modules over HTTP. */
class TestServer final : public IHttpHandler
{
public:
    /** Is told of each command that came to the regulation, also when it failed there, in the thread of its client. */
    using CommandListener = std::function<void(RunEvent command)>;

    /**
     * Listens; answers with 503 until there is something to serve.
     * @throws ConfigurationError when the token file is of no use, or when it cannot listen
     */
    explicit TestServer(const TestInterfaceConfiguration& configuration);

    /** Stops as stop() does. */
    ~TestServer() override;

    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    /**
     * Serves from now on.
     * @param loop, sites must outlive the stop
     * @param sites answer what else is served; the first that owns a path has it
     */
    void serve(RegulationLoop& loop, std::vector<IHttpSite*> sites = {}, CommandListener onCommand = nullptr);

    /** Serves sites alone, without the test interface, whose path is told to have nothing. @param sites likewise */
    void serveSites(std::vector<IHttpSite*> sites);

    /** Lets answers under way go out, then closes everything; no method runs afterwards. */
    void stop();

    /** @return what people type to reach the unit, such as "http://127.0.0.1:8080" */
    std::string url() const;

    /** @return what came in since it listens; the calls only while it serves */
    ServerTraffic traffic() const;

    /** @return whether clients have to send a token */
    bool demandsToken() const { return !m_sToken.empty(); }

    std::optional<HttpResponse> refuse(const HttpRequest& head) override;
    HttpResponse answer(const HttpRequest& request) override;
    void onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) override;

private:
    std::optional<HttpResponse> judge(const HttpRequest& head) const;
    IHttpSite* siteOf(const std::string& sPath) const;

    std::string m_sAddress;
    std::string m_sToken;
    std::unique_ptr<RefusalTrace> m_pTrace;
    std::unique_ptr<const AccessPolicy> m_pPolicy;
    std::unique_ptr<XmlRpcService> m_pService; // null where sites are served alone
    std::vector<IHttpSite*> m_sites;
    std::atomic<bool> m_bServing{false}; // the three above are there to be read
    std::atomic<std::uint64_t> m_nRefused{0};
    HttpServer m_http; // last, since its threads use the others
};
