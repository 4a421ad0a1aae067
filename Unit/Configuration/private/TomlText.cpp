#include "Unit/Configuration/private/TomlText.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Platform/TomlKeys.h"
#include "Unit/Configuration/TomlTable.h"

#include <fmt/format.h>

#include <sstream>

namespace
{
constexpr std::size_t LONGEST_LIST_SHOWN = 6;

std::string listText(const toml::array& list)
{
    if (list.empty()) {
        return "an empty list";
    }
    std::string sText;
    for (const toml::node& element : list) {
        if (element.is_array() || element.is_table() || list.size() > LONGEST_LIST_SHOWN) {
            return fmt::format("a list of {}", list.size());
        }
        sText += (sText.empty() ? "[" : ", ") + tomlText(element);
    }
    return sText + "]";
}
} // namespace

std::string tomlText(const std::string& sText)
{
    std::string sShown = quotedForMessage(sText);
    sShown.front() = '"';
    sShown.back() = '"';
    return sShown;
}

std::string tomlText(const toml::node& node)
{
    if (const auto value = node.value_exact<std::string>()) {
        return tomlText(*value);
    }
    if (const toml::array* pList = node.as_array()) {
        return listText(*pList);
    }
    if (const toml::table* pTable = node.as_table()) {
        return pTable->empty() ? "an empty table" : "a table";
    }
    if (const auto value = node.value_exact<double>()) {
        // A whole number keeps its point, which tells it from an integer.
        const std::string sText = fmt::format("{}", *value);
        return sText.find_first_not_of("-0123456789") == std::string::npos ? sText + ".0" : sText;
    }
    std::ostringstream stream;
    node.visit([&stream](const auto& value) {
        if constexpr (toml::is_value<decltype(value)>) {
            stream << value;
        }
    });
    return stream.str();
}

toml::table parseToml(const std::string& sText, const std::string& sPath)
{
    refuseLongKeys(sText, sPath);
    try {
        return toml::parse(sText, sPath);
    }
    catch (const toml::parse_error& error) {
        // Where the encoding is wrong the parser tells the line of the block that it was reading, not the true one.
        const bool bEncoding = error.description().find("utf-8") != std::string_view::npos;
        throw ConfigurationError::atColumn(
            sPath, bEncoding ? 0 : error.source().begin.line, error.source().begin.column,
            fmt::format("not valid TOML: {}", printable(std::string(error.description()))));
    }
}
