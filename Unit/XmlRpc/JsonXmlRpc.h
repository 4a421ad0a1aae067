/** @file
 * Between JSON and XML-RPC values.
 */
#pragma once

#include "Unit/XmlRpc/XmlRpcValue.h"

#include <nlohmann/json.hpp>

/**
 * @param value numbers without a fraction that fit into 32 bits become ints, wider ones doubles
 * @throws std::invalid_argument for null and bytes, which XML-RPC calls of ours do not have
 */
XmlRpcValue xmlRpcFromJson(const char* pName, const nlohmann::ordered_json& value);

/** @return a value as JSON: dates as their text, base64 as bytes, an empty value as null */
nlohmann::ordered_json jsonFromXmlRpc(XMLRPC_VALUE value);
