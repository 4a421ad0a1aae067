#include "tests/unit/http/TestHandler.h"

#include <algorithm>

namespace
{
}

std::optional<HttpResponse> TestHandler::refuse(const HttpRequest& head)
{
    return onRefuse ? onRefuse(head) : std::nullopt;
}

HttpResponse TestHandler::answer(const HttpRequest& request)
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_nBegun;
    }
    m_changed.notify_all();
    return onAnswer ? onAnswer(request) : okResponse(request.sBody);
}

void TestHandler::onTurnedAway(const std::string& sClientAddress, const std::string& sWhat)
{
    {
        const std::lock_guard lock(m_mutex);
        m_told.push_back(sClientAddress + ": " + sWhat);
    }
    m_changed.notify_all();
}

bool TestHandler::wasTold(const std::string& sText)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, PATIENCE, [&] {
        return std::any_of(m_told.begin(), m_told.end(),
                           [&](const std::string& sTold) { return sTold.find(sText) != std::string::npos; });
    });
}

bool TestHandler::hasBegun(int nAnswers)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, PATIENCE, [&] { return m_nBegun >= nAnswers; });
}

std::vector<std::string> TestHandler::told()
{
    const std::lock_guard lock(m_mutex);
    return m_told;
}

HttpServerSettings testSettings()
{
    HttpServerSettings settings;
    settings.nPort = 0;
    return settings;
}

HttpResponse okResponse(const std::string& sBody)
{
    HttpResponse response;
    response.sBody = sBody;
    return response;
}

void Gate::open()
{
    {
        const std::lock_guard lock(m_mutex);
        m_bOpen = true;
    }
    m_changed.notify_all();
}

void Gate::wait()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, PATIENCE, [this] { return m_bOpen; });
}
