/** @file
 * Where the program's own files are, seen from the program, so that an installation may be moved as a whole.
 */
#pragma once

#include <string>

/** @return the folder with the modules of the build that the program stands in: ../lib from the program */
std::string builtModuleFolder();

/** @return the folder with the modules that were installed with the program */
std::string installedModuleFolder();

/** @return the unit file that was installed with the program, whether it is there or not */
std::string installedUnitFile();
