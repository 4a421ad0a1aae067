#include "Platform/FileText.h"

#include "Platform/ConfigurationError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace
{

const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

struct FileCloser
{
    void operator()(std::FILE* pFile) const { static_cast<void>(std::fclose(pFile)); }
};

ConfigurationError unreadable(const std::string& sPath, int nError)
{
    return ConfigurationError::atLine(sPath, 0,
                                      "cannot be read (" + std::generic_category().message(nError) +
                                          "); give the path of a file that this user may read");
}

} // namespace

std::string readFileBytes(const std::string& sPath)
{
    errno = 0;
    const std::unique_ptr<std::FILE, FileCloser> pFile(std::fopen(sPath.c_str(), "rbe"));
    if (!pFile) {
        throw unreadable(sPath, errno);
    }
    std::string sText;
    std::array<char, 16384> buffer{};
    std::size_t nRead = 0;
    while ((nRead = std::fread(buffer.data(), 1, buffer.size(), pFile.get())) > 0) {
        sText.append(buffer.data(), nRead);
    }
    if (std::ferror(pFile.get()) != 0) {
        throw unreadable(sPath, errno);
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

std::string quotedForMessage(const std::string& sText)
{
    constexpr std::size_t LONGEST_SHOWN = 40;
    std::size_t nShown = std::min(sText.size(), LONGEST_SHOWN);
    // Do not cut a UTF-8 character: its further bytes are 10xxxxxx.
    while (nShown > 0 && nShown < sText.size() && (static_cast<unsigned char>(sText[nShown]) & 0xC0U) == 0x80U) {
        --nShown;
    }
    std::string sShown = sText.substr(0, nShown);
    std::replace_if(
        sShown.begin(), sShown.end(),
        [](char c) {
            const auto nCode = static_cast<unsigned char>(c);
            return nCode < 0x20 || nCode == 0x7F;
        },
        '?');
    return "'" + sShown + (nShown < sText.size() ? "...'" : "'");
}
