#include "Platform/Conversions.h"
#include "Unit/Metrics/UnitMetrics.h"
#include "Unit/Metrics/private/ChannelFamilies.h"

#include <prometheus/text_serializer.h>

#include <utility>

namespace
{
void addSingle(Families& families, const char* pName, const char* pHelp, prometheus::MetricType eType, double value,
               MetricLabels labels = {})
{
    Family family(pName, pHelp, eType);
    family.add(std::move(labels), value);
    families.push_back(family.take());
}

void addCount(Families& families, const char* pName, const char* pHelp, std::uint64_t nValue)
{
    addSingle(families, pName, pHelp, COUNTER, static_cast<double>(nValue));
}

void addUnit(Families& families, const UnitMetrics& metrics)
{
    addSingle(
        families, "opc_build_info", "The program; the value is 1.", GAUGE, 1.0,
        {{"version", metrics.sVersion}, {"compiler", metrics.sCompiler}, {"architecture", metrics.sArchitecture}});
    addSingle(families, "opc_start_time_seconds", "When the run began, since 1970 in UTC.", GAUGE,
              metrics.startSeconds);
    addSingle(families, "opc_step_interval_seconds", "Time between two regulator steps of a channel.", GAUGE,
              metrics.intervalMs / MS_PER_S);
    addCount(families, "opc_overruns_total", "Deadlines that were skipped, since a step came too late for them.",
             metrics.nOverruns);
    Family lateness("opc_lateness_seconds", "How long after its deadline a step of the unit began.",
                    prometheus::MetricType::Histogram);
    lateness.add({}, metrics.latenessTimes);
    families.push_back(lateness.take());
    addCount(families, "opc_commands_total", "Commands of other threads that ran between two steps.",
             metrics.nCommands);
    addSingle(families, "opc_longest_command_seconds", "The longest that a step may have had to wait for a command.",
              GAUGE, metrics.longestCommandSeconds);
    addCount(families, "opc_samples_dropped_total", "Steps' samples that nobody took out of the queue in time.",
             metrics.nDroppedSamples);
    addCount(families, "opc_feed_samples_lost_total", "Samples that readers of the run came too late for.",
             metrics.nLostSamples);
}

void addTraffic(Families& families, const ServerTraffic& traffic)
{
    Family requests("opc_requests_total", "Calls of the test interface's methods.", COUNTER);
    Family faults("opc_request_faults_total", "Calls that ended with a fault, by its code.", COUNTER);
    for (const auto& [sMethod, counts] : traffic.calls) {
        requests.add({{"method", sMethod}}, static_cast<double>(counts.nCalls));
        for (const auto& [nCode, nFaults] : counts.faults) {
            faults.add({{"method", sMethod}, {"code", std::to_string(nCode)}}, static_cast<double>(nFaults));
        }
    }
    families.push_back(requests.take());
    families.push_back(faults.take());
    addCount(families, "opc_http_refused_total", "Requests and connections that the server refused.", traffic.nRefused);
    addSingle(families, "opc_http_connections", "Connections that are open, that of this request included.", GAUGE,
              static_cast<double>(traffic.connections.nOpen));
    addSingle(families, "opc_http_streams", "Connections that a stream goes out on, such as a live page's.", GAUGE,
              static_cast<double>(traffic.connections.nStreams));
}
} // namespace

std::string metricsText(const UnitMetrics& metrics)
{
    Families families;
    addUnit(families, metrics);
    addTraffic(families, metrics.traffic);
    addChannelFamilies(families, metrics.channels);
    return static_cast<const prometheus::Serializer&>(prometheus::TextSerializer()).Serialize(families);
}
