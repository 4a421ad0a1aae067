/** @file
 * Reads a table of a TOML file so strictly that a slip of the pen is found.
 */
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/**
 * A table of a TOML file that knows where it stands. Every reader throws ConfigurationError with file, line and column,
 * what was read and what is allowed. Nodes that were put into the table from elsewhere, which their source's path
 * tells, are named by that path alone.
 */
class TomlTable
{
public:
    /**
     * @param table must outlive this object
     * @param sPath file that it comes from
     * @param sPlace how people write the table, such as "[unit]"
     */
    TomlTable(const toml::table& table, std::string sPath, std::string sPlace);

    /** Refuses keys other than these. */
    void allowOnly(const std::vector<std::string>& keys) const;

    bool has(const std::string& sKey) const { return m_table.contains(sKey); }
    const toml::table& raw() const { return m_table; }
    const std::string& place() const { return m_sPlace; }
    std::size_t line() const;

    /** @return whether a key's value, or one inside of it, comes from elsewhere than the file */
    bool isFromElsewhere(const std::string& sKey) const;

    std::optional<std::string> text(const std::string& sKey) const;
    std::string requiredText(const std::string& sKey) const;
    std::optional<bool> boolean(const std::string& sKey) const;
    std::optional<double> number(const std::string& sKey, double minimum, double maximum) const;
    double requiredNumber(const std::string& sKey, double minimum, double maximum) const;
    std::optional<std::int64_t> integer(const std::string& sKey, std::int64_t minimum, std::int64_t maximum) const;
    std::int64_t requiredInteger(const std::string& sKey, std::int64_t minimum, std::int64_t maximum) const;

    /** @return the index of a key's text among the words that are allowed */
    std::optional<std::size_t> word(const std::string& sKey, const std::vector<std::string>& words) const;

    /** Reads an integer, or a list of as many as asked for; one integer stands for all of them. */
    std::optional<std::vector<int>> integers(const std::string& sKey, std::size_t nCount, std::int64_t minimum,
                                             std::int64_t maximum) const;

    /** @return the table under a key */
    std::optional<TomlTable> table(const std::string& sKey) const;

    /** @return the tables of an array of tables, in the file's order */
    std::vector<TomlTable> tables(const std::string& sKey) const;

    /** @throws ConfigurationError at a key's value, or at the table itself */
    [[noreturn]] void fail(const std::string& sKey, const std::string& sText) const;

    /** @throws ConfigurationError at the key at fault: the first that comes from elsewhere, or else that is there */
    [[noreturn]] void failAtOneOf(const std::vector<std::string>& keys, const std::string& sText) const;

    /** @throws ConfigurationError that tells what a key reads and what it must be */
    [[noreturn]] void failValue(const std::string& sKey, const std::string& sWanted) const;

private:
    [[noreturn]] void failAt(const toml::source_region& source, const std::string& sText) const;
    [[noreturn]] void failNode(const std::string& sKey, const toml::node& node, const std::string& sWanted) const;
    [[noreturn]] void failMissing(const std::string& sKey) const;
    const toml::node* find(const std::string& sKey) const { return m_table.get(sKey); }
    std::int64_t checkedInteger(const std::string& sKey, const toml::node& node, std::int64_t minimum,
                                std::int64_t maximum) const;

    const toml::table& m_table;
    std::string m_sPath;
    std::string m_sPlace;
};

/** @return the TOML in a text @throws ConfigurationError at the place where it is not TOML */
toml::table parseToml(const std::string& sText, const std::string& sPath);
