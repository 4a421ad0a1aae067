/** @file
 * Reads CSV files that people wrote or programs exported.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** One row of a CSV file, without blanks around its fields. */
struct CsvRow
{
    std::size_t nLine; /**< line of the file, from 1 */
    std::vector<std::string> fields;
};

/**
 * A CSV file, read whole: comma-separated, fields optionally quoted, empty lines and lines that begin with # left out.
 */
class EAF_PUBLIC CsvFile
{
public:
    /** @throws ConfigurationError when the file cannot be read or is not CSV */
    explicit CsvFile(std::string sPath);

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

private:
    std::string m_sPath;
    std::vector<CsvRow> m_rows;
};
