#include "tests/unit/xmlrpc/LibraryText.h"

#include <cstdlib>
#include <memory>
#include <utility>

namespace
{
struct FreeText
{
    void operator()(char* pText) const { std::free(pText); }
};

std::string written(const XmlRpcRequest& request, XmlRpcValue data)
{
    STRUCT_XMLRPC_REQUEST_OUTPUT_OPTIONS options = {};
    options.version = xmlrpc_version_1_0;
    options.xml_elem_opts.verbosity = xml_elem_no_white_space;
    options.xml_elem_opts.escaping = xml_elem_markup_escaping;
    options.xml_elem_opts.encoding = "UTF-8";
    XMLRPC_RequestSetOutputOptions(request.get(), &options);
    if (data != nullptr) {
        XMLRPC_RequestSetData(request.get(), data.release());
    }
    int nLength = 0;
    const std::unique_ptr<char, FreeText> pText(XMLRPC_REQUEST_ToXML(request.get(), &nLength));
    return {pText.get(), static_cast<std::size_t>(nLength)};
}
} // namespace

std::string libraryResponse(XmlRpcValue value)
{
    const XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_RequestSetRequestType(request.get(), xmlrpc_request_response);
    return written(request, std::move(value));
}

std::string libraryCall(const std::string& sMethod, XmlRpcValue parameters)
{
    const XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_RequestSetRequestType(request.get(), xmlrpc_request_call);
    XMLRPC_RequestSetMethodName(request.get(), sMethod.c_str());
    return written(request, std::move(parameters));
}

XmlRpcValue logAnswer(int nSamples)
{
    XmlRpcValue samples = makeXmlRpcArray("OPCLog");
    for (int i = 0; i < nSamples; ++i) {
        XmlRpcValue sample = makeXmlRpcStruct(nullptr);
        for (const char* pName : {"Time", "Requested", "Target", "Measured", "Error"}) {
            addXmlRpcValue(sample.get(), makeXmlRpcInt(pName, 1000 - 37 * i));
        }
        addXmlRpcValue(samples.get(), std::move(sample));
    }
    XmlRpcValue answer = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(answer.get(), makeXmlRpcString("StandardResponse", "OK"));
    addXmlRpcValue(answer.get(), std::move(samples));
    return answer;
}
