#include "Unit/Client/private/Interrupt.h"

#include <cmath>
#include <ctime>

namespace
{
constexpr double NANOSECONDS_PER_SECOND = 1e9;
}

Interrupt::Interrupt()
{
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGINT);
    sigaddset(&m_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_maskBefore);
}

Interrupt::~Interrupt()
{
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
}

bool Interrupt::waitFor(double seconds)
{
    const double whole = std::floor(seconds);
    timespec duration{};
    duration.tv_sec = static_cast<std::time_t>(whole);
    duration.tv_nsec = static_cast<long>((seconds - whole) * NANOSECONDS_PER_SECOND);
    m_bCame = m_bCame || sigtimedwait(&m_signals, nullptr, &duration) > 0;
    return m_bCame;
}
