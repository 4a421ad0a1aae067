/** @file
 * What the text of a scalar must look like. Each tells whether it does.
 */
#pragma once

#include <string_view>

bool isXmlRpcInt(std::string_view sText);    /**< 32 bits, with or without a sign */
bool isXmlRpcDouble(std::string_view sText); /**< decimal, finite, with or without sign, fraction and exponent */
bool isXmlRpcBoolean(std::string_view sText);
bool isXmlRpcDate(std::string_view sText);   /**< yyyyMMddTHH:mm:ss, a day of the calendar */
bool isXmlRpcBase64(std::string_view sText); /**< padded; white space anywhere */

/** @return whether a method may be called that: letters, digits and _.:/, at most 256 of them */
bool isXmlRpcMethodName(std::string_view sText);
