#include "Unit/Http/private/ConnectionBook.h"

#include "Unit/Http/private/SocketState.h"

#include <sys/socket.h>

#include <algorithm>

using std::chrono::milliseconds;

std::optional<std::string> ConnectionBook::refuse(const std::string& sAddress) const
{
    const std::lock_guard lock(m_mutex);
    if (m_bStopping) {
        return "connection refused: the server stops";
    }
    if (m_connections.size() >= m_limits.nMaxConnections) {
        return "connection refused: all " + std::to_string(m_limits.nMaxConnections) + " are taken";
    }
    const auto nOfClient = std::count_if(m_connections.begin(), m_connections.end(),
                                         [&](const Connection& connection) { return connection.sAddress == sAddress; });
    if (nOfClient >= static_cast<std::ptrdiff_t>(m_limits.nMaxConnectionsPerAddress)) {
        return "connection refused: this address has " + std::to_string(nOfClient) + " already";
    }
    return std::nullopt;
}

Connection& ConnectionBook::open(int nSocket, const std::string& sAddress)
{
    const std::lock_guard lock(m_mutex);
    Connection& connection = m_connections.emplace_back();
    connection.nSocket = nSocket;
    connection.sAddress = sAddress;
    connection.since = connection.active = Connection::Clock::now();
    if (m_bStopping) {
        shutDown(connection);
    }
    m_changed.notify_all();
    return connection;
}

void ConnectionBook::close(Connection& connection)
{
    const std::lock_guard lock(m_mutex);
    m_connections.remove_if([&connection](const Connection& other) { return &other == &connection; });
    m_changed.notify_all();
}

HttpConnections ConnectionBook::count() const
{
    const std::lock_guard lock(m_mutex);
    const auto nStreams = std::count_if(m_connections.begin(), m_connections.end(),
                                        [](const Connection& connection) { return connection.bStreaming; });
    return {m_connections.size(), static_cast<std::size_t>(nStreams)};
}

bool ConnectionBook::beginExchange(Connection& connection)
{
    const std::lock_guard lock(m_mutex);
    connection.bExchange = !m_bStopping;
    return connection.bExchange;
}

bool ConnectionBook::beginAnswer(Connection& connection)
{
    const std::lock_guard lock(m_mutex);
    connection.bAnswering = !m_bStopping;
    return connection.bAnswering;
}

void ConnectionBook::endExchange(Connection& connection)
{
    const std::lock_guard lock(m_mutex);
    connection.bExchange = connection.bAnswering = connection.bStreaming = false;
    connection.since = Connection::Clock::now();
    ++connection.nExchanges;
    if (m_bStopping) {
        shutDown(connection);
    }
    m_changed.notify_all();
}

std::optional<std::string> ConnectionBook::beginStream(Connection& connection)
{
    const std::lock_guard lock(m_mutex);
    const auto streamsOf = [this](const std::string* pAddress) {
        return std::count_if(m_connections.begin(), m_connections.end(), [pAddress](const Connection& other) {
            return other.bStreaming && (pAddress == nullptr || other.sAddress == *pAddress);
        });
    };
    if (streamsOf(nullptr) >= static_cast<std::ptrdiff_t>(m_limits.nMaxStreams)) {
        return "all " + std::to_string(m_limits.nMaxStreams) + " streams are taken; close one, or try again later";
    }
    if (streamsOf(&connection.sAddress) >= static_cast<std::ptrdiff_t>(m_limits.nMaxStreamsPerAddress)) {
        return "this address has " + std::to_string(m_limits.nMaxStreamsPerAddress) + " streams already; close one";
    }
    connection.bStreaming = true;
    connection.active = Connection::Clock::now();
    if (m_bStopping) {
        shutDown(connection);
    }
    return std::nullopt;
}

bool ConnectionBook::isShutDown(const Connection& connection) const
{
    const std::lock_guard lock(m_mutex);
    return connection.bShutDown;
}

void ConnectionBook::setHandling(Connection& connection, bool bOn)
{
    const std::lock_guard lock(m_mutex);
    connection.bHandling = bOn;
    connection.active = Connection::Clock::now();
}

std::vector<LateConnection> ConnectionBook::shutDownLate()
{
    std::vector<LateConnection> late;
    const std::lock_guard lock(m_mutex);
    const auto now = Connection::Clock::now();
    for (Connection& connection : m_connections) {
        const auto what = connection.bShutDown ? std::nullopt : lateness(connection, now);
        if (what.has_value()) {
            shutDown(connection);
            late.push_back({connection.sAddress, *what});
        }
    }
    return late;
}

std::optional<std::string> ConnectionBook::lateness(const Connection& connection,
                                                    Connection::Clock::time_point now) const
{
    if (!connection.bStreaming && now - connection.since >= m_limits.deadline) {
        return "connection closed: no answer finished within " + std::to_string(m_limits.deadline.count()) + " ms";
    }
    if (connection.bHandling || now - connection.active < m_limits.inactivity ||
        silenceOf(connection.nSocket).value_or(milliseconds::zero()) < m_limits.inactivity)
    {
        return std::nullopt;
    }
    if (connection.nExchanges > 0 && !connection.bExchange) {
        return "";
    }
    return "connection closed: silent for " + std::to_string(m_limits.inactivity.count()) + " s";
}

bool ConnectionBook::waitForConnection(const std::stop_token& stop)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait(lock, stop, [this] { return !m_connections.empty(); });
}

void ConnectionBook::beginStop()
{
    const std::lock_guard lock(m_mutex);
    m_bStopping = true;
    for (Connection& connection : m_connections) {
        if (!connection.bAnswering || connection.bStreaming) {
            shutDown(connection);
        }
    }
}

void ConnectionBook::waitForAnswers(milliseconds grace)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, grace, [this] {
        return std::none_of(m_connections.begin(), m_connections.end(),
                            [](const Connection& connection) { return connection.bAnswering; });
    });
}

void ConnectionBook::shutDownAll()
{
    const std::lock_guard lock(m_mutex);
    for (Connection& connection : m_connections) {
        shutDown(connection);
    }
}

void ConnectionBook::shutDown(Connection& connection)
{
    shutdown(connection.nSocket, SHUT_RDWR);
    connection.bShutDown = true;
}
