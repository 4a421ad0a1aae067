/** @file
 * Ownership of XML-RPC values and requests, and an easy way to build structs.
 */
#pragma once

#include <xmlrpc-epi/xmlrpc.h>

#include <memory>
#include <string>

/** Releases values and requests. */
struct XmlRpcRelease
{
    void operator()(XMLRPC_VALUE value) const { XMLRPC_CleanupValue(value); }
    void operator()(XMLRPC_REQUEST request) const { XMLRPC_RequestFree(request, 1); }
};

/** An owned value. */
using XmlRpcValue = std::unique_ptr<_xmlrpc_value, XmlRpcRelease>;

/** An owned request with its data. */
using XmlRpcRequest = std::unique_ptr<_xmlrpc_request, XmlRpcRelease>;

/** Each makes a value with a name (null for none). @throws std::bad_alloc */
XmlRpcValue makeXmlRpcInt(const char* pName, int nValue);
XmlRpcValue makeXmlRpcDouble(const char* pName, double value);
XmlRpcValue makeXmlRpcBoolean(const char* pName, bool bValue);
XmlRpcValue makeXmlRpcString(const char* pName, const std::string& sValue);
XmlRpcValue makeXmlRpcStruct(const char* pName);
XmlRpcValue makeXmlRpcArray(const char* pName);

/** @return a fault; codes need not be the library's own */
XmlRpcValue makeXmlRpcFault(int nCode, const std::string& sText);

/** Adds an element to an array or a member to a struct. @throws std::bad_alloc when the library refuses */
void addXmlRpcValue(XMLRPC_VALUE vector, XmlRpcValue value);
