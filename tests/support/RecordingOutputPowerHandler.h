/** @file
 * An output power handler that records its calls and answers as a test scripts it.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

/** The handler's operations, to script them by. */
enum class EHandlerCall
{
    SetOutputPower,
    SetTxState,
    SetProductionTestSettings,
    GetReducedGainFromAmplifier,
    GetTxPowerReadings,
    CalculateDetectorUsage,
    GetPmeasured,
    SetZembraMlmTrafTx,
    GetPctrlLimits,
    Count
};

/**
 * Records into the recording platform's call log: "setOutputPower(-500, 300)", "setTxState(2)",
 * "setProductionTestSettings(1)", "getReducedGainFromAmplifier(1)", "getTxPowerReadings",
 * "calculateDetectorUsage(-500, 0)", "getPmeasured", "setZembraMlmTrafTx(true)", "getPctrlLimits".
 *
 * Every operation succeeds and writes its outputs until a test says otherwise.
 */
class RecordingOutputPowerHandler : public IOutputPowerHandler
{
public:
    RecordingOutputPowerHandler();

    /** Lets an operation give a result from now on; outputs are written all the same. */
    void setResult(EHandlerCall eCall, EOPHResult nResult) { behaviour(eCall).nResult = nResult; }
    /** Lets the k-th call from now, counted from 1, give a result; the others give that of setResult(). */
    void setResultOfCall(EHandlerCall eCall, std::size_t nCall, EOPHResult nResult);
    void setWritesOutputs(EHandlerCall eCall, bool bWrites) { behaviour(eCall).bWrites = bWrites; }
    /** Takes an operation's scripted results back; outputs are written again. */
    void succeed(EHandlerCall eCall);
    /** @return how often an operation was called, counted in quiet mode as well */
    std::size_t callCount(EHandlerCall eCall) const { return m_behaviours[static_cast<std::size_t>(eCall)].nCalls; }

    /** Withdraws the table, or gives it back: getCStruct() is null without it. */
    void setTableOffered(bool bOffered) { m_pCStruct = bOffered ? &m_table : nullptr; }

    // What the operations write.
    std::function<int32_t()> m_measure = [this] { return m_nPmeasured; }; /**< for a simulated transmitter */
    int32_t m_nPmeasured = 0;
    EOPHDetectorState m_eDetectorState = eOPH_DETECTOR_STATE_0;
    int32_t m_nPctrlLower = -2000;
    int32_t m_nPctrlUpper = 2000;
    int32_t m_nFirstReading = 11;
    int32_t m_nIfPower = 22;
    int32_t m_nRfGain = 33;
    std::array<int32_t, 6> m_anReducedGain{1, 2, 3, 4, 5, 6};

    // What was sent last.
    int32_t m_nPctrlSent = 0;
    int32_t m_nPtargetSent = 0;

private:
    struct Behaviour
    {
        EOPHResult nResult = EAF_OK;
        bool bWrites = true;
        std::size_t nCalls = 0;
        std::map<std::size_t, EOPHResult> resultOfCall; // by the number that nCalls has then
    };

    Behaviour& behaviour(EHandlerCall eCall) { return m_behaviours[static_cast<std::size_t>(eCall)]; }
    EOPHResult count(EHandlerCall eCall);
    bool writes(EHandlerCall eCall) const { return m_behaviours[static_cast<std::size_t>(eCall)].bWrites; }
    static RecordingOutputPowerHandler& self(void* vpThis);

    static EOPHResult setOutputPower(void* vpThis, int32_t nPctrl, int32_t nPtarget);
    static EOPHResult setTxState(void* vpThis, int32_t nStep);
    static EOPHResult setProductionTestSettings(void* vpThis, ERfDetectorLoopMode eLoopMode);
    static EOPHResult getReducedGainFromAmplifier(void* vpThis, uint32_t nAmplifier, int32_t* pReducedGain);
    static EOPHResult getTxPowerReadings(void* vpThis, int32_t* pReading, int32_t* pIfPower, int32_t* pRfGain);
    static EOPHResult calculateDetectorUsage(void* vpThis, int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                             EOPHDetectorState* pDetectorState);
    static EOPHResult getPmeasured(void* vpThis, int32_t* pPmeasured);
    static EOPHResult setZembraMlmTrafTx(void* vpThis, bool bEnable);
    static EOPHResult getPctrlLimits(void* vpThis, int32_t* pLower, int32_t* pUpper);

    IOutputPowerHandlerCStruct m_table;
    std::array<Behaviour, static_cast<std::size_t>(EHandlerCall::Count)> m_behaviours;
};
