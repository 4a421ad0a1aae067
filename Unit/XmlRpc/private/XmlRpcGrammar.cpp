#include "Unit/XmlRpc/private/XmlRpcGrammar.h"

#include "Unit/XmlRpc/private/XmlRpcScalars.h"

#include <algorithm>
#include <array>

namespace
{
using E = EXmlRpcElement;

constexpr int CALL_STEP = 0;
constexpr int RESPONSE_STEP = 1;
constexpr int END_STEP = 2;

constexpr std::array RULES = {
    XmlRpcRule{E::Document, CALL_STEP, "methodCall", E::Call, END_STEP},
    XmlRpcRule{E::Document, RESPONSE_STEP, "methodResponse", E::Response, END_STEP},
    XmlRpcRule{E::Call, 0, "methodName", E::MethodName, 1},
    XmlRpcRule{E::Call, 1, "params", E::Parameters, 2},
    XmlRpcRule{E::Parameters, 0, "param", E::Parameter, 0},
    XmlRpcRule{E::Response, 0, "params", E::Result, 1},
    XmlRpcRule{E::Response, 0, "fault", E::Fault, 1},
    XmlRpcRule{E::Result, 0, "param", E::Parameter, 1},
    XmlRpcRule{E::Fault, 0, "value", E::FaultValue, 1},
    XmlRpcRule{E::FaultValue, 0, "struct", E::FaultStruct, 1},
    XmlRpcRule{E::FaultStruct, 0, "member", E::Member, 0},
    XmlRpcRule{E::Parameter, 0, "value", E::Value, 1},
    XmlRpcRule{E::Value, 0, "int", E::Int, 1},
    XmlRpcRule{E::Value, 0, "string", E::String, 1},
    XmlRpcRule{E::Value, 0, "struct", E::Struct, 1},
    XmlRpcRule{E::Value, 0, "i4", E::Int, 1},
    XmlRpcRule{E::Value, 0, "double", E::Double, 1},
    XmlRpcRule{E::Value, 0, "boolean", E::Boolean, 1},
    XmlRpcRule{E::Value, 0, "array", E::Array, 1},
    XmlRpcRule{E::Value, 0, "dateTime.iso8601", E::Date, 1},
    XmlRpcRule{E::Value, 0, "base64", E::Base64, 1},
    XmlRpcRule{E::Struct, 0, "member", E::Member, 0},
    XmlRpcRule{E::Member, 0, "name", E::Name, 1},
    XmlRpcRule{E::Member, 1, "value", E::Value, 2},
    XmlRpcRule{E::Array, 0, "data", E::Data, 1},
    XmlRpcRule{E::Data, 0, "value", E::Value, 0},
};

struct TextRule
{
    EXmlRpcElement eElement;
    bool (*isRight)(std::string_view);
    std::string_view sComplaint;
};

constexpr std::array TEXT_RULES = {
    TextRule{E::MethodName, isXmlRpcMethodName, "methodName must be 1 to 256 letters, digits, '_', '.', ':' or '/'"},
    TextRule{E::Int, isXmlRpcInt, "an int must be a whole number of 32 bits"},
    TextRule{E::Double, isXmlRpcDouble, "a double must be a decimal number within the range of doubles"},
    TextRule{E::Boolean, isXmlRpcBoolean, "a boolean must be 0 or 1"},
    TextRule{E::Date, isXmlRpcDate, "a dateTime.iso8601 must be a date like 19980717T14:08:55"},
    TextRule{E::Base64, isXmlRpcBase64, "a base64 must be whole groups of four characters of its alphabet"},
};
} // namespace

const XmlRpcRule* findXmlRpcRule(EXmlRpcElement eParent, int nStep, std::string_view sName)
{
    const auto* const pRule = std::find_if(RULES.begin(), RULES.end(), [&](const XmlRpcRule& rule) {
        return rule.eParent == eParent && rule.nStep == nStep && rule.sName == sName;
    });
    return pRule != RULES.end() ? pRule : nullptr;
}

bool mayXmlRpcEnd(EXmlRpcElement eElement, int nStep)
{
    switch (eElement) {
    case E::Call:
    case E::Response:
    case E::Result:
    case E::Parameter:
    case E::Fault:
    case E::FaultValue:
    case E::Array:
        return nStep >= 1;
    case E::Member:
        return nStep == 2;
    default:
        return true;
    }
}

bool holdsXmlRpcText(EXmlRpcElement eElement)
{
    return eElement == E::Value || eElement == E::String || eElement == E::Name ||
           std::any_of(TEXT_RULES.begin(), TEXT_RULES.end(),
                       [&](const TextRule& rule) { return rule.eElement == eElement; });
}

std::string_view checkXmlRpcText(EXmlRpcElement eElement, std::string_view sText)
{
    const auto* const pRule = std::find_if(TEXT_RULES.begin(), TEXT_RULES.end(),
                                           [&](const TextRule& rule) { return rule.eElement == eElement; });
    return pRule == TEXT_RULES.end() || pRule->isRight(sText) ? std::string_view() : pRule->sComplaint;
}

int firstXmlRpcStep(EXmlRpcMessage eMessage)
{
    return eMessage == EXmlRpcMessage::Call ? CALL_STEP : RESPONSE_STEP;
}
