/** @file
 * What the unit's process, which runs the brokers, may know of them.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <string>
#include <vector>

/** A look into both brokers of the process. May be called from any thread. */
class EAF_PUBLIC BrokerDirectory
{
public:
    /** @return the names published in both brokers, sorted */
    static std::vector<std::string> publishedNames();

    /** @return names that were looked up in vain since clearMissedLookups(), in order, each once */
    static std::vector<std::string> missedLookups();

    static void clearMissedLookups();
};
