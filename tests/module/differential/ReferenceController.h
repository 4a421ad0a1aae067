/** @file
 * The controller's behaviour, written a second time from its description.
 *
 * States are data: each has a list of effects that an interpreter carries out. Powers are 64-bit integers that are
 * wrapped to 32 bits where the controller's arithmetic wraps.
 */
#pragma once

#include "tests/module/differential/Coverage.h"
#include "tests/module/differential/Environment.h"
#include "tests/module/differential/Operation.h"
#include "tests/module/differential/ReferenceLogs.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Differential
{
/** Effects that the states are made of; the interpreter's cases say what each does. */
enum class EEffect
{
    Say,
    TakeTxStep,
    SetTraffic,
    TryTraffic,
    ReportOff,
    StampTime,
    WaitForDelay,
    StartPower,
    ReadLimits,
    SendPower,
    LoadWait,
    CountWait,
    LoadRamp,
    CountRamp,
    UseDetector,
    MovePower,
    SendAndLog,
    TellPower,
    JudgeError,
    SayState,
    SetStatus,
    Enter
};

/** One effect of a state's step. */
struct Effect
{
    EEffect eEffect;
    std::int64_t nArgument = 0;  /**< step, flag, level, state or status */
    const char* pText = nullptr; /**< what is traced: by Say, or when the effect fails */
};

/** What is read out of a controller after every operation. */
struct ReadOuts
{
    std::int64_t nState = 0;
    std::int64_t nStatus = 0;
    std::int64_t nPctrl = 0;
    std::int64_t nPmeasured = 0;
    std::array<std::int64_t, 8> anLogData{};

    void write(EventLog& log) const;
};

/** A controller of one channel. Writes what it does into the environment's log. */
class ReferenceController
{
public:
    ReferenceController(Environment& environment, Coverage& coverage, std::uint32_t nChannel,
                        const Constants& constants);

    /** @return whether the operation's outcome is described; one that is not may not be applied */
    bool isDefined(const Operation& operation) const;
    /** Carries out an operation that the environment left. */
    void apply(const Operation& operation);
    ReadOuts readOuts() const;
    /** Writes what the controller does when it is destroyed. */
    void destroy();

private:
    enum class EGoOn
    {
        Next,
        Stop, /**< the step is over and has succeeded */
        Fail
    };

    struct Observed
    {
        std::vector<std::int32_t> observers;
        std::int64_t nLastTold = 0;
    };

    // Inputs and phases.
    void trace(int nLevel, const std::string& sText);
    std::int64_t request(std::int64_t nState, std::int64_t nMode);
    std::int64_t setProductionTest(bool bOn, std::int32_t nLoopMode);
    void setLimits(std::int64_t nTxPmin, std::int64_t nTxPmax);
    void setInterval(std::int64_t nInterval);
    void changeFrequency();
    void reportTemperature(std::int64_t nTemperature);
    std::int64_t runPhase(std::size_t nPhase);
    std::int64_t connect();
    bool findHandler();
    void fetchTable(std::size_t nTable, const char* pName);
    std::int64_t readGainBlocks();
    std::int64_t readSpacing();
    void applyPrivate(const Operation& operation);

    // State machine.
    std::int64_t stepStateMachine();
    EGoOn carryOut(const Effect& effect);
    EGoOn switchEffect(const Effect& effect);
    EGoOn rampEffect(const Effect& effect);
    EGoOn judge(std::int32_t nHandlerResult, const char* pText);
    void readLimits();
    EGoOn waitForDelay();
    void movePower();
    std::string stateText() const;
    void enter(std::int64_t nState);

    // Regulation.
    std::int64_t regulate(std::int64_t nRequested);
    std::int64_t offset(std::size_t nTable, std::int64_t nX, std::int64_t nY);
    std::int64_t closeLoop();
    std::int64_t gainFor(std::int64_t nColumn);
    std::int64_t correction(std::int64_t nGain);
    std::int64_t limitStep(std::int64_t nStep);
    void moveWithin(std::int64_t nStep);
    void moveInProductionTest(std::int64_t nStep);
    bool sendAndLog();
    void logStep();
    ReferenceLogs::Quantities readGains(ReferenceLogs::Quantities quantities);
    void tell(std::size_t nList, std::int64_t nValue);
    void tellIfChanged(std::size_t nList, std::int64_t nValue);
    void tellChanges();

    Environment& m_environment;
    Coverage& m_coverage;
    Constants m_constants;
    std::uint32_t m_nChannel;
    ReferenceLogs m_logs;

    bool m_bPublished = false; // the logs, once
    bool m_bHandler = false;
    std::array<int, 2> m_anTable{-1, -1};
    std::int64_t m_nGainBlocks = 0;
    std::int64_t m_nSpacing = 0;
    std::int64_t m_nFrequency = 0;
    std::int64_t m_nTemperature = 0;

    std::int64_t m_nState = 2;
    std::int64_t m_nPreviousState = 9;
    std::int64_t m_nStatus = 0;
    std::int64_t m_nMode = 3;
    std::int64_t m_nWaitCount = 0;
    std::int64_t m_nRampCount = 0;
    std::int64_t m_nWaitCycles = 3;
    std::int64_t m_nRampCycles = 15;
    Time m_delayBegan{0, 0};

    std::int64_t m_nPctrl = -10000;
    std::int64_t m_nPtarget = -10000;
    std::int64_t m_nPmeasured = 0;
    std::int64_t m_nPredicted = -10000;
    std::int64_t m_nError = 0;
    std::int64_t m_nTxPmin = 0;
    std::int64_t m_nPctrlMin = -10000;
    std::int64_t m_nPctrlMax = 0;
    std::int64_t m_nStepLimit = 100000;
    std::int64_t m_nLoopMode = 0;
    std::int32_t m_nDetector = 3;
    bool m_bProductionTest = false;
    std::array<std::array<std::int64_t, 9>, 3> m_anGain{};
    std::array<Observed, 4> m_observed{};
    bool m_bTold = false; // since the ramp that moved the power
};

/** @return the value modulo 2^32, as a signed 32-bit integer holds it */
inline std::int64_t wrapped(std::int64_t nValue)
{
    constexpr std::int64_t TURN = std::int64_t{1} << 32;
    const std::int64_t nTurned = nValue % TURN;
    return nTurned > INT32_MAX ? nTurned - TURN : nTurned < INT32_MIN ? nTurned + TURN : nTurned;
}

/** @return a result as the controller judges it: signed, 0x8000 or more */
inline bool isRefused(std::int64_t nResult)
{
    return nResult >= 0x8000;
}
} // namespace Differential
