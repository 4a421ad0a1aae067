#include "tests/module/log/XmlRpcCalls.h"

#include "tests/module/log/XmlRpcText.h"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>

namespace
{
XmlRpcCalls* s_pCalls = nullptr;
bool s_bInside = false; // in the library, or in the recording

/** Marks the time inside the library. */
class Inside
{
public:
    Inside() { s_bInside = true; }
    ~Inside() { s_bInside = false; }

    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
};

bool isSeen()
{
    return s_pCalls != nullptr && !s_bInside;
}

/** @return the library's own function */
template <class TFunction> TFunction own(TFunction /*replacement*/, const char* pName)
{
    return reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, pName));
}
} // namespace

XmlRpcCalls::XmlRpcCalls()
{
    s_pCalls = this;
}

XmlRpcCalls::~XmlRpcCalls()
{
    s_pCalls = nullptr;
}

std::size_t XmlRpcCalls::releasesOf(XMLRPC_VALUE xValue) const
{
    return static_cast<std::size_t>(std::count_if(m_releases.begin(), m_releases.end(),
                                                  [xValue](const Value& value) { return value.xValue == xValue; }));
}

bool XmlRpcCalls::admitAddition(XMLRPC_VALUE xSource)
{
    m_additions.push_back({xSource, textOf(xSource)});
    if (m_beforeAddition) {
        m_beforeAddition(m_additions.size());
    }
    return m_additions.size() != m_nFailingAddition;
}

void XmlRpcCalls::recordRelease(XMLRPC_VALUE xValue)
{
    m_releases.push_back({xValue, textOf(xValue)});
}

std::vector<std::string> XmlRpcCalls::texts(const std::vector<Value>& values)
{
    std::vector<std::string> all;
    std::transform(values.begin(), values.end(), std::back_inserter(all),
                   [](const Value& value) { return value.sText; });
    return all;
}

// The executable's definitions stand before the library's, for the library's own calls as well.

extern "C" int XMLRPC_AddValueToVector(XMLRPC_VALUE target, XMLRPC_VALUE source)
{
    static const auto s_pOwn = own(&XMLRPC_AddValueToVector, "XMLRPC_AddValueToVector");
    if (!isSeen()) {
        return s_pOwn(target, source);
    }
    const Inside inside;
    return s_pCalls->admitAddition(source) ? s_pOwn(target, source) : 0;
}

extern "C" void XMLRPC_CleanupValue(XMLRPC_VALUE value)
{
    static const auto s_pOwn = own(&XMLRPC_CleanupValue, "XMLRPC_CleanupValue");
    if (!isSeen()) {
        s_pOwn(value);
        return;
    }
    const Inside inside;
    s_pCalls->recordRelease(value);
    s_pOwn(value);
}

extern "C" const char* XMLRPC_GetValueString(XMLRPC_VALUE value)
{
    static const auto s_pOwn = own(&XMLRPC_GetValueString, "XMLRPC_GetValueString");
    return isSeen() && s_pCalls->areTextsHidden() ? nullptr : s_pOwn(value);
}

extern "C" XMLRPC_VALUE XMLRPC_UtilityCreateFault(int fault_code, const char* fault_string)
{
    static const auto s_pOwn = own(&XMLRPC_UtilityCreateFault, "XMLRPC_UtilityCreateFault");
    if (!isSeen()) {
        return s_pOwn(fault_code, fault_string);
    }
    const Inside inside;
    return s_pOwn(fault_code, fault_string);
}
