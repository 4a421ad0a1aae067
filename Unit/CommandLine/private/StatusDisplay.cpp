#include "Unit/CommandLine/StatusDisplay.h"

#include "Unit/Text/PowerText.h"

#include <fmt/format.h>
#include <sys/ioctl.h>

namespace
{
constexpr std::uint64_t MICROSECONDS_PER_SECOND = 1'000'000;

double seconds(const StepSample& sample)
{
    return static_cast<double>(sample.nTimeUs) / static_cast<double>(MICROSECONDS_PER_SECOND);
}

/** A line that wraps would spoil the redrawing. */
std::string cutToWidth(std::string sLine, std::FILE* pStream)
{
    winsize size{};
    if (ioctl(fileno(pStream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && sLine.size() >= size.ws_col) {
        sLine.resize(size.ws_col - 1U);
    }
    return sLine;
}
} // namespace

std::string plainStatusLine(const StepSample& sample)
{
    return fmt::format(
        "{:9.3f} s  channel {}  {:<18}  Ptarget {:>6}  Pctrl {:>6}  Pmeasured {:>6} dBm  error {:>6} dB  "
        "steps {}  failed {}  overruns {}",
        seconds(sample), sample.nChannelNumber, controllerStateName(sample.nState), powerText(sample.nPtarget),
        powerText(sample.nPctrl), powerText(sample.nPmeasured), decibelText(sample.nPowerError), sample.nSteps,
        sample.nFailedSteps, sample.nOverruns);
}

std::string terminalHeading()
{
    // The unit behind the last power goes for all three; a line has to fit 80 columns.
    return fmt::format("{:>2} {:<18} {:>7} {:>6} {:>9} {:>8} {:>7} {:>6} {:>8}", "ch", "state", "Ptarget", "Pctrl",
                       "Pmeas dBm", "error dB", "steps", "failed", "overruns");
}

std::string terminalStatusLine(const StepSample& sample)
{
    return fmt::format("{:>2} {:<18} {:>7} {:>6} {:>9} {:>8} {:>7} {:>6} {:>8}", sample.nChannelNumber,
                       controllerStateName(sample.nState), powerText(sample.nPtarget), powerText(sample.nPctrl),
                       powerText(sample.nPmeasured), decibelText(sample.nPowerError), sample.nSteps,
                       sample.nFailedSteps, sample.nOverruns);
}

StatusDisplay::StatusDisplay(std::FILE* pStream, bool bTerminal, std::size_t nChannels)
    : m_pStream(pStream), m_bTerminal(bTerminal), m_channels(nChannels)
{}

void StatusDisplay::add(const StepSample& sample)
{
    Channel& channel = m_channels.at(sample.nChannelIndex);
    const bool bStateChanged = !channel.bSeen || channel.latest.nState != sample.nState;
    channel.latest = sample;
    channel.bSeen = true;
    if (!m_bTerminal && (bStateChanged || sample.nTimeUs >= channel.nNextLineUs)) {
        fmt::print(m_pStream, "{}\n", plainStatusLine(sample));
        channel.nNextLineUs = (sample.nTimeUs / MICROSECONDS_PER_SECOND + 1) * MICROSECONDS_PER_SECOND;
    }
}

void StatusDisplay::refresh()
{
    if (m_bTerminal) {
        eraseLines();
        drawLines();
    }
    (void)std::fflush(m_pStream);
}

void StatusDisplay::note(const std::string& sText)
{
    eraseLines();
    fmt::print(m_pStream, "{}\n", sText);
    if (m_bTerminal) {
        drawLines();
    }
    (void)std::fflush(m_pStream);
}

void StatusDisplay::eraseLines()
{
    if (m_nLinesDrawn > 0) {
        fmt::print(m_pStream, "\x1b[{}A\r\x1b[J", m_nLinesDrawn); // up, and clear to the end of the screen
        m_nLinesDrawn = 0;
    }
}

void StatusDisplay::drawLines()
{
    fmt::print(m_pStream, "{}\n", cutToWidth(terminalHeading(), m_pStream));
    m_nLinesDrawn = 1;
    for (const Channel& channel : m_channels) {
        if (channel.bSeen) {
            fmt::print(m_pStream, "{}\n", cutToWidth(terminalStatusLine(channel.latest), m_pStream));
            ++m_nLinesDrawn;
        }
    }
}
