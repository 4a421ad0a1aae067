#include "Platform/Storage/private/StorageFile.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Platform/TomlKeys.h"

#include <toml++/toml.h>

#include <limits>
#include <optional>

namespace
{

constexpr const char* TABLE_NAME = "variables";

toml::table parse(const std::string& sPath)
{
    const std::string sText = readFileText(sPath);
    refuseLongKeys(sText, sPath);
    try {
        return toml::parse(sText, sPath);
    }
    catch (const toml::parse_error& error) {
        throw ConfigurationError::atLine(sPath, error.source().begin.line,
                                         "is not TOML (" + printable(std::string(error.description())) +
                                             "); write lines such as \"ChannelSpacing\" = 7");
    }
}

ConfigurationError errorAt(const std::string& sPath, const toml::source_region& source, const std::string& sText)
{
    return ConfigurationError::atLine(sPath, source.begin.line, sText);
}

int32_t readValue(const std::string& sPath, const toml::key& key, const toml::node& node)
{
    const std::string sName = quotedForMessage(std::string(key.str()));
    if (node.is_table()) {
        throw errorAt(sPath, key.source(),
                      "variable " + sName + " is a table; write a name that has dots in quotation marks");
    }
    const std::optional<int64_t> nValue = node.value_exact<int64_t>();
    if (!nValue) {
        throw errorAt(sPath, key.source(),
                      "variable " + sName + " is not an integer; write a whole number without quotation marks");
    }
    if (*nValue < std::numeric_limits<int32_t>::min() || *nValue > std::numeric_limits<int32_t>::max()) {
        throw errorAt(sPath, key.source(),
                      "variable " + sName + " is " + std::to_string(*nValue) +
                          ", which does not fit 32 bits; write a number from -2147483648 to 2147483647");
    }
    return static_cast<int32_t>(*nValue);
}

} // namespace

std::map<std::string, int32_t> readStorageFile(const std::string& sPath)
{
    const toml::table root = parse(sPath);
    for (const auto& entry : root) {
        if (entry.first.str() != TABLE_NAME) {
            throw errorAt(sPath, entry.first.source(),
                          "unknown key " + quotedForMessage(std::string(entry.first.str())) +
                              "; keep only the table [variables]");
        }
    }
    const toml::table* const pVariables = root[TABLE_NAME].as_table();
    if (pVariables == nullptr) {
        throw ConfigurationError::atLine(sPath, 0,
                                         "has no table [variables]; put the line [variables] above the variables");
    }
    std::map<std::string, int32_t> values;
    for (const auto& entry : *pVariables) {
        values.emplace(entry.first.str(), readValue(sPath, entry.first, entry.second));
    }
    return values;
}
