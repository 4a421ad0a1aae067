/** @file
 * Brings the unit up, and down again in the reverse order.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Process/ChannelMonitor.h"
#include "Unit/Process/LoadedModule.h"
#include "Unit/Process/RadioChannel.h"

#include <memory>
#include <string>
#include <vector>

class ISimulatedTemperature;

/** The modules of the unit and its channels. For the thread that starts and stops the unit. */
class UnitProcess
{
public:
    /** @param configuration must outlive the process; its channels are apart */
    explicit UnitProcess(const UnitConfiguration& configuration);

    /** Stops what has been started. */
    ~UnitProcess();

    UnitProcess(const UnitProcess&) = delete;
    UnitProcess& operator=(const UnitProcess&) = delete;

    /**
     * Reads every file and loads every library that the unit file names; starts nothing.
     * @throws ConfigurationError
     */
    void load();

    /**
     * Lets start() put a safety monitor between each channel's controller, its handler and its callers, with a warning
     * where it cannot.
     */
    void monitorSafety() { m_bMonitored = true; }

    /**
     * Constructs and initialises the modules and drives phases 5, 11 and 20. After an exception everything that had
     * been started is undone.
     * @throws ConfigurationError when a module misses an interface
     * @throws UnitStartError when a module fails otherwise
     */
    void start();

    /** Drives phase 16, uninitialises and destroys the modules in reverse order. Harmless when nothing is started. */
    void stop();

    std::vector<std::unique_ptr<RadioChannel>>& channels()
    {
        m_owner.check("UnitProcess::channels");
        return m_channels;
    }

    /** @return the channels' monitors in the order of the channels, also after the stop; empty when there are none */
    const std::vector<std::unique_ptr<ChannelMonitor>>& monitors() const { return m_monitors; }

    /** @return the knob of the temperature handler, if it is a simulated one */
    ISimulatedTemperature* temperature() const { return m_pTemperature; }

    /** @return what went wrong without keeping the unit from starting or stopping; a line each */
    const std::vector<std::string>& warnings() const { return m_warnings; }

private:
    void applyTraceLevels() const;
    void constructModules();
    void interposeMonitors();
    void driveModuleInit();
    void driveAndWarn(unsigned long nPhase);
    void warnOfLeftNames();

    const UnitConfiguration& m_configuration;
    std::vector<std::shared_ptr<const ModuleLibrary>> m_libraries;
    std::vector<std::unique_ptr<RadioChannel>> m_channels;   // outlive the controllers, which hold their observers
    std::vector<std::unique_ptr<ChannelMonitor>> m_monitors; // outlive the modules, which call through them
    std::vector<std::unique_ptr<LoadedModule>> m_modules;
    std::vector<std::string> m_namesBefore;
    ISimulatedTemperature* m_pTemperature = nullptr;
    bool m_bStarted = false;
    bool m_bMonitored = false;
    std::vector<std::string> m_warnings;
    [[no_unique_address]] OwnedByThread m_owner;
};
