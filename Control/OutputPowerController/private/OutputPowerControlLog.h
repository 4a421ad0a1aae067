/** @file
 * The log object of a radio channel: regulation statistics, transient samples and their test-interface commands.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerControlLog.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/KmtTrace.h"

#include <cstdint>
#include <string>
#include <vector>

/**
 * Owned and fed by the channel's controller, reached by others under three names.
 *
 * Takes no locks: the controller writes in the thread that regulates, the commands run in their servers' threads. The
 * platform decides whether the two may meet; the commands are made so that a meeting does no more than garble one
 * record or drop samples.
 */
class OutputPowerControlLog : public IOutputPowerControlLog
{
public:
    /** One step of the regulation. */
    struct TransientLog
    {
        std::int32_t txRfPowerSet;
        std::int32_t txRfPowerTarget;
        std::int32_t txRfDetectedPower;
        std::int32_t txIfPower;
        std::int32_t txRfGain;
    };

    /** The statistics; callers get the whole record, so the order of its fields is part of the interface. */
    struct OpcLog
    {
        std::int32_t txRfPowerSetMin;
        std::int32_t txRfPowerSetActual;
        std::int32_t txRfPowerSetMax;
        std::int32_t txRfPowerTargetMin;
        std::int32_t txRfPowerTargetActual;
        std::int32_t txRfPowerTargetMax;
        std::int32_t txRfDetectedPowerMin;
        std::int32_t txRfDetectedPowerActual;
        std::int32_t txRfDetectedPowerMax;
        std::int32_t txIfPowerMin;
        std::int32_t txIfPowerActual;
        std::int32_t txIfPowerMax;
        std::int32_t txRfGainMin;
        std::int32_t txRfGainActual;
        std::int32_t txRfGainMax;
        std::int32_t txRfGainInitial;
        std::int32_t gainReductionAmplifierMin[6];
        std::int32_t gainReductionAmplifierActual[6];
        std::int32_t gainReductionAmplifierMax[6];
    };

    /** What a request to a log command asks for. */
    enum EOPCLogRequestOption : std::int32_t
    {
        eOPC_LOG_REQUEST_START = 0,
        eOPC_LOG_REQUEST_ENABLE = 1,
        eOPC_LOG_REQUEST_STOP = 2,
        eOPC_LOG_REQUEST_DISABLE = 3,
        eOPC_LOG_REQUEST_READ = 4,
        eOPC_LOG_REQUEST_READ_AND_RESET = 5,
        eOPC_LOG_REQUEST_SAVE_TO_SYSLOG = 6,
        eOPC_LOG_REQUEST_INVALID = 7
    };

    /** Samples that the transient log holds at the most; later ones are dropped. */
    static constexpr std::size_t MAX_TRANSIENT_LOG_SAMPLES = 200;

    explicit OutputPowerControlLog(unsigned int channel);
    /** Withdraws nothing: unInitialize() comes first. */
    ~OutputPowerControlLog() override;

    OutputPowerControlLog(const OutputPowerControlLog&) = delete;
    OutputPowerControlLog& operator=(const OutputPowerControlLog&) = delete;
    OutputPowerControlLog(OutputPowerControlLog&&) = delete;
    OutputPowerControlLog& operator=(OutputPowerControlLog&&) = delete;

    void logsRestart() override;

    /** Empties both logs and publishes the object under its three names. @return EAF_OK */
    EAFResult initialize();
    /** Withdraws the three names; the logs keep what they hold. */
    void unInitialize();

    /**
     * Adds a sample to the statistics. Runs in the regulation path: allocates nothing.
     *
     * The first sample after a reset, and every sample while the log is not active, stands as minimum, actual value and
     * maximum at once.
     */
    void writeToOpcLog(int nTxRfPowerSet, int nTxRfPowerTarget, int nTxRfDetectedPower, int nTxIfPower, int nTxRfGain,
                       int nGainReductionAmplifier1, int nGainReductionAmplifier2, int nGainReductionAmplifier3,
                       int nGainReductionAmplifier4, int nGainReductionAmplifier5, int nGainReductionAmplifier6);
    void writeInitialTxRfGainToOpcLog(int nTxRfGain);
    void readFromOpcLog(OpcLog* pOpcLog);
    /** Zeroes the statistics; the active flag stays. */
    void resetOpcLog();
    void setOpcLogActive(bool bActive);
    bool isOpcLogActive() const;
    void writeOpcLogToSyslog();

    /**
     * Adds a sample while the transient log is active and not full, and gives the previous one the detected power that
     * belongs to it. Runs in the regulation path: allocates only while the storage grows.
     */
    void addSampleToTransientLog(int nTxRfPowerSet, int nTxRfPowerTarget, int nTxRfDetectedPower, int nTxIfPower,
                                 int nTxRfGain);
    /**
     * Reads a sample.
     * @param nSample number of the sample, from 1; 0 is not tested for
     * @return EAF_OK, or EAF_FAILED when there is no such sample, which writes no output
     */
    EAFResult getSampleFromTransientLog(unsigned short nSample, int* pTxRfPowerSet, int* pTxRfPowerTarget,
                                        int* pTxRfDetectedPower, int* pTxIfPower, int* pTxRfGain);
    unsigned int getNumberOfSamplesInTransientLog() const;
    /** Empties the log; the active flag and the storage stay. */
    void resetTransientLog();
    void setTransientLogActive(bool bActive);
    bool isTransientLogActive() const;
    /** Writes nothing at all when there is no sample. */
    void writeTransientLogToSyslog();

    /** @return the option of a string, compared exactly, or eOPC_LOG_REQUEST_INVALID */
    EOPCLogRequestOption convertRequestStringToRequestEnum(std::string sRequestOption) const;

    /** The transient log's record in the C broker; see handleTIManageOPCTransientLog(). */
    static XMLRPC_VALUE statichandleTIManageOPCTransientLog(void* vpThis, _xmlrpc_server* pServer,
                                                            _xmlrpc_request* pRequest, void* pUserData);
    /**
     * Serves a request to the transient log: "Enable", "Disable", "Read" or "SaveToSysLog".
     * @return response or fault, the caller's to release
     */
    XMLRPC_VALUE handleTIManageOPCTransientLog(_xmlrpc_server* pServer, _xmlrpc_request* pRequest, void* pUserData);

    /** The OPC log's record in the C broker; see manageOpcLog(). */
    static XMLRPC_VALUE staticManageOpcLog(void* vpThis, char* sRequestOption);
    /**
     * Serves a request to the OPC log: "Start", "Stop", "Read", "ReadAndReset" or "SaveToSysLog".
     * @param sRequestOption the option; not null
     * @return response or fault, the caller's to release
     */
    XMLRPC_VALUE manageOpcLog(char* sRequestOption);

protected:
    static KmtTrace ms_trace;

    unsigned int m_nChannel;
    std::vector<TransientLog> m_vTransientLog;
    OpcLog m_opcLog{};
    bool m_bTransientLogActive = false;
    bool m_bOpcLogActive = false;
    bool m_bOpcLogFirstSample = true;
    ManageLogsCStruct m_manageLogsCStruct{};
    TIMethodCStruct m_tiMethodCStruct{};

private:
    void resetLogs();
    XMLRPC_VALUE readTransientLog(XMLRPC_VALUE xResponse, bool bWasActive);
    XMLRPC_VALUE readOpcLog(XMLRPC_VALUE xResponse, bool bReset);

    static std::ostream& beginTrace(int nLevel, int nLine = __builtin_LINE());
    void traceChannel(const char* pWhen, const char* pOperation, const char* pWhat, int nLine = __builtin_LINE()) const;
};

/** Source path that every trace of the log carries. */
inline constexpr const char* LOG_SOURCE_PATH = "Control/OutputPowerController/private/OutputPowerControlLog";
