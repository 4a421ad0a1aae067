/** @file
 * From XML-RPC text to values and back.
 */
#pragma once

#include "Unit/XmlRpc/XmlRpcGuard.h"
#include "Unit/XmlRpc/XmlRpcValue.h"

#include <string>

/**
 * Checks and parses a message.
 * @return the request, or the response as the library's request type
 * @throws XmlRpcFault with the guard's refusal, or when the library refuses all the same
 */
XmlRpcRequest parseXmlRpc(const std::string& sText, EXmlRpcMessage eMessage, const XmlRpcLimits& limits = {});

/**
 * Writes a method response straight from the value. Gives the bytes of the library's own serialiser (version 1.0, no
 * white space, markup escaped, UTF-8) where those are right. Where they are not: markup, control characters that XML
 * does not allow and broken UTF-8 are escaped or replaced by U+FFFD, doubles keep every digit, depth ends at 64.
 * A top-level struct with a member "faultCode" goes out as a fault, as the library does it.
 */
std::string writeXmlRpcResponse(XMLRPC_VALUE value);

/** Writes a method call in the same way. @param parameters an array of the parameters; null for none */
std::string writeXmlRpcCall(const std::string& sMethod, XMLRPC_VALUE parameters);
