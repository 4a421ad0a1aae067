#include "Unit/CommandLine/private/RunServer.h"

#include "Unit/Process/RegulationLoop.h"
#include "Unit/Recorder/UnitRecorder.h"
#include "Unit/Token/TokenFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>

namespace
{
PageRun pageRun(const RunIdentity& identity, const RegulationLoop& loop, const UnitRecorder* pRecorder)
{
    PageRun run;
    run.sVersion = OPC_VERSION;
    run.nStartedUnixUs = identity.nStartedUnixUs;
    run.bSimulated = std::all_of(loop.channels().begin(), loop.channels().end(),
                                 [](const RadioChannel* pChannel) { return pChannel->transmitter() != nullptr; });
    for (const RadioChannel* const pChannel : loop.channels()) {
        run.channels.push_back(pChannel->number());
    }
    run.intervalMs = [&loop] { return loop.intervalMs(); };
    if (pRecorder != nullptr) {
        run.recording = [pRecorder, sFile = std::filesystem::path(pRecorder->path()).filename().string()] {
            const RecorderStatus status = pRecorder->status();
            return PageRecording{sFile, status.bPaused, status.sReason};
        };
        run.pPast = std::make_shared<RecordedPast>(
            [sPath = pRecorder->path()] { return Recording::ofThisProcess(sPath); }, identity.sRun);
    }
    return run;
}
} // namespace

std::unique_ptr<TestServer> openTestServer(const TestInterfaceConfiguration& configuration)
{
    if (!configuration.bEnabled) {
        return nullptr;
    }
    auto pServer = std::make_unique<TestServer>(configuration);
    const std::string sWarning = configuration.sTokenFile.empty() ? "" : tokenFileWarning(configuration.sTokenFile);
    if (!sWarning.empty()) {
        fmt::print(stderr, "opc run: warning: {}\n", sWarning);
    }
    if (!pServer->demandsToken() && !isLoopback(configuration.sAddress)) {
        fmt::print(stderr,
                   "opc run: warning: everyone who reaches {} can switch the transmitters; give [test_interface] a "
                   "token_file, or the address 127.0.0.1\n",
                   pServer->url());
    }
    return pServer;
}

PageAssets openPage(const std::string& sWebRoot)
{
    return sWebRoot.empty() ? PageAssets::embedded() : PageAssets::inFolder(sWebRoot);
}

std::string serverNotice(const TestServer* pServer, const PageAssets& assets)
{
    if (pServer == nullptr) {
        return {};
    }
    const std::string sPage = assets.isEmpty() ? "" : fmt::format("live page: {}/\n", pServer->url());
    return fmt::format("{}test interface: {}{}", sPage, pServer->url(), TEST_INTERFACE_PATH);
}

RunIdentity newRunIdentity()
{
    std::random_device device;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {fmt::format("{:08x}{:08x}", device(), device()),
            std::chrono::duration_cast<std::chrono::microseconds>(now).count()};
}

Serving::Serving(TestServer* pServer, const RunIdentity& identity, RegulationLoop& loop, RunFeed& feed,
                 const PageAssets& assets, const UnitRecorder* pRecorder)
    : m_pServer(pServer)
{
    if (m_pServer == nullptr) {
        return;
    }
    m_reader.emplace(loop, feed, *m_pServer, identity.nStartedUnixUs);
    m_metrics.emplace([this] { return m_reader->read(); });
    // The feed outlives this; the page shares it only with feeds that do not.
    const PageFeed shown{identity.sRun, std::shared_ptr<const RunFeed>(std::shared_ptr<const RunFeed>(), &feed)};
    m_page.emplace(pageRun(identity, loop, pRecorder), assets, shown);
    m_pServer->serve(loop, {&*m_page, &*m_metrics}, [&feed](RunEvent command) { feed.add(std::move(command)); });
}

Serving::~Serving()
{
    if (m_pServer != nullptr) {
        m_pServer->stop();
    }
}
