/** @file
 * Names under which interfaces are published per channel.
 */
#pragma once

#include <string>

/** @return the base name for channel 0, the base name, "_" and the channel otherwise */
inline std::string interfaceName(const char* pBaseName, unsigned int nChannel)
{
    std::string sName(pBaseName);
    if (nChannel != 0) {
        sName += '_';
        sName += std::to_string(nChannel);
    }
    return sName;
}
