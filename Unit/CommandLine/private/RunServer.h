/** @file
 * The test interface, the live page and the metrics of a run.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/LivePage/LivePageSite.h"
#include "Unit/Metrics/MetricsReader.h"
#include "Unit/Metrics/MetricsSite.h"
#include "Unit/TestServer/TestServer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class UnitRecorder;

/** @return the server, listening; null when it is not wanted. @throws ConfigurationError */
std::unique_ptr<TestServer> openTestServer(const TestInterfaceConfiguration& configuration);

/** @return the live page's files: those of a folder, or those built in. @throws ConfigurationError for a wrong folder
 */
PageAssets openPage(const std::string& sWebRoot);

/** @return what to tell people about the server, a line or two; empty without one */
std::string serverNotice(const TestServer* pServer, const PageAssets& assets);

/** What tells a run from all others, for the page and for the recording. */
struct RunIdentity
{
    std::string sRun; /**< eight random bytes, hexadecimal */
    std::int64_t nStartedUnixUs = 0;
};

/** @return the identity of a run that begins now */
RunIdentity newRunIdentity();

/** Serves a unit, its live page and its metrics while it stands. */
class Serving
{
public:
    /** @param pServer, pRecorder null for none; they, the loop and the feed must outlive this object */
    Serving(TestServer* pServer, const RunIdentity& identity, RegulationLoop& loop, RunFeed& feed,
            const PageAssets& assets, const UnitRecorder* pRecorder);
    ~Serving();

    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

private:
    TestServer* m_pServer;
    std::optional<LivePageSite> m_page; // with a server only, as the two below
    std::optional<MetricsReader> m_reader;
    std::optional<MetricsSite> m_metrics;
};
