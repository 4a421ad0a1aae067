#include "Unit/Plot/Gnuplot.h"

#include "Unit/Text/OneLine.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace
{
constexpr std::size_t BLOCK = 65536;
constexpr int NOT_STARTED = 127; // exit status where posix_spawnp learns too late that there is no such program

struct FileClose
{
    void operator()(std::FILE* pFile) const { (void)std::fclose(pFile); }
};
using File = std::unique_ptr<std::FILE, FileClose>;

[[noreturn]] void fail(const std::string& sReason)
{
    throw std::runtime_error("cannot plot: " + sReason);
}

[[noreturn]] void failWithoutGnuplot()
{
    fail("the program gnuplot is not installed; install the package gnuplot-nox, or use --csv");
}

/** @return a file without a name, so that the program never waits for somebody to read its output */
File temporaryFile()
{
    File pFile(std::tmpfile());
    if (!pFile) {
        fail(std::string("no temporary file: ") + std::strerror(errno));
    }
    return pFile;
}

std::string contentsOf(std::FILE* pFile)
{
    std::string sContents;
    std::array<char, BLOCK> block{};
    std::rewind(pFile);
    for (std::size_t nRead = 0; (nRead = std::fread(block.data(), 1, block.size(), pFile)) > 0;) {
        sContents.append(block.data(), nRead);
    }
    return sContents;
}

/** Starts the program with these files as its standard ones. */
pid_t start(int inputFd, std::FILE* pOutput, std::FILE* pErrors)
{
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        throw std::bad_alloc();
    }
    posix_spawn_file_actions_adddup2(&actions, inputFd, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(pOutput), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(pErrors), STDERR_FILENO);
    std::string sName = "gnuplot";
    std::string sNoUserSettings = "-d";
    const std::array<char*, 3> arguments = {sName.data(), sNoUserSettings.data(), nullptr};
    pid_t process = 0;
    const int nError = posix_spawnp(&process, "gnuplot", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (nError == ENOENT) {
        failWithoutGnuplot();
    }
    if (nError != 0) {
        fail(std::string("the program gnuplot cannot be started: ") + std::strerror(nError));
    }
    return process;
}

void writeAll(int fd, const std::string& sText)
{
    std::size_t nDone = 0;
    while (nDone < sText.size()) {
        const ssize_t nWritten = write(fd, sText.data() + nDone, sText.size() - nDone);
        if (nWritten < 0 && errno != EINTR) {
            return; // it has ended; how it ended tells why
        }
        nDone += nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0;
    }
}

int waitFor(pid_t process)
{
    int nStatus = 0;
    while (waitpid(process, &nStatus, 0) < 0 && errno == EINTR) {
    }
    return nStatus;
}

/** Both ends of a pipe. */
class Pipe
{
public:
    Pipe()
    {
        if (pipe2(m_ends.data(), O_CLOEXEC) != 0) {
            fail(std::string("no pipe: ") + std::strerror(errno));
        }
    }
    ~Pipe()
    {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int end(std::size_t nEnd) const { return m_ends.at(nEnd); }

    void closeEnd(std::size_t nEnd)
    {
        if (m_ends.at(nEnd) >= 0) {
            (void)close(m_ends.at(nEnd));
            m_ends.at(nEnd) = -1;
        }
    }

private:
    std::array<int, 2> m_ends{-1, -1};
};
} // namespace

EPicture pictureFor(const std::string& sPath)
{
    return sPath.ends_with(".png") ? EPicture::Png : EPicture::Svg;
}

std::string gnuplotText(const std::string& sText, std::size_t nMaximum)
{
    std::string sQuoted = "'";
    for (const char c : oneLine(sText, nMaximum)) {
        sQuoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return sQuoted + "'";
}

std::string runGnuplot(const std::string& sScript)
{
    const File pOutput = temporaryFile();
    const File pErrors = temporaryFile();
    Pipe input;
    const pid_t process = start(input.end(0), pOutput.get(), pErrors.get());
    input.closeEnd(0);
    writeAll(input.end(1), sScript);
    input.closeEnd(1);
    const int nStatus = waitFor(process);
    std::string sPicture = contentsOf(pOutput.get());
    if (WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == NOT_STARTED) {
        failWithoutGnuplot();
    }
    if (!WIFEXITED(nStatus) || WEXITSTATUS(nStatus) != 0 || sPicture.empty()) {
        const std::string sWords = oneLine(contentsOf(pErrors.get()));
        fail("gnuplot failed: " + (sWords.empty() ? fmt::format("its wait status is {}", nStatus) : sWords));
    }
    return sPicture;
}
