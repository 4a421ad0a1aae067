/** @file
 * Checks XML-RPC text before the library parses it, which trusts its input.
 */
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/** What a text is supposed to be. */
enum class EXmlRpcMessage
{
    Call,
    Response
};

/** How much a message may hold. */
struct XmlRpcLimits
{
    std::size_t nMaxBytes = std::size_t{256} * 1024;
    std::size_t nMaxDepth = 64;       /**< elements within each other */
    std::size_t nMaxElements = 20000; /**< in all */
};

/** Why a text is refused. */
struct XmlRpcRefusal
{
    int nFaultCode;    /**< EXmlRpcFaultCode */
    std::string sText; /**< one line with the line number, for the sender */
};

/**
 * Checks that a text is a well-formed XML-RPC message within the limits, with nothing in it that the library reads
 * wrongly: no document type, processing instruction or attribute, the exact grammar, each scalar a proper one (32-bit
 * ints, finite doubles without an exponent or with, booleans 0 and 1, dates and base64 whole), UTF-8 without NUL.
 * @return nothing when the text may be parsed
 */
std::optional<XmlRpcRefusal> checkXmlRpc(std::string_view sText, EXmlRpcMessage eMessage,
                                         const XmlRpcLimits& limits = {});
