#include "Unit/Token/TokenFile.h"

#include "Platform/ConfigurationError.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace
{
constexpr std::size_t SHORTEST = 16;
constexpr std::size_t LONGEST = 4096; // more would not fit into a request's head

struct FileCloser
{
    void operator()(std::FILE* pFile) const { static_cast<void>(std::fclose(pFile)); }
};

bool isTokenCharacter(char c)
{
    return c > ' ' && c <= '~';
}

[[noreturn]] void refuse(const std::string& sPath, const std::string& sReason)
{
    throw ConfigurationError(fmt::format("{}: {}; its first line has to be the unit's token: {} to {} characters, none "
                                         "of them a blank",
                                         sPath, sReason, SHORTEST, LONGEST));
}
} // namespace

std::string readTokenFile(const std::string& sPath)
{
    errno = 0;
    const std::unique_ptr<std::FILE, FileCloser> pFile(std::fopen(sPath.c_str(), "rbe"));
    std::string sToken(LONGEST + 2, '\0'); // no more is read of whatever the file may be
    const std::size_t nRead = pFile == nullptr ? 0 : std::fread(sToken.data(), 1, sToken.size(), pFile.get());
    if (pFile == nullptr || std::ferror(pFile.get()) != 0) {
        refuse(sPath, "cannot be read (" + std::generic_category().message(errno) + ")");
    }
    sToken.resize(nRead);
    sToken.resize(std::min(sToken.size(), sToken.find_first_of("\r\n")));
    if (sToken.size() < SHORTEST || sToken.size() > LONGEST ||
        !std::all_of(sToken.begin(), sToken.end(), isTokenCharacter)) {
        refuse(sPath, "holds no token");
    }
    return sToken;
}

std::string tokenFileWarning(const std::string& sPath)
{
    struct stat status = {};
    if (stat(sPath.c_str(), &status) != 0 || (status.st_mode & (S_IROTH | S_IWOTH)) == 0) {
        return {};
    }
    return fmt::format("{}: every user of this machine can read or change the token; chmod o= {}", sPath, sPath);
}
