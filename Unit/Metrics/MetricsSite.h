/** @file
 * The unit's figures over HTTP.
 */
#pragma once

#include "Unit/Http/HttpSite.h"
#include "Unit/Metrics/UnitMetrics.h"

#include <functional>

/** Serves /metrics. */
class MetricsSite final : public IHttpSite
{
public:
    /** @param read gives the figures; any thread */
    explicit MetricsSite(std::function<UnitMetrics()> read);

    bool owns(const std::string& sPath) const override;
    std::optional<HttpResponse> refuse(const HttpRequest& head, const AccessPolicy& policy) const override;
    HttpResponse answer(const HttpRequest& request) override;

private:
    std::function<UnitMetrics()> m_read;
};
