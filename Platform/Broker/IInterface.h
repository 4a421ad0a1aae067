/** @file
 * The root of everything that the interface broker hands out.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <string>

/** Root of all brokered interfaces. Reach the real interface by dynamic_cast. Neither copied nor moved. */
class EAF_PUBLIC IInterface
{
public:
    /** The broker never deletes an interface; withdraw it before this. */
    virtual ~IInterface() = default;

    IInterface(const IInterface&) = delete;
    IInterface& operator=(const IInterface&) = delete;
    IInterface(IInterface&&) = delete;
    IInterface& operator=(IInterface&&) = delete;

protected:
    /** @param sName name for the implementation's own use; the published name is the one given to the broker */
    // Not explicit: a virtual base is built by name or by nothing at all.
    IInterface(const std::string& sName = {}) : m_sName(sName) {}

private:
    std::string m_sName;
};
