#include "Platform/Csv/private/CsvReader.h"

#include <algorithm>
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

std::string_view lineEnd(std::string_view sLine)
{
    const std::size_t nEnd = sLine.find_first_of("\r\n");
    return nEnd == std::string_view::npos ? std::string_view() : sLine.substr(nEnd);
}

std::string_view lineEndName(std::string_view sEnd)
{
    return sEnd == "\n" ? "LF" : "CRLF";
}

/** @return whether a byte goes on with a UTF-8 character */
bool goesOn(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

} // namespace

CsvReader::CsvReader(const std::string& sPath, ECsvRules eRules) : m_sPath(sPath), m_eRules(eRules)
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
        throw errorAt(sLine.substr(0, sLine.find('\0')), "holds a NUL byte; save the file as plain text in UTF-8");
    }
    if (m_eRules == ECsvRules::Strict) {
        checkLineEnd(sLine);
    }
    if (!m_bInRow) {
        if (isBlank(sLine) || sLine.front() == '#') {
            return;
        }
        m_row.nLine = m_nLine;
        m_bInRow = true;
        m_bInQuotes = false;
    }
    markFields(sLine);
    const std::size_t nParsed = csv_parse(&m_parser, sLine.data(), sLine.size(), &onField, &onRowEnd, this);
    rethrowFailure();
    if (nParsed == sLine.size()) {
        return;
    }
    if (csv_error(&m_parser) != CSV_EPARSE) {
        throw std::bad_alloc();
    }
    throw errorAt(sLine.substr(0, nParsed),
                  "a quotation mark stands inside a field; put the whole field in quotation marks and write those "
                  "inside it twice");
}

void CsvReader::checkLineEnd(std::string_view sLine)
{
    const std::string_view sEnd = lineEnd(sLine);
    const std::string_view sBefore = sLine.substr(0, sLine.size() - sEnd.size());
    if (sEnd == "\r") {
        throw errorAt(sBefore, "a CR stands without an LF; end every line by LF, or every line by CRLF");
    }
    if (m_nLine == 1) {
        m_sLineEnd = sEnd;
    }
    if (!sEnd.empty() && sEnd != m_sLineEnd) {
        throw errorAt(sBefore, std::string("the line ends by ").append(lineEndName(sEnd)) + ", those before by " +
                                   std::string(lineEndName(m_sLineEnd)) +
                                   "; end every line by LF, or every line by CRLF");
    }
}

/** Finds where the fields begin that the parser gives out, by commas outside quotation marks. */
void CsvReader::markFields(std::string_view sLine)
{
    bool bFieldBegins = !m_bInQuotes;
    CsvPlace place{m_nLine, 1};
    for (const char c : sLine.substr(0, sLine.size() - lineEnd(sLine).size())) {
        if (goesOn(c)) {
            continue;
        }
        if (bFieldBegins && c != ' ' && c != '\t') {
            m_row.places.push_back(place);
            bFieldBegins = false;
        }
        if (c == '"') {
            m_bInQuotes = !m_bInQuotes;
        }
        bFieldBegins = bFieldBegins || (c == ',' && !m_bInQuotes);
        ++place.nColumn;
    }
    if (bFieldBegins) {
        m_row.places.push_back(place);
    }
    m_row.end = place;
}

ConfigurationError CsvReader::errorAt(std::string_view sBefore, const std::string& sText) const
{
    if (m_eRules == ECsvRules::Lenient) {
        return ConfigurationError::atLine(m_sPath, m_nLine, sText);
    }
    const auto nBefore =
        sBefore.size() - static_cast<std::size_t>(std::count_if(sBefore.begin(), sBefore.end(), &goesOn));
    return ConfigurationError::atColumn(m_sPath, m_nLine, nBefore + 1, sText);
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
    const std::size_t nColumn = m_eRules == ECsvRules::Strict ? m_row.places.front().nColumn : 0;
    throw ConfigurationError::atColumn(m_sPath, m_row.nLine, nColumn,
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
        reader.m_rows.push_back(std::exchange(reader.m_row, CsvRow()));
    }
    catch (...) {
        reader.m_pFailure = std::current_exception();
    }
}
