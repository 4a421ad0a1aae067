// Runs a target over the files of folders, where there is no fuzzer to run it.
#include "tests/fuzz/FuzzTarget.h"
#include "tests/unit/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
std::vector<std::string> filesIn(const char* pFolder)
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(pFolder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::size_t runFolder(const char* pFolder)
{
    const std::vector<std::string> files = filesIn(pFolder);
    for (const std::string& sFile : files) {
        (void)std::printf("%s\n", sFile.c_str()); // the last one printed is the one that failed
        (void)std::fflush(stdout);
        const std::string sText = TemporaryFolder::read(sFile);
        (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(sText.data()), sText.size());
    }
    return files.size();
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    try {
        std::size_t nFiles = 0;
        for (int nArgument = 1; nArgument < nArguments; ++nArgument) {
            nFiles += runFolder(ppArguments[nArgument]);
        }
        (void)LLVMFuzzerTestOneInput(nullptr, 0);
        if (nFiles > 0) {
            return 0;
        }
        (void)std::fprintf(stderr, "usage: %s FOLDER...\nThere are no files to run.\n", ppArguments[0]);
    }
    catch (const std::exception& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
