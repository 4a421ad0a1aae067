/** @file
 * A file on its way to its name.
 */
#pragma once

#include <string>

/** An open file whose name nobody has used before. */
struct FileBeside
{
    int fd = -1; /**< open for writing; -1 with errno set when the file could not be made */
    std::string sPath;
};

/** Makes an empty, hidden file in the folder of a path, so that it can be renamed to it. The caller closes it. */
FileBeside makeFileBeside(const std::string& sPath);
