/** @file
 * Turns the text of a CSV file into rows.
 */
#pragma once

#include "Platform/Csv/CsvFile.h"

#include <csv.h>

#include <exception>
#include <string_view>

/** Feeds libcsv line by line, so that comments can be left out and every row knows its line. */
class CsvReader
{
public:
    CsvReader(const std::string& sPath, ECsvRules eRules);
    ~CsvReader();

    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    /** @throws ConfigurationError when the text is not CSV */
    std::vector<CsvRow> read(std::string_view sText);

private:
    void readLine(std::string_view sLine);
    void checkLineEnd(std::string_view sLine);
    void markFields(std::string_view sLine);
    ConfigurationError errorAt(std::string_view sBefore, const std::string& sText) const;
    void finish();
    void rethrowFailure();

    // Called back by libcsv, through which no exception may pass.
    static void onField(void* pField, std::size_t nSize, void* pReader) noexcept;
    static void onRowEnd(int nTerminator, void* pReader) noexcept;

    const std::string& m_sPath;
    const ECsvRules m_eRules;
    std::string_view m_sLineEnd; // of the first line
    csv_parser m_parser{};
    std::vector<CsvRow> m_rows;
    CsvRow m_row;
    std::size_t m_nLine = 0;
    bool m_bInRow = false;
    bool m_bInQuotes = false;
    std::exception_ptr m_pFailure;
};
