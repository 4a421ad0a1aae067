#include "Platform/Csv/CsvFile.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Csv/private/CsvReader.h"
#include "Platform/FileText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>
#include <utility>

namespace
{

void refuseByteOrderMark(const std::string& sPath, const std::string& sText)
{
    for (const char* const pMark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        if (sText.compare(0, std::strlen(pMark), pMark) == 0) {
            throw ConfigurationError::atColumn(sPath, 1, 1,
                                               "begins with a byte-order mark; save the file as UTF-8 without one");
        }
    }
}

/** @return how the conversion of a whole field went; trailing text is an error like any other */
template <class TNumber> std::errc convert(const std::string& sField, TNumber& value)
{
    const char* const pEnd = sField.data() + sField.size();
    const std::from_chars_result result = std::from_chars(sField.data(), pEnd, value);
    if (result.ptr != pEnd) {
        return std::errc::invalid_argument;
    }
    return result.ec;
}

} // namespace

CsvFile::CsvFile(std::string sPath, ECsvRules eRules) : m_sPath(std::move(sPath)), m_eRules(eRules)
{
    const std::string sText = isStrict() ? readFileBytes(m_sPath) : readFileText(m_sPath);
    if (isStrict()) {
        refuseByteOrderMark(m_sPath, sText);
    }
    m_rows = CsvReader(m_sPath, m_eRules).read(sText);
    if (isStrict()) {
        std::for_each(m_rows.begin(), m_rows.end(), [this](const CsvRow& row) { checkFields(row); });
    }
}

void CsvFile::checkFields(const CsvRow& row) const
{
    const std::size_t nColumns = m_rows.front().fields.size();
    for (std::size_t i = 0; i < std::min(row.fields.size(), nColumns); ++i) {
        if (row.fields[i].empty()) {
            throw errorIn(row, i, columnText(row, i) + ": is empty; add a value");
        }
    }
    if (row.fields.size() < nColumns) {
        static_cast<void>(fieldAt(row, row.fields.size()));
    }
    if (row.fields.size() > nColumns) {
        throw errorIn(row, nColumns,
                      quotedForMessage(row.fields[nColumns]) + " is field " + std::to_string(nColumns + 1) +
                          " of a row that may have " + std::to_string(nColumns) +
                          ", as the first row has; take it out or name its column");
    }
}

ConfigurationError CsvFile::errorAt(const CsvRow& row, std::size_t nColumn, const std::string& sWrong) const
{
    return errorIn(row, nColumn, columnText(row, nColumn) + ": " + quotedForMessage(row.fields[nColumn]) + sWrong);
}

ConfigurationError CsvFile::errorIn(const CsvRow& row, std::size_t nColumn, const std::string& sText) const
{
    if (!isStrict()) {
        return ConfigurationError::atLine(m_sPath, row.nLine, sText);
    }
    const CsvPlace place = nColumn < row.places.size() ? row.places[nColumn] : row.end;
    return ConfigurationError::atColumn(m_sPath, place.nLine, place.nColumn, sText);
}

std::string CsvFile::columnText(const CsvRow& row, std::size_t nColumn) const
{
    const std::vector<std::string>& names = m_rows.front().fields;
    if (!isStrict() || &row == &m_rows.front() || nColumn >= names.size()) {
        return "column " + std::to_string(nColumn + 1);
    }
    const std::string sQuoted = quotedForMessage(names[nColumn]);
    return "column " + sQuoted.substr(1, sQuoted.size() - 2);
}

const std::string& CsvFile::fieldAt(const CsvRow& row, std::size_t nColumn) const
{
    if (nColumn >= row.fields.size()) {
        throw errorIn(row, nColumn,
                      columnText(row, nColumn) + ": is missing in a row of " + std::to_string(row.fields.size()) +
                          "; add a value");
    }
    return row.fields[nColumn];
}

std::optional<std::size_t> CsvFile::column(const std::string& sName) const
{
    if (m_rows.empty()) {
        return std::nullopt;
    }
    const CsvRow& header = m_rows.front();
    const auto first = std::find(header.fields.begin(), header.fields.end(), sName);
    if (first == header.fields.end()) {
        return std::nullopt;
    }
    const auto second = std::find(first + 1, header.fields.end(), sName);
    if (second != header.fields.end()) {
        throw errorIn(header, static_cast<std::size_t>(second - header.fields.begin()),
                      "column " + sName + " is there twice; take one of them out");
    }
    return static_cast<std::size_t>(first - header.fields.begin());
}

double CsvFile::number(const CsvRow& row, std::size_t nColumn) const
{
    double value = 0.0;
    const std::errc eError = convert(fieldAt(row, nColumn), value);
    if (eError == std::errc::result_out_of_range) {
        throw errorAt(row, nColumn, " is too large or too small; write a decimal number such as -3.5");
    }
    if (eError != std::errc() || !std::isfinite(value)) {
        throw errorAt(row, nColumn, " is not a number; write a decimal number such as -3.5");
    }
    return value;
}

int32_t CsvFile::integer(const CsvRow& row, std::size_t nColumn) const
{
    int32_t nValue = 0;
    const std::errc eError = convert(fieldAt(row, nColumn), nValue);
    if (eError == std::errc::result_out_of_range) {
        throw errorAt(row, nColumn, " does not fit 32 bits; write a number from -2147483648 to 2147483647");
    }
    if (eError != std::errc()) {
        throw errorAt(row, nColumn, " is not an integer; write a whole number such as -350");
    }
    return nValue;
}
