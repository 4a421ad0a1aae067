/** @file
 * The calls into the XML-RPC library, recorded and disturbed.
 */
#pragma once

#include <xmlrpc-epi/xmlrpc.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/**
 * While one lives, the calls that the tested code makes are recorded; those that the library makes of itself are not.
 * One at a time, and used by one thread.
 */
class XmlRpcCalls
{
public:
    /** A value that was handed to the library. */
    struct Value
    {
        XMLRPC_VALUE xValue;
        std::string sText; /**< as textOf() gave it before the call */
    };

    XmlRpcCalls();
    ~XmlRpcCalls();

    XmlRpcCalls(const XmlRpcCalls&) = delete;
    XmlRpcCalls& operator=(const XmlRpcCalls&) = delete;

    /** Lets one addition to a vector fail, counted from 1. */
    void failAddition(std::size_t nAddition) { m_nFailingAddition = nAddition; }
    /** Calls a function before each addition, with its number. */
    void beforeAddition(std::function<void(std::size_t)> call) { m_beforeAddition = std::move(call); }
    /** Lets every look at a value's text find none. */
    void hideTexts() { m_bTextsHidden = true; }

    /** Values added to vectors, in order, whether taken or not. */
    const std::vector<Value>& additions() const { return m_additions; }
    /** Values released, in order. */
    const std::vector<Value>& releases() const { return m_releases; }
    std::vector<std::string> additionTexts() const { return texts(m_additions); }
    std::vector<std::string> releaseTexts() const { return texts(m_releases); }
    /** @return how often a value was released */
    std::size_t releasesOf(XMLRPC_VALUE xValue) const;

    // For the library's functions.
    bool admitAddition(XMLRPC_VALUE xSource);
    void recordRelease(XMLRPC_VALUE xValue);
    bool areTextsHidden() const { return m_bTextsHidden; }

private:
    static std::vector<std::string> texts(const std::vector<Value>& values);

    std::size_t m_nFailingAddition = 0;
    std::function<void(std::size_t)> m_beforeAddition;
    bool m_bTextsHidden = false;
    std::vector<Value> m_additions;
    std::vector<Value> m_releases;
};
