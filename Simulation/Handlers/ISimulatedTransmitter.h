/** @file
 * The knobs of a simulated output power handler, which a real one does not have.
 */
#pragma once

#include "Simulation/Handlers/HandlerFault.h"
#include "Simulation/Transmitter/Transmitter.h"

#include <cstdint>
#include <optional>

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

    /** Changes what the transmitter is made of while it goes on as it is, as with age; Transmitter::change(). */
    virtual void change(const TransmitterParameters& parameters) = 0;

    virtual void setAmbientTemperature(double degreesCelsius) = 0;
    virtual void setFrequencyMhz(double frequencyMhz) = 0;

    /** Lets time pass. */
    virtual void advance(double seconds) = 0;

    /** Replaces the fault of an operation. */
    virtual void setFault(EHandlerOperation eOperation, const HandlerFault& fault) = 0;

    /** Lets calls of slow operations return at once and be counted instead, for a run whose time is not real. */
    virtual void countDelays() = 0;

    /** @return microseconds that calls since the last time would have taken; 0 unless they are counted */
    virtual std::uint64_t takeDelayUs() = 0;

    /** @return the lower limit that the latest getPctrlLimits() gave its caller; none when that failed */
    virtual std::optional<std::int32_t> givenLowerLimit() const = 0;

    /** @return what the gain chain is set to; no fault reaches this */
    virtual const ChainSetting& chain() const = 0;

    /** @return the true output power in dBm; -infinity when nothing is radiated */
    virtual double outputPowerDbm() const = 0;

    /** @return calls that the handler refused because hardware would, such as a transmitter step out of order */
    virtual std::uint64_t refusedCalls() const = 0;

protected:
    ~ISimulatedTransmitter() = default;
};
