/** @file
 * Which elements an XML-RPC message may have where.
 */
#pragma once

#include "Unit/XmlRpc/XmlRpcGuard.h"

#include <string_view>

/** Elements by their role; one name may have several. */
enum class EXmlRpcElement
{
    Document, /**< around the outermost element */
    Call,
    Response,
    MethodName,
    Parameters,
    Parameter,
    Result, /**< a response's params */
    Fault,
    FaultValue,
    FaultStruct,
    Value,
    Int,
    Double,
    Boolean,
    String,
    Date,
    Base64,
    Struct,
    Member,
    Name,
    Array,
    Data
};

/** An element within another: allowed after one step of the other's contents, which is then at the next step. */
struct XmlRpcRule
{
    EXmlRpcElement eParent;
    int nStep;
    std::string_view sName;
    EXmlRpcElement eChild;
    int nNextStep;
};

/** @return the rule that lets the element in, null for none */
const XmlRpcRule* findXmlRpcRule(EXmlRpcElement eParent, int nStep, std::string_view sName);

/** @return whether the element may end at this step of its contents */
bool mayXmlRpcEnd(EXmlRpcElement eElement, int nStep);

/** @return whether the element holds text that matters */
bool holdsXmlRpcText(EXmlRpcElement eElement);

/** @return what is wrong with the text of such an element; empty when it is right */
std::string_view checkXmlRpcText(EXmlRpcElement eElement, std::string_view sText);

/** @return the step at which a document begins */
int firstXmlRpcStep(EXmlRpcMessage eMessage);
