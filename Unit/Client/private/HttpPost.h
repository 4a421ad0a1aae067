/** @file
 * One HTTP request with XML in it.
 */
#pragma once

#include <functional>
#include <string>

/** What is sent, and where. */
struct HttpPost
{
    std::string sUrl;
    std::string sToken; /**< empty for none */
    std::string sBody;
    double answerSeconds = 30.0;
    std::function<bool()> stopRequested; /**< may be empty */
};

/** What came back. */
struct HttpReply
{
    long nStatus = 0;
    std::string sBody;
};

/** Bytes that an answer may have. */
constexpr std::size_t MAX_REPLY_BYTES = std::size_t{16} * 1024 * 1024;

/**
 * Sends a request and waits for its answer; goes around proxies, since a unit stands in one's own network.
 * @throws UnitUnreachable, UnitCallStopped
 */
HttpReply postXml(const HttpPost& post);
