/** @file
 * A handler that does what a test wants.
 */
#pragma once

#include "Unit/Http/HttpServer.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/** Far beyond what an answer takes. */
inline constexpr std::chrono::seconds PATIENCE{10};

/** Sends the body back, unless told otherwise, and keeps what it is told. */
class TestHandler : public IHttpHandler
{
public:
    // Set before the server starts.
    std::function<std::optional<HttpResponse>(const HttpRequest&)> onRefuse;
    std::function<HttpResponse(const HttpRequest&)> onAnswer;

    std::optional<HttpResponse> refuse(const HttpRequest& head) override;
    HttpResponse answer(const HttpRequest& request) override;
    void onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) override;

    /** Waits until something was turned away with this in its text. @return whether it was, within ten seconds */
    bool wasTold(const std::string& sText);
    /** Waits until so many answers have begun. @return whether they did, within ten seconds */
    bool hasBegun(int nAnswers);
    /** @return what was told so far, "address: text" each */
    std::vector<std::string> told();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_told;
    int m_nBegun = 0;
};

/** @return settings for a free port */
HttpServerSettings testSettings();

/** @return a response with status 200 */
HttpResponse okResponse(const std::string& sBody);

/** A gate that handlers wait at until the test opens it; it opens by itself after ten seconds. */
class Gate
{
public:
    ~Gate() { open(); }
    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    void open();
    void wait();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bOpen = false;
};
