/** @file
 * The error that says what is wrong with a file or setting that a person wrote.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <cstddef>
#include <stdexcept>
#include <string>

/** Bad input from a person: one line that names the place, what is wrong and what to do. */
class EAF_PUBLIC ConfigurationError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    /** @return an error in a file as "path:line: text", or "path: text" for line 0 */
    static ConfigurationError atLine(const std::string& sPath, std::size_t nLine, const std::string& sText);

    /** @return an error in a file as "path:line:column: text", the column in characters from 1; without it for column 0
     */
    static ConfigurationError atColumn(const std::string& sPath, std::size_t nLine, std::size_t nColumn,
                                       const std::string& sText);
};
