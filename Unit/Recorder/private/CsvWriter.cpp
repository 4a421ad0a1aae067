#include "Unit/Recorder/CsvWriter.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Recorder/StepColumns.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace
{
constexpr std::size_t FLUSH_BYTES = 64UL * 1024;
constexpr int OPEN_FLAGS = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK; // a pipe must not hold the unit up
constexpr mode_t FILE_MODE = 0666;                                      // less the user's umask
} // namespace

CsvWriter::CsvWriter(std::string sPath) : m_sPath(std::move(sPath))
{
    m_fd = open(m_sPath.c_str(), OPEN_FLAGS | O_EXCL, FILE_MODE);
    m_bCreated = m_fd >= 0;
    if (!m_bCreated) {
        m_fd = open(m_sPath.c_str(), OPEN_FLAGS, FILE_MODE);
    }
    if (m_fd < 0) {
        throw ConfigurationError(fmt::format("{}: cannot record there: {}; name a file that can be written with --csv",
                                             m_sPath, std::strerror(errno)));
    }
}

CsvWriter::~CsvWriter()
{
    flush();
    close(m_fd);
    if (m_bCreated && !m_bBegun) {
        unlink(m_sPath.c_str());
    }
}

void CsvWriter::begin()
{
    m_bBegun = true;
    struct stat information = {};
    const bool bRegular = fstat(m_fd, &information) == 0 && S_ISREG(information.st_mode);
    if (bRegular && ftruncate(m_fd, 0) != 0) {
        fail("empty");
        return;
    }
    m_buffer.append(stepColumnNames());
    m_buffer.push_back('\n');
    flush();
}

void CsvWriter::add(const StepSample& sample)
{
    if (!m_sError.empty()) {
        return;
    }
    appendStepColumns(m_buffer, sample);
    m_buffer.push_back('\n');
    ++m_nRowsGathered;
    if (m_buffer.size() >= FLUSH_BYTES) {
        flush();
    }
}

void CsvWriter::flush()
{
    std::size_t nDone = 0;
    while (m_sError.empty() && nDone < m_buffer.size()) {
        const ssize_t nWritten = write(m_fd, m_buffer.data() + nDone, m_buffer.size() - nDone);
        if (nWritten < 0 && errno != EINTR) {
            fail("write to");
        }
        nDone += nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0;
    }
    m_nRowsWritten += m_sError.empty() ? m_nRowsGathered : 0;
    m_nRowsGathered = 0;
    m_buffer.clear();
}

void CsvWriter::fail(const char* pAction)
{
    m_sError = fmt::format("{}: cannot {} it: {}; recording has stopped", m_sPath, pAction, std::strerror(errno));
}
