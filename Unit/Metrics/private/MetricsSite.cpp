#include "Unit/Metrics/MetricsSite.h"

#include <utility>

MetricsSite::MetricsSite(std::function<UnitMetrics()> read) : m_read(std::move(read)) {}

bool MetricsSite::owns(const std::string& sPath) const
{
    return sPath == "/metrics";
}

std::optional<HttpResponse> MetricsSite::refuse(const HttpRequest& head, const AccessPolicy& policy) const
{
    return policy.refuseGet(head, EHttpContent::Unit);
}

HttpResponse MetricsSite::answer(const HttpRequest& /*request*/)
{
    HttpResponse response;
    response.sContentType = "text/plain; version=0.0.4; charset=utf-8";
    response.sBody = metricsText(m_read());
    return response;
}
