/** @file
 * The controller's behaviour towards its handler, written a second time for comparison.
 */
#pragma once

#include "tests/module/matrix/HandlerPlaces.h"

#include <array>
#include <string>
#include <vector>

/** What the logs hold. */
struct LogContents
{
    std::vector<std::array<std::int32_t, 5>> samples; /**< of the transient log */
    std::array<std::int32_t, 34> opcLog{};            /**< in the record's order */

    bool operator==(const LogContents&) const = default;
};

/** Which logs record, of how many amplifiers. */
struct LogSetting
{
    const char* pName;
    bool bTransientLog;
    bool bOpcLog;
    int nGainBlocks;
};

/**
 * What the controller does, call by call. It asks the table of places whether a refusal stops a step; the texts that
 * are traced about refusals come from there alone.
 */
class ControllerModel
{
public:
    ControllerModel(FaultyHandler& handler, const LogSetting& logs);

    void setLimits(int nTxPmin);
    void setInterval(int nIntervalMs);
    int request(int nState, int nMode);
    int setProductionTest(bool bOn, int nLoopMode);
    int regulate(int nRequested);
    /** Puts the machine into the delayed switch-on, as no operation does. */
    void enterDelayedSwitchOn() { m[STATE] = 3; }
    void advanceMs(long nMilliseconds) { m_nNowMs += nMilliseconds; }

    const Members& members() const { return m; }
    const LogContents& logs() const { return m_contents; }

    std::array<std::array<int, 9>, 3> m_anGain{};
    std::vector<std::string> m_milestones; /**< what is traced at level 4 */

private:
    int stepMachine();
    int switchOffFirst();
    int switchOffSecond();
    int switchOnFirst();
    int switchOnSecond();
    int ramp();
    int closeLoop();
    /** Sends the power and feeds the logs. @return whether the handler took it */
    bool send();
    void feedOpcLog(std::int32_t nIfPower, std::int32_t nRfGain);
    int gain(int nState) const;
    bool goesOn(EOPHResult nResult) const;
    void tell(EEventKind eKind, std::int64_t nValue);
    void tellChange(EEventKind eKind, EMember eValue, EMember eLast);

    FaultyHandler& m_handler;
    LogSetting m_setting;
    Members m{};
    LogContents m_contents;
    bool m_bOpcLogEmpty = true;
    int m_nStateAtBegin = 0;
    int m_nWaitCycles = 3;
    int m_nRampCycles = 15;
    int m_nMaxStep = 100000;
    std::int64_t m_nNowMs = 0;
};
