/** @file
 * What surrounds a controller: its handler, tables, storage, the other handlers, the clock.
 *
 * Each side of a comparison has one of its own, and the same operations script both; so whatever differs in the lines
 * that they write was done by the sides.
 */
#pragma once

#include "tests/module/differential/Coverage.h"
#include "tests/module/differential/EventLog.h"
#include "tests/module/differential/Operation.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace Differential
{
/** Monotonic time; nanoseconds below 10^9. */
struct Time
{
    std::int64_t nSeconds = 1000;
    std::int64_t nNanoseconds = 0;
};

/** Answers as operations have scripted it; writes a line for every call that reaches it. */
class Environment
{
public:
    /** @param log gets the lines; must outlive this */
    explicit Environment(EventLog& log) : m_log(log) { heal(); }
    ~Environment() = default;

    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /** Carries out what is for the surroundings; leaves the rest, for which it returns false. */
    bool apply(const Operation& operation);

    // The output power handler. Outputs are left alone when the script says so.
    std::int32_t setOutputPower(std::int32_t nPctrl, std::int32_t nPtarget);
    std::int32_t setTxState(std::int32_t nStep);
    std::int32_t setProductionTestSettings(std::int32_t nLoopMode);
    std::int32_t getReducedGain(std::uint32_t nAmplifier, std::int32_t* pReducedGain);
    std::int32_t getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain);
    std::int32_t calculateDetectorUsage(std::int32_t nPctrl, std::int32_t nLoopMode, std::int32_t* pDetectorState);
    std::int32_t getPmeasured(std::int32_t* pPmeasured);
    std::int32_t setTraffic(bool bEnable);
    std::int32_t getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper);

    // Calibration tables, by the order in which the controller names them. -1 is none.
    std::int32_t getTable(std::string_view sName, int* pTable);
    std::int32_t isValid(int nTable, std::int32_t* pValid);
    std::int32_t interpolate(int nTable, std::int32_t nX, std::int32_t nY, std::int32_t* pValue);

    /** @param[out] ppContent null when there is no content */
    std::int32_t getVariable(std::string_view sName, const std::int32_t** ppContent);

    /** @return how the interface is published that @p sName names up to its channel */
    EPublished find(std::string_view sName);
    std::int32_t registerFrequencyObserver();
    void registerTemperatureObserver();

    std::int32_t frequency();
    Time now() const { return m_now; }
    std::int32_t testTraceLevel() const { return m_nTestTraceLevel; }
    std::uint32_t frequencyObservers() const { return m_nFrequencyObservers; }
    std::uint32_t temperatureObservers() const { return m_nTemperatureObservers; }

    void tellObserver(std::int32_t nList, std::int32_t nObserver, std::uint32_t nChannel, std::int32_t nValue);
    EventLog& log() { return m_log; }

    /** Counts handler calls for a state from now on. @param pCoverage may be null */
    void countFor(Coverage* pCoverage, std::int64_t nState)
    {
        m_pCoverage = pCoverage;
        m_nState = nState;
    }

private:
    struct Answer
    {
        std::int32_t nResult = 0;
        bool bWrites = true;
    };

    struct Call
    {
        Answer answer;
        Answer fault;
        std::int32_t nCallsToFault = 0; // 0 is none
        std::array<std::int32_t, 3> anOutput{};
    };

    struct Table
    {
        std::int32_t nFetch = 0; // 0 fetched, 1 missing, 2 success without a table, 3 failure with a table
        std::int32_t nValid = 1; // below 0 a failure that says valid
        std::int32_t nInterpolate = 0;
        bool bWrites = true;
        std::array<std::int32_t, 3> anFactor{};
    };

    struct Variable
    {
        std::int32_t nResult = 0;
        std::int32_t nValue = 0;
        bool bContent = true;
    };

    Call& call(EHandlerCall eCall) { return m_calls[static_cast<std::size_t>(eCall)]; }
    Answer answer(EHandlerCall eCall);
    void heal();
    void scriptHandler(const Operation& operation);
    void advanceClock(std::int32_t nSeconds, std::int32_t nNanoseconds);

    EventLog& m_log;
    Coverage* m_pCoverage = nullptr;
    std::int64_t m_nState = 0;
    std::array<Call, HANDLER_CALLS> m_calls{};
    bool m_bFollows = true;
    std::int32_t m_nAbovePower = 0;
    std::int32_t m_nPowerSent = 0;
    std::array<Table, 2> m_tables{};
    std::array<Variable, 2> m_variables{};
    std::array<EPublished, 3> m_published{};
    std::int32_t m_nFrequency = 0;
    std::int32_t m_nFrequencyEntry = 0;
    std::uint32_t m_nFrequencyObservers = 0;
    std::uint32_t m_nTemperatureObservers = 0;
    std::int32_t m_nTestTraceLevel = 7;
    Time m_now;
};
} // namespace Differential
