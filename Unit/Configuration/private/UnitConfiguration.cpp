#include "Unit/Configuration/UnitConfiguration.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Unit/Configuration/private/ConfigurationReaders.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

UnitConfiguration loadUnitConfiguration(const std::string& sPath)
{
    const toml::table document = parseToml(readFileText(sPath), sPath);
    UnitConfiguration configuration;
    configuration.sPath = sPath;
    configuration.sFolder = std::filesystem::path(sPath).parent_path().string();
    const TomlTable root(document, sPath, "the file");
    root.allowOnly({"unit", "module", "storage", "calibration", "trace", "test_interface", "recorder", "profile",
                    "transmitter", "channel", "fault"});
    readUnit(root, configuration);
    readModules(root, configuration);
    readCalibrations(root, configuration);
    readTrace(root, configuration);
    readTestInterface(root, configuration);
    readRecorder(root, configuration);
    readProfile(root, configuration);
    readChannels(root, configuration);
    readFaults(root, configuration);
    return configuration;
}

void selectChannels(UnitConfiguration& configuration, std::optional<unsigned int> nCount)
{
    const std::size_t nAvailable = configuration.channels.size();
    const std::size_t nWanted = nCount ? *nCount : nAvailable;
    if (nWanted == 0 || nWanted > nAvailable) {
        throw ConfigurationError(fmt::format("{}: lists {} channel{}, {} asked for; use --channels 1 to {}, or add "
                                             "[[channel]] tables",
                                             configuration.sPath, nAvailable, nAvailable == 1 ? "" : "s", nWanted,
                                             nAvailable));
    }
    configuration.channels.resize(nWanted);
    const auto belongsToNone = [&configuration](const FaultConfiguration& fault) {
        return std::none_of(
            configuration.channels.begin(), configuration.channels.end(),
            [&fault](const ChannelConfiguration& channel) { return channel.nNumber == fault.nChannel; });
    };
    configuration.faults.erase(std::remove_if(configuration.faults.begin(), configuration.faults.end(), belongsToNone),
                               configuration.faults.end());
}

void checkChannelsAreApart(const UnitConfiguration& configuration)
{
    for (auto second = configuration.channels.begin(); second != configuration.channels.end(); ++second) {
        for (auto first = configuration.channels.begin(); first != second; ++first) {
            if (first->nNumber == second->nNumber) {
                throw ConfigurationError::atLine(configuration.sPath, second->nLine,
                                                 fmt::format("channel {} is listed twice, first in line {}; give each "
                                                             "[[channel]] a number of its own",
                                                             second->nNumber, first->nLine));
            }
            const std::string sHandler = outputPowerHandlerName(second->nNumber);
            if (outputPowerHandlerName(first->nNumber) == sHandler) {
                throw ConfigurationError::atLine(configuration.sPath, second->nLine,
                                                 fmt::format("channels {} and {} would both meet the handler \"{}\"; "
                                                             "choose numbers that differ in their first digit",
                                                             first->nNumber, second->nNumber, sHandler));
            }
        }
    }
}

std::string outputPowerHandlerName(unsigned int nChannel)
{
    constexpr std::size_t LOOKED_UP_CHARACTERS = 21;
    return fmt::format("IOutputPowerHandler.{}", nChannel).substr(0, LOOKED_UP_CHARACTERS);
}

std::string channelInterfaceName(const std::string& sBase, unsigned int nChannel)
{
    return nChannel == 0 ? sBase : fmt::format("{}_{}", sBase, nChannel);
}
