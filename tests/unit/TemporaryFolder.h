/** @file
 * A folder for a test's files.
 */
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

/** A folder of its own, removed with everything in it when the test is over. */
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string sPattern = (std::filesystem::temp_directory_path() / "opc-unit-XXXXXX").string();
        if (mkdtemp(sPattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a folder for the test");
        }
        m_path = sPattern;
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(const std::string& sName) const { return (m_path / sName).string(); }

    /** @return path of the file written */
    std::string write(const std::string& sName, const std::string& sText) const
    {
        std::ofstream(path(sName), std::ios::binary) << sText;
        return path(sName);
    }

    static std::string read(const std::string& sPath)
    {
        std::ifstream stream(sPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

private:
    std::filesystem::path m_path;
};
