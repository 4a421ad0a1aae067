#include "Unit/Campaign/private/Worker.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/SweepValues.h"
#include "Unit/Text/OneLine.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace
{
constexpr std::size_t KEPT_ERRORS = 4096;
constexpr int FIRST_OTHER_FD = STDERR_FILENO + 1;
constexpr int FREE_FD = 10; // out of the way of those that are put in place

[[noreturn]] void failSystem(const char* pText)
{
    throw std::system_error(errno, std::generic_category(), pText);
}

/** Carries a task out, whatever it throws. */
std::string carryOut(const SweepDefinition& definition, const ICampaignRunner& runner, const WorkerRequest& request,
                     WorkerReply& reply)
{
    try {
        const RunPlan plan = planRun(definition, request.nRun);
        const std::vector<ScenarioOverride> overrides = overridesOf(definition, plan.values);
        if (request.eTask == EWorkerTask::TryStart) {
            runner.tryStart(overrides, plan.nSeed);
        }
        else {
            reply.measures = runner.run(overrides, plan.nSeed);
        }
        reply.eOutcome = EWorkerOutcome::Well;
        return {};
    }
    catch (const ConfigurationError& error) {
        reply.eOutcome = EWorkerOutcome::BadInput;
        return oneLine(error.what(), MAX_WORKER_TEXT);
    }
    catch (const std::exception& error) {
        reply.eOutcome = EWorkerOutcome::Failed;
        return oneLine(error.what(), MAX_WORKER_TEXT);
    }
}

/** Leaves the process nothing of its parent's but the socket, as number 3, and the pipe as its standard error. */
void keepOnly(int messageFd, int errorFd)
{
    messageFd = fcntl(messageFd, F_DUPFD_CLOEXEC, FREE_FD);
    errorFd = fcntl(errorFd, F_DUPFD_CLOEXEC, FREE_FD);
    const int nullFd = open("/dev/null", O_RDWR | O_CLOEXEC);
    (void)dup2(nullFd, STDIN_FILENO);
    (void)dup2(nullFd, STDOUT_FILENO);
    (void)dup2(errorFd, STDERR_FILENO);
    (void)dup2(messageFd, FIRST_OTHER_FD);
    closefrom(FIRST_OTHER_FD + 1);
}

std::string deathText(int nStatus)
{
    if (WIFSIGNALED(nStatus)) {
        const char* pName = sigabbrev_np(WTERMSIG(nStatus));
        return fmt::format("the process of the run died of signal {} (SIG{})", WTERMSIG(nStatus),
                           pName == nullptr ? "?" : pName);
    }
    return fmt::format("the process of the run ended with exit code {}", WEXITSTATUS(nStatus));
}
} // namespace

std::vector<ScenarioOverride> overridesOf(const SweepDefinition& definition, const std::vector<SweepValue>& values)
{
    std::vector<ScenarioOverride> overrides;
    if (definition.durationSeconds) {
        overrides.push_back({"duration_s", numberValue(*definition.durationSeconds).sToml});
    }
    for (std::size_t n = 0; n < values.size(); ++n) {
        overrides.push_back({definition.parameters.at(n).sPath, values[n].sToml});
    }
    return overrides;
}

Worker::Worker(const SweepDefinition& definition, const ICampaignRunner& runner)
{
    std::array<int, 2> sockets{};
    std::array<int, 2> pipe{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
        failSystem("no socket for a worker");
    }
    if (pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        (void)close(sockets[0]);
        (void)close(sockets[1]);
        failSystem("no pipe for a worker");
    }
    const pid_t parent = getpid();
    m_process = fork();
    if (m_process == 0) {
        serve(definition, runner, sockets[1], pipe[1], parent);
    }
    const int nError = errno;
    (void)close(sockets[1]);
    (void)close(pipe[1]);
    m_messageFd = sockets[0];
    m_errorFd = pipe[0];
    if (m_process < 0) {
        (void)close(m_messageFd);
        (void)close(m_errorFd);
        errno = nError;
        failSystem("no process for a worker");
    }
}

Worker::~Worker()
{
    if (!m_bDead) {
        (void)end(true);
    }
    (void)close(m_messageFd);
    (void)close(m_errorFd);
}

void Worker::serve(const SweepDefinition& definition, const ICampaignRunner& runner, int messageFd, int errorFd,
                   pid_t parent) const
{
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(0); // it ended before it could be said
    }
    keepOnly(messageFd, errorFd);
    for (;;) {
        WorkerRequest request{};
        const ssize_t nRead = recv(FIRST_OTHER_FD, &request, sizeof(request), 0);
        if (nRead < 0 && errno == EINTR) {
            continue;
        }
        if (nRead != static_cast<ssize_t>(sizeof(request))) {
            _exit(0);
        }
        WorkerReply reply{};
        reply.nRun = request.nRun;
        const std::string sText = carryOut(definition, runner, request, reply);
        std::array<iovec, 2> parts = {{{&reply, sizeof(reply)}, {const_cast<char*>(sText.data()), sText.size()}}};
        msghdr message = {};
        message.msg_iov = parts.data();
        message.msg_iovlen = parts.size();
        if (sendmsg(FIRST_OTHER_FD, &message, MSG_NOSIGNAL) < 0) {
            _exit(0);
        }
    }
}

bool Worker::give(std::uint64_t nRun, EWorkerTask eTask)
{
    const WorkerRequest request{nRun, eTask, 0};
    if (send(m_messageFd, &request, sizeof(request), MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof(request))) {
        (void)end(true);
        return false;
    }
    m_run = nRun;
    return true;
}

std::optional<WorkerResult> Worker::take()
{
    std::array<char, sizeof(WorkerReply) + MAX_WORKER_TEXT + 4> buffer{}; // a text that was cut ends with dots
    const ssize_t nRead = recv(m_messageFd, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (nRead < 0 && (errno == EAGAIN || errno == EINTR)) {
        return std::nullopt;
    }
    WorkerResult result;
    if (nRead < static_cast<ssize_t>(sizeof(WorkerReply))) {
        takeErrors();
        const std::string sDeath = end(false);
        if (!m_run) {
            return std::nullopt; // it died without work; nothing is lost
        }
        result.nRun = *m_run;
        result.sError = sDeath;
        result.bDied = true;
        result.sLastWords = m_sErrors;
    }
    else {
        WorkerReply reply{};
        std::memcpy(&reply, buffer.data(), sizeof(reply));
        result.nRun = reply.nRun;
        result.eOutcome = reply.eOutcome;
        result.measures = reply.measures;
        result.sError.assign(buffer.data() + sizeof(reply), static_cast<std::size_t>(nRead) - sizeof(reply));
    }
    m_run.reset();
    m_sErrors.clear();
    return result;
}

void Worker::takeErrors()
{
    std::array<char, KEPT_ERRORS> buffer{};
    for (ssize_t nRead = 0; (nRead = read(m_errorFd, buffer.data(), buffer.size())) > 0;) {
        m_sErrors.append(buffer.data(), static_cast<std::size_t>(nRead));
        if (m_sErrors.size() > KEPT_ERRORS) {
            m_sErrors.erase(0, m_sErrors.size() - KEPT_ERRORS);
        }
    }
}

std::string Worker::end(bool bKill)
{
    if (bKill) {
        (void)kill(m_process, SIGKILL);
    }
    int nStatus = 0;
    while (waitpid(m_process, &nStatus, 0) < 0 && errno == EINTR) {
    }
    m_bDead = true;
    return deathText(nStatus);
}
