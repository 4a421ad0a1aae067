#include "Unit/CommandLine/ProgressBar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace
{
constexpr std::chrono::milliseconds REDRAW_INTERVAL{100};
constexpr double LONGEST_SECONDS = 1e9;
constexpr std::size_t WIDEST_BAR = 40;
constexpr std::size_t NARROWEST_BAR = 5;
constexpr std::size_t USUAL_COLUMNS = 80;

std::size_t columnsOf(std::FILE* pStream)
{
    winsize size{};
    return ioctl(fileno(pStream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL_COLUMNS;
}

std::string barText(double share, std::size_t nWidth)
{
    const auto nFull = static_cast<std::size_t>(share * static_cast<double>(nWidth));
    return "[" + std::string(nFull, '#') + std::string(nWidth - nFull, ' ') + "]";
}
} // namespace

std::string shortNumber(double value)
{
    static constexpr std::array<const char*, 5> LETTERS = {"", " k", " M", " G", " T"};
    std::size_t nLetter = 0;
    while (value >= 999.5 && nLetter + 1 < LETTERS.size()) {
        value /= 1000.0;
        ++nLetter;
    }
    const bool bWhole = value >= 99.95 || (nLetter == 0 && value == std::floor(value));
    const int nDecimals = bWhole ? 0 : (value >= 9.995 ? 1 : 2);
    return fmt::format("{:.{}f}{}", value, nDecimals, LETTERS.at(nLetter));
}

std::string durationText(double seconds)
{
    constexpr std::uint64_t perMinute = 60;
    const auto nSeconds = static_cast<std::uint64_t>(std::llround(std::clamp(seconds, 0.0, LONGEST_SECONDS)));
    const std::uint64_t nMinutes = nSeconds / perMinute;
    return nMinutes < perMinute
               ? fmt::format("{}:{:02}", nMinutes, nSeconds % perMinute)
               : fmt::format("{}:{:02}:{:02}", nMinutes / perMinute, nMinutes % perMinute, nSeconds % perMinute);
}

std::string progressText(const Progress& progress, std::size_t nColumns)
{
    const double share = progress.total > 0.0 ? std::clamp(progress.done / progress.total, 0.0, 1.0) : 1.0;
    std::string sText = fmt::format(" {:3.0f} %", std::floor(share * 100.0)); // 100 % means all of it
    if (progress.perSecond > 0.0) {
        sText += fmt::format("  {} {}/s", shortNumber(progress.perSecond), progress.sUnit);
        if (progress.timesRealTime) {
            sText += fmt::format("  {} x real time", shortNumber(*progress.timesRealTime));
        }
        const double leftSeconds = std::max(progress.total - progress.done, 0.0) / progress.perSecond;
        sText += fmt::format("  {} left", durationText(leftSeconds));
    }
    const std::size_t nOthers = sText.size() + 2 + 1; // brackets, and the last column, which would wrap
    if (nColumns >= nOthers + NARROWEST_BAR) {
        return barText(share, std::min(WIDEST_BAR, nColumns - nOthers)) + sText;
    }
    sText.erase(0, 1);
    return sText.substr(0, nColumns > 0 ? nColumns - 1 : 0);
}

ProgressBar::ProgressBar(std::FILE* pStream, bool bTerminal, Task task)
    : m_pStream(pStream), m_bTerminal(bTerminal), m_task(std::move(task)), m_began(Clock::now()),
      m_nextDraw(m_began + REDRAW_INTERVAL)
{}

ProgressBar::~ProgressBar()
{
    erase();
    (void)std::fflush(m_pStream);
}

void ProgressBar::update(double done)
{
    if (!m_bTerminal) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now < m_nextDraw) {
        return;
    }
    m_nextDraw = now + REDRAW_INTERVAL;
    Progress progress;
    progress.done = done;
    progress.total = m_task.total;
    progress.perSecond = (done - m_task.doneBefore) / std::chrono::duration<double>(now - m_began).count();
    progress.sUnit = m_task.sUnit;
    if (m_task.simulatedSecondsPerUnit > 0.0) {
        progress.timesRealTime = progress.perSecond * m_task.simulatedSecondsPerUnit;
    }
    fmt::print(m_pStream, "\r{}\x1b[K", progressText(progress, columnsOf(m_pStream)));
    (void)std::fflush(m_pStream);
    m_bDrawn = true;
}

void ProgressBar::note(const std::string& sText)
{
    erase();
    fmt::print(m_pStream, "{}\n", sText);
    (void)std::fflush(m_pStream);
}

void ProgressBar::erase()
{
    if (m_bDrawn) {
        fmt::print(m_pStream, "\r\x1b[K");
    }
    m_bDrawn = false;
}
