#include "Platform/Csv/private/CsvReader.h"

#include "Platform/ConfigurationError.h"

#include <new>
#include <utility>

namespace
{

constexpr unsigned char PARSER_OPTIONS = CSV_STRICT | CSV_STRICT_FINI | CSV_APPEND_NULL;

/** @return length of the first line of a text with its end: a line feed, a carriage return or both */
std::size_t lineLength(std::string_view sText)
{
    const std::size_t nEnd = sText.find_first_of("\r\n");
    if (nEnd == std::string_view::npos) {
        return sText.size();
    }
    return sText.substr(nEnd, 2) == "\r\n" ? nEnd + 2 : nEnd + 1;
}

bool isBlank(std::string_view sLine)
{
    return sLine.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

} // namespace

CsvReader::CsvReader(const std::string& sPath) : m_sPath(sPath)
{
    if (csv_init(&m_parser, PARSER_OPTIONS) != 0) {
        throw std::bad_alloc();
    }
}

CsvReader::~CsvReader()
{
    csv_free(&m_parser);
}

std::vector<CsvRow> CsvReader::read(std::string_view sText)
{
    while (!sText.empty()) {
        const std::size_t nLength = lineLength(sText);
        ++m_nLine;
        readLine(sText.substr(0, nLength));
        sText.remove_prefix(nLength);
    }
    finish();
    return std::move(m_rows);
}

void CsvReader::readLine(std::string_view sLine)
{
    if (sLine.find('\0') != std::string_view::npos) {
        throw ConfigurationError::atLine(m_sPath, m_nLine, "holds a NUL byte; save the file as plain text in UTF-8");
    }
    if (!m_bInRow) {
        if (isBlank(sLine) || sLine.front() == '#') {
            return;
        }
        m_row.nLine = m_nLine;
        m_bInRow = true;
    }
    const std::size_t nParsed = csv_parse(&m_parser, sLine.data(), sLine.size(), &onField, &onRowEnd, this);
    rethrowFailure();
    if (nParsed == sLine.size()) {
        return;
    }
    if (csv_error(&m_parser) != CSV_EPARSE) {
        throw std::bad_alloc();
    }
    throw ConfigurationError::atLine(m_sPath, m_nLine,
                                     "a quotation mark stands inside a field; put the whole field in quotation marks "
                                     "and write those inside it twice");
}

void CsvReader::finish()
{
    const int nResult = csv_fini(&m_parser, &onField, &onRowEnd, this);
    rethrowFailure();
    if (nResult == 0) {
        return;
    }
    if (csv_error(&m_parser) != CSV_EPARSE) {
        throw std::bad_alloc();
    }
    throw ConfigurationError::atLine(m_sPath, m_row.nLine,
                                     "a quoted field of the row that begins here has no end; add the closing "
                                     "quotation mark");
}

void CsvReader::rethrowFailure()
{
    if (m_pFailure) {
        std::rethrow_exception(std::exchange(m_pFailure, nullptr));
    }
}

void CsvReader::onField(void* pField, std::size_t nSize, void* pReader) noexcept
{
    auto& reader = *static_cast<CsvReader*>(pReader);
    try {
        reader.m_row.fields.emplace_back(pField != nullptr ? static_cast<const char*>(pField) : "", nSize);
    }
    catch (...) {
        reader.m_pFailure = std::current_exception();
    }
}

void CsvReader::onRowEnd(int /*nTerminator*/, void* pReader) noexcept
{
    auto& reader = *static_cast<CsvReader*>(pReader);
    reader.m_bInRow = false;
    try {
        reader.m_rows.push_back(std::exchange(reader.m_row, CsvRow{reader.m_row.nLine, {}}));
    }
    catch (...) {
        reader.m_pFailure = std::current_exception();
    }
}
