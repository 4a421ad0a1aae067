/** @file
 * Reads CSV files that people wrote or programs exported.
 */
#pragma once

#include "Platform/ConfigurationError.h"
#include "Platform/EAFResult.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What a CSV file may look like. */
enum class ECsvRules
{
    Lenient, /**< any line ends, a byte-order mark, rows of any length, empty fields */
    Strict   /**< one kind of line end (LF or CRLF), no byte-order mark; every row has a value for each header */
};

/** Where a file's text stands. */
struct CsvPlace
{
    std::size_t nLine = 0;   /**< from 1 */
    std::size_t nColumn = 0; /**< in characters, from 1 */
};

/** One row of a CSV file, without blanks around its fields. */
struct CsvRow
{
    std::size_t nLine = 0; /**< line of the file, from 1 */
    std::vector<std::string> fields;
    std::vector<CsvPlace> places; /**< where each field begins, behind blanks */
    CsvPlace end;                 /**< behind the row's last character */
};

/**
 * A CSV file, read whole: comma-separated, fields optionally quoted, empty lines and lines that begin with # left out.
 * Errors name file and line, with strict rules also the character's column and the name that the first row gives.
 */
class EAF_PUBLIC CsvFile
{
public:
    /** @throws ConfigurationError when the file cannot be read, is not CSV or breaks the rules */
    explicit CsvFile(std::string sPath, ECsvRules eRules = ECsvRules::Lenient);

    const std::string& path() const { return m_sPath; }
    const std::vector<CsvRow>& rows() const { return m_rows; }

    /**
     * Finds a column by its name in the first row.
     * @return its index, from 0; none when the first row does not have it, or there is no row
     * @throws ConfigurationError when it is there twice
     */
    std::optional<std::size_t> column(const std::string& sName) const;

    /**
     * Reads a field as a number.
     * @param nColumn index of the field, from 0
     * @throws ConfigurationError that names file, line, column and what was read, also for a field that is missing
     */
    double number(const CsvRow& row, std::size_t nColumn) const;

    /** Reads a field as a 32-bit integer. @throws ConfigurationError as number() does */
    int32_t integer(const CsvRow& row, std::size_t nColumn) const;

    /**
     * Says what is wrong with a field.
     * @param nColumn index of the field, from 0; the row has it
     * @param sWrong what follows the field's text, beginning with a blank
     */
    ConfigurationError errorAt(const CsvRow& row, std::size_t nColumn, const std::string& sWrong) const;

private:
    bool isStrict() const { return m_eRules == ECsvRules::Strict; }
    ConfigurationError errorIn(const CsvRow& row, std::size_t nColumn, const std::string& sText) const;
    std::string columnText(const CsvRow& row, std::size_t nColumn) const;
    const std::string& fieldAt(const CsvRow& row, std::size_t nColumn) const;
    void checkFields(const CsvRow& row) const;

    std::string m_sPath;
    ECsvRules m_eRules;
    std::vector<CsvRow> m_rows;
};
