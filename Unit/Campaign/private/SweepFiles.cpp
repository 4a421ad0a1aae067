#include "Unit/Campaign/private/SweepFiles.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>

namespace
{
constexpr std::array<const char*, 2> FILE_KEYS = {"drive.file", "unit.file"};

bool namesFile(const ScenarioOverride& given)
{
    return std::find(FILE_KEYS.begin(), FILE_KEYS.end(), given.sPath) != FILE_KEYS.end() &&
           given.sValue.starts_with('"');
}

/** @return a text as it stands in a file; one in JSON is one in TOML */
std::string tomlText(const std::string& sText)
{
    return nlohmann::json(sText).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}
} // namespace

ScenarioOverride fromFolder(const ScenarioOverride& given, const std::string& sFolder)
{
    if (!namesFile(given)) {
        return given;
    }
    const std::string sFile = given.sValue.substr(1, given.sValue.size() - 2); // a sweep's texts need no escapes
    return {given.sPath, tomlText((std::filesystem::path(sFolder) / sFile).lexically_normal().string())};
}
