/** @file
 * Fixture of the transient log's command.
 */
#pragma once

#include "tests/module/log/LogTest.h"

#include <initializer_list>

inline const std::string STANDARD_RESPONSE = "{StandardResponse: \"OK\"}";
inline const std::string INVALID_FAULT = faultText(4, "eTI_E_FAILED, TI.ManageOPCTransientLog invalid request option");

/** Sends requests to the transient log. */
class TransientLogCommandTest : public LogTest
{
protected:
    /** @return a request with these parameters, which it takes over */
    static XMLRPC_REQUEST requestOf(std::initializer_list<XMLRPC_VALUE> parameters)
    {
        XMLRPC_REQUEST xRequest = XMLRPC_RequestNew();
        XMLRPC_VALUE xParameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
        for (XMLRPC_VALUE xParameter : parameters) {
            XMLRPC_AddValueToVector(xParameters, xParameter);
        }
        XMLRPC_RequestSetData(xRequest, xParameters);
        return xRequest;
    }

    /** @return a request for an option */
    static XMLRPC_REQUEST requestFor(const std::string& sOption)
    {
        XMLRPC_VALUE xStruct = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_AddValueToVector(xStruct, XMLRPC_CreateValueString("RequestOption", sOption.c_str(), 0));
        return requestOf({xStruct});
    }

    /** @return the request that the library reads from a call with these parameters in XML */
    static XMLRPC_REQUEST parsed(const std::string& sParameters)
    {
        const std::string sXml =
            "<?xml version=\"1.0\"?><methodCall><methodName>TI.ManageOPCTransientLog</methodName>" + sParameters +
            "</methodCall>";
        return XMLRPC_REQUEST_FromXML(sXml.c_str(), static_cast<int>(sXml.size()), nullptr);
    }

    /** Sends a request, which is released. @return the answer's text */
    std::string send(XMLRPC_REQUEST xRequest)
    {
        XMLRPC_VALUE xAnswer =
            OutputPowerControlLog::statichandleTIManageOPCTransientLog(m_log.handle(), nullptr, xRequest, nullptr);
        return received(xRequest, xAnswer);
    }

    /** Sends a request for an option, watched only while it is served. @return the answer's text */
    std::string sendWatched(const std::string& sOption, const std::function<void(const XmlRpcCalls&)>& watch)
    {
        XMLRPC_REQUEST xRequest = requestFor(sOption);
        XMLRPC_VALUE xAnswer = nullptr;
        {
            XmlRpcCalls calls;
            if (m_prepare) {
                m_prepare(calls);
            }
            xAnswer = m_log.handleTIManageOPCTransientLog(nullptr, xRequest, nullptr);
            watch(calls);
        }
        return received(xRequest, xAnswer);
    }

    static std::string calledTrace(const std::string& sOption)
    {
        return tiTrace(
            "COutputPowerControlLog_HandleTIManageOPCTransientLog called for sRequestOption value:" + sOption, "0x800");
    }

    std::function<void(XmlRpcCalls&)> m_prepare; /**< scripts the calls of sendWatched() */

private:
    static std::string received(XMLRPC_REQUEST xRequest, XMLRPC_VALUE xAnswer)
    {
        std::string sAnswer = takeText(xAnswer);
        XMLRPC_RequestFree(xRequest, 1);
        return sAnswer;
    }
};
