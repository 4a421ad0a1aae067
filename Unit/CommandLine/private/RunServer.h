/** @file
 * The test interface of a run.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/TestServer/TestServer.h"

#include <memory>
#include <string>

/** @return the server, listening; null when it is not wanted. @throws ConfigurationError */
std::unique_ptr<TestServer> openTestServer(const TestInterfaceConfiguration& configuration);

/** @return what to tell people about the server; empty without one */
std::string serverNotice(const TestServer* pServer);

/** Serves a unit while it stands. */
class Serving
{
public:
    /** @param pServer null for none; it and the loop must outlive this object */
    Serving(TestServer* pServer, RegulationLoop& loop);
    ~Serving();

    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

private:
    TestServer* m_pServer;
};
