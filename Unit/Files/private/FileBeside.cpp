#include "Unit/Files/FileBeside.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <random>
#include <string_view>

namespace
{
constexpr mode_t FILE_MODE = 0666; // less the user's umask
constexpr int MOST_TRIES = 100;    // to find a name that nobody has

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
} // namespace

FileBeside makeFileBeside(const std::string& sPath)
{
    const std::filesystem::path path(sPath);
    FileBeside file;
    for (int nTry = 0; nTry < MOST_TRIES && file.fd < 0; ++nTry) {
        const std::string sName = fmt::format(".{}.{}", path.filename().string(), randomLetters());
        file.sPath = (path.parent_path() / sName).string();
        file.fd = open(file.sPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
        if (file.fd < 0 && errno != EEXIST) {
            break;
        }
    }
    return file;
}
