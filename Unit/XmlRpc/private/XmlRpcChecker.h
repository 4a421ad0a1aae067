/** @file
 * Follows the elements and texts of a message through the grammar. Knows no parser.
 */
#pragma once

#include "Unit/XmlRpc/private/XmlRpcGrammar.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/** Takes what a parser finds, in order. Each operation returns a complaint, empty when all is right. */
class XmlRpcChecker
{
public:
    XmlRpcChecker(EXmlRpcMessage eMessage, const XmlRpcLimits& limits);

    std::string begin(std::string_view sName, bool bAttributes);
    std::string text(std::string_view sText);
    std::string end();

private:
    struct Element
    {
        explicit Element(EXmlRpcElement element) : eElement(element) {}

        EXmlRpcElement eElement;
        int nStep = 0;
        EXmlRpcElement eContent = EXmlRpcElement::String; // a value's type
        std::string sText;                                // a member's is its name
        std::set<std::string> names;                      // of a struct's members
    };

    std::string endOfName(std::string sName);
    std::string endOfValue(EXmlRpcElement eContent) const;

    XmlRpcLimits m_limits;
    std::size_t m_nElements = 0;
    std::vector<Element> m_open; // the document first
};
