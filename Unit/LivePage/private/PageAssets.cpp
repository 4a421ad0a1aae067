#include "Unit/LivePage/PageAssets.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Unit/LivePage/private/EmbeddedFiles.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <utility>

namespace
{
struct ContentType
{
    std::string_view ending;
    const char* pType;
};

constexpr std::array<ContentType, 5> CONTENT_TYPES = {{{".html", "text/html; charset=utf-8"},
                                                       {".css", "text/css; charset=utf-8"},
                                                       {".js", "text/javascript; charset=utf-8"},
                                                       {".svg", "image/svg+xml"},
                                                       {"/", "text/html; charset=utf-8"}}};

std::string contentType(const std::string& sPath)
{
    for (const ContentType& type : CONTENT_TYPES) {
        if (sPath.ends_with(type.ending)) {
            return type.pType;
        }
    }
    return "application/octet-stream";
}

/** FNV-1a: a tag has to change with the content, and nobody is to be fooled by it. */
std::string tagOf(std::string_view content)
{
    constexpr std::uint64_t BASIS = 14695981039346656037U;
    constexpr std::uint64_t PRIME = 1099511628211U;
    std::uint64_t nHash = BASIS;
    for (const char c : content) {
        nHash = (nHash ^ static_cast<unsigned char>(c)) * PRIME;
    }
    return fmt::format("\"{:016x}\"", nHash);
}
} // namespace

PageAssets PageAssets::embedded()
{
    PageAssets assets;
    for (const EmbeddedFile& file : embeddedFiles()) {
        assets.m_files[file.pPath] = [content = file.content] { return std::string(content); };
    }
    return assets;
}

PageAssets PageAssets::inFolder(const std::string& sFolder)
{
    const std::filesystem::path folder = sFolder;
    const std::string sList = (folder / "assets.txt").string();
    std::istringstream lines(readFileText(sList));
    PageAssets assets;
    std::size_t nLine = 0;
    for (std::string sLine; std::getline(lines, sLine);) {
        ++nLine;
        if (sLine.empty() || sLine.front() == '#') {
            continue;
        }
        std::istringstream words(sLine);
        std::string sPath;
        std::string sFile;
        if (!(words >> sPath >> sFile) || sPath.front() != '/') {
            throw ConfigurationError(fmt::format("{}:{}: \"{}\" is no path of the page and its file; write /PATH FILE",
                                                 sList, nLine, sLine));
        }
        assets.m_files[sPath] = [sName = (folder / sFile).string()] { return readFileText(sName); };
    }
    return assets;
}

std::optional<PageAsset> PageAssets::find(const std::string& sPath) const
{
    const auto file = m_files.find(sPath);
    if (file == m_files.end()) {
        return std::nullopt;
    }
    PageAsset asset;
    asset.sContentType = contentType(sPath);
    asset.sContent = file->second();
    asset.sTag = tagOf(asset.sContent);
    return asset;
}
