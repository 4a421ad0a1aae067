/** @file
 * Unit files for tests.
 */
#pragma once

#include <string>

/** @return the [[module]] table of a module of this build */
inline std::string moduleText(const std::string& sName, const std::string& sScope = "channel")
{
    return "[[module]]\nname = \"" + sName + "\"\nlibrary = \"" OPC_LIBRARY_FOLDER "/lib" + sName +
           ".so\"\nscope = \"" + sScope + "\"\n";
}

/** @return the modules of a complete unit */
inline std::string allModulesText()
{
    return moduleText("TemperatureHandler", "unit") + moduleText("FrequencyHandler") +
           moduleText("OutputPowerHandler") + moduleText("OutputPowerController");
}
