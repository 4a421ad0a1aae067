/** @file
 * Files that a test writes, and the errors that reading them gives.
 */
#pragma once

#include "Platform/ConfigurationError.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

/** A file that exists while the object does. */
class TestFile
{
public:
    explicit TestFile(const std::string& sContent)
        : m_sPath("/tmp/platform_tests." + std::to_string(getpid()) + "." + std::to_string(nextNumber()))
    {
        std::ofstream(m_sPath, std::ios::binary) << sContent;
    }
    ~TestFile() { static_cast<void>(std::remove(m_sPath.c_str())); }
    TestFile(const TestFile&) = delete;
    TestFile& operator=(const TestFile&) = delete;

    const std::string& path() const { return m_sPath; }

private:
    static unsigned int nextNumber()
    {
        static unsigned int nNumber = 0;
        return ++nNumber;
    }

    std::string m_sPath;
};

/** @return the text of the ConfigurationError that a call throws, or an empty text when it throws none */
template <class TCall> std::string errorOf(TCall call)
{
    try {
        call();
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
    return {};
}
