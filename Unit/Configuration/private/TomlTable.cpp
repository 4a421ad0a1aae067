#include "Unit/Configuration/TomlTable.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Unit/Configuration/NearName.h"
#include "Unit/Configuration/private/TomlText.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace
{
bool comesFrom(const toml::node& node, const std::string& sPath)
{
    const bool bOwn = node.source().path == nullptr || *node.source().path == sPath;
    if (const toml::array* pArray = node.as_array(); bOwn && pArray != nullptr) {
        return std::all_of(pArray->begin(), pArray->end(),
                           [&sPath](const toml::node& element) { return comesFrom(element, sPath); });
    }
    return bOwn;
}
} // namespace

TomlTable::TomlTable(const toml::table& table, std::string sPath, std::string sPlace)
    : m_table(table), m_sPath(std::move(sPath)), m_sPlace(std::move(sPlace))
{}

std::size_t TomlTable::line() const
{
    return m_table.source().begin.line;
}

void TomlTable::allowOnly(const std::vector<std::string>& keys) const
{
    for (const auto& [key, node] : m_table) {
        const std::string sKey(key.str());
        if (std::find(keys.begin(), keys.end(), sKey) == keys.end()) {
            failAt(key.source(), fmt::format("unknown key {} in {}; {}", tomlText(sKey), m_sPlace,
                                             knownNames(sKey, keys, "known keys")));
        }
    }
}

bool TomlTable::isFromElsewhere(const std::string& sKey) const
{
    const toml::node* pNode = find(sKey);
    return pNode != nullptr && !comesFrom(*pNode, m_sPath);
}

std::optional<std::string> TomlTable::text(const std::string& sKey) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->value_exact<std::string>();
    if (!value) {
        failValue(sKey, "a text in quotes");
    }
    if (value->empty()) {
        failValue(sKey, "a text that is not empty");
    }
    return *value;
}

std::string TomlTable::requiredText(const std::string& sKey) const
{
    const auto value = text(sKey);
    if (!value) {
        failMissing(sKey);
    }
    return *value;
}

std::optional<bool> TomlTable::boolean(const std::string& sKey) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->value_exact<bool>();
    if (!value) {
        failValue(sKey, "true or false");
    }
    return value;
}

std::optional<double> TomlTable::number(const std::string& sKey, double minimum, double maximum) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->is_number() ? pNode->value<double>() : std::nullopt;
    if (!value || !(*value >= minimum && *value <= maximum)) {
        failValue(sKey, fmt::format("a number from {} to {}", minimum, maximum));
    }
    return value;
}

double TomlTable::requiredNumber(const std::string& sKey, double minimum, double maximum) const
{
    const auto value = number(sKey, minimum, maximum);
    if (!value) {
        failMissing(sKey);
    }
    return *value;
}

std::int64_t TomlTable::checkedInteger(const std::string& sKey, const toml::node& node, std::int64_t minimum,
                                       std::int64_t maximum) const
{
    const auto value = node.value_exact<std::int64_t>();
    if (!value || *value < minimum || *value > maximum) {
        failNode(sKey, node, fmt::format("a whole number from {} to {}", minimum, maximum));
    }
    return *value;
}

std::optional<std::int64_t> TomlTable::integer(const std::string& sKey, std::int64_t minimum,
                                               std::int64_t maximum) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    return checkedInteger(sKey, *pNode, minimum, maximum);
}

std::int64_t TomlTable::requiredInteger(const std::string& sKey, std::int64_t minimum, std::int64_t maximum) const
{
    const auto value = integer(sKey, minimum, maximum);
    if (!value) {
        failMissing(sKey);
    }
    return *value;
}

std::optional<std::size_t> TomlTable::word(const std::string& sKey, const std::vector<std::string>& words) const
{
    const auto sValue = text(sKey);
    if (!sValue) {
        return std::nullopt;
    }
    const auto found = std::find(words.begin(), words.end(), *sValue);
    if (found == words.end()) {
        failValue(sKey, words.size() == 2 ? fmt::format("\"{}\" or \"{}\"", words[0], words[1])
                                          : fmt::format("one of {}", fmt::join(words, ", ")));
    }
    return static_cast<std::size_t>(found - words.begin());
}

std::optional<std::vector<int>> TomlTable::integers(const std::string& sKey, std::size_t nCount, std::int64_t minimum,
                                                    std::int64_t maximum) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const toml::array* pArray = pNode->as_array();
    if (pArray == nullptr) {
        return std::vector<int>(nCount, static_cast<int>(checkedInteger(sKey, *pNode, minimum, maximum)));
    }
    if (pArray->size() != nCount) {
        failValue(sKey, fmt::format("a whole number or a list of {}", nCount));
    }
    std::vector<int> values;
    for (const toml::node& node : *pArray) {
        values.push_back(static_cast<int>(checkedInteger(sKey, node, minimum, maximum)));
    }
    return values;
}

std::optional<TomlTable> TomlTable::table(const std::string& sKey) const
{
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const toml::table* pTable = pNode->as_table();
    if (pTable == nullptr) {
        failValue(sKey, fmt::format("a table, written [{}]", sKey));
    }
    return TomlTable(*pTable, m_sPath, fmt::format("[{}]", sKey));
}

std::vector<TomlTable> TomlTable::tables(const std::string& sKey) const
{
    std::vector<TomlTable> result;
    const toml::node* pNode = find(sKey);
    if (pNode == nullptr) {
        return result;
    }
    const toml::array* pArray = pNode->as_array();
    const bool bTables = pArray != nullptr && std::all_of(pArray->begin(), pArray->end(),
                                                          [](const toml::node& node) { return node.is_table(); });
    if (!bTables) {
        failValue(sKey, fmt::format("a list of tables, each written [[{}]]", sKey));
    }
    for (const toml::node& node : *pArray) {
        result.emplace_back(*node.as_table(), m_sPath, fmt::format("[[{}]]", sKey));
    }
    return result;
}

void TomlTable::fail(const std::string& sKey, const std::string& sText) const
{
    const toml::node* pNode = sKey.empty() ? nullptr : find(sKey);
    failAt(pNode == nullptr ? m_table.source() : pNode->source(), sText);
}

void TomlTable::failAtOneOf(const std::vector<std::string>& keys, const std::string& sText) const
{
    const auto elsewhere =
        std::find_if(keys.begin(), keys.end(), [this](const std::string& sKey) { return isFromElsewhere(sKey); });
    if (elsewhere != keys.end()) {
        fail(*elsewhere, sText);
    }
    const auto present = std::find_if(keys.begin(), keys.end(), [this](const std::string& sKey) { return has(sKey); });
    fail(present == keys.end() ? "" : *present, sText);
}

void TomlTable::failValue(const std::string& sKey, const std::string& sWanted) const
{
    failNode(sKey, *find(sKey), sWanted);
}

void TomlTable::failNode(const std::string& sKey, const toml::node& node, const std::string& sWanted) const
{
    const bool bWhole = &node == find(sKey);
    failAt(node.source(), fmt::format("{} in {} {} {}; it must be {}", sKey, m_sPlace, bWhole ? "is" : "holds",
                                      tomlText(node), sWanted));
}

void TomlTable::failMissing(const std::string& sKey) const
{
    fail("", fmt::format("{} has no key {}; add it", m_sPlace, sKey));
}

void TomlTable::failAt(const toml::source_region& source, const std::string& sText) const
{
    const std::string sShown = printable(sText); // names and paths in it are the file's
    if (source.path != nullptr && *source.path != m_sPath) {
        throw ConfigurationError(*source.path + ": " + sShown);
    }
    throw ConfigurationError::atColumn(m_sPath, source.begin.line, source.begin.column, sShown);
}
