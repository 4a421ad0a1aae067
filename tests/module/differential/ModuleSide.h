/** @file
 * The controller under comparison, driven through what it publishes: its C tables, command records and phases.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "tests/module/differential/Environment.h"
#include "tests/module/differential/ModuleDoor.h"
#include "tests/module/differential/ModulePlatform.h"
#include "tests/module/differential/ReferenceController.h"

#include <xmlrpc-epi/xmlrpc.h>

#include <cstdint>

namespace Differential
{
/** A controller from its construction to its destruction. */
class ModuleSide
{
public:
    /** Constructs the controller. The arguments must outlive this. */
    ModuleSide(ModuleDoor& door, Environment& environment, std::uint32_t nChannel);
    ~ModuleSide();

    ModuleSide(const ModuleSide&) = delete;
    ModuleSide& operator=(const ModuleSide&) = delete;

    /** Follows the environment's clock, which an operation may have moved. */
    void setTime() { m_door.setTime(m_environment.now()); }
    /** Carries out an operation that the environment left. */
    void apply(const Operation& operation);
    ReadOuts readOuts() const;
    /** Destroys the controller, once. */
    void destroy();

private:
    void applySetting(const Operation& operation);
    void registerObserver(std::int32_t nList, std::int32_t nObserver);
    void runPhase(std::int32_t nPhase);
    void opcCommand(std::int32_t nOption);
    void transientCommand(std::int32_t nOption);
    void restartLogs();
    void respond(XMLRPC_VALUE xValue);
    template <class TRecord> TRecord& record(const std::string& sName);

    ModuleDoor& m_door;
    Environment& m_environment;
    ModulePlatform m_platform;
    std::uint32_t m_nChannel;
    IOutputPowerControllerCStruct* m_pTable = nullptr;
    bool m_bLives = true;
};
} // namespace Differential
