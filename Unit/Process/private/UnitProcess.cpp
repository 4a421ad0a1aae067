#include "Unit/Process/UnitProcess.h"

#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CalibrationTables.h"
#include "Platform/ConfigurationError.h"
#include "Platform/ModuleFramework/PhaseDriver.h"
#include "Platform/Storage/StorageVariables.h"
#include "Platform/Trace/TraceControl.h"
#include "Simulation/Handlers/ISimulatedTemperature.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace
{
/** Keeps trace lines off standard error for a while. */
class QuietStandardError
{
public:
    explicit QuietStandardError(bool bQuiet) : m_bQuiet(bQuiet)
    {
        if (m_bQuiet) {
            TraceControl::setStandardErrorEnabled(false);
        }
    }
    ~QuietStandardError()
    {
        if (m_bQuiet) {
            TraceControl::setStandardErrorEnabled(true);
        }
    }
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

private:
    bool m_bQuiet;
};

std::string failureText(const PhaseFailure& failure)
{
    return fmt::format("module \"{}\" of channel {} failed in {} ({:#x})", failure.sModuleName, failure.nChannel,
                       failure.sOperation, failure.nResult);
}

bool onlyFailuresAreTraced(const TraceConfiguration& trace)
{
    return trace.nDefaultLevel <= 1 &&
           std::all_of(trace.levels.begin(), trace.levels.end(),
                       [](const TraceLevelConfiguration& level) { return level.nLevel <= 1; });
}
} // namespace

UnitProcess::UnitProcess(const UnitConfiguration& configuration) : m_configuration(configuration)
{
    m_owner.check("UnitProcess");
}

UnitProcess::~UnitProcess()
{
    stop();
}

void UnitProcess::load()
{
    m_owner.check("UnitProcess::load");
    applyTraceLevels();
    if (!m_configuration.sStorageFile.empty()) {
        StorageVariables::loadFile(m_configuration.sStorageFile);
    }
    for (const CalibrationConfiguration& calibration : m_configuration.calibrations) {
        CalibrationTables::loadFile(calibration.sName, calibration.sFile);
    }
    for (const ModuleConfiguration& module : m_configuration.modules) {
        m_libraries.push_back(std::make_shared<const ModuleLibrary>(m_configuration, module));
    }
}

void UnitProcess::applyTraceLevels() const
{
    const TraceConfiguration& trace = m_configuration.trace;
    TraceControl::setLevelOfAll(trace.nDefaultLevel);
    for (const TraceLevelConfiguration& level : trace.levels) {
        TraceControl::setLevel(level.sGroup, level.nLevel);
    }
    TraceControl::setSystemLogEnabled(trace.bSystemLog);
    if (trace.bSystemLog) {
        TraceControl::setSystemLog(trace.systemLog);
    }
}

void UnitProcess::start()
{
    m_owner.check("UnitProcess::start");
    m_namesBefore = BrokerDirectory::publishedNames();
    m_bStarted = true;
    try {
        constructModules();
        for (const auto& pModule : m_modules) {
            pModule->initialize();
        }
        m_pTemperature =
            dynamic_cast<ISimulatedTemperature*>(InterfaceBroker::getInstance().getInterface("ITemperatureHandler"));
        for (const ChannelConfiguration& channel : m_configuration.channels) {
            m_channels.push_back(std::make_unique<RadioChannel>(channel));
            m_channels.back()->configureSimulation();
        }
        interposeMonitors();
        driveModuleInit();
        driveAndWarn(ePHASE_MODULE_STORAGE_OBJECTS_RETRIEVED);
        driveAndWarn(ePHASE_POST_FRAMEFORMAT_LOAD);
        for (const auto& pChannel : m_channels) {
            if (!pChannel->connect()) {
                throw ConfigurationError(fmt::format("{}: channel {} has no controller: nothing is published as "
                                                     "\"{}\"; list a module that provides it under [[module]]",
                                                     m_configuration.sPath, pChannel->number(),
                                                     pChannel->controllerName()));
            }
            pChannel->configureController(m_configuration.intervalMs);
        }
    }
    catch (...) {
        stop();
        throw;
    }
}

void UnitProcess::constructModules()
{
    for (const auto& pLibrary : m_libraries) {
        if (pLibrary->scope() == EModuleScope::Unit) {
            m_modules.push_back(std::make_unique<LoadedModule>(pLibrary, 0));
            continue;
        }
        for (const ChannelConfiguration& channel : m_configuration.channels) {
            m_modules.push_back(std::make_unique<LoadedModule>(pLibrary, channel.nNumber));
        }
    }
}

// After the knobs of the simulation were found by the handlers' names, and before the controllers look for them.
void UnitProcess::interposeMonitors()
{
    if (!m_bMonitored) {
        return;
    }
    for (const auto& pChannel : m_channels) {
        m_monitors.push_back(std::make_unique<ChannelMonitor>(pChannel->number()));
        if (m_monitors.back()->interpose()) {
            pChannel->setViolations(m_monitors.back()->violations());
        }
        else {
            m_warnings.push_back(fmt::format("channel {} is not watched by the safety monitor: handler and controller "
                                             "have to be published as interfaces with a C function table",
                                             pChannel->number()));
        }
    }
}

void UnitProcess::driveModuleInit()
{
    // A module that fails here says so at level 1; the error below says the same, with what to do.
    const QuietStandardError quiet(onlyFailuresAreTraced(m_configuration.trace));
    const std::vector<PhaseFailure> failures = PhaseDriver::drive(ePHASE_MODULE_INIT);
    if (failures.empty()) {
        return;
    }
    const PhaseFailure& failure = failures.front();
    if (failure.missedInterfaces.empty()) {
        throw UnitStartError(failureText(failure));
    }
    throw ConfigurationError(fmt::format("{}: {}: nothing is published as \"{}\"; list a module that provides it under "
                                         "[[module]]",
                                         m_configuration.sPath, failureText(failure),
                                         fmt::join(failure.missedInterfaces, "\" or \"")));
}

void UnitProcess::driveAndWarn(unsigned long nPhase)
{
    for (const PhaseFailure& failure : PhaseDriver::drive(nPhase)) {
        m_warnings.push_back(failureText(failure) + "; it goes on with its own defaults");
    }
}

void UnitProcess::stop()
{
    m_owner.check("UnitProcess::stop");
    if (m_bStarted) {
        m_bStarted = false;
        for (const PhaseFailure& failure : PhaseDriver::drive(ePHASE_STOP)) {
            m_warnings.push_back(failureText(failure));
        }
        for (const auto& pMonitor : m_monitors) {
            pMonitor->putBack(); // the modules withdraw their own
        }
        for (std::size_t nModule = m_modules.size(); nModule > 0; --nModule) {
            LoadedModule& module = *m_modules[nModule - 1];
            if (EAF_isFailure(module.uninitialize())) {
                m_warnings.push_back(
                    fmt::format("module \"{}\" of channel {} failed to uninitialise", module.name(), module.channel()));
            }
        }
        m_pTemperature = nullptr;
        while (!m_modules.empty()) {
            m_modules.pop_back();
        }
        m_channels.clear();
        warnOfLeftNames();
    }
    while (!m_libraries.empty()) {
        m_libraries.pop_back();
    }
    CalibrationTables::clear();
    StorageVariables::clear();
}

void UnitProcess::warnOfLeftNames()
{
    const std::vector<std::string> names = BrokerDirectory::publishedNames();
    std::vector<std::string> left;
    std::set_difference(names.begin(), names.end(), m_namesBefore.begin(), m_namesBefore.end(),
                        std::back_inserter(left));
    if (!left.empty()) {
        m_warnings.push_back(fmt::format("still published after the stop: {}", fmt::join(left, ", ")));
    }
}
