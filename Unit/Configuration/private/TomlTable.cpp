#include "Unit/Configuration/TomlTable.h"

#include "Platform/ConfigurationError.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

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
            fail(sKey, fmt::format("unknown key \"{}\" in {}; known keys: {}", sKey, m_sPlace, fmt::join(keys, ", ")));
        }
    }
}

std::optional<std::string> TomlTable::text(const std::string& sKey) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->value_exact<std::string>();
    if (!value) {
        failKind(sKey, "a text in quotes");
    }
    if (value->empty()) {
        failKind(sKey, "a text that is not empty");
    }
    return *value;
}

std::string TomlTable::requiredText(const std::string& sKey) const
{
    const auto value = text(sKey);
    if (!value) {
        fail("", fmt::format("{} has no key {}; add it", m_sPlace, sKey));
    }
    return *value;
}

std::optional<bool> TomlTable::boolean(const std::string& sKey) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->value_exact<bool>();
    if (!value) {
        failKind(sKey, "true or false");
    }
    return value;
}

std::optional<double> TomlTable::number(const std::string& sKey, double minimum, double maximum) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const auto value = pNode->is_number() ? pNode->value<double>() : std::nullopt;
    if (!value || !(*value >= minimum && *value <= maximum)) {
        failKind(sKey, fmt::format("a number from {} to {}", minimum, maximum));
    }
    return value;
}

std::int64_t TomlTable::checkedInteger(const std::string& sKey, const toml::node& node, std::int64_t minimum,
                                       std::int64_t maximum) const
{
    const auto value = node.value_exact<std::int64_t>();
    if (!value || *value < minimum || *value > maximum) {
        failKind(sKey, fmt::format("a whole number from {} to {}", minimum, maximum));
    }
    return *value;
}

std::optional<std::int64_t> TomlTable::integer(const std::string& sKey, std::int64_t minimum,
                                               std::int64_t maximum) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    return checkedInteger(sKey, *pNode, minimum, maximum);
}

std::int64_t TomlTable::requiredInteger(const std::string& sKey, std::int64_t minimum, std::int64_t maximum) const
{
    const auto value = integer(sKey, minimum, maximum);
    if (!value) {
        fail("", fmt::format("{} has no key {}; add it", m_sPlace, sKey));
    }
    return *value;
}

std::optional<std::vector<int>> TomlTable::integers(const std::string& sKey, std::size_t nCount, std::int64_t minimum,
                                                    std::int64_t maximum) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const toml::array* pArray = pNode->as_array();
    if (pArray == nullptr) {
        return std::vector<int>(nCount, static_cast<int>(checkedInteger(sKey, *pNode, minimum, maximum)));
    }
    if (pArray->size() != nCount) {
        failKind(sKey, fmt::format("a whole number or a list of {}", nCount));
    }
    std::vector<int> values;
    for (const toml::node& node : *pArray) {
        values.push_back(static_cast<int>(checkedInteger(sKey, node, minimum, maximum)));
    }
    return values;
}

std::optional<TomlTable> TomlTable::table(const std::string& sKey) const
{
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return std::nullopt;
    }
    const toml::table* pTable = pNode->as_table();
    if (pTable == nullptr) {
        failKind(sKey, fmt::format("a table, written [{}]", sKey));
    }
    return TomlTable(*pTable, m_sPath, fmt::format("[{}]", sKey));
}

std::vector<TomlTable> TomlTable::tables(const std::string& sKey) const
{
    std::vector<TomlTable> result;
    const toml::node* pNode = m_table.get(sKey);
    if (pNode == nullptr) {
        return result;
    }
    const toml::array* pArray = pNode->as_array();
    const bool bTables = pArray != nullptr && std::all_of(pArray->begin(), pArray->end(),
                                                          [](const toml::node& node) { return node.is_table(); });
    if (!bTables) {
        failKind(sKey, fmt::format("a list of tables, each written [[{}]]", sKey));
    }
    for (const toml::node& node : *pArray) {
        result.emplace_back(*node.as_table(), m_sPath, fmt::format("[[{}]]", sKey));
    }
    return result;
}

void TomlTable::fail(const std::string& sKey, const std::string& sText) const
{
    const toml::node* pNode = sKey.empty() ? nullptr : m_table.get(sKey);
    throw ConfigurationError::atLine(m_sPath, pNode == nullptr ? line() : pNode->source().begin.line, sText);
}

void TomlTable::failKind(const std::string& sKey, const std::string& sWanted) const
{
    std::string sPlace = m_sPlace.empty() ? "" : " in " + m_sPlace;
    fail(sKey, fmt::format("{}{} must be {}", sKey, sPlace, sWanted));
}
