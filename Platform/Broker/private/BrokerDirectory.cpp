#include "Platform/Broker/BrokerDirectory.h"

#include "Platform/Broker/private/Brokers.h"

#include <algorithm>

std::vector<std::string> BrokerDirectory::publishedNames()
{
    std::vector<std::string> names;
    Brokers::get().interfaces.appendNames(names);
    Brokers::get().records.appendNames(names);
    std::sort(names.begin(), names.end());
    // A name may stand in both brokers.
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<std::string> BrokerDirectory::missedLookups()
{
    return Brokers::get().missed.all();
}

void BrokerDirectory::clearMissedLookups()
{
    Brokers::get().missed.clear();
}
