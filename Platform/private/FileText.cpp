#include "Platform/FileText.h"

#include "Platform/ConfigurationError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace
{

const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// More than the largest drive that anybody records, and less than what would take a machine's memory.
constexpr std::size_t MOST_BYTES = std::size_t{1} << 30U;

/** A file that is open to be read. */
class OpenFile
{
public:
    explicit OpenFile(int fd) : m_fd(fd) {}
    // cppcheck-suppress doubleFree ; there is no copy that could close it again
    ~OpenFile() { static_cast<void>(close(m_fd)); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int get() const { return m_fd; }

private:
    int m_fd;
};

ConfigurationError unreadable(const std::string& sPath, int nError)
{
    return ConfigurationError::atLine(sPath, 0,
                                      "cannot be read (" + std::generic_category().message(nError) +
                                          "); give the path of a file that this user may read");
}

ConfigurationError tooLarge(const std::string& sPath)
{
    return ConfigurationError::atLine(sPath, 0, "has more than 1 GiB; give a smaller file");
}

/** A pipe may never have anything to read, and a device never an end. */
void refuseEndless(int fd, const std::string& sPath)
{
    struct stat information = {};
    if (fstat(fd, &information) != 0) {
        throw unreadable(sPath, errno);
    }
    if (S_ISDIR(information.st_mode)) {
        throw unreadable(sPath, EISDIR);
    }
    if (!S_ISREG(information.st_mode)) {
        throw ConfigurationError::atLine(sPath, 0, "is a pipe or a device; give the path of a plain file");
    }
    if (information.st_size > static_cast<off_t>(MOST_BYTES)) {
        throw tooLarge(sPath);
    }
}

/** @return how many bytes were read; 0 at the end */
std::size_t readSome(int fd, std::array<char, 16384>& buffer, const std::string& sPath)
{
    ssize_t nRead = 0;
    do {
        nRead = read(fd, buffer.data(), buffer.size());
    } while (nRead < 0 && errno == EINTR);
    if (nRead < 0) {
        throw unreadable(sPath, errno);
    }
    return static_cast<std::size_t>(nRead);
}

} // namespace

std::string readFileBytes(const std::string& sPath)
{
    // Without O_NONBLOCK the opening of a pipe would wait for somebody to write into it.
    const OpenFile file(open(sPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.get() < 0) {
        throw unreadable(sPath, errno);
    }
    refuseEndless(file.get(), sPath);
    std::string sText;
    std::array<char, 16384> buffer{};
    while (const std::size_t nRead = readSome(file.get(), buffer, sPath)) {
        if (sText.size() + nRead > MOST_BYTES) {
            throw tooLarge(sPath);
        }
        sText.append(buffer.data(), nRead);
    }
    return sText;
}

std::string readFileText(const std::string& sPath)
{
    std::string sText = readFileBytes(sPath);
    if (sText.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) {
        sText.erase(0, BYTE_ORDER_MARK.size());
    }
    return sText;
}

std::string printable(std::string sText)
{
    std::replace_if(
        sText.begin(), sText.end(),
        [](char c) {
            const auto nCode = static_cast<unsigned char>(c);
            return nCode < 0x20 || nCode == 0x7F;
        },
        '?');
    for (std::size_t n = 0; n + 1 < sText.size(); ++n) {
        const auto nNext = static_cast<unsigned char>(sText[n + 1]);
        if (sText[n] == '\xC2' && nNext >= 0x80 && nNext < 0xA0) { // U+0080 to U+009F, which some terminals obey
            sText.replace(n, 2, "?");
        }
    }
    return sText;
}

std::string quotedForMessage(const std::string& sText)
{
    constexpr std::size_t LONGEST_SHOWN = 40;
    std::size_t nShown = std::min(sText.size(), LONGEST_SHOWN);
    // Do not cut a UTF-8 character: its further bytes are 10xxxxxx.
    while (nShown > 0 && nShown < sText.size() && (static_cast<unsigned char>(sText[nShown]) & 0xC0U) == 0x80U) {
        --nShown;
    }
    return "'" + printable(sText.substr(0, nShown)) + (nShown < sText.size() ? "...'" : "'");
}
