/** @file
 * The file with the token that a unit and its clients share.
 */
#pragma once

#include <string>

/**
 * Reads the token: the first line of a file, 16 to 4096 printable ASCII characters, none of them a blank.
 * @throws ConfigurationError that names the file and says what to do
 */
std::string readTokenFile(const std::string& sPath);

/** @return what to tell people when others than the owner and the group may read or change the file; else empty */
std::string tokenFileWarning(const std::string& sPath);
