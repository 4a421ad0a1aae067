#include "Unit/Http/HttpServer.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Threads/ThreadRules.h"
#include "Unit/Http/private/ConnectionBook.h"
#include "Unit/Http/private/Exchange.h"
#include "Unit/Http/private/LibraryLog.h"
#include "Unit/Http/private/LibraryMessages.h"
#include "Unit/Http/private/ListeningSocket.h"
#include "Unit/Http/private/SafeHandler.h"
#include "Unit/Http/private/SocketAddress.h"
#include "Unit/Http/private/SocketState.h"
#include "Unit/Http/private/Watchdog.h"

#include <fcntl.h>
#include <microhttpd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string_view>

namespace
{
// The client that the thread serves, for the library's log, which does not tell it.
thread_local std::string t_sClientAddress;

// Whether the path of the thread's request holds a NUL, at which the library's text would end.
thread_local bool t_bNulInPath = false;

constexpr const char* NOBODYS_PATH = "%00"; // no path that a handler knows

/** Makes the calling thread a nicer one, once. Linux has a niceness per thread. */
void yieldTo(int nNiceness)
{
    thread_local bool t_bDone = false;
    if (!t_bDone) {
        t_bDone = true;
        (void)setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), nNiceness); // nicer is always allowed
    }
}
} // namespace

class HttpServer::Implementation
{
public:
    Implementation(const HttpServerSettings& settings, IHttpHandler& handler);
    ~Implementation();

    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    std::uint16_t port() const { return m_socket.port(); }
    HttpConnections connections() const { return m_book.count(); }
    void stop(std::chrono::milliseconds grace);

private:
    MHD_Daemon* start();

    // The library's callbacks; none lets an exception through.
    static MHD_Result onClient(void* pThis, const sockaddr* pAddress, socklen_t nLength);
    static void onConnection(void* pThis, MHD_Connection* pLibrary, void** ppConnection,
                             MHD_ConnectionNotificationCode code);
    static void* onUri(void* pThis, const char* pUri, MHD_Connection* pLibrary);
    static MHD_Result onRequest(void* pThis, MHD_Connection* pLibrary, const char* pUrl, const char* pMethod,
                                const char* pVersion, const char* pData, size_t* pnData, void** ppExchange);
    static void onEnd(void* pThis, MHD_Connection* pLibrary, void** ppExchange, MHD_RequestTerminationCode code);
    static void onLog(void* pThis, const char* pFormat, va_list arguments);

    const HttpLimits m_limits;
    SafeHandler m_handler;
    ConnectionBook m_book;
    ListeningSocket m_socket;
    Watchdog m_watchdog;
    MHD_Daemon* m_pDaemon;
};

HttpServer::Implementation::Implementation(const HttpServerSettings& settings, IHttpHandler& handler)
    : m_limits(settings.limits), m_handler(handler), m_book(settings.limits),
      m_socket(settings.sAddress, settings.nPort), m_watchdog(m_book, m_handler, m_limits), m_pDaemon(start())
{}

HttpServer::Implementation::~Implementation()
{
    stop(std::chrono::milliseconds(300));
}

// The library's own limit stands one above ours: at its limit it closes without telling whom. Its timeout is not used:
// in its last second before a timeout it waits by spinning, one core's worth for each idle connection.
MHD_Daemon* HttpServer::Implementation::start()
{
    constexpr unsigned int FLAGS = MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL |
                                   MHD_USE_ITC | MHD_USE_ERROR_LOG;
    const int nSocket = fcntl(m_socket.descriptor(), F_DUPFD_CLOEXEC, 0);
    MHD_Daemon* pDaemon =
        nSocket < 0
            ? nullptr
            : MHD_start_daemon(FLAGS, 0, &onClient, this, &onRequest, this, //
                               MHD_OPTION_EXTERNAL_LOGGER, &onLog, this,    //
                               MHD_OPTION_LISTEN_SOCKET, nSocket,           //
                               MHD_OPTION_NOTIFY_CONNECTION, &onConnection, this, MHD_OPTION_URI_LOG_CALLBACK, &onUri,
                               this, MHD_OPTION_NOTIFY_COMPLETED, &onEnd, this, MHD_OPTION_CONNECTION_LIMIT,
                               m_limits.nMaxConnections + 1, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
                               m_limits.nMaxConnectionsPerAddress + 1, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                               m_limits.nConnectionMemory, MHD_OPTION_THREAD_STACK_SIZE, m_limits.nThreadStack,
                               MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_END);
    if (pDaemon == nullptr) {
        throw ConfigurationError("cannot start the HTTP server on port " + std::to_string(m_socket.port()) +
                                 ": the system is out of threads, memory or descriptors; raise its limits (ulimit -a)");
    }
    return pDaemon;
}

void HttpServer::Implementation::stop(std::chrono::milliseconds grace)
{
    refuseThreadRole(EThreadRole::Connection, "HttpServer::stop"); // it would wait for itself
    if (m_pDaemon == nullptr) {
        return;
    }
    const int nSocket = MHD_quiesce_daemon(m_pDaemon);
    m_socket.shutDown();
    m_book.beginStop();
    m_book.waitForAnswers(grace);
    m_watchdog.stop();
    m_book.shutDownAll();
    MHD_stop_daemon(m_pDaemon);
    m_pDaemon = nullptr;
    if (nSocket >= 0) {
        close(nSocket);
    }
}

MHD_Result HttpServer::Implementation::onClient(void* pThis, const sockaddr* pAddress, socklen_t nLength)
{
    auto& self = *static_cast<Implementation*>(pThis);
    try {
        const std::string sAddress = numericAddress(pAddress, nLength);
        const auto refused = self.m_book.refuse(sAddress);
        if (refused.has_value()) {
            self.m_handler.onTurnedAway(sAddress, *refused);
            return MHD_NO;
        }
        return MHD_YES;
    }
    catch (const std::exception&) {
        return MHD_NO;
    }
}

void HttpServer::Implementation::onConnection(void* pThis, MHD_Connection* pLibrary, void** ppConnection,
                                              MHD_ConnectionNotificationCode code)
{
    auto& self = *static_cast<Implementation*>(pThis);
    auto* pConnection = static_cast<Connection*>(*ppConnection);
    try {
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            *ppConnection = &self.m_book.open(socketOf(pLibrary), clientAddress(pLibrary));
        }
        else if (pConnection != nullptr) {
            dropArrived(pConnection->nSocket);
            self.m_book.close(*pConnection);
            *ppConnection = nullptr;
        }
    }
    catch (const std::exception&) {
        *ppConnection = nullptr; // out of memory: a connection without an entry has its requests refused
    }
}

void* HttpServer::Implementation::onUri(void* pThis, const char* pUri, MHD_Connection* pLibrary)
{
    const std::string_view uri(pUri);
    t_bNulInPath = uri.substr(0, uri.find('?')).find("%00") != std::string_view::npos;
    yieldTo(static_cast<Implementation*>(pThis)->m_limits.nNiceness);
    try {
        t_sClientAddress = clientAddress(pLibrary);
    }
    catch (const std::exception&) {
        t_sClientAddress.clear();
    }
    return nullptr;
}

MHD_Result HttpServer::Implementation::onRequest(void* pThis, MHD_Connection* pLibrary, const char* pUrl,
                                                 const char* pMethod, const char* /*pVersion*/, const char* pData,
                                                 size_t* pnData, void** ppExchange)
{
    const ThreadRoleScope role(EThreadRole::Connection);
    auto& self = *static_cast<Implementation*>(pThis);
    auto* pExchange = static_cast<Exchange*>(*ppExchange);
    try {
        if (pExchange == nullptr) {
            const MHD_ConnectionInfo* pInfo = MHD_get_connection_info(pLibrary, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
            if (pInfo == nullptr || pInfo->socket_context == nullptr) {
                return MHD_NO;
            }
            pExchange = new Exchange({self.m_book, self.m_handler, self.m_limits},
                                     *static_cast<Connection*>(pInfo->socket_context), pLibrary,
                                     headOf(pLibrary, t_bNulInPath ? NOBODYS_PATH : pUrl, pMethod));
            *ppExchange = pExchange; // onEnd() deletes it
            return pExchange->begin() ? MHD_YES : MHD_NO;
        }
        if (*pnData > 0) {
            const std::string_view part(pData, *pnData);
            *pnData = 0;
            return pExchange->takeBody(part) ? MHD_YES : MHD_NO;
        }
        return pExchange->finish() ? MHD_YES : MHD_NO;
    }
    catch (const std::exception&) {
        return MHD_NO; // out of memory
    }
}

void HttpServer::Implementation::onEnd(void* /*pThis*/, MHD_Connection* /*pLibrary*/, void** ppExchange,
                                       MHD_RequestTerminationCode /*code*/)
{
    const std::unique_ptr<Exchange> pExchange(static_cast<Exchange*>(*ppExchange));
    *ppExchange = nullptr;
    if (pExchange != nullptr) {
        pExchange->end();
    }
}

void HttpServer::Implementation::onLog(void* pThis, const char* pFormat, va_list arguments)
{
    std::array<char, 512> line{};
    static_cast<void>(std::vsnprintf(line.data(), line.size(), pFormat, arguments)); // cut off is good enough
    try {
        const auto text = turnedAwayText(line.data());
        if (text.has_value()) {
            static_cast<Implementation*>(pThis)->m_handler.onTurnedAway(t_sClientAddress, *text);
        }
    }
    catch (const std::exception&) { // NOLINT(bugprone-empty-catch): out of memory, and only a log
    }
}

HttpServer::HttpServer(const HttpServerSettings& settings, IHttpHandler& handler)
    : m_pImplementation(std::make_unique<Implementation>(settings, handler))
{}

HttpServer::~HttpServer() = default;

std::uint16_t HttpServer::port() const
{
    return m_pImplementation->port();
}

HttpConnections HttpServer::connections() const
{
    return m_pImplementation->connections();
}

void HttpServer::stop(std::chrono::milliseconds grace)
{
    m_pImplementation->stop(grace);
}
