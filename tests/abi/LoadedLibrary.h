/** @file
 * The module's library, loaded and known by its four entry points alone.
 */
#pragma once

#include "Control/OutputPowerController/OutputPowerController_c.h"

/** Loads the library with every symbol resolved and none offered to others; unloads it in the end. */
class LoadedLibrary
{
public:
    /** @throws std::runtime_error with the loader's words when the library cannot be loaded */
    LoadedLibrary();
    ~LoadedLibrary();

    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    /** @return whether the library is in the process */
    static bool isLoaded();

    decltype(&OutputPowerController_Construct) construct;
    decltype(&OutputPowerController_Destruct) destruct;
    decltype(&OutputPowerController_Initialize) initialize;
    decltype(&OutputPowerController_Uninitialize) uninitialize;

private:
    void* m_pLibrary;
};
