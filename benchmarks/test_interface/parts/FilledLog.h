/** @file
 * A transient log with samples in it.
 */
#pragma once

#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "Unit/XmlRpc/XmlRpcValue.h"
#include "benchmarks/test_interface/load/SampleFile.h"

#include <vector>

/** The module's own log, filled as a run would fill it. */
class FilledLog
{
public:
    explicit FilledLog(const std::vector<Sample>& samples) : m_log(0)
    {
        m_log.setTransientLogActive(true);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            // The log gives a sample the detected power that comes with the next one, but for the last.
            const bool bOwn = n == 0 || n + 1 == OutputPowerControlLog::MAX_TRANSIENT_LOG_SAMPLES;
            const Sample& sample = samples[n];
            const int nDetected = bOwn ? sample[2] : samples[n - 1][2];
            m_log.addSampleToTransientLog(sample[0], sample[1], nDetected, sample[3], sample[4]);
        }
        m_log.setTransientLogActive(false);
    }

    /** @return what the log's command answers */
    XmlRpcValue serve(XMLRPC_REQUEST request)
    {
        return XmlRpcValue(
            OutputPowerControlLog::statichandleTIManageOPCTransientLog(&m_log, nullptr, request, nullptr));
    }

    OutputPowerControlLog& log() { return m_log; }

private:
    OutputPowerControlLog m_log;
};
