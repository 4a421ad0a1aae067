#include "Unit/Client/private/OutputText.h"

#include "Platform/ConfigurationError.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace
{
constexpr int OPEN_FLAGS = O_WRONLY | O_CREAT | O_CLOEXEC;
constexpr mode_t FILE_MODE = 0666; // less the user's umask

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; // of a character in UTF-8
}

std::string fitToTerminal(const std::string& sText)
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row < 2 || size.ws_col == 0) {
        return sText;
    }
    return fitToScreen(sText, size.ws_row - 1U, size.ws_col); // the cursor has the last row
}
} // namespace

void writeText(std::FILE* pStream, const std::string& sName, const std::string& sText)
{
    errno = 0;
    if (std::fwrite(sText.data(), 1, sText.size(), pStream) == sText.size() && std::fflush(pStream) == 0) {
        return;
    }
    if (errno == EPIPE) {
        throw OutputClosed();
    }
    throw std::runtime_error(fmt::format("cannot write to {}: {}", sName, std::strerror(errno)));
}

void ShownText::show(const std::string& sText)
{
    std::string sOutput;
    if (!m_bRedraw) {
        sOutput = (m_bFirst ? "" : "\n") + sText;
    }
    else {
        const std::string sFitting = fitToTerminal(sText);
        sOutput = m_nLines == 0 ? sFitting : fmt::format("\x1b[{}A\r\x1b[J{}", m_nLines, sFitting);
        m_nLines = 0;
        for (const char c : sFitting) {
            m_nLines += c == '\n' ? 1 : 0;
        }
    }
    m_bFirst = false;
    writeText(stdout, "standard output", sOutput);
}

std::string fitToScreen(const std::string& sText, std::size_t nRows, std::size_t nColumns)
{
    std::string sFitting;
    std::size_t nRow = 0;
    std::size_t nColumn = 0;
    for (const char c : sText) {
        if (nRow == nRows) {
            break;
        }
        if (c == '\n') {
            sFitting += c;
            ++nRow;
            nColumn = 0;
            continue;
        }
        nColumn += isContinuation(c) ? 0 : 1;
        if (nColumn <= nColumns) {
            sFitting += c;
        }
    }
    return sFitting;
}

CsvOutput::CsvOutput(std::string sPath) : m_sPath(std::move(sPath))
{
    if (m_sPath == "-") {
        m_bBegun = true;
        return;
    }
    int fd = open(m_sPath.c_str(), OPEN_FLAGS | O_EXCL, FILE_MODE);
    m_bCreated = fd >= 0;
    if (!m_bCreated) {
        // cppcheck-suppress resourceLeak ; there is none to lose: the first one was not opened
        fd = open(m_sPath.c_str(), OPEN_FLAGS, FILE_MODE);
    }
    m_pStream = fd < 0 ? nullptr : fdopen(fd, "w");
    if (m_pStream == nullptr) {
        const int nError = errno;
        if (fd >= 0) {
            (void)close(fd);
        }
        throw ConfigurationError(
            fmt::format("--csv: {}: cannot be written ({}); name another file", m_sPath, std::strerror(nError)));
    }
}

CsvOutput::~CsvOutput()
{
    if (m_pStream != stdout) {
        (void)std::fclose(m_pStream); // each write() has seen to its own
    }
    if (m_bCreated && !m_bBegun) {
        (void)unlink(m_sPath.c_str());
    }
}

void CsvOutput::write(const std::string& sLines)
{
    if (!m_bBegun) {
        m_bBegun = true;
        struct stat information = {};
        const int fd = fileno(m_pStream);
        if (fstat(fd, &information) == 0 && S_ISREG(information.st_mode) && ftruncate(fd, 0) != 0) {
            throw std::runtime_error(fmt::format("cannot empty {}: {}", m_sPath, std::strerror(errno)));
        }
    }
    writeText(m_pStream, m_sPath == "-" ? "standard output" : m_sPath, sLines);
}
