#include "Unit/Replay/private/ReplayedUnit.h"

#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/ConfigurationError.h"
#include "Platform/Trace/TraceControl.h"
#include "Simulation/Handlers/ISimulatedFrequency.h"
#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "Simulation/Handlers/ISimulatedTransmitter.h"
#include "Unit/Process/Installation.h"
#include "Unit/Process/ModuleLibrary.h"
#include "Unit/Replay/private/RecordedFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace
{
/** Traces nothing, but knows the groups that the unit file names, since commands may name them, too. */
TraceConfiguration silent(TraceConfiguration trace)
{
    trace.nDefaultLevel = 0;
    for (TraceLevelConfiguration& level : trace.levels) {
        level.nLevel = 0;
    }
    trace.bSystemLog = false;
    return trace;
}

UnitConfiguration configurationOf(const RecordedFiles& files, const Recording& recording, const RecordedRun& run)
{
    UnitConfiguration unit = files.load();
    selectChannels(unit, static_cast<unsigned int>(run.channels.size()));
    for (std::size_t nChannel = 0; nChannel < run.channels.size(); ++nChannel) {
        if (unit.channels[nChannel].nNumber != run.channels[nChannel]) {
            throw ConfigurationError(
                fmt::format("{}: run {}: channel {} is recorded where its unit file has channel {}", recording.path(),
                            run.nId, run.channels[nChannel], unit.channels[nChannel].nNumber));
        }
    }
    unit.trace = silent(unit.trace);
    return unit;
}

RunSettings settingsOf(const RecordedRun& run, const UnitConfiguration& unit, const Profile* pProfile)
{
    RunSettings settings;
    settings.intervalMs = run.intervalMs;
    settings.speed = run.speed;
    settings.startSeconds = run.startSeconds;
    settings.temperatureDegrees = unit.temperatureDegrees;
    settings.pProfile = pProfile;
    return settings;
}

/** Says where a library was looked for, which a run beside its unit file has no need to tell. */
void checkLibraries(const UnitConfiguration& unit)
{
    for (const ModuleConfiguration& module : unit.modules) {
        const std::vector<std::string> candidates = moduleLibraryCandidates(unit.sFolder, module.sLibrary);
        const auto isThere = [](const std::string& sCandidate) {
            return sCandidate.find('/') != std::string::npos && std::filesystem::exists(sCandidate);
        };
        if (std::any_of(candidates.begin(), candidates.end(), isThere)) {
            continue;
        }
        try {
            const ModuleLibrary library(unit, module); // where the system has its libraries
        }
        catch (const ConfigurationError&) {
            throw ConfigurationError(fmt::format("the run had the library {} of module \"{}\", which is not there any "
                                                 "more; looked for {}",
                                                 module.sLibrary, module.sName, fmt::join(candidates, ", ")));
        }
    }
}

template <class TKnob> bool isOther(const std::string& sName)
{
    IInterface* const pInterface = InterfaceBroker::getInstance().getInterface(sName);
    return pInterface != nullptr && dynamic_cast<TKnob*>(pInterface) == nullptr;
}
} // namespace

void QuietTrace::apply(bool bHeard)
{
    TraceControl::setStandardErrorEnabled(bHeard);
    TraceControl::setSystemLogEnabled(bHeard);
}

ReplayedUnit::ReplayedUnit(const Recording& recording, const RecordedRun& run) : m_process(m_unit)
{
    const RecordedFiles files(recording.files(run.nId), fmt::format("{}: run {}", recording.path(), run.nId));
    m_unit = configurationOf(files, recording, run);
    checkLibraries(m_unit);
    try {
        m_process.load();
        if (!m_unit.profile.sFile.empty()) {
            m_pProfile = std::make_unique<Profile>(m_unit.profile.sFile, m_unit.profile.interpolation);
        }
    }
    catch (const ConfigurationError& error) {
        throw ConfigurationError(files.withRecordedNames(error.what()));
    }
    m_settings = settingsOf(run, m_unit, m_pProfile.get());
}

void ReplayedUnit::start()
{
    m_process.start();
    m_quiet.renew();
}

std::vector<RadioChannel*> ReplayedUnit::wantOn()
{
    std::vector<RadioChannel*> channels;
    for (const auto& pChannel : m_process.channels()) {
        pChannel->requestOn();
        if (ISimulatedTransmitter* const pTransmitter = pChannel->transmitter()) {
            pTransmitter->countDelays(); // nobody waits for a slow handler here
        }
        channels.push_back(pChannel.get());
    }
    return channels;
}

std::string ReplayedUnit::unrepeatableHandler()
{
    if (isOther<ISimulatedTemperature>("ITemperatureHandler")) {
        return "the temperature handler";
    }
    for (const ChannelConfiguration& channel : m_unit.channels) {
        if (isOther<ISimulatedFrequency>(channelInterfaceName("IFrequencyHandler_Tx", channel.nNumber))) {
            return fmt::format("the frequency handler of channel {}", channel.nNumber);
        }
    }
    for (const auto& pChannel : m_process.channels()) {
        if (pChannel->transmitter() == nullptr) {
            return fmt::format("the output power handler of channel {}", pChannel->number());
        }
    }
    return {};
}
