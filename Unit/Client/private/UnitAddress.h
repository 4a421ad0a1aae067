/** @file
 * Where a unit is and what it is shown to let one in.
 */
#pragma once

#include <string>

/**
 * @param sAddress such as "http://127.0.0.1:8080" or "192.0.2.1:8080"
 * @return the URL of the unit's test interface, "/RPC2" added
 * @throws ConfigurationError when it is no address, with another scheme than http and https, or with user, query or
 *         fragment
 */
std::string testInterfaceUrl(const std::string& sAddress);
