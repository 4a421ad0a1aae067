#include "tests/abi/LoadedLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

namespace
{
void* load()
{
    void* const pLibrary = dlopen(OPC_MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
    if (pLibrary == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return pLibrary;
}

template <class TFunction> void find(void* pLibrary, const char* pName, TFunction& function)
{
    function = reinterpret_cast<TFunction>(dlsym(pLibrary, pName));
    if (function == nullptr) {
        throw std::runtime_error(dlerror());
    }
}
} // namespace

LoadedLibrary::LoadedLibrary() : m_pLibrary(load())
{
    find(m_pLibrary, "OutputPowerController_Construct", construct);
    find(m_pLibrary, "OutputPowerController_Destruct", destruct);
    find(m_pLibrary, "OutputPowerController_Initialize", initialize);
    find(m_pLibrary, "OutputPowerController_Uninitialize", uninitialize);
}

LoadedLibrary::~LoadedLibrary()
{
    dlclose(m_pLibrary);
}

bool LoadedLibrary::isLoaded()
{
    void* const pLibrary = dlopen(OPC_MODULE_FILE, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (pLibrary != nullptr) {
        dlclose(pLibrary);
    }
    return pLibrary != nullptr;
}
