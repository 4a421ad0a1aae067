/** @file
 * The unit's test interface: XML-RPC over HTTP.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Http/AccessPolicy.h"
#include "Unit/Http/HttpServer.h"
#include "Unit/TestServer/XmlRpcService.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

class RefusalTrace;
class RegulationLoop;

/** Path of the test interface. */
inline constexpr const char* TEST_INTERFACE_PATH = "/RPC2";

/** Serves the methods of the unit and of its modules over HTTP. */
class TestServer final : public IHttpHandler
{
public:
    /**
     * Listens; answers with 503 until there is something to serve.
     * @throws ConfigurationError when the token file is of no use, or when it cannot listen
     */
    explicit TestServer(const TestInterfaceConfiguration& configuration);

    /** Stops as stop() does. */
    ~TestServer() override;

    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    /** Serves from now on. @param loop must outlive the stop */
    void serve(RegulationLoop& loop);

    /** Lets answers under way go out, then closes everything; no method runs afterwards. */
    void stop();

    /** @return what people type to reach the unit, such as "http://127.0.0.1:8080" */
    std::string url() const;

    /** @return whether clients have to send a token */
    bool demandsToken() const { return !m_sToken.empty(); }

    std::optional<HttpResponse> refuse(const HttpRequest& head) override;
    HttpResponse answer(const HttpRequest& request) override;
    void onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) override;

private:
    std::optional<HttpResponse> judge(const HttpRequest& head) const;

    std::string m_sAddress;
    std::string m_sToken;
    std::unique_ptr<RefusalTrace> m_pTrace;
    std::unique_ptr<const AccessPolicy> m_pPolicy;
    std::unique_ptr<XmlRpcService> m_pService;
    std::atomic<bool> m_bServing{false}; // the two above are there to be read
    HttpServer m_http;                   // last, since its threads use the others
};
