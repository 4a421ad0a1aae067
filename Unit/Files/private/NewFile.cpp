#include "Unit/Files/NewFile.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Files/FileBeside.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace
{
constexpr std::size_t BUFFER_BYTES = 256UL * 1024;
constexpr mode_t PERMISSIONS = 07777;

ConfigurationError cannotBeMade(const std::string& sPath, const std::string& sReason)
{
    return ConfigurationError(
        fmt::format("{}: cannot be written: {}; name a file in a folder that can be written to", sPath, sReason));
}

/** @return the path that a name leads to through symbolic links; the name itself where there is nothing yet */
std::string withoutLinks(const std::string& sPath)
{
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(sPath, error);
    return error ? sPath : target.string();
}
} // namespace

NewFile::NewFile(std::string sPath) : m_sPath(std::move(sPath)), m_sFinalPath(withoutLinks(m_sPath))
{
    struct stat information = {};
    const bool bThere = stat(m_sFinalPath.c_str(), &information) == 0;
    if (bThere && S_ISDIR(information.st_mode)) {
        throw cannotBeMade(m_sPath, std::strerror(EISDIR));
    }
    if (bThere && !S_ISREG(information.st_mode)) {
        m_fd = open(m_sPath.c_str(), O_WRONLY | O_CLOEXEC);
    }
    else if (!bThere || access(m_sFinalPath.c_str(), W_OK) == 0) { // a file that is write-protected is not replaced
        FileBeside file = makeFileBeside(m_sFinalPath);
        m_fd = file.fd;
        m_sTemporaryPath = std::move(file.sPath);
    }
    if (m_fd < 0) {
        throw cannotBeMade(m_sPath, std::strerror(errno));
    }
    if (!m_sTemporaryPath.empty() && bThere) {
        (void)fchmod(m_fd, information.st_mode & PERMISSIONS);
    }
}

NewFile::~NewFile()
{
    if (m_fd >= 0) {
        close(m_fd);
    }
    if (!m_sTemporaryPath.empty()) {
        unlink(m_sTemporaryPath.c_str());
    }
}

void NewFile::write(std::string_view sText)
{
    m_sBuffer += sText;
    if (m_sBuffer.size() >= BUFFER_BYTES) {
        flush();
    }
}

void NewFile::flush()
{
    std::size_t nDone = 0;
    while (nDone < m_sBuffer.size()) {
        const ssize_t nWritten = ::write(m_fd, m_sBuffer.data() + nDone, m_sBuffer.size() - nDone);
        if (nWritten < 0 && errno != EINTR) {
            fail("cannot be written");
        }
        nDone += nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0;
    }
    m_sBuffer.clear();
}

void NewFile::finish()
{
    flush();
    if (m_sTemporaryPath.empty()) {
        return;
    }
    if (fsync(m_fd) != 0 || close(std::exchange(m_fd, -1)) != 0) {
        fail("cannot be written");
    }
    if (std::rename(m_sTemporaryPath.c_str(), m_sFinalPath.c_str()) != 0) {
        fail("cannot be given its name");
    }
    m_sTemporaryPath.clear();
}

void NewFile::fail(const char* pAction) const
{
    throw std::runtime_error(fmt::format("{}: {}: {}", m_sPath, pAction, std::strerror(errno)));
}

void writeNewFile(const std::string& sPath, std::string_view sContents)
{
    NewFile file(sPath);
    file.write(sContents);
    file.finish();
}
