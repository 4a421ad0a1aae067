#include "Unit/Files/NewFile.h"

#include "Platform/ConfigurationError.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <utility>

namespace
{
constexpr std::size_t BUFFER_BYTES = 256UL * 1024;
constexpr mode_t FILE_MODE = 0666; // less the user's umask
constexpr mode_t PERMISSIONS = 07777;
constexpr int MOST_TRIES = 100; // to find a name that nobody has

ConfigurationError cannotBeMade(const std::string& sPath, const std::string& sReason)
{
    return ConfigurationError(
        fmt::format("{}: cannot be written: {}; name a file in a folder that can be written to", sPath, sReason));
}

std::string randomLetters()
{
    static constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr std::size_t nLetters = 6;
    std::random_device random;
    std::uniform_int_distribution<std::size_t> letter(0, LETTERS.size() - 1);
    std::string sName;
    while (sName.size() < nLetters) {
        sName += LETTERS[letter(random)];
    }
    return sName;
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
        openBeside();
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

void NewFile::openBeside()
{
    const std::filesystem::path path(m_sFinalPath);
    for (int nTry = 0; nTry < MOST_TRIES && m_fd < 0; ++nTry) {
        const std::string sName = fmt::format(".{}.{}", path.filename().string(), randomLetters());
        m_sTemporaryPath = (path.parent_path() / sName).string();
        m_fd = open(m_sTemporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
        if (m_fd < 0 && errno != EEXIST) {
            return;
        }
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
