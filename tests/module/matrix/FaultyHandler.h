/** @file
 * An output power handler with one planned fault, the same for the module and for the model that it is compared with.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "tests/support/RecordingOutputPowerHandler.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/** What can be seen from outside while a step runs. */
enum class EEventKind
{
    Call,
    ToldPtarget,
    ToldPctrl,
    ToldPredictedPctrl,
    ToldPowerMode
};

/** A call of the handler with its arguments and result, or an observer that was told a value (nFirst). */
struct Event
{
    EEventKind eKind = EEventKind::Call;
    EHandlerCall eCall = EHandlerCall::Count;
    std::int32_t nFirst = 0;
    std::int32_t nSecond = 0;
    EOPHResult nResult = EAF_OK;

    bool operator==(const Event&) const = default;
    bool isCall() const { return eKind == EEventKind::Call; }
    bool isRefused() const { return isCall() && EAF_isFailure(nResult); }
};

const char* nameOf(EHandlerCall eCall);
std::string textOf(const Event& event);
std::string textOf(const std::vector<Event>& events);

/** What happens elsewhere while a call lasts. */
enum class EMeanwhile
{
    Nothing,
    TimePasses,
    OtherThread, /**< reads all that there is and tells a temperature; the call waits for it */
    OnRequest,
    OffRequest
};

/** One deviation of the handler: which calls it meets and what it does to them. */
struct Fault
{
    static constexpr std::size_t FOR_EVER = std::numeric_limits<std::size_t>::max();

    std::string sName;
    EHandlerCall eCall = EHandlerCall::Count; /**< Count: no fault */
    std::size_t nOrdinal = 0;                 /**< the first call that it meets, of this operation's, from 1 */
    std::size_t nTimes = 1;                   /**< how many calls in a row */
    EOPHResult nResult = EAF_OK;
    bool bWrites = true;
    std::optional<std::array<std::int32_t, 2>> values{}; /**< written in place of the first and any other output */
    EMeanwhile eMeanwhile = EMeanwhile::Nothing;
};

/**
 * Answers by the ordinals of its calls alone, so that two of them that are called alike answer alike: what is measured
 * is a little below what was sent, the detector's rows take turns.
 *
 * The operations are open to C++ as well; the model calls them there.
 */
class FaultyHandler : public IOutputPowerHandler
{
public:
    /** How long a slow call takes. */
    static constexpr long SLOW_CALL_MS = 1100;

    FaultyHandler();

    void plan(const Fault& fault) { m_fault = fault; }
    /** Ends the fault. */
    void mend() { m_fault = Fault{}; }

    EOPHResult setOutputPower(std::int32_t nPctrl, std::int32_t nPtarget);
    EOPHResult setTxState(std::int32_t nStep);
    EOPHResult setProductionTestSettings(std::int32_t nLoopMode);
    EOPHResult getReducedGainFromAmplifier(std::int32_t nAmplifier, std::int32_t* pReducedGain);
    EOPHResult getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain);
    EOPHResult calculateDetectorUsage(std::int32_t nPctrl, std::int32_t nLoopMode, std::int32_t* pDetectorState);
    EOPHResult getPmeasured(std::int32_t* pPmeasured);
    EOPHResult setTraffic(bool bEnable);
    EOPHResult getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper);

    std::vector<Event> m_events; /**< calls, in order; observers add what they are told */
    /** Called before a call that meets the fault returns. */
    std::function<void(EMeanwhile)> m_meanwhile;

private:
    /** Counts a call, records it. @return whether it meets the fault */
    bool begin(EHandlerCall eCall, std::int32_t nFirst = 0, std::int32_t nSecond = 0);
    /** Lets happen what happens meanwhile. @return the call's result */
    EOPHResult end(bool bFaulty) const;
    void write(bool bFaulty, std::size_t nOutput, std::int32_t* pOutput, std::int32_t nValue) const;
    std::int32_t ordinal(EHandlerCall eCall) const
    {
        return static_cast<std::int32_t>(m_anCalls[static_cast<std::size_t>(eCall)]);
    }

    IOutputPowerHandlerCStruct m_table;
    Fault m_fault;
    std::array<std::size_t, static_cast<std::size_t>(EHandlerCall::Count)> m_anCalls{};
    std::int32_t m_nPctrlSent = 0;
};
