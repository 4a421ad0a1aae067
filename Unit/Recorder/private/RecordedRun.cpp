#include "Unit/Recorder/RecordedRun.h"

#include "Platform/FileText.h"

#include <algorithm>
#include <utility>

namespace
{
/** @return a path of the unit file as it is written there; paths in the configuration are complete */
std::string asWritten(const UnitConfiguration& unit, const std::string& sPath)
{
    const std::string sFolder = unit.sFolder.empty() || unit.sFolder.back() == '/' ? unit.sFolder : unit.sFolder + "/";
    return sPath.starts_with(sFolder) ? sPath.substr(sFolder.size()) : sPath;
}

void addFile(RecordedRun& run, const UnitConfiguration& unit, const char* pKind, const std::string& sPath)
{
    const std::string sName = asWritten(unit, sPath);
    const bool bThere = std::any_of(run.files.begin(), run.files.end(), [&](const RecordedFile& file) {
        return file.sKind == pKind && file.sName == sName; // as several tables may be in one file
    });
    if (!sPath.empty() && !bThere) {
        run.files.push_back({pKind, sName, readFileBytes(sPath)});
    }
}
} // namespace

RecordedRun describeRun(const UnitConfiguration& unit, const RunSettings& settings, std::string sVersion)
{
    RecordedRun run;
    run.intervalMs = settings.intervalMs;
    run.speed = settings.speed;
    run.startSeconds = settings.startSeconds;
    run.sVersion = std::move(sVersion);
    for (const ChannelConfiguration& channel : unit.channels) {
        run.channels.push_back(channel.nNumber);
    }
    run.modules = unit.modules;
    run.files.push_back({"unit", unit.sPath, readFileBytes(unit.sPath)});
    addFile(run, unit, "storage", unit.sStorageFile);
    for (const CalibrationConfiguration& calibration : unit.calibrations) {
        addFile(run, unit, "calibration", calibration.sFile);
    }
    addFile(run, unit, "profile", unit.profile.sFile);
    return run;
}
