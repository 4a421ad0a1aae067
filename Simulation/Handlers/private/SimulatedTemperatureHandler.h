/** @file
 * A temperature handler whose temperature is set by whoever simulates.
 */
#pragma once

#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "Simulation/Handlers/private/PublishedInterface.h"

#include <atomic>

/** The unit's temperature. May be used from any thread. */
class SimulatedTemperatureHandler final : public ITemperatureHandler, public ISimulatedTemperature
{
public:
    /** Temperature before the first setting. */
    static constexpr int DEFAULT_DEGREES_CELSIUS = 25;

    /** The unit has one temperature, so that the channel does not matter. */
    explicit SimulatedTemperatureHandler(unsigned int /*nChannel*/) {}
    ~SimulatedTemperatureHandler() override { uninitialize(); }

    SimulatedTemperatureHandler(const SimulatedTemperatureHandler&) = delete;
    SimulatedTemperatureHandler& operator=(const SimulatedTemperatureHandler&) = delete;
    SimulatedTemperatureHandler(SimulatedTemperatureHandler&&) = delete;
    SimulatedTemperatureHandler& operator=(SimulatedTemperatureHandler&&) = delete;

    EAFResult initialize() { return m_published.publish("ITemperatureHandler", this); }

    /** Withdraws the handler and forgets its observers. */
    EAFResult uninitialize();

    /** The first setting counts as a change, also to the default temperature. */
    void setTemperature(int nTemperature) override;

private:
    std::atomic<int> m_nTemperature = DEFAULT_DEGREES_CELSIUS;
    std::atomic<bool> m_bSet = false;
    PublishedInterface m_published;
};
