/** @file
 * The exception that becomes an XML-RPC fault, and the fault codes.
 */
#pragma once

#include "Platform/TestInterface/TestInterface.h"

#include <stdexcept>
#include <string>

/** Fault codes besides the test interface's own (ETIErrorCode), as XML-RPC servers have agreed on them. */
enum EXmlRpcFaultCode
{
    eXMLRPC_FAULT_NOT_WELL_FORMED = -32700, /**< not XML */
    eXMLRPC_FAULT_BAD_ENCODING = -32702,    /**< not the encoding that it says */
    eXMLRPC_FAULT_NOT_XMLRPC = -32600,      /**< XML, but not a method call, or larger than is let in */
    eXMLRPC_FAULT_UNKNOWN_METHOD = -32601,  /**< no method of that name */
    eXMLRPC_FAULT_INVALID_PARAMS = -32602,  /**< parameters that the method does not take */
    eXMLRPC_FAULT_INTERNAL = -32603         /**< the server failed */
};

/** Ends a call with a fault. */
class XmlRpcFault : public std::runtime_error
{
public:
    XmlRpcFault(int nCode, const std::string& sText) : std::runtime_error(sText), m_nCode(nCode) {}

    int code() const { return m_nCode; }

private:
    int m_nCode;
};
