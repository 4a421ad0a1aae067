/** @file
 * Writes answers where people and programs read them.
 */
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

/** Whoever read the output has gone. */
class OutputClosed : public std::runtime_error
{
public:
    OutputClosed() : std::runtime_error("nobody reads the output any more") {}
};

/** Writes a text at once. @throws OutputClosed, std::runtime_error for other failures; both need SIGPIPE ignored */
void writeText(std::FILE* pStream, const std::string& sName, const std::string& sText);

/** A text on standard output that is replaced by the next one on a terminal, and followed by it elsewhere. */
class ShownText
{
public:
    /** @param bRedraw replace, instead of a blank line in between */
    explicit ShownText(bool bRedraw) : m_bRedraw(bRedraw) {}

    void show(const std::string& sText);

private:
    bool m_bRedraw;
    bool m_bFirst = true;
    std::size_t m_nLines = 0;
};

/** @return the first lines of a text, cut to what fits on a screen without wrapping or scrolling */
std::string fitToScreen(const std::string& sText, std::size_t nRows, std::size_t nColumns);

/** A file of comma-separated values; the old contents go only when there is something new. */
class CsvOutput
{
public:
    /** @param sPath "-" for standard output. @throws ConfigurationError when it cannot be written */
    explicit CsvOutput(std::string sPath);
    ~CsvOutput();

    CsvOutput(const CsvOutput&) = delete;
    CsvOutput& operator=(const CsvOutput&) = delete;

    /** Appends lines. @throws as writeText() */
    void write(const std::string& sLines);

private:
    std::string m_sPath;
    std::FILE* m_pStream = stdout;
    bool m_bCreated = false;
    bool m_bBegun = false;
};
