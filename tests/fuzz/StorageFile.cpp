// storage.toml: all of its variables or none.
#include "Platform/Storage/CStorageManager.h"
#include "Platform/Storage/StorageVariables.h"
#include "tests/fuzz/FuzzTarget.h"

#include <toml++/toml.h>

#include <cstring>

namespace
{
void checkVariables(const std::string& sText)
{
    const bool bMark = sText.starts_with("\xEF\xBB\xBF");
    const toml::table document = toml::parse(bMark ? sText.substr(3) : sText);
    for (const auto& [key, node] : *document["variables"].as_table()) {
        const std::string sName(key.str());
        if (sName.find('\0') != std::string::npos) {
            continue; // cannot be asked for
        }
        void* pContent = nullptr;
        std::int32_t nValue = 0;
        require(CStorageManager_GetVariableContentAddressByName(sName.c_str(), &pContent, 0) == EAF_OK,
                "a variable that is missing: " + sName);
        std::memcpy(&nValue, pContent, sizeof nValue);
        require(node.value_exact<std::int64_t>() == nValue, "a variable of another value: " + sName);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    const std::string sPath = writeInFolder("storage.toml", sText);
    StorageVariables::clear();
    if (accepts(sPath, sText, [&] { StorageVariables::loadFile(sPath); })) {
        checkVariables(sText);
    }
    return 0;
}
