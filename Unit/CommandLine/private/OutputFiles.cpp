#include "Unit/CommandLine/private/OutputFiles.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Plot/Gnuplot.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <system_error>

CLI::Validator pictureFile()
{
    return CLI::Validator(
        [](const std::string& sFile) {
            return sFile.ends_with(".svg") || sFile.ends_with(".png")
                       ? std::string()
                       : fmt::format("\"{}\" ends neither with .svg nor with .png", sFile);
        },
        "");
}

void checkNamedOnce(const std::vector<std::string>& files)
{
    std::set<std::string> seen;
    for (const std::string& sFile : files) {
        if (!sFile.empty() && !seen.insert(sFile).second) {
            throw ConfigurationError(fmt::format("{}: named for two outputs; give each a file of its own", sFile));
        }
    }
}

void checkPlotting()
{
    (void)runGnuplot("set print '-'\nprint 1\n");
}

void printOut(const std::string& sText)
{
    if (std::fwrite(sText.data(), 1, sText.size(), stdout) != sText.size() || std::fflush(stdout) != 0) {
        throw std::runtime_error(
            fmt::format("standard output cannot be written: {}", std::generic_category().message(errno)));
    }
}
