/** @file
 * What the four entry points of every handler module do. No exception leaves them: their callers are C.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <exception>
#include <memory>

/**
 * Creates a handler.
 * @param[out] ppModule its handle, null when it could not be created; a null pointer creates nothing
 */
template <class THandler> void constructHandler(void** ppModule, unsigned int nChannel) noexcept
{
    if (ppModule == nullptr) {
        return;
    }
    try {
        *ppModule = std::make_unique<THandler>(nChannel).release();
    }
    catch (const std::exception&) {
        *ppModule = nullptr;
    }
}

template <class THandler> void destructHandler(void* pModule) noexcept
{
    // cppcheck-suppress unreadVariable ; its destructor is what is wanted
    const std::unique_ptr<THandler> pHandler(static_cast<THandler*>(pModule));
}

template <class THandler> long initializeHandler(void* pModule) noexcept
{
    if (pModule == nullptr) {
        return EAF_NULL_POINTER;
    }
    try {
        return static_cast<THandler*>(pModule)->initialize();
    }
    catch (const std::exception&) {
        return EAF_FAILED;
    }
}

template <class THandler> long uninitializeHandler(void* pModule) noexcept
{
    if (pModule == nullptr) {
        return EAF_NULL_POINTER;
    }
    try {
        return static_cast<THandler*>(pModule)->uninitialize();
    }
    catch (const std::exception&) {
        return EAF_FAILED;
    }
}
