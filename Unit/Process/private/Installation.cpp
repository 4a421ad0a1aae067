#include "Unit/Process/Installation.h"

#include <filesystem>

namespace
{
namespace fs = std::filesystem;

/** @param path starts from the program's folder unless it is absolute */
std::string fromProgram(const fs::path& path)
{
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return (program.parent_path() / path).lexically_normal().string();
}
} // namespace

std::string builtModuleFolder()
{
    return fromProgram("../lib");
}

std::string installedModuleFolder()
{
    return fromProgram(OPC_MODULE_FOLDER);
}

std::string installedUnitFile()
{
    return fromProgram(OPC_UNIT_FILE);
}
