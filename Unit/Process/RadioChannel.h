/** @file
 * A radio channel of the running unit: its controller and its simulated surroundings.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Threads/ThreadRules.h"
#include "Simulation/Scenario/Profile.h"
#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Process/InputValue.h"
#include "Unit/Process/LogActivity.h"
#include "Unit/Process/StepSample.h"

#include <array>
#include <cstdint>
#include <optional>

class ISimulatedFrequency;
class ISimulatedTransmitter;
class ViolationStore;

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
    std::uint64_t nRamps = 0;         /**< that have begun */
    std::uint64_t nRampUs = 0; /**< from the latest one's begin until TX_ON with an error within 1 dB, or until now */
};

/** What a channel meets in one step. */
struct StepSurroundings
{
    ProfilePoint profile; /**< what the profile says */
    double temperatureDegrees = 25.0;
    double simulatedSeconds = 0.0; /**< that have passed since the last step */
};

/** What a channel is given for one step. */
struct StepInputs
{
    double requestedPowerDbm = 0.0;
    double frequencyMhz = 0.0;
    double temperatureDegrees = 25.0;
    double simulatedSeconds = 0.0; /**< that have passed since the last step */
};

/** What the closed loop holds the control power between, hundredths of a dBm. */
struct ControlPowerLimits
{
    std::int32_t nLower = 0;
    std::int32_t nUpper = 0;
};

/** The faults that a channel's handler was last given, by operation. */
using HandlerFaults = std::array<HandlerFault, static_cast<std::size_t>(EHandlerOperation::Count)>;

/**
 * Calls a controller through its C function table, as any user of it does.
 *
 * configureSimulation() to requestOn() are for the thread that starts the unit, before regulation; afterwards
 * everything is for the regulation thread, but number(), controllerName(), transmitter() and safetyViolations(). Must
 * outlive the controller, which holds its observer records.
 */
class RadioChannel
{
public:
    explicit RadioChannel(const ChannelConfiguration& configuration);
    ~RadioChannel() = default;

    RadioChannel(const RadioChannel&) = delete;
    RadioChannel& operator=(const RadioChannel&) = delete;

    /** @return the channel's settings as they hold now: the unit file's, changed by commands */
    const ChannelConfiguration& configuration() const { return owned(m_configuration); }
    unsigned int number() const { return m_configuration.nNumber; }

    /** Lets the next thread that uses the channel have it, for who knows that the last one is through with it. */
    void handOver() { m_owner.handOver(); }

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

    /**
     * Wants the transmitter on or off. The controller ignores a request that comes while it switches the other way;
     * this one is passed on before a step as soon as the controller follows it.
     */
    void want(ERequestedTxPowerState eState);

    // Settings that change while the channel runs. Each returns what the controller returned.
    long setPowerMode(int nPowerMode);
    long setLimits(double txPminDbm, double txPmaxDbm);
    long setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent);
    long setProductionTest(bool bProductionTest, int nLoopMode);
    long setInterval(unsigned int intervalMs);

    /** @return the loop gains of eOPC_TX_ON_RAMPING or eOPC_TX_ON */
    GainPercent gains(EOPCState eState) const;

    InputValue& requestedPowerDbm() { return owned(m_requestedPowerDbm); }
    const InputValue& requestedPowerDbm() const { return owned(m_requestedPowerDbm); }
    InputValue& frequencyMhz() { return owned(m_frequencyMhz); }
    const InputValue& frequencyMhz() const { return owned(m_frequencyMhz); }

    /** Replaces the fault of an operation. @return false when the handler is not a simulated one */
    bool setFault(EHandlerOperation eOperation, const HandlerFault& fault);
    const HandlerFaults& faults() const { return owned(m_faults); }

    /**
     * Tells the handlers where the channel stands; they notify the controller when whole megahertz have changed. Then
     * takes one regulator step. Allocates nothing and takes no lock, but where the handlers notify.
     * @param[in,out] sample holds the step's time, index, lateness and overruns; the rest is filled in
     */
    void step(const StepSurroundings& surroundings, StepSample& sample);

    /** The same with what a run has decided itself: what commands have set does not count. */
    void stepWith(const StepInputs& inputs, StepSample& sample);

    /** @return the last step's sample; all zero before the first */
    const StepSample& lastSample() const { return owned(m_lastSample); }

    EOPCState state() const;
    bool isOn() const;

    const ChannelStatistics& statistics() const { return owned(m_statistics); }

    LogActivity& logs() { return owned(m_logs); }
    const LogActivity& logs() const { return owned(m_logs); }

    /** @return what the closed loop's next step will hold the control power between */
    ControlPowerLimits controlPowerLimits() const;

    /** @return the knobs of the channel's transmitter; null when its handler is not a simulated one */
    ISimulatedTransmitter* transmitter() const { return m_pTransmitter; }

    /** @return calls that the simulated handler refused, if the handler is simulated */
    std::optional<std::uint64_t> refusedCalls() const;

    /** Says whose violations are the channel's, before regulation. @param violations outlive the regulation */
    void setViolations(const ViolationStore& violations);

    /** @return how often the channel broke a safety rule, if a monitor watches it. Any thread during regulation */
    std::optional<std::uint64_t> safetyViolations() const;

private:
    static void onPctrl(void* vpThis, unsigned int nChannel, int nPctrl);
    static void onPredictedPctrl(void* vpThis, unsigned int nChannel, int nPredictedPctrl);
    static void onPowerMode(void* vpThis, unsigned int nChannel, ETxPowerMode eMode);

    /** @return what is the owning thread's to look at */
    template <class T> T& owned(T& value) const
    {
        m_owner.check("a member of RadioChannel");
        return value;
    }

    void registerObservers();
    void setGains(EOPCState eState, const std::optional<GainPercent>& gain);
    void simulate(const StepInputs& inputs);
    void followRequest();
    void readController(StepSample& sample);
    void readChain(StepSample& sample) const;
    void noteLowerLimit();
    void count(const StepSample& sample);
    void countRamp(const StepSample& sample);

    ChannelConfiguration m_configuration;
    ISimulatedTransmitter* m_pTransmitter = nullptr; // none when the handler is not simulated
    ISimulatedFrequency* m_pFrequency = nullptr;
    const IOutputPowerControllerCStruct* m_pController = nullptr;
    IOpcPctrlObserver m_pctrlObserver;
    IOpcPtargetObserver m_ptargetObserver;
    IOpcPredictedPctrlObserver m_predictedPctrlObserver;
    IOpcPowerModeObserver m_powerModeObserver;
    InputValue m_requestedPowerDbm;
    InputValue m_frequencyMhz;
    std::optional<ERequestedTxPowerState> m_wanted;
    HandlerFaults m_faults{};
    std::int32_t m_nPredictedPctrl = OPC_POWER_UNKNOWN;
    std::int32_t m_nPctrlMin = OPC_POWER_UNKNOWN; // as the controller keeps it, which it does not tell
    std::int32_t m_nPctrlMax = 0;
    std::optional<int> m_nNotifiedFrequency;
    ChannelStatistics m_statistics;
    std::uint64_t m_nRampBeganUs = 0;
    bool m_bRising = false; // since then, and not on with an error within 1 dB yet
    LogActivity m_logs;
    const ViolationStore* m_pViolations = nullptr; // null when nobody watches
    StepSample m_lastSample{};
    [[no_unique_address]] OwnedByThread m_owner; // who starts the unit, then the regulation thread
};
