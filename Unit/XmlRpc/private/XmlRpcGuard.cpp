#include "Unit/XmlRpc/XmlRpcGuard.h"

#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/private/XmlRpcChecker.h"

#include <expat.h>
#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <limits>
#include <memory>
#include <new>

namespace
{
struct ParserRelease
{
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<XML_ParserStruct, ParserRelease>;

bool isAscii(std::string_view sText)
{
    return std::all_of(sText.begin(), sText.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/** One pass of the parser over a text. */
class Pass
{
public:
    Pass(std::string_view sText, EXmlRpcMessage eMessage, const XmlRpcLimits& limits);

    std::optional<XmlRpcRefusal> run();

private:
    template <typename Step> static void guarded(void* pPass, Step step);
    static void XMLCALL onBegin(void* pPass, const XML_Char* pName, const XML_Char** ppAttributes);
    static void XMLCALL onEnd(void* pPass, const XML_Char*);
    static void XMLCALL onText(void* pPass, const XML_Char* pText, int nLength);
    static void XMLCALL onDocumentType(void* pPass, const XML_Char*, const XML_Char*, const XML_Char*, int);
    static void XMLCALL onInstruction(void* pPass, const XML_Char*, const XML_Char*);
    static void XMLCALL onDeclaration(void* pPass, const XML_Char*, const XML_Char* pEncoding, int);

    void setHandlers();
    void refuse(int nCode, const std::string& sComplaint);
    void checkEncoding(const XML_Char* pEncoding);
    XmlRpcRefusal notWellFormed() const;

    std::string_view m_sText;
    XmlRpcChecker m_checker;
    Parser m_parser;
    std::optional<XmlRpcRefusal> m_refusal;
    std::exception_ptr m_exception; // must not cross the parser's C
};

Pass::Pass(std::string_view sText, EXmlRpcMessage eMessage, const XmlRpcLimits& limits)
    : m_sText(sText), m_checker(eMessage, limits), m_parser(XML_ParserCreate("UTF-8"))
{
    if (m_parser == nullptr) {
        throw std::bad_alloc();
    }
    setHandlers();
}

void Pass::setHandlers()
{
    XML_Parser parser = m_parser.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, onBegin, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    XML_SetStartDoctypeDeclHandler(parser, onDocumentType);
    XML_SetProcessingInstructionHandler(parser, onInstruction);
    XML_SetXmlDeclHandler(parser, onDeclaration);
}

std::optional<XmlRpcRefusal> Pass::run()
{
    const XML_Status eStatus = XML_Parse(m_parser.get(), m_sText.data(), static_cast<int>(m_sText.size()), XML_TRUE);
    if (m_exception) {
        std::rethrow_exception(m_exception);
    }
    if (!m_refusal && eStatus != XML_STATUS_OK) {
        return notWellFormed();
    }
    return m_refusal;
}

/** Takes a step of the parse unless it is over already: the parser may go on a little after its stop. */
template <typename Step> void Pass::guarded(void* pPass, Step step)
{
    Pass& pass = *static_cast<Pass*>(pPass);
    if (pass.m_refusal || pass.m_exception) {
        return;
    }
    try {
        step(pass);
    }
    catch (...) {
        pass.m_exception = std::current_exception();
    }
    if (pass.m_refusal || pass.m_exception) {
        XML_StopParser(pass.m_parser.get(), XML_FALSE);
    }
}

void Pass::onBegin(void* pPass, const XML_Char* pName, const XML_Char** ppAttributes)
{
    guarded(pPass, [&](Pass& pass) {
        pass.refuse(eXMLRPC_FAULT_NOT_XMLRPC, pass.m_checker.begin(pName, *ppAttributes != nullptr));
    });
}

void Pass::onEnd(void* pPass, const XML_Char*)
{
    guarded(pPass, [](Pass& pass) { pass.refuse(eXMLRPC_FAULT_NOT_XMLRPC, pass.m_checker.end()); });
}

void Pass::onText(void* pPass, const XML_Char* pText, int nLength)
{
    guarded(pPass, [&](Pass& pass) {
        pass.refuse(eXMLRPC_FAULT_NOT_XMLRPC, pass.m_checker.text({pText, static_cast<std::size_t>(nLength)}));
    });
}

void Pass::onDocumentType(void* pPass, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    guarded(pPass, [](Pass& pass) { pass.refuse(eXMLRPC_FAULT_NOT_XMLRPC, "a document type is not let in"); });
}

void Pass::onInstruction(void* pPass, const XML_Char*, const XML_Char*)
{
    guarded(pPass, [](Pass& pass) { pass.refuse(eXMLRPC_FAULT_NOT_XMLRPC, "a processing instruction is not let in"); });
}

void Pass::onDeclaration(void* pPass, const XML_Char*, const XML_Char* pEncoding, int)
{
    guarded(pPass, [&](Pass& pass) { pass.checkEncoding(pEncoding); });
}

void Pass::checkEncoding(const XML_Char* pEncoding)
{
    if (pEncoding == nullptr || strcasecmp(pEncoding, "UTF-8") == 0) {
        return;
    }
    if (strcasecmp(pEncoding, "US-ASCII") != 0) {
        refuse(eXMLRPC_FAULT_BAD_ENCODING, "the encoding must be UTF-8 or US-ASCII");
    }
    else if (!isAscii(m_sText)) {
        refuse(eXMLRPC_FAULT_BAD_ENCODING, "the text is not in US-ASCII");
    }
}

void Pass::refuse(int nCode, const std::string& sComplaint)
{
    if (!sComplaint.empty()) {
        const XML_Size nLine = XML_GetCurrentLineNumber(m_parser.get());
        m_refusal = XmlRpcRefusal{nCode, "line " + std::to_string(nLine) + ": " + sComplaint};
    }
}

XmlRpcRefusal Pass::notWellFormed() const
{
    const XML_Error eError = XML_GetErrorCode(m_parser.get());
    if (eError == XML_ERROR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    const std::string sLine = "line " + std::to_string(XML_GetCurrentLineNumber(m_parser.get())) + ": ";
    const XML_Index nAt = XML_GetCurrentByteIndex(m_parser.get());
    const bool bInside = nAt >= 0 && static_cast<std::size_t>(nAt) < m_sText.size();
    const bool bToken = eError == XML_ERROR_INVALID_TOKEN || eError == XML_ERROR_PARTIAL_CHAR;
    if (bToken && bInside && !isAscii(m_sText.substr(static_cast<std::size_t>(nAt), 1))) {
        return {eXMLRPC_FAULT_BAD_ENCODING, sLine + "not UTF-8"};
    }
    return {eXMLRPC_FAULT_NOT_WELL_FORMED, sLine + XML_ErrorString(eError)};
}
} // namespace

std::optional<XmlRpcRefusal> checkXmlRpc(std::string_view sText, EXmlRpcMessage eMessage, const XmlRpcLimits& limits)
{
    // Both the parser and the library count in int.
    const std::size_t nMaxBytes = std::min<std::size_t>(limits.nMaxBytes, std::numeric_limits<int>::max());
    if (sText.size() > nMaxBytes) {
        return XmlRpcRefusal{eXMLRPC_FAULT_NOT_XMLRPC,
                             "line 1: more than " + std::to_string(nMaxBytes) + " bytes in the message"};
    }
    // The parser would take text with NULs for UTF-16, though it is told UTF-8.
    const std::size_t nNull = sText.find('\0');
    if (nNull != std::string_view::npos) {
        const auto nLine = std::count(sText.begin(), sText.begin() + static_cast<std::ptrdiff_t>(nNull), '\n') + 1;
        return XmlRpcRefusal{eXMLRPC_FAULT_NOT_WELL_FORMED, "line " + std::to_string(nLine) + ": a NUL character"};
    }
    return Pass(sText, eMessage, limits).run();
}
