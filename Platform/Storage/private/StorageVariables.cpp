#include "Platform/Storage/StorageVariables.h"

#include "Platform/Storage/CStorageManager.h"
#include "Platform/Storage/private/StorageFile.h"

#include <map>
#include <mutex>

namespace
{

struct Variables
{
    std::mutex mutex;
    // Addresses of a map's values hold whatever is added.
    std::map<std::string, int32_t, std::less<>> values;
};

/** Never destroyed, since addresses of contents are valid while the process runs. */
Variables& variables()
{
    static auto* const pVariables = new Variables;
    return *pVariables;
}

} // namespace

void StorageVariables::set(const std::string& sName, int32_t nValue)
{
    const std::lock_guard<std::mutex> lock(variables().mutex);
    variables().values[sName] = nValue;
}

void StorageVariables::loadFile(const std::string& sPath)
{
    for (const auto& entry : readStorageFile(sPath)) {
        set(entry.first, entry.second);
    }
}

void StorageVariables::clear()
{
    const std::lock_guard<std::mutex> lock(variables().mutex);
    variables().values.clear();
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char* pName, void** ppContent, int /*nReserved*/)
{
    if (pName == nullptr || ppContent == nullptr) {
        return EAF_NULL_POINTER;
    }
    const std::lock_guard<std::mutex> lock(variables().mutex);
    const auto it = variables().values.find(pName);
    if (it == variables().values.end()) {
        return EAF_FAILED;
    }
    *ppContent = &it->second;
    return EAF_OK;
}
