/** @file
 * From the body of a request to the body of its response.
 */
#pragma once

#include "Unit/TestServer/CallCounter.h"
#include "Unit/TestServer/MethodTable.h"
#include "Unit/XmlRpc/XmlRpcGuard.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

/** Serves a method table, with system.listMethods, methodHelp, methodSignature and multicall added. */
class XmlRpcService
{
public:
    /** Calls that one system.multicall may hold; with more it is a fault as a whole and none is carried out. */
    static constexpr std::size_t MAX_CALLS = 1000;

    /** Bytes of text that its answers may come to; the calls after that are not carried out, each a fault. */
    static constexpr std::size_t MAX_MULTICALL_BYTES = std::size_t{4} * 1024 * 1024;

    /** Is told in a line why a body never became a call. */
    using RefusalListener = std::function<void(const std::string& sWhy)>;

    /** Is told of each method that was called, with its call and the text of its fault, empty for none, before the
     * next one is. */
    using CallListener = std::function<void(const Method& method, XMLRPC_REQUEST request, const std::string& sFault)>;

    explicit XmlRpcService(MethodTable methods, const XmlRpcLimits& limits = {}, CallListener onCall = nullptr);
    XmlRpcService(const XmlRpcService&) = delete; // its methods know where it lives
    XmlRpcService& operator=(const XmlRpcService&) = delete;
    ~XmlRpcService() = default;

    /**
     * Carries out a call. Any thread; one call is carried out at a time, since a value of thousands of small blocks
     * that one core builds and another one reads costs far more when the blocks of several such values mix.
     * @return the response; whatever went wrong is a fault in it
     */
    std::string answer(const std::string& sBody, const RefusalListener& onRefusal = nullptr) const;

    /** @return how often each method was called; a call inside a system.multicall counts for its own method as well */
    std::map<std::string, CallCounts> calls() const { return m_calls.counts(); }

private:
    XmlRpcValue dispatch(const std::string& sMethod, XMLRPC_REQUEST request) const;
    void tell(const Method& method, XMLRPC_REQUEST request, const std::string& sFault) const;
    void addSystemMethods();
    XmlRpcValue multicall(XMLRPC_REQUEST request) const;
    XmlRpcValue inner(XMLRPC_VALUE call) const;

    MethodTable m_methods;
    XmlRpcLimits m_limits;
    CallListener m_onCall;
    mutable std::mutex m_turn;
    mutable CallCounter m_calls;
};
