/** @file
 * A radio channel of the running unit: its controller and its simulated surroundings.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Unit/Process/StepSample.h"
#include "Unit/Process/UnitConfiguration.h"

#include <cstdint>
#include <optional>

class ISimulatedFrequency;
class ISimulatedTransmitter;

/** What a channel's steps came to; all of constant size. Powers in hundredths of a decibel. */
struct ChannelStatistics
{
    std::uint64_t nSteps = 0;
    std::uint64_t nFailedSteps = 0;
    std::int32_t nLastState = eOPC_UNDEFINED;
    std::uint64_t nSwitchOnSteps = 0;  /**< steps until the transmitter was on; 0 when it never was */
    std::uint64_t nSwitchOnTimeUs = 0; /**< from the first step to the one that reached TX_ON */
    bool bHasPctrl = false;            /**< whether there was a step with the transmitter on */
    std::int32_t nPctrlMin = 0;
    std::int32_t nPctrlMax = 0;
    std::uint64_t nNotifications = 0; /**< calls of the four observers */
};

/**
 * Calls a controller through its C function table, as any user of it does.
 *
 * connect() to requestOff() are for the thread that starts the unit, before regulation; afterwards everything is for
 * the regulation thread. Must outlive the controller, which holds its observer records.
 */
class RadioChannel
{
public:
    explicit RadioChannel(const ChannelConfiguration& configuration);
    ~RadioChannel() = default;

    RadioChannel(const RadioChannel&) = delete;
    RadioChannel& operator=(const RadioChannel&) = delete;

    const ChannelConfiguration& configuration() const { return m_configuration; }
    unsigned int number() const { return m_configuration.nNumber; }

    /** Gives the simulated handlers, where the handlers are simulated, their parameters. */
    void configureSimulation();

    /** @return the name that the channel's controller is published under */
    std::string controllerName() const;

    /** Finds the controller and observes it. @return false when none is published */
    bool connect();

    /** Hands the controller its interval, limits, gains and production-test settings. @throws UnitStartError */
    void configureController(unsigned int intervalMs);

    /** @throws UnitStartError when the controller refuses */
    void requestOn();

    /** @return what the controller returned */
    long requestOff();

    /** Tells the handlers where the channel stands; they notify the controller when whole megahertz have changed. */
    void setSurroundings(double temperatureDegrees, double frequencyMhz);

    /** Lets the simulated time pass. */
    void advanceSimulation(double seconds);

    void setFault(EHandlerOperation eOperation, const HandlerFault& fault);

    /**
     * Takes one regulator step. Allocates nothing and takes no lock.
     * @param[in,out] sample holds the step's time, index, lateness and overruns; the rest is filled in
     */
    void step(std::int32_t nRequestedPower, StepSample& sample);

    EOPCState state() const;
    bool isOn() const;

    const ChannelStatistics& statistics() const { return m_statistics; }

    /** @return calls that the simulated handler refused, if the handler is simulated */
    std::optional<std::uint64_t> refusedCalls() const;

private:
    static void onPctrl(void* vpThis, unsigned int nChannel, int nPctrl);
    static void onPredictedPctrl(void* vpThis, unsigned int nChannel, int nPredictedPctrl);
    static void onPowerMode(void* vpThis, unsigned int nChannel, ETxPowerMode eMode);

    void registerObservers();
    void setGains(EOPCState eState, const std::optional<GainPercent>& gain);
    void count(const StepSample& sample);

    ChannelConfiguration m_configuration;
    ISimulatedTransmitter* m_pTransmitter = nullptr; // none when the handler is not simulated
    ISimulatedFrequency* m_pFrequency = nullptr;
    const IOutputPowerControllerCStruct* m_pController = nullptr;
    IOpcPctrlObserver m_pctrlObserver;
    IOpcPtargetObserver m_ptargetObserver;
    IOpcPredictedPctrlObserver m_predictedPctrlObserver;
    IOpcPowerModeObserver m_powerModeObserver;
    std::int32_t m_nPredictedPctrl = OPC_POWER_UNKNOWN;
    double m_temperatureDegrees = 0.0;
    double m_frequencyMhz = 0.0;
    std::optional<int> m_nNotifiedFrequency;
    ChannelStatistics m_statistics;
};
