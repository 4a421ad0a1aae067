#include "Unit/Recorder/CsvWriter.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Text/PowerText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace
{
constexpr std::string_view HEADER = "time_s,channel,state,requested_power_dBm,ptarget_dBm,pctrl_dBm,pmeasured_dBm,"
                                    "ppredicted_dBm,error_dB,result,detector_state,temperature_C,frequency_MHz,"
                                    "lateness_us\n";
constexpr std::size_t FLUSH_BYTES = 64UL * 1024;
constexpr int OPEN_FLAGS = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK; // a pipe must not hold the unit up
constexpr mode_t FILE_MODE = 0666;                                      // less the user's umask
} // namespace

CsvWriter::CsvWriter(std::string sPath) : m_sPath(std::move(sPath))
{
    m_fd = open(m_sPath.c_str(), OPEN_FLAGS | O_EXCL, FILE_MODE);
    m_bCreated = m_fd >= 0;
    if (!m_bCreated) {
        m_fd = open(m_sPath.c_str(), OPEN_FLAGS, FILE_MODE);
    }
    if (m_fd < 0) {
        throw ConfigurationError(fmt::format("{}: cannot record there: {}; name a file that can be written with --csv",
                                             m_sPath, std::strerror(errno)));
    }
}

CsvWriter::~CsvWriter()
{
    flush();
    close(m_fd);
    if (m_bCreated && !m_bBegun) {
        unlink(m_sPath.c_str());
    }
}

void CsvWriter::begin()
{
    m_bBegun = true;
    struct stat information = {};
    const bool bRegular = fstat(m_fd, &information) == 0 && S_ISREG(information.st_mode);
    if (bRegular && ftruncate(m_fd, 0) != 0) {
        fail("empty");
        return;
    }
    m_buffer.append(HEADER.data(), HEADER.data() + HEADER.size());
    flush();
}

void CsvWriter::add(const StepSample& sample)
{
    if (!m_sError.empty()) {
        return;
    }
    fmt::format_to(
        std::back_inserter(m_buffer), "{:.3f},{},{},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{},{},{:.2f},{:.3f},{}\n",
        static_cast<double>(sample.nTimeUs) / 1e6, sample.nChannelNumber, controllerStateName(sample.nState),
        sample.nRequestedPower / 100.0, sample.nPtarget / 100.0, sample.nPctrl / 100.0, sample.nPmeasured / 100.0,
        sample.nPredictedPctrl / 100.0, sample.nPowerError / 100.0, sample.nResult, sample.nDetectorState,
        sample.temperatureDegrees, sample.frequencyMhz, sample.nLatenessUs);
    ++m_nRowsGathered;
    if (m_buffer.size() >= FLUSH_BYTES) {
        flush();
    }
}

void CsvWriter::flush()
{
    std::size_t nDone = 0;
    while (m_sError.empty() && nDone < m_buffer.size()) {
        const ssize_t nWritten = write(m_fd, m_buffer.data() + nDone, m_buffer.size() - nDone);
        if (nWritten < 0 && errno != EINTR) {
            fail("write to");
        }
        nDone += nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0;
    }
    m_nRowsWritten += m_sError.empty() ? m_nRowsGathered : 0;
    m_nRowsGathered = 0;
    m_buffer.clear();
}

void CsvWriter::fail(const char* pAction)
{
    m_sError = fmt::format("{}: cannot {} it: {}; recording has stopped", m_sPath, pAction, std::strerror(errno));
}
