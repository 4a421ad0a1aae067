/** @file
 * The knobs of a simulated output power handler, which a real one does not have.
 */
#pragma once

#include "Simulation/Handlers/HandlerFault.h"
#include "Simulation/Transmitter/TransmitterParameters.h"

#include <cstdint>

/**
 * A simulated output power handler. Reach it by dynamic_cast from the interface published as "IOutputPowerHandler.n".
 *
 * Call it between two steps of the channel: it shares the transmitter with the handler's operations and locks nothing.
 */
class ISimulatedTransmitter
{
public:
    /** Makes the transmitter anew, off and cold. */
    virtual void configure(const TransmitterParameters& parameters, std::uint64_t nSeed) = 0;

    virtual void setAmbientTemperature(double degreesCelsius) = 0;
    virtual void setFrequencyMhz(double frequencyMhz) = 0;

    /** Lets time pass. */
    virtual void advance(double seconds) = 0;

    /** Replaces the fault of an operation. */
    virtual void setFault(EHandlerOperation eOperation, const HandlerFault& fault) = 0;

    /** @return the true output power in dBm; -infinity when nothing is radiated */
    virtual double outputPowerDbm() const = 0;

    /** @return calls that the handler refused because hardware would, such as a transmitter step out of order */
    virtual std::uint64_t refusedCalls() const = 0;

protected:
    ~ISimulatedTransmitter() = default;
};
