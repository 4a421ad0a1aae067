/** @file
 * The symbols that the module imports, answered by an environment.
 */
#pragma once

#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/IInterface.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Observer.h"
#include "tests/module/differential/Environment.h"

#include <map>
#include <string>
#include <vector>

class IFrequencyHandler;

namespace Differential
{
/**
 * What the module has registered. The one that was made last is the process's; a module is constructed, used and
 * destroyed while it lives, by one thread.
 */
class ModulePlatform
{
public:
    explicit ModulePlatform(Environment& environment);
    ~ModulePlatform();

    ModulePlatform(const ModulePlatform&) = delete;
    ModulePlatform& operator=(const ModulePlatform&) = delete;

    static ModulePlatform& current();
    Environment& environment() { return m_environment; }

    /** Ends what a message left open and gives the trace its first format back. */
    static void resetTrace();

    /** Tells every registered observer. */
    void tellFrequency();
    void tellTemperature(std::int32_t nTemperature);

    std::map<std::string, IInterface*> m_interfaces;
    std::map<std::string, void*> m_records;
    std::vector<Observer<IFrequencyHandler>*> m_frequencyObservers;
    std::vector<ITemperatureObserver*> m_temperatureObservers;
    ModuleInterface* m_pModule = nullptr;

private:
    Environment& m_environment;
};
} // namespace Differential
