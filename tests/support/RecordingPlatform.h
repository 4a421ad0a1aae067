/** @file
 * A platform that records what a module does with it and answers as a test scripts it.
 *
 * Implements every symbol that the module imports, so a test links it instead of the unit's platform, or exports it to
 * a module that it loads.
 */
#pragma once

#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/IInterface.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/EAFResult.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "tests/support/RecordedTrace.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/** A calibration table as a test scripts it. */
struct CCalibrationTable
{
    std::string sName;
    EAFResult nGetTableResult = EAF_OK;
    bool bGetTableWrites = true; /**< whether GetTable hands out the table, whatever its result */
    EAFResult nIsValidResult = EAF_OK;
    int nValid = 1;
    EAFResult nInterpolateResult = EAF_OK;
    bool bInterpolateWrites = true;
    std::function<int(int, int)> value = [](int, int) { return 0; }; /**< of x and y */
};

/** A storage variable as a test scripts it. */
struct StorageVariable
{
    EAFResult nResult = EAF_OK;
    int32_t nValue = 0;
    bool bNullContent = false; /**< hand out a null address */
};

/** What the platform's operations answer; successes behave as they should, failures change nothing. */
struct PlatformScript
{
    long nRegisterModule = EAF_OK;
    std::function<void()> afterRegisterModule; /**< called when a module has been registered; may throw */
    long nUnRegisterModule = EAF_OK;
    EAFResult nRegisterInterface = EAF_OK;
    EAFResult nUnregisterInterface = EAF_OK;
    EAFResult nCGetInstance = EAF_OK;
    EAFResult nCRegisterInterface = EAF_OK;
    EAFResult nCUnregisterInterface = EAF_OK;
    EAFResult nCDestroyInstance = EAF_OK;
    EAFResult nRegisterTemperatureObserver = EAF_OK;
    EAFResult nMissingVariable = EAF_FAILED;          /**< result for a variable that is not scripted */
    int nDefaultGtLevel = 1;                          /**< level of every diagnostic code not named here */
    std::map<unsigned long, int> gtLevels;            /**< level by diagnostic code */
    std::map<std::string, StorageVariable> variables; /**< by name */
    std::map<std::string, CCalibrationTable> tables;  /**< by name; a name missing here has no table */
    std::map<std::string, IInterface*> interfaces;    /**< what the C++ broker holds */
    std::map<std::string, void*> records;             /**< what the C broker holds */
    std::vector<ModuleInterface*> modules;            /**< registered, in order */
    std::vector<ITemperatureObserver*> temperatureObservers;
};

/**
 * The one recording platform of a test's process.
 *
 * Call records read "RegisterModule", "registerInterface(name)", "getInterface(name)", "GetTable(name)",
 * "IsValid(name)", "BiLinearInterpolate(name, x, y)", "GetVariable(name, reserved)",
 * "CInterfaceBroker_RegisterInterface(name)", "ITemperatureHandler::registerObserver" and so on; a null interface is
 * shown by ", null" after the name. The recording handlers and observers write into the same log, so that the order of
 * everything is visible. Recording may happen in any thread; scripts are changed while no other thread uses them.
 */
class RecordingPlatform
{
public:
    static RecordingPlatform& get();

    RecordingPlatform(const RecordingPlatform&) = delete;
    RecordingPlatform& operator=(const RecordingPlatform&) = delete;

    /** Forgets records and scripts; leaves quiet mode; the trace objects are at level 7. */
    void reset();
    /** Forgets records only. */
    void clearRecords();

    /** While quiet nothing is recorded, allocated or locked, and the trace objects are below every level. */
    void setQuiet(bool bQuiet);
    bool isQuiet() const { return m_bQuiet.load(std::memory_order_relaxed); }

    PlatformScript& script() { return m_script; }
    /** @return the script of a table, made when it is new */
    CCalibrationTable& table(const std::string& sName);
    void publish(const std::string& sName, IInterface* pInterface) { m_script.interfaces[sName] = pInterface; }
    /** @return what the C broker holds under a name, or null */
    void* record(const std::string& sName) const;

    /** Appends a call record; @p call makes its text and is not called while quiet. */
    template <class TCall> void recordCall(TCall call)
    {
        if (!isQuiet()) {
            append(call());
        }
    }

    std::vector<std::string> calls() const;
    /** @return the call records that begin with @p sPrefix */
    std::vector<std::string> callsOf(const std::string& sPrefix) const;
    /** @return the index of the first record that is @p sCall, or calls().size() */
    std::size_t indexOfCall(const std::string& sCall) const;

    std::vector<RecordedTrace> traces() const;
    /** @return the texts of the traces of a level, in order; those ended wrongly begin with "NOT ENDED: " */
    std::vector<std::string> traceTexts(int nLevel) const;
    /** @return whether every message was begun and ended as it should be */
    bool areTracesWellFormed() const;

    /** @return "group, level" of every living stream trace object; not touched by reset() */
    std::vector<std::string> traceObjects() const;

    // For the doubles.
    void append(std::string sCall);
    void appendTrace(RecordedTrace trace);
    void addTraceObject(const char* pGroup, int nLevel);
    void removeTraceObject(const char* pGroup);

private:
    RecordingPlatform() = default;
    ~RecordingPlatform() = default;

    mutable std::mutex m_mutex;
    std::atomic<bool> m_bQuiet{false};
    PlatformScript m_script;
    std::vector<std::string> m_calls;
    std::vector<RecordedTrace> m_traces;
    std::vector<std::string> m_traceObjects;
};
