#include "Unit/CommandLine/ExportCommand.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Conversions.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/OptionChecks.h"
#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/CommandLine/private/RecordedPart.h"
#include "Unit/Files/NewFile.h"
#include "Unit/Recorder/RecordedTime.h"
#include "Unit/Recorder/RecordingExport.h"
#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <optional>

namespace
{
constexpr std::array<EResolution, 3> RESOLUTIONS = {EResolution::Steps, EResolution::Seconds, EResolution::Minutes};
constexpr std::array<const char*, 3> RESOLUTION_NAMES = {"steps", "seconds", "minutes"};

constexpr const char* EXPORT_EXAMPLES =
    "Examples:\n"
    "  opc export unit.db > run.csv\n"
    "      the last run, as closely as it was kept\n"
    "  opc export unit.db --from 120 --to 180.5 --channel 0 --output minute.csv\n"
    "      a minute of a channel, every step, by seconds since the run began\n"
    "  opc export unit.db --from 2026-11-21T08:00Z --resolution minutes --output day.csv\n"
    "      minimum, mean and maximum of each minute since eight o'clock\n"
    "  opc export unit.db --run 3 --events\n"
    "      what happened in the third run\n"
    "\n"
    "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file.";

std::vector<unsigned int> wantedChannels(const RecordedRun& run, const std::vector<unsigned int>& wanted)
{
    for (const unsigned int nChannel : wanted) {
        if (std::find(run.channels.begin(), run.channels.end(), nChannel) == run.channels.end()) {
            throw ConfigurationError(fmt::format("--channel: run {} has no channel {}; it has {}", run.nId, nChannel,
                                                 fmt::join(run.channels, ", ")));
        }
    }
    return wanted.empty() ? run.channels : wanted;
}

/** @return the closest that reaches back as far as is asked for, or else the one that reaches back furthest */
EResolution closestFor(const Recording& recording, std::int64_t nRun, std::uint64_t nFromUs)
{
    EResolution eBest = EResolution::Steps;
    std::optional<std::uint64_t> nFurthestUs;
    for (const EResolution eResolution : RESOLUTIONS) {
        const auto times = recording.times(eResolution, nRun);
        if (times && (!nFurthestUs || std::max(times->nFirstUs, nFromUs) < *nFurthestUs)) {
            nFurthestUs = std::max(times->nFirstUs, nFromUs);
            eBest = eResolution;
        }
    }
    return eBest;
}

EResolution wantedResolution(const Recording& recording, const ExportOptions& options, std::int64_t nRun,
                             std::uint64_t nFromUs)
{
    const auto name = std::find(RESOLUTION_NAMES.begin(), RESOLUTION_NAMES.end(), options.sResolution);
    return name == RESOLUTION_NAMES.end() ? closestFor(recording, nRun, nFromUs)
                                          : RESOLUTIONS.at(static_cast<std::size_t>(name - RESOLUTION_NAMES.begin()));
}

RecordingExport requestOf(const Recording& recording, const RecordedRun& run, const ExportOptions& options)
{
    RecordingExport request;
    request.channels = wantedChannels(run, options.channels);
    request.nFromUs = options.sFrom.empty() ? 0 : wantedTimeUs("--from", options.sFrom, run);
    request.nToUs = RecordedRange().nToUs;
    if (!options.sTo.empty()) {
        request.nToUs = wantedTimeUs("--to", options.sTo, run);
        if (request.nToUs < request.nFromUs) {
            throw ConfigurationError(
                fmt::format("--to: \"{}\" is before --from, which is \"{}\"", options.sTo, options.sFrom));
        }
    }
    request.eResolution = wantedResolution(recording, options, run.nId, request.nFromUs);
    return request;
}

/** @return the seconds from the first to the last row */
ProgressBar::Task taskOf(const Recording& recording, const RecordedRun& run, const RecordingExport& request)
{
    ProgressBar::Task task;
    task.sUnit = "s";
    const auto times = recording.times(request.eResolution, run.nId);
    if (times) {
        const std::uint64_t nFirstUs = std::max(times->nFirstUs, request.nFromUs);
        const std::uint64_t nLastUs = std::max(std::min(times->nLastUs, request.nToUs), nFirstUs);
        task.total = static_cast<double>(nLastUs - nFirstUs) / US_PER_S;
    }
    return task;
}
} // namespace

ExportCommand::ExportCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("export", "Write a part of a recording as comma-separated values"))
{
    m_pCommand->add_option("RECORDING.db", m_options.sRecording, "The recording of opc run --record")
        ->required()
        ->type_name("FILE");
    m_pCommand->add_option("--run", m_options.sRun, "Which run of the recording; the last one when left out")
        ->type_name("N|{last}");
    m_pCommand
        ->add_option("--from", m_options.sFrom,
                     "Begin here: seconds since the run began, or a time such as 2026-11-21T15:00:00Z")
        ->type_name("TIME");
    m_pCommand->add_option("--to", m_options.sTo, "End here, likewise")->type_name("TIME");
    m_pCommand->add_option("--channel", m_options.channels, "Only this channel; repeatable")
        ->type_name("N")
        ->allow_extra_args(false);
    m_pCommand
        ->add_option("--resolution", m_options.sResolution,
                     "Every step, or minimum, mean and maximum of seconds or minutes; auto, which holds when left out, "
                     "takes the closest that reaches back far enough")
        ->type_name("{steps,seconds,minutes,auto}")
        ->check(oneOf({"steps", "seconds", "minutes", "auto"}));
    m_pCommand->add_flag("--events", m_options.bEvents, "Write the events in place of the values");
    m_pCommand->add_option("--format", m_options.sFormat, "How to write it")->type_name("{csv}")->check(oneOf({"csv"}));
    m_pCommand->add_option("--output", m_options.sOutputFile, "Write into this file, not to standard output")
        ->type_name("FILE");
    m_pCommand->footer(EXPORT_EXAMPLES);
}

int ExportCommand::run() const
{
    (void)std::signal(SIGPIPE, SIG_IGN); // of a reader that has seen enough
    const Recording recording(m_options.sRecording);
    const RecordedRun run = wantedRun(recording, m_options.sRun);
    RecordingExport request = requestOf(recording, run, m_options);
    const auto pFile = m_options.sOutputFile.empty() ? nullptr : std::make_unique<NewFile>(m_options.sOutputFile);
    const bool bShown = isatty(STDERR_FILENO) == 1 && (pFile || isatty(STDOUT_FILENO) == 0);
    ProgressBar progress(stderr, bShown, taskOf(recording, run, request));
    std::optional<std::uint64_t> nFirstUs;
    request.progress = [&](std::uint64_t nTimeUs) {
        nFirstUs = nFirstUs.value_or(nTimeUs);
        progress.update(static_cast<double>(nTimeUs - *nFirstUs) / US_PER_S);
    };
    request.write = [&](std::string_view sText) {
        if (pFile) {
            pFile->write(sText);
        }
        else {
            printOut(std::string(sText));
        }
    };
    (m_options.bEvents ? exportEvents : exportSteps)(recording, run, request);
    if (pFile) {
        pFile->finish();
    }
    return eEXIT_OK;
}
