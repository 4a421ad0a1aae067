/** @file
 * The rules that every transmitter's controller has to keep.
 */
#pragma once

#include "Unit/SafetyMonitor/CallRing.h"
#include "Unit/SafetyMonitor/SafetyViolation.h"

/** Which calls the rules are told. */
enum class EHeardSides
{
    HandlerOnly, /**< requests, limits and steps are not known: only what the handler's calls tell is judged */
    Both
};

/**
 * Hears what a controller is called with and what it calls its handler for, and reports what it must not do.
 *
 * It follows the switch sequence from the calls alone and knows nothing of the controller's inside, so that any
 * controller can be judged by it; it has to hear a controller from its construction on. After a violation it goes on
 * from what was done, so that one mistake is reported once. Nothing here allocates, locks or throws. One thread at a
 * time: who calls a controller from several threads has to order the calls.
 */
class TransmitterRules
{
public:
    /** @param receiver told of violations; must outlive the rules */
    TransmitterRules(unsigned int nChannel, EHeardSides eSides, IViolationReceiver& receiver) noexcept;

    // The caller's side; powers on the handler's scale.
    void onSetTxPminPmax(std::int32_t nTxPmin) noexcept;
    /** A request begins: the mode holds before its observers are told. */
    void onRequestBegins(ETxPowerMode eMode) noexcept;
    /** A request has been carried out. */
    void onRequestEnds(ERequestedTxPowerState eState, ETxPowerMode eMode, std::int32_t nResult) noexcept;
    void onProductionTestBegins(bool bProductionTest, ERfDetectorLoopMode eLoopMode) noexcept;
    void onProductionTestEnds(std::int32_t nResult) noexcept;
    void onSetInterval(std::int32_t nIntervalMs) noexcept;
    void onStepBegins(std::int32_t nPtarget) noexcept;
    void onStepEnds(std::int32_t nResult) noexcept;
    /** The controller has nothing to say to the handler any more. */
    void onStop() noexcept;

    // The handler's side: each call with its arguments, outputs and result, after it has returned.
    void onSetOutputPower(std::int32_t nPctrl, std::int32_t nPtarget, EOPHResult nResult) noexcept;
    void onSetTxState(std::int32_t nTxStep, EOPHResult nResult) noexcept;
    void onTellProductionTest(ERfDetectorLoopMode eLoopMode, EOPHResult nResult) noexcept;
    void onGetReducedGain(std::uint32_t nAmplifier, std::int32_t nReducedGain, EOPHResult nResult) noexcept;
    void onGetTxPowerReadings(std::int32_t nIfPower, std::int32_t nRfGain, EOPHResult nResult) noexcept;
    void onCalculateDetectorUsage(std::int32_t nPctrl, std::int32_t nDetectorState, EOPHResult nResult) noexcept;
    void onGetPmeasured(std::int32_t nPmeasured, EOPHResult nResult) noexcept;
    void onSetTraffic(bool bEnable, EOPHResult nResult) noexcept;
    /** @param nLower what the caller finds in its variable after the call, whatever the result */
    void onGetPctrlLimits(std::int32_t nLower, std::int32_t nUpper, EOPHResult nResult) noexcept;

    unsigned int channel() const noexcept { return m_nChannel; }

    /** @return regulator calls that have begun */
    std::uint64_t steps() const noexcept { return m_nStep; }

private:
    /** How far a step has come. */
    enum class EPosition : std::uint8_t
    {
        Begin,
        Waiting, // for the transmitter to settle
        LimitsRead,
        StepTaken,
        Measured,
        DetectorAsked,
        RampPowerSent,
        TrafficOff,
        SwitchedOff,
        PowerSent,
        Failed,
        Done
    };

    /** What a step computes the power from. */
    struct Inputs
    {
        std::int32_t nTxPmin = 0;
        std::int32_t nPctrlMin = OPC_POWER_UNKNOWN;
        std::int32_t nPctrlMax = 0;
        std::int32_t nMode = eTX_POWER_MODE_INITIAL;
        std::int32_t nMaxStep = LARGEST_STEP;
        bool bProductionTest = false;
    };

    struct Range
    {
        std::int32_t nLower;
        std::int32_t nUpper;
    };

    static constexpr std::int32_t LARGEST_STEP = 100000;

    bool hearsCaller() const noexcept { return m_eSides == EHeardSides::Both; }
    bool isAt(EOPCState eActing, EPosition ePosition) const noexcept;
    bool isSwitchingOff() const noexcept;
    void hear(EHeardCall eCall, std::int32_t nFirst, std::int32_t nSecond, std::int32_t nResult) noexcept;
    void report(ESafetyRule eRule, std::int32_t nFirst = 0, std::int32_t nSecond = 0, std::int32_t nThird = 0) noexcept;
    bool checkMoment() noexcept;
    void beginInferredStep() noexcept;
    void finishRampStep() noexcept;
    void checkSwitchOff() noexcept;

    bool isExpectedTxStep(std::int32_t nTxStep) const noexcept;
    ESafetyRule brokenByTxStep(std::int32_t nTxStep) const noexcept;
    void follow(std::int32_t nTxStep) noexcept;

    bool isPowerExpected() const noexcept;
    ESafetyRule brokenByPower() const noexcept;
    void judgeStartPower(std::int32_t nPctrl) noexcept;
    void judgeLoopPower(std::int32_t nPctrl) noexcept;
    bool judgeRange(std::int32_t nPctrl, const Range& range) noexcept;
    void judgeStepSize(std::int32_t nPctrl, const Range& range) noexcept;
    Range closedLoopRange() const noexcept;
    void followPower(std::int32_t nPtarget, std::int32_t nPctrlBefore) noexcept;

    const unsigned int m_nChannel;
    const EHeardSides m_eSides;
    IViolationReceiver& m_receiver;
    CallRing m_calls;
    std::uint64_t m_nStep = 0;

    Inputs m_inputs;
    Inputs m_used; // as they were when the step under way computed its power
    std::uint32_t m_nWaitCycles = 3;
    std::uint32_t m_nRampCycles = 15;

    EOPCState m_eState = eOPC_TX_OFF;
    bool m_bOn = false; // whether the transmitter counts as on
    std::int32_t m_nWaitLeft = 0;
    std::int32_t m_nRampLeft = 0;
    std::int32_t m_nPctrl = OPC_POWER_UNKNOWN; // sent last, whether the handler took it or not

    EOPCState m_eActing = eOPC_TX_OFF; // the state that the step under way acts in
    EPosition m_ePosition = EPosition::Begin;
    bool m_bErrorSmall = false; // in the ramp step under way
    bool m_bInStep = false;
    bool m_bSilent = false;
    bool m_bHeldReported = false;
    bool m_bInProductionTest = false;
    bool m_bProductionTestTold = false; // ever
    ERfDetectorLoopMode m_eLoopMode = eRF_DETECTOR_LOOP_MODE_NORMAL;
    bool m_bStopped = false;
};
