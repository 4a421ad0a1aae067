/** @file
 * Loads an XML-RPC server on this machine and prints what came of it as JSON.
 */
#include "benchmarks/test_interface/load/AnswerCheck.h"
#include "benchmarks/test_interface/load/LoadRun.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace
{
std::string readText(const std::string& sPath)
{
    std::ifstream file(sPath);
    std::string sText{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (sText.empty()) {
        throw std::runtime_error(sPath + ": cannot be read, or is empty");
    }
    return sText;
}

nlohmann::json report(const LoadResult& result, unsigned int nConnections)
{
    constexpr double MICROSECONDS = 1e6;
    constexpr double MEDIAN = 0.5;
    constexpr double ONE_IN_HUNDRED = 0.99;
    const auto nRequests = static_cast<double>(result.latenciesNs.size());
    return {{"connections", nConnections},
            {"starved", result.nStarved},
            {"requests", result.latenciesNs.size()},
            {"seconds", result.seconds},
            {"requests_per_s", nRequests / result.seconds},
            {"p50_us", result.latencyUs(MEDIAN)},
            {"p99_us", result.latencyUs(ONE_IN_HUNDRED)},
            {"max_us", result.latencyUs(1.0)},
            {"server_cpu_us", result.serverProcessorSeconds / nRequests * MICROSECONDS},
            {"client_cpu_us", result.ownProcessorSeconds / nRequests * MICROSECONDS},
            {"body_bytes", result.nBodyBytes}};
}

int run(int nArguments, char** ppArguments)
{
    CLI::App app(
        "Loads an XML-RPC server at 127.0.0.1 and prints requests, time, latencies and processor time as JSON");
    LoadTarget target;
    LoadSettings settings;
    std::string sBodyFile;
    std::string sSampleFile;
    app.add_option("--port", target.nPort, "The server's port")->required();
    app.add_option("--pid", settings.server, "The server's process, whose processor time is counted")->required();
    app.add_option("--body", sBodyFile, "File with the body of the request")->required();
    app.add_option("--samples", sSampleFile, "File with the samples to expect; without it, any response but a fault");
    app.add_option("--connections", settings.nConnections, "Connections at once")->capture_default_str();
    app.add_option("--seconds", settings.seconds, "How long")->capture_default_str();
    app.add_option("--warm-up", settings.warmUpSeconds, "Seconds before that")->capture_default_str();
    CLI11_PARSE(app, nArguments, ppArguments);

    target.sBody = readText(sBodyFile);
    target.whyNotRight = whyNotSuccess;
    if (!sSampleFile.empty()) {
        target.whyNotRight = [samples = readSamples(sSampleFile)](const std::string& sBody) {
            return whyNotSamples(sBody, samples);
        };
    }
    std::cout << report(runLoad(target, settings), settings.nConnections).dump() << '\n';
    return 0;
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    try {
        return run(nArguments, ppArguments);
    }
    catch (const std::exception& exception) {
        std::cerr << "load_generator: " << exception.what() << '\n';
        return 1;
    }
}
