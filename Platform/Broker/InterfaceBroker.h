/** @file
 * The process-wide registry of C++ interfaces.
 */
#pragma once

#include "Platform/Broker/IInterface.h"
#include "Platform/EAFResult.h"

#include <string>

/** Finds interfaces by name; not copied. Every operation may be called from any thread. */
class EAF_PUBLIC InterfaceBroker
{
public:
    /** @return the one broker of the process, created at the first call */
    static InterfaceBroker& getInstance();

    InterfaceBroker(const InterfaceBroker&) = delete;
    InterfaceBroker& operator=(const InterfaceBroker&) = delete;

    /**
     * Publishes an interface.
     * @param sName name to find it by
     * @param pInterface the interface; not owned, must live until it is withdrawn
     * @return EAF_OK; EAF_NULL_POINTER for a null interface; EAF_FAILED when the name is taken, which keeps the first
     */
    EAFResult registerInterface(const std::string& sName, IInterface* pInterface);

    /**
     * Withdraws an interface.
     * @param sName name that it was published under
     * @param pInterface the interface published, or null to withdraw by name alone
     * @return EAF_OK; EAF_FAILED when the name is unknown or stands for another interface
     */
    EAFResult unregisterInterface(const std::string& sName, IInterface* pInterface);

    /**
     * @param sName name that the interface was published under
     * @return the interface, or null when the name is unknown
     */
    IInterface* getInterface(const std::string& sName);

private:
    InterfaceBroker() = default;
    ~InterfaceBroker() = default;
};
