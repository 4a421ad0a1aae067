#include "Platform/TomlKeys.h"

#include "Platform/ConfigurationError.h"

namespace
{
bool isBare(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

/**
 * Counts the parts of what may be a key: names, bare or in quotes, with dots between them. Knows no text of several
 * lines; what stands in one is no key unless it looks like one.
 */
class KeyCounter
{
public:
    /** @return parts of the key so far */
    std::size_t take(char c)
    {
        if (c == '\n') {
            *this = KeyCounter();
        }
        else if (m_cQuote != '\0') {
            takeQuoted(c);
        }
        else if (!m_bComment) {
            takePlain(c);
        }
        return m_nParts;
    }

private:
    void takePlain(char c)
    {
        if (c == ' ' || c == '\t') {
            m_bBlank = true;
            return;
        }
        const bool bName = isBare(c) || c == '"' || c == '\'';
        if (c == '.') {
            m_nParts += m_cLast == '.' ? 0U : 1U;
        }
        else if (!bName || (m_bBlank && m_cLast != '.')) {
            m_nParts = 1;
        }
        m_cQuote = bName && !isBare(c) ? c : '\0';
        m_bComment = c == '#';
        m_bBlank = false;
        m_cLast = c;
    }

    void takeQuoted(char c)
    {
        if (m_bEscaped) {
            m_bEscaped = false;
        }
        else if (c == '\\' && m_cQuote == '"') {
            m_bEscaped = true;
        }
        else if (c == m_cQuote) {
            m_cQuote = '\0';
        }
    }

    char m_cQuote = '\0'; // that a name or text has begun with
    bool m_bEscaped = false;
    bool m_bComment = false;
    bool m_bBlank = false; // since the last sign
    char m_cLast = '\0';   // that is no blank
    std::size_t m_nParts = 1;
};
} // namespace

void refuseLongKeys(const std::string& sText, const std::string& sPath)
{
    KeyCounter counter;
    std::size_t nLine = 1;
    for (const char c : sText) {
        if (counter.take(c) > MOST_KEY_PARTS) {
            throw ConfigurationError::atLine(sPath, nLine,
                                             "a key has more than " + std::to_string(MOST_KEY_PARTS) +
                                                 " parts; write a name that has dots in quotation marks");
        }
        nLine += c == '\n' ? 1 : 0;
    }
}
