#include "Unit/XmlRpc/XmlRpcValue.h"

#include <new>

namespace
{
XmlRpcValue owned(XMLRPC_VALUE value)
{
    if (value == nullptr) {
        throw std::bad_alloc();
    }
    return XmlRpcValue(value);
}
} // namespace

XmlRpcValue makeXmlRpcInt(const char* pName, int nValue)
{
    return owned(XMLRPC_CreateValueInt(pName, nValue));
}

XmlRpcValue makeXmlRpcDouble(const char* pName, double value)
{
    return owned(XMLRPC_CreateValueDouble(pName, value));
}

XmlRpcValue makeXmlRpcBoolean(const char* pName, bool bValue)
{
    return owned(XMLRPC_CreateValueBoolean(pName, bValue ? 1 : 0));
}

XmlRpcValue makeXmlRpcString(const char* pName, const std::string& sValue)
{
    // A length of 0 makes the library measure the text, which is empty then.
    return owned(XMLRPC_CreateValueString(pName, sValue.c_str(), static_cast<int>(sValue.size())));
}

XmlRpcValue makeXmlRpcStruct(const char* pName)
{
    return owned(XMLRPC_CreateVector(pName, xmlrpc_vector_struct));
}

XmlRpcValue makeXmlRpcArray(const char* pName)
{
    return owned(XMLRPC_CreateVector(pName, xmlrpc_vector_array));
}

XmlRpcValue makeXmlRpcFault(int nCode, const std::string& sText)
{
    // Not the library's own: that adds texts to the codes it knows and makes none for other codes without a text.
    XmlRpcValue fault = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(fault.get(), makeXmlRpcInt("faultCode", nCode));
    addXmlRpcValue(fault.get(), makeXmlRpcString("faultString", sText));
    return fault;
}

void addXmlRpcValue(XMLRPC_VALUE vector, XmlRpcValue value)
{
    if (XMLRPC_AddValueToVector(vector, value.get()) == 0) {
        throw std::bad_alloc();
    }
    (void)value.release();
}
