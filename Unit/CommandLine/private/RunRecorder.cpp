#include "Unit/CommandLine/private/RunRecorder.h"

#include <utility>

WantedRecording openRecording(const UnitConfiguration& unit, const RunSettings& settings, const RunOptions& options)
{
    RecorderConfiguration configuration = unit.recorder;
    if (!options.sRecordFile.empty()) {
        configuration.sFile = options.sRecordFile;
    }
    WantedRecording wanted;
    if (!configuration.sFile.empty()) {
        wanted.run = describeRun(unit, settings, OPC_VERSION);
        wanted.pRecorder = std::make_unique<UnitRecorder>(configuration);
    }
    return wanted;
}

Recorded::Recorded(WantedRecording& wanted, const RunIdentity& identity, const RunFeed& feed)
    : m_pRecorder(wanted.pRecorder.get())
{
    if (m_pRecorder != nullptr) {
        wanted.run.sRun = identity.sRun;
        wanted.run.nStartedUnixUs = identity.nStartedUnixUs;
        m_pRecorder->begin(std::move(wanted.run), feed);
    }
}

Recorded::~Recorded()
{
    if (m_pRecorder != nullptr) {
        m_pRecorder->stop();
    }
}
