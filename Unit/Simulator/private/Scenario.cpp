#include "Unit/Simulator/Scenario.h"

#include "Platform/FileText.h"
#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Simulator/private/ScenarioOverrides.h"
#include "Unit/Simulator/private/ScenarioReaders.h"

#include <fmt/format.h>

#include <filesystem>
#include <limits>

Scenario loadScenario(const std::string& sPath, const std::vector<ScenarioOverride>& overrides)
{
    toml::table document = parseToml(readFileText(sPath), sPath);
    applyOverrides(document, overrides);
    const TomlTable root(document, sPath, "the file");
    root.allowOnly({"title", "description", "duration_s", "seed", "unit", "channel", "transmitter", "drive", "measures",
                    "event", "fault", "expect"});
    const std::string sFolder = std::filesystem::path(sPath).parent_path().string();
    Scenario scenario;
    scenario.sPath = sPath;
    scenario.sTitle = root.text("title").value_or("");
    scenario.sDescription = root.text("description").value_or("");
    const auto duration = positiveNumber(root, "duration_s", LONGEST_RUN_SECONDS);
    scenario.durationSeconds = duration ? *duration : root.requiredNumber("duration_s", 0.0, LONGEST_RUN_SECONDS);
    readScenarioUnit(root, sFolder, scenario);
    readDrive(root, sFolder, scenario);
    readEvents(root, scenario);
    readScenarioFaults(root, scenario);
    readMeasures(root, scenario);
    readExpectations(root, scenario);
    return scenario;
}

void readDrive(const TomlTable& root, const std::string& sFolder, Scenario& scenario)
{
    const auto table = root.table("drive");
    if (!table) {
        return;
    }
    table->allowOnly({"file", "requested_power", "temperature", "frequency", "start_s", "repeat"});
    DriveConfiguration& drive = scenario.drive;
    drive.sFile = existingFile(*table, "file", sFolder);
    readInterpolations(*table, drive.interpolation);
    const auto start = table->number("start_s", 0.0, LONGEST_RUN_SECONDS);
    drive.startSeconds = start.value_or(0.0);
    drive.bRepeat = table->boolean("repeat").value_or(false);
    const Profile profile(drive.sFile, drive.interpolation);
    if (start && (*start < profile.firstSecond() || *start > profile.lastSecond())) {
        table->failValue("start_s", fmt::format("a time of the drive, which goes from {} s to {} s",
                                                profile.firstSecond(), profile.lastSecond()));
    }
    if (drive.bRepeat && profile.firstSecond() == profile.lastSecond()) {
        table->failValue("repeat", "false for a drive of a single row");
    }
}

std::optional<double> positiveNumber(const TomlTable& table, const std::string& sKey, double maximum)
{
    const toml::node* pNode = table.raw().get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->is_number() ? pNode->value<double>() : std::nullopt;
    if (!value || !(*value > 0.0 && *value <= maximum)) {
        table.failValue(sKey, fmt::format("a number above 0, at most {}", maximum));
    }
    return value;
}

std::string existingFile(const TomlTable& table, const std::string& sKey, const std::string& sFolder)
{
    const std::string sFile = table.requiredText(sKey);
    std::string sPath = table.isFromElsewhere(sKey) ? sFile : (std::filesystem::path(sFolder) / sFile).string();
    std::error_code error;
    if (!std::filesystem::is_regular_file(sPath, error)) {
        table.failValue(sKey, fmt::format("a file that can be read; there is none at {}", sPath));
    }
    return sPath;
}

void checkWithinRun(const TomlTable& root, const TomlTable& table, const std::string& sKey, double seconds,
                    double durationSeconds)
{
    if (seconds < durationSeconds) {
        return;
    }
    if (!table.isFromElsewhere(sKey) && root.isFromElsewhere("duration_s")) {
        root.fail("duration_s", fmt::format("duration_s in {} is {}; it must be above {} in {} of line {}, which is {}",
                                            root.place(), durationSeconds, sKey, table.place(), table.line(), seconds));
    }
    table.failValue(sKey, fmt::format("a number from 0 to below duration_s, which is {}", durationSeconds));
}
