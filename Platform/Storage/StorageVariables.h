/** @file
 * Fills the module storage.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <cstdint>
#include <string>

/** The unit's storage variables. Fill them before the start-up phases, from one thread. */
class EAF_PUBLIC StorageVariables
{
public:
    /** Sets a variable, replacing its value; its address stays the same. */
    static void set(const std::string& sName, int32_t nValue);

    /**
     * Sets the variables of a TOML file: every key of its table [variables] is a name, every value a 32-bit integer.
     * @throws ConfigurationError that names the file and line; nothing is set then
     */
    static void loadFile(const std::string& sPath);

    /** Forgets all variables; addresses given out before are invalid afterwards. */
    static void clear();
};
