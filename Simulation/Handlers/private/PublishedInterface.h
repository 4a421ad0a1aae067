/** @file
 * An interface's time in the broker.
 */
#pragma once

#include "Platform/Broker/IInterface.h"

#include <string>

/** Publishes an interface under a name and withdraws it at the latest when it goes itself. */
class PublishedInterface
{
public:
    PublishedInterface() = default;
    ~PublishedInterface();

    PublishedInterface(const PublishedInterface&) = delete;
    PublishedInterface& operator=(const PublishedInterface&) = delete;

    /** @return EAF_OK, or EAF_FAILED when it is published already or the name is taken */
    EAFResult publish(const std::string& sName, IInterface* pInterface);

    /** @return EAF_OK, or EAF_FAILED when it is not published */
    EAFResult withdraw();

    bool isPublished() const { return m_pInterface != nullptr; }

private:
    std::string m_sName;
    IInterface* m_pInterface = nullptr;
};
