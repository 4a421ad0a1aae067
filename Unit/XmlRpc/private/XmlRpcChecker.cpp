#include "Unit/XmlRpc/private/XmlRpcChecker.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr std::size_t SHOWN_NAME = 32;
constexpr std::size_t FAULT_MEMBERS = 2;

/** @return a sender's name in a form fit for one line of a log */
std::string shown(std::string_view sName)
{
    std::string sShown(sName.substr(0, SHOWN_NAME));
    std::replace_if(
        sShown.begin(), sShown.end(), [](char c) { return c <= ' ' || c > '~'; }, '?');
    return sName.size() > SHOWN_NAME ? sShown + "..." : sShown;
}

bool isBlank(std::string_view sText)
{
    return sText.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string mixed()
{
    return "text beside an element";
}
} // namespace

XmlRpcChecker::XmlRpcChecker(EXmlRpcMessage eMessage, const XmlRpcLimits& limits) : m_limits(limits)
{
    m_open.emplace_back(EXmlRpcElement::Document).nStep = firstXmlRpcStep(eMessage);
}

std::string XmlRpcChecker::begin(std::string_view sName, bool bAttributes)
{
    if (++m_nElements > m_limits.nMaxElements) {
        return "more than " + std::to_string(m_limits.nMaxElements) + " elements";
    }
    if (m_open.size() > m_limits.nMaxDepth) {
        return "elements more than " + std::to_string(m_limits.nMaxDepth) + " deep";
    }
    Element& parent = m_open.back();
    const XmlRpcRule* pRule = findXmlRpcRule(parent.eElement, parent.nStep, sName);
    if (pRule == nullptr) {
        return "element <" + shown(sName) + "> has no place here";
    }
    if (bAttributes) {
        return "element <" + shown(sName) + "> has attributes";
    }
    if (!isBlank(parent.sText) && parent.eElement != EXmlRpcElement::Member) {
        return mixed();
    }
    parent.nStep = pRule->nNextStep;
    parent.eContent = pRule->eChild;
    m_open.emplace_back(pRule->eChild);
    return {};
}

std::string XmlRpcChecker::text(std::string_view sText)
{
    Element& element = m_open.back();
    if (holdsXmlRpcText(element.eElement) && element.nStep == 0) {
        element.sText += sText;
        return {};
    }
    return isBlank(sText) ? std::string() : mixed();
}

std::string XmlRpcChecker::end()
{
    Element element = std::move(m_open.back());
    m_open.pop_back();
    if (!mayXmlRpcEnd(element.eElement, element.nStep)) {
        return "an element ends before it is complete";
    }
    switch (element.eElement) {
    case EXmlRpcElement::Name:
        return endOfName(std::move(element.sText));
    case EXmlRpcElement::Value:
        return endOfValue(element.eContent);
    case EXmlRpcElement::FaultStruct:
        return element.names.size() == FAULT_MEMBERS ? "" : "a fault needs faultCode and faultString";
    default:
        return std::string(checkXmlRpcText(element.eElement, element.sText));
    }
}

std::string XmlRpcChecker::endOfName(std::string sName)
{
    Element& member = m_open.back();
    Element& structure = m_open[m_open.size() - 2];
    if (!structure.names.insert(sName).second) {
        return "a struct has two members \"" + shown(sName) + "\"";
    }
    member.sText = std::move(sName);
    return {};
}

std::string XmlRpcChecker::endOfValue(EXmlRpcElement eContent) const
{
    const Element& member = m_open.back();
    if (m_open[m_open.size() - 2].eElement != EXmlRpcElement::FaultStruct) {
        return {};
    }
    if (member.sText == "faultCode") {
        return eContent == EXmlRpcElement::Int ? "" : "faultCode must be an int";
    }
    if (member.sText == "faultString") {
        return eContent == EXmlRpcElement::String ? "" : "faultString must be a string";
    }
    return "a fault has only faultCode and faultString";
}
