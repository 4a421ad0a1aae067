#include "Unit/Process/StopSignals.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace
{
bool isIgnored(int nSignal)
{
    struct sigaction action = {};
    return sigaction(nSignal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}
} // namespace

StopSignals::StopSignals() : m_previous{}, m_fd(-1)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (!isIgnored(SIGHUP)) {
        sigaddset(&signals, SIGHUP);
    }
    m_fd = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_fd < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    }
    pthread_sigmask(SIG_BLOCK, &signals, &m_previous);
}

StopSignals::~StopSignals()
{
    // Those that came while the unit was stopping have been obeyed already.
    while (!wait(0).empty()) {
    }
    close(m_fd);
    pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
}

std::string StopSignals::wait(int timeoutMs) const
{
    pollfd poller{m_fd, POLLIN, 0};
    signalfd_siginfo information{};
    if (poll(&poller, 1, timeoutMs) <= 0 ||
        read(m_fd, &information, sizeof(information)) != static_cast<ssize_t>(sizeof(information)))
    {
        return {};
    }
    switch (static_cast<int>(information.ssi_signo)) {
    case SIGINT:
        return "SIGINT";
    case SIGTERM:
        return "SIGTERM";
    default:
        return "SIGHUP";
    }
}
