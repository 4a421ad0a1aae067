#include "Unit/XmlRpc/XmlRpcText.h"
#include "Unit/XmlRpc/private/Base64.h"
#include "Unit/XmlRpc/private/XmlEscape.h"
#include "Unit/XmlRpc/private/XmlRpcScalars.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace
{
constexpr std::string_view PROLOGUE = R"(<?xml version="1.0" encoding="UTF-8"?>)";
constexpr std::size_t FIRST_VALUE_DEPTH = 4; // below the message, params and param, or the message and fault
constexpr std::size_t VECTOR_DEPTH = 3;      // elements from one value to a value within it
constexpr std::size_t DEEPEST_SCALAR = 2;    // elements below a value that holds an empty array
constexpr std::size_t DATE_LENGTH = 17;      // without a time zone
constexpr std::size_t DOUBLE_LENGTH = 512;   // more than any double takes without an exponent
constexpr int LIBRARY_DECIMALS = 6;

/** Writes values one after the other. */
class Writer
{
public:
    explicit Writer(std::string& sText) : m_sText(sText) {}

    /** @param nDepth of the value's element */
    void value(XMLRPC_VALUE value, std::size_t nDepth);

private:
    void content(XMLRPC_VALUE value, std::size_t nDepth);
    void vector(XMLRPC_VALUE vector, std::size_t nDepth);
    void structure(XMLRPC_VALUE first, XMLRPC_VALUE vector, std::size_t nDepth);
    void array(XMLRPC_VALUE first, XMLRPC_VALUE vector, std::size_t nDepth);
    void number(int nValue);
    void number(double value);
    void date(XMLRPC_VALUE value);
    void base64(XMLRPC_VALUE value);
    void text(std::string_view sText);

    std::string& m_sText;
};

std::string_view view(const char* pText)
{
    return pText != nullptr ? std::string_view(pText) : std::string_view();
}

void Writer::value(XMLRPC_VALUE value, std::size_t nDepth)
{
    m_sText += "<value>";
    content(value, nDepth);
    m_sText += "</value>";
}

void Writer::content(XMLRPC_VALUE value, std::size_t nDepth)
{
    switch (XMLRPC_GetValueType(value)) {
    case xmlrpc_int:
        return number(XMLRPC_GetValueInt(value));
    case xmlrpc_double:
        return number(XMLRPC_GetValueDouble(value));
    case xmlrpc_boolean:
        m_sText += XMLRPC_GetValueBoolean(value) != 0 ? "<boolean>1</boolean>" : "<boolean>0</boolean>";
        return;
    case xmlrpc_datetime:
        return date(value);
    case xmlrpc_base64:
        return base64(value);
    case xmlrpc_vector:
        return vector(value, nDepth);
    case xmlrpc_string:
        return text({XMLRPC_GetValueString(value), static_cast<std::size_t>(XMLRPC_GetValueStringLen(value))});
    case xmlrpc_none:
    case xmlrpc_empty:
        break;
    }
    text({});
}

void Writer::vector(XMLRPC_VALUE vector, std::size_t nDepth)
{
    const bool bDeep = nDepth + VECTOR_DEPTH + DEEPEST_SCALAR > XmlRpcLimits{}.nMaxDepth;
    XMLRPC_VALUE first = bDeep ? nullptr : XMLRPC_VectorRewind(vector);
    switch (XMLRPC_GetVectorType(vector)) {
    case xmlrpc_vector_array:
        return array(first, vector, nDepth);
    case xmlrpc_vector_mixed:
    case xmlrpc_vector_struct:
        return structure(first, vector, nDepth);
    case xmlrpc_vector_none:
        break;
    }
    text({});
}

void Writer::structure(XMLRPC_VALUE first, XMLRPC_VALUE vector, std::size_t nDepth)
{
    if (first == nullptr) {
        m_sText += "<struct/>";
        return;
    }
    m_sText += "<struct>";
    for (XMLRPC_VALUE member = first; member != nullptr; member = XMLRPC_VectorNext(vector)) {
        const std::string_view sName = view(XMLRPC_GetValueID(member));
        m_sText += sName.empty() ? "<member><name/>" : "<member><name>";
        if (!sName.empty()) {
            appendXmlText(m_sText, sName);
            m_sText += "</name>";
        }
        value(member, nDepth + VECTOR_DEPTH);
        m_sText += "</member>";
    }
    m_sText += "</struct>";
}

void Writer::array(XMLRPC_VALUE first, XMLRPC_VALUE vector, std::size_t nDepth)
{
    if (first == nullptr) {
        m_sText += "<array><data/></array>";
        return;
    }
    m_sText += "<array><data>";
    for (XMLRPC_VALUE element = first; element != nullptr; element = XMLRPC_VectorNext(vector)) {
        value(element, nDepth + VECTOR_DEPTH);
    }
    m_sText += "</data></array>";
}

void Writer::number(int nValue)
{
    std::array<char, 16> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), nValue);
    m_sText.append("<int>").append(digits.data(), result.ptr).append("</int>");
}

void Writer::number(double value)
{
    if (!std::isfinite(value)) { // XML-RPC has no word for these
        return text(std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
    }
    std::array<char, DOUBLE_LENGTH> digits{};
    char* const pEnd = digits.data() + digits.size();
    auto result = std::to_chars(digits.data(), pEnd, value, std::chars_format::fixed, LIBRARY_DECIMALS);
    double readBack = 0;
    const auto reading = std::from_chars(digits.data(), result.ptr, readBack);
    if (reading.ec != std::errc() || readBack < value || readBack > value) {
        result = std::to_chars(digits.data(), pEnd, value, std::chars_format::fixed);
    }
    m_sText.append("<double>").append(digits.data(), result.ptr).append("</double>");
}

void Writer::date(XMLRPC_VALUE value)
{
    std::string_view sDate = view(XMLRPC_GetValueDateTime_ISO8601(value));
    if (sDate.size() == DATE_LENGTH + 1 && sDate.back() == 'Z') { // the library adds it, XML-RPC knows no zones
        sDate.remove_suffix(1);
    }
    if (!isXmlRpcDate(sDate)) {
        return text(sDate);
    }
    m_sText.append("<dateTime.iso8601>").append(sDate).append("</dateTime.iso8601>");
}

void Writer::base64(XMLRPC_VALUE value)
{
    const char* pBytes = XMLRPC_GetValueBase64(value);
    const auto nBytes = static_cast<std::size_t>(XMLRPC_GetValueStringLen(value));
    m_sText += "<base64>";
    appendBase64(m_sText, pBytes != nullptr ? std::string_view(pBytes, nBytes) : std::string_view());
    m_sText += "</base64>";
}

void Writer::text(std::string_view sText)
{
    if (sText.empty()) {
        m_sText += "<string/>";
        return;
    }
    m_sText += "<string>";
    appendXmlText(m_sText, sText);
    m_sText += "</string>";
}

bool isFault(XMLRPC_VALUE value)
{
    return XMLRPC_GetVectorType(value) == xmlrpc_vector_struct &&
           XMLRPC_VectorGetValueWithID_Case(value, "faultCode", xmlrpc_case_sensitive) != nullptr;
}

void writeParameter(std::string& sText, XMLRPC_VALUE value)
{
    sText += "<param>";
    Writer(sText).value(value, FIRST_VALUE_DEPTH);
    sText += "</param>";
}

void writeParameters(std::string& sText, XMLRPC_VALUE parameters)
{
    for (XMLRPC_VALUE value = XMLRPC_VectorRewind(parameters); value != nullptr; value = XMLRPC_VectorNext(parameters))
    {
        writeParameter(sText, value);
    }
}
} // namespace

std::string writeXmlRpcResponse(XMLRPC_VALUE value)
{
    std::string sText(PROLOGUE);
    if (isFault(value)) {
        sText += "<methodResponse><fault>";
        Writer(sText).value(value, FIRST_VALUE_DEPTH);
        sText += "</fault></methodResponse>";
        return sText;
    }
    sText += "<methodResponse><params>";
    writeParameter(sText, value);
    sText += "</params></methodResponse>";
    return sText;
}

std::string writeXmlRpcCall(const std::string& sMethod, XMLRPC_VALUE parameters)
{
    std::string sText(PROLOGUE);
    sText += "<methodCall><methodName>";
    appendXmlText(sText, sMethod);
    sText += "</methodName>";
    if (parameters == nullptr || XMLRPC_VectorSize(parameters) == 0) {
        sText += "<params/>";
    }
    else {
        sText += "<params>";
        writeParameters(sText, parameters);
        sText += "</params>";
    }
    sText += "</methodCall>";
    return sText;
}
