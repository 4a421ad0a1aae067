/** @file
 * The live page and the data that it shows.
 */
#pragma once

#include "Unit/Http/HttpSite.h"
#include "Unit/LivePage/PageAssets.h"
#include "Unit/LivePage/PageReplay.h"
#include "Unit/LivePage/RecordedPast.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/** What the page is told of the run's recording. */
struct PageRecording
{
    std::string sFile; /**< without folders */
    bool bPaused = false;
    std::string sReason; /**< why it pauses */
};

/** What the page is told of the run that it shows. */
struct PageRun
{
    std::string sVersion;                                    /**< of the program */
    std::int64_t nStartedUnixUs = 0;                         /**< when the first step was due */
    bool bSimulated = true;                                  /**< whether the handlers are simulated ones */
    std::vector<unsigned int> channels;                      /**< numbers, in the order of their indices */
    std::function<unsigned int()> intervalMs;                /**< any thread; the regulator's, as it is now */
    std::function<std::optional<PageRecording>()> recording; /**< any thread; null or none when there is none */
    std::shared_ptr<RecordedPast> pPast{};                   /**< what is recorded of the run; null for nothing */
};

class AnswerSlots;

/** Serves /, /assets/..., /api/unit, /api/stream, /api/history and /api/events, and of a recording /api/replay. */
class LivePageSite final : public IHttpSite
{
public:
    /** Shows a run. */
    LivePageSite(PageRun run, PageAssets assets, PageFeed feed);

    /** Shows a recording. @param replay must outlive the object. @param run has the recording as its past */
    LivePageSite(PageRun run, PageAssets assets, IPageReplay& replay);

    ~LivePageSite() override;
    LivePageSite(const LivePageSite&) = delete;
    LivePageSite& operator=(const LivePageSite&) = delete;

    bool owns(const std::string& sPath) const override;
    std::optional<HttpResponse> refuse(const HttpRequest& head, const AccessPolicy& policy) const override;
    HttpResponse answer(const HttpRequest& request) override;

private:
    HttpResponse withSlot(const HttpRequest& request, HttpResponse (LivePageSite::*pMake)(const HttpRequest&) const);
    HttpResponse asset(const HttpRequest& request) const;
    PageFeed feed() const { return m_pReplay == nullptr ? m_feed : m_pReplay->feed(); }
    HttpResponse unit() const;
    HttpResponse stream(const HttpRequest& request) const;
    HttpResponse history(const HttpRequest& request) const;
    HttpResponse events(const HttpRequest& request) const;
    HttpResponse changeReplay(const HttpRequest& request) const;

    PageRun m_run;
    PageAssets m_assets;
    PageFeed m_feed;                  // of a run
    IPageReplay* m_pReplay = nullptr; // of a recording; null for a run
    std::unique_ptr<AnswerSlots> m_pSlots;
};
