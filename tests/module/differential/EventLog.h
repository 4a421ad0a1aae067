/** @file
 * What one side of a comparison did, as lines of text.
 */
#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

namespace Differential
{
/** Collects lines; both sides write the same line for the same event, so that texts are compared as a whole. */
class EventLog
{
public:
    /** Appends the parts, texts or integers, as one line. */
    template <class... TPart> void line(const TPart&... parts)
    {
        add(parts...);
        m_sText += '\n';
    }

    /** Appends the parts without ending the line. */
    template <class... TPart> void add(const TPart&... parts) { (append(parts), ...); }

    const std::string& text() const { return m_sText; }
    void clear() { m_sText.clear(); }

private:
    void append(std::string_view sPart) { m_sText += sPart; }

    template <std::integral TNumber>
    requires(!std::same_as<TNumber, bool> && !std::same_as<TNumber, char>) void append(TNumber nNumber)
    {
        char sDigits[24];
        m_sText.append(sDigits, std::to_chars(sDigits, sDigits + sizeof sDigits, nNumber).ptr);
    }

    std::string m_sText;
};
} // namespace Differential
