#include "Platform/Csv/CsvFile.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Csv/private/CsvReader.h"
#include "Platform/FileText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

namespace
{

const std::string& fieldAt(const std::string& sPath, const CsvRow& row, std::size_t nColumn)
{
    if (nColumn >= row.fields.size()) {
        throw ConfigurationError::atLine(sPath, row.nLine,
                                         "column " + std::to_string(nColumn + 1) + ": is missing in a row of " +
                                             std::to_string(row.fields.size()) + "; add a value");
    }
    return row.fields[nColumn];
}

ConfigurationError errorAt(const std::string& sPath, const CsvRow& row, std::size_t nColumn, const std::string& sWrong)
{
    return ConfigurationError::atLine(sPath, row.nLine,
                                      "column " + std::to_string(nColumn + 1) + ": " +
                                          quotedForMessage(row.fields[nColumn]) + sWrong);
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

CsvFile::CsvFile(std::string sPath) : m_sPath(std::move(sPath))
{
    const std::string sText = readFileText(m_sPath);
    m_rows = CsvReader(m_sPath).read(sText);
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
    if (std::find(first + 1, header.fields.end(), sName) != header.fields.end()) {
        throw ConfigurationError::atLine(m_sPath, header.nLine,
                                         "column " + sName + " is there twice; take one of them out");
    }
    return static_cast<std::size_t>(first - header.fields.begin());
}

double CsvFile::number(const CsvRow& row, std::size_t nColumn) const
{
    double value = 0.0;
    const std::errc eError = convert(fieldAt(m_sPath, row, nColumn), value);
    if (eError == std::errc::result_out_of_range) {
        throw errorAt(m_sPath, row, nColumn, " is too large or too small; write a decimal number such as -3.5");
    }
    if (eError != std::errc() || !std::isfinite(value)) {
        throw errorAt(m_sPath, row, nColumn, " is not a number; write a decimal number such as -3.5");
    }
    return value;
}

int32_t CsvFile::integer(const CsvRow& row, std::size_t nColumn) const
{
    int32_t nValue = 0;
    const std::errc eError = convert(fieldAt(m_sPath, row, nColumn), nValue);
    if (eError == std::errc::result_out_of_range) {
        throw errorAt(m_sPath, row, nColumn, " does not fit 32 bits; write a number from -2147483648 to 2147483647");
    }
    if (eError != std::errc()) {
        throw errorAt(m_sPath, row, nColumn, " is not an integer; write a whole number such as -350");
    }
    return nValue;
}
