/** @file
 * One instance of a module, from Construct to Destruct.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Process/ModuleLibrary.h"

#include <memory>
#include <stdexcept>

/** The unit could not start, and no input was to blame. */
class UnitStartError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** A constructed module. Use it from the one thread that starts and stops the unit. */
class LoadedModule
{
public:
    /** @throws UnitStartError when the library constructs nothing */
    LoadedModule(std::shared_ptr<const ModuleLibrary> pLibrary, unsigned int nChannel);

    /** Uninitialises as well where that has not been done. */
    ~LoadedModule();

    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    const std::string& name() const { return m_pLibrary->name(); }
    unsigned int channel() const { return m_nChannel; }

    /** @throws UnitStartError when the module says that it failed */
    void initialize();

    /** Does nothing when the module is not initialised. @return what the module returned */
    long uninitialize();

private:
    std::shared_ptr<const ModuleLibrary> m_pLibrary;
    unsigned int m_nChannel;
    void* m_pModule = nullptr;
    bool m_bInitialized = false;
    [[no_unique_address]] OwnedByThread m_owner;
};
