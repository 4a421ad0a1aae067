/** @file
 * The files that the build put into the program.
 */
#pragma once

#include <span>
#include <string_view>

/** A file of the page. */
struct EmbeddedFile
{
    const char* pPath; /**< on the server, such as "/assets/main.js" */
    std::string_view content;
};

/** @return all of them; none when the program was built without the page */
std::span<const EmbeddedFile> embeddedFiles();
