#include "Unit/CommandLine/private/RecordedPart.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Recorder/RecordedTime.h"
#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

RecordedRun wantedRun(const Recording& recording, const std::string& sRun)
{
    const std::vector<RecordedRun> runs = recording.runs();
    if (runs.empty()) {
        throw ConfigurationError(fmt::format("{}: has no run yet; record one with opc run --record", recording.path()));
    }
    if (sRun == LAST_RUN) {
        return runs.back();
    }
    const auto run = std::find_if(runs.begin(), runs.end(),
                                  [&](const RecordedRun& found) { return std::to_string(found.nId) == sRun; });
    if (run == runs.end()) {
        throw ConfigurationError(fmt::format("--run: \"{}\" is no run of {}; it can be {} to {}, or {}", sRun,
                                             recording.path(), runs.front().nId, runs.back().nId, LAST_RUN));
    }
    return *run;
}

std::uint64_t wantedTimeUs(const char* pOption, const std::string& sText, const RecordedRun& run)
{
    const auto nTimeUs = parseRunTime(sText, run.nStartedUnixUs);
    if (!nTimeUs) {
        throw ConfigurationError(fmt::format("{}: \"{}\" is no time; write seconds since the run began, such as 12.5, "
                                             "or a time of day, such as {}",
                                             pOption, sText, isoTime(run.nStartedUnixUs)));
    }
    return static_cast<std::uint64_t>(std::max<std::int64_t>(*nTimeUs, 0));
}
