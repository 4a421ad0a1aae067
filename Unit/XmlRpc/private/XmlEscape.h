/** @file
 * Text within XML.
 */
#pragma once

#include <string>
#include <string_view>

/**
 * Appends UTF-8 so that an XML parser gives it back: markup and CR as character references. What XML cannot hold
 * (control characters, broken UTF-8, U+FFFE, U+FFFF) becomes U+FFFD, one for each byte or character.
 */
void appendXmlText(std::string& sTo, std::string_view sText);
