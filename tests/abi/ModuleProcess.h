/** @file
 * What a process does with the module: a controller and its surroundings per channel.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController.h"
#include "tests/abi/LoadedLibrary.h"
#include "tests/support/FakeHandlers.h"
#include "tests/support/RecordingOutputPowerHandler.h"
#include "tests/support/RecordingPlatform.h"

#include <xmlrpc-epi/xmlrpc.h>

#include <string>

/** A channel: its handlers, published, and its controller, built through the C door and known by its interfaces. */
class ModuleChannel
{
public:
    /** Publishes the handlers, constructs and initializes the controller. */
    ModuleChannel(LoadedLibrary& library, unsigned int nChannel);
    /** Uninitializes and destructs the controller. */
    ~ModuleChannel();

    ModuleChannel(const ModuleChannel&) = delete;
    ModuleChannel& operator=(const ModuleChannel&) = delete;

    /** @return the controller as others find it in the broker, or null */
    IOutputPowerController* controller() const;
    /** @return the controller's C table as others get it from the broker */
    IOutputPowerControllerCStruct& table() const;

    /** Lets the transient log's command act. @return the response, the caller's to release */
    XMLRPC_VALUE manageTransientLog(const char* pOption) const;
    /** Lets the OPC log's command act. @return the response, the caller's to release */
    XMLRPC_VALUE manageOpcLog(std::string sOption) const;

    RecordingOutputPowerHandler m_handler;
    FakeFrequencyHandler m_frequency;

private:
    /** @return a base name with the channel as interfaces are named */
    std::string named(const std::string& sBaseName) const;

    LoadedLibrary& m_library;
    unsigned int m_nChannel;
    void* m_pModule = nullptr;
};
