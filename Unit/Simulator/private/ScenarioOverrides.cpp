#include "Unit/Simulator/private/ScenarioOverrides.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Unit/Text/OneLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace
{
constexpr std::size_t LONGEST_NAME = 100;
const char* const LETTERS = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";

/** One override on its way into a file's contents. */
class OverrideWriter
{
public:
    explicit OverrideWriter(const ScenarioOverride& given)
        : m_given(given), m_sName(oneLine("--set " + given.sPath + "=" + given.sValue, LONGEST_NAME))
    {}

    /** @throws ConfigurationError unless path and value can be those of an override */
    void check() const
    {
        segments();
        parsedValue();
    }

    void putInto(toml::table& document) const;

private:
    [[noreturn]] void fail(const std::string& sText) const { throw ConfigurationError(m_sName + ": " + sText); }

    std::vector<std::string> segments() const;
    toml::table parsedValue() const;
    toml::table parsed(const std::string& sValue) const { return toml::parse("value = " + sValue, m_sName); }
    std::optional<std::size_t> indexOf(const std::string& sSegment) const;
    toml::node& child(toml::node& parent, const std::string& sSegment, bool bList) const;
    void assign(toml::node& parent, const std::string& sSegment, toml::node&& value) const;
    void assignElement(toml::array& list, const std::string& sSegment, toml::node&& value) const;

    const ScenarioOverride& m_given;
    std::string m_sName; // source of every node that this override makes
};

std::vector<std::string> OverrideWriter::segments() const
{
    std::vector<std::string> result(1);
    for (const char c : m_given.sPath) {
        if (c == '.') {
            result.emplace_back();
        }
        else {
            result.back() += c;
        }
    }
    for (const std::string& sSegment : result) {
        if (sSegment.empty() || sSegment.find_first_not_of(LETTERS) != std::string::npos) {
            fail(fmt::format("\"{}\" is not the place of a key; write keys with dots between them, such as "
                             "channel.gain_percent_on or event.0.at_s",
                             oneLine(m_given.sPath, LONGEST_NAME)));
        }
    }
    return result;
}

/** @return a table with the one key "value" */
toml::table OverrideWriter::parsedValue() const
{
    const std::string& sValue = m_given.sValue;
    if (sValue.find_first_not_of(" \t") == std::string::npos) {
        fail("has no value after the =; write one as in TOML, such as 40, true or \"text\"");
    }
    if (std::any_of(sValue.begin(), sValue.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; })) {
        fail("the value holds a control character; write it in one line");
    }
    std::string sWrong;
    try {
        return parsed(sValue);
    }
    catch (const toml::parse_error& error) {
        sWrong = printable(std::string(error.description()));
    }
    // What cannot have been meant as anything else in TOML is a text, so that it needs no quotes within a shell's.
    if (sValue.find_first_of("\"'[]{}\\") != std::string::npos) {
        fail(fmt::format("the value is not valid TOML: {}", sWrong));
    }
    try {
        return parsed("'" + sValue + "'");
    }
    catch (const toml::parse_error& error) {
        fail(fmt::format("the value is not valid TOML: {}", printable(std::string(error.description()))));
    }
}

std::optional<std::size_t> OverrideWriter::indexOf(const std::string& sSegment) const
{
    std::size_t nIndex = 0;
    const char* const pEnd = sSegment.data() + sSegment.size();
    const auto result = std::from_chars(sSegment.data(), pEnd, nIndex);
    return result.ec == std::errc() && result.ptr == pEnd ? std::optional(nIndex) : std::nullopt;
}

void OverrideWriter::putInto(toml::table& document) const
{
    const std::vector<std::string> places = segments();
    toml::table value = parsedValue();
    toml::node* pParent = &document;
    for (std::size_t nPlace = 0; nPlace + 1 < places.size(); ++nPlace) {
        pParent = &child(*pParent, places[nPlace], indexOf(places[nPlace + 1]).has_value());
    }
    assign(*pParent, places.back(), std::move(*value.get("value")));
}

/** @param bList what is made where there is nothing: a list or a table */
toml::node& OverrideWriter::child(toml::node& parent, const std::string& sSegment, bool bList) const
{
    const auto find = [&parent, &sSegment, this]() -> toml::node* {
        if (toml::table* pTable = parent.as_table()) {
            return pTable->get(sSegment);
        }
        const auto nIndex = indexOf(sSegment);
        toml::array* pArray = parent.as_array();
        return pArray != nullptr && nIndex ? pArray->get(*nIndex) : nullptr;
    };
    if (find() == nullptr) {
        toml::table made = parsed(bList ? "[]" : "{}");
        assign(parent, sSegment, std::move(*made.get("value")));
    }
    return *find();
}

void OverrideWriter::assign(toml::node& parent, const std::string& sSegment, toml::node&& value) const
{
    if (toml::table* pTable = parent.as_table()) {
        const toml::source_region source = value.source();
        pTable->insert_or_assign(toml::key(sSegment, source), std::move(value));
        return;
    }
    if (toml::array* pArray = parent.as_array()) {
        assignElement(*pArray, sSegment, std::move(value));
        return;
    }
    fail(fmt::format("there is no {} in a single value; give the place of a key of the file", sSegment));
}

void OverrideWriter::assignElement(toml::array& list, const std::string& sSegment, toml::node&& value) const
{
    const auto nIndex = indexOf(sSegment);
    if (!nIndex || *nIndex > list.size()) {
        const std::string sAllowed = list.empty()
                                         ? "0, which makes the first"
                                         : fmt::format("0 to {}, or {} for a new one", list.size() - 1, list.size());
        fail(fmt::format("\"{}\" is no place in a list of {}; give {}", sSegment, list.size(), sAllowed));
    }
    if (*nIndex == list.size()) {
        list.push_back(std::move(value));
        return;
    }
    list.replace(list.cbegin() + static_cast<std::ptrdiff_t>(*nIndex), std::move(value));
}
} // namespace

void applyOverrides(toml::table& document, const std::vector<ScenarioOverride>& overrides)
{
    for (const ScenarioOverride& given : overrides) {
        OverrideWriter(given).putInto(document);
    }
}

ScenarioOverride parseOverride(const std::string& sText)
{
    const std::size_t nEquals = sText.find('=');
    if (nEquals == std::string::npos) {
        throw ConfigurationError(fmt::format("--set {}: has no =; write a key's place, = and its value, such as "
                                             "channel.gain_percent_on=40",
                                             oneLine(sText, LONGEST_NAME)));
    }
    ScenarioOverride result{oneLine(sText.substr(0, nEquals)), sText.substr(nEquals + 1)};
    OverrideWriter(result).check();
    return result;
}
