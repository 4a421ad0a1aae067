/** @file
 * A file that is there when it is finished, and not before.
 */
#pragma once

#include <string>
#include <string_view>

/**
 * Gathers a file's contents under a temporary name in the same folder and gives it its own name at the end. What the
 * name stood for before stays until then, and for good when the file is never finished. A name that stands for a
 * device or a pipe is written to as it is. Use it from one thread.
 *
 * Errors are one line that begins with the file's name.
 */
class NewFile
{
public:
    /** @throws ConfigurationError when the file cannot be made there */
    explicit NewFile(std::string sPath);

    /** Takes an unfinished file away. */
    ~NewFile();

    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /** Adds to the contents. @throws std::runtime_error when they cannot be written */
    void write(std::string_view sText);

    /** Gives the file its name; nothing is written after that. @throws std::runtime_error when that fails */
    void finish();

    const std::string& path() const { return m_sPath; }

private:
    void flush();
    [[noreturn]] void fail(const char* pAction) const;

    std::string m_sPath;          // as it was asked for
    std::string m_sFinalPath;     // without symbolic links
    std::string m_sTemporaryPath; // empty once it has its name, and for a device or a pipe
    std::string m_sBuffer;
    int m_fd = -1;
};

/** Writes a whole file. @throws ConfigurationError, std::runtime_error as NewFile does */
void writeNewFile(const std::string& sPath, std::string_view sContents);
