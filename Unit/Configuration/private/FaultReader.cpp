#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Configuration/private/ConfigurationReaders.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
EHandlerOperation readOperation(const TomlTable& table)
{
    const std::string sOperation = table.requiredText("operation");
    const auto eOperation = handlerOperationByName(sOperation);
    if (!eOperation) {
        std::vector<std::string> names;
        names.reserve(static_cast<std::size_t>(EHandlerOperation::Count));
        for (int nOperation = 0; nOperation < static_cast<int>(EHandlerOperation::Count); ++nOperation) {
            names.emplace_back(handlerOperationName(static_cast<EHandlerOperation>(nOperation)));
        }
        table.failValue("operation", fmt::format("one of {}", fmt::join(names, ", ")));
    }
    return *eOperation;
}

EHandlerFault readKind(const TomlTable& table)
{
    const auto eKind = handlerFaultByName(table.requiredText("kind"));
    if (!eKind) {
        table.failValue("kind", "one of none, fail, fail-times, stuck, wrong-value, slow, intermittent");
    }
    return *eKind;
}
} // namespace

std::vector<std::string> faultKeyNames()
{
    return {"operation", "kind", "times", "value", "delay_us", "probability", "at_s", "for_s"};
}

FaultConfiguration readFaultKeys(const TomlTable& table)
{
    FaultConfiguration configuration;
    configuration.eOperation = readOperation(table);
    HandlerFault& fault = configuration.fault;
    fault.eKind = readKind(table);
    fault.nTimes = static_cast<unsigned int>(table.integer("times", 1, MAX_INT32).value_or(fault.nTimes));
    fault.nValue = static_cast<std::int32_t>(table.integer("value", MIN_INT32, MAX_INT32).value_or(fault.nValue));
    fault.delayUs = static_cast<unsigned int>(table.integer("delay_us", 0, MAX_FAULT_DELAY_US).value_or(fault.delayUs));
    fault.probability = table.number("probability", 0.0, 1.0).value_or(fault.probability);
    configuration.atSeconds = table.number("at_s", 0.0, LONGEST_RUN_SECONDS).value_or(0.0);
    configuration.forSeconds = table.number("for_s", 0.0, LONGEST_RUN_SECONDS);
    return configuration;
}

void readFaults(const TomlTable& root, UnitConfiguration& configuration)
{
    std::vector<std::string> keys = faultKeyNames();
    keys.insert(keys.begin(), "channel");
    for (const TomlTable& table : root.tables("fault")) {
        table.allowOnly(keys);
        const auto nChannel = static_cast<unsigned int>(table.requiredInteger("channel", 0, MAX_INT32));
        FaultConfiguration fault = readFaultKeys(table);
        fault.nChannel = nChannel;
        const bool bListed =
            std::any_of(configuration.channels.begin(), configuration.channels.end(),
                        [nChannel](const ChannelConfiguration& channel) { return channel.nNumber == nChannel; });
        if (!bListed) {
            table.fail("channel", fmt::format("[[fault]] is for channel {}, which the file does not list; use the "
                                              "number of a [[channel]]",
                                              nChannel));
        }
        configuration.faults.push_back(fault);
    }
}
