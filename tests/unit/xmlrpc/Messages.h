/** @file
 * Texts of messages for tests.
 */
#pragma once

#include <string>

/** @return a call with that inside params */
inline std::string callWithParams(const std::string& sParams)
{
    return "<methodCall><methodName>Test.Method</methodName><params>" + sParams + "</params></methodCall>";
}

/** @return a call with that inside its only value element */
inline std::string callWithValue(const std::string& sContent)
{
    return callWithParams("<param><value>" + sContent + "</value></param>");
}

/** @return a call of that method without params */
inline std::string callOf(const std::string& sMethod)
{
    return "<methodCall><methodName>" + sMethod + "</methodName></methodCall>";
}

/** @return a response with that inside methodResponse */
inline std::string responseWith(const std::string& sContent)
{
    return "<methodResponse>" + sContent + "</methodResponse>";
}

inline std::string repeated(const std::string& sText, int nTimes)
{
    std::string sResult;
    for (int i = 0; i < nTimes; ++i) {
        sResult += sText;
    }
    return sResult;
}
