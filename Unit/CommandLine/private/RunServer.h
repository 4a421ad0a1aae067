/** @file
 * The test interface of a run.
 */
#pragma once

#include "Unit/CommandLine/StatusDisplay.h"
#include "Unit/Process/UnitConfiguration.h"
#include "Unit/TestServer/TestServer.h"

#include <memory>

/** @return the server, listening; null when it is not wanted. @throws ConfigurationError */
std::unique_ptr<TestServer> openTestServer(const TestInterfaceConfiguration& configuration);

/** Serves a unit while it stands, and says where. */
class Serving
{
public:
    /** @param pServer null for none; it and the loop must outlive this object */
    Serving(TestServer* pServer, RegulationLoop& loop, StatusDisplay& display);
    ~Serving();

    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

private:
    TestServer* m_pServer;
};
