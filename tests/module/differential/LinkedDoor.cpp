// The controller as it is linked into the program.
#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "tests/module/ScriptedClock.h"
#include "tests/module/differential/ModuleDoor.h"
#include "tests/support/ExposedController.h"

namespace Differential
{
namespace
{
class LinkedDoor : public ModuleDoor
{
public:
    void construct(std::uint32_t nChannel) override
    {
        m_pClock = std::make_unique<ScriptedClock>(timespec{});
        m_pController = std::make_unique<ExposedController>(nChannel);
    }

    void destruct() override
    {
        m_pController.reset();
        m_pClock.reset();
    }

    long initialize() override { return m_pController->initialize(); }
    long uninitialize() override { return m_pController->unInitialize(); }
    bool isPrivate() const override { return true; }

    void apply(const Operation& operation, EventLog& log) override
    {
        if (operation.eKind == EOperation::EnterState) {
            m_pController->m_eOPCState = static_cast<EOPCState>(operation.anArgument[0]);
            m_pController->m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
        }
        else if (operation.eKind == EOperation::StepStateMachine) {
            log.line("result ", m_pController->handleOPCStateMachine());
        }
        else if (operation.eKind == EOperation::WriteInitialGain) {
            m_pController->m_pLog->writeInitialTxRfGainToOpcLog(operation.anArgument[0]);
        }
    }

    void setTime(Time time) override
    {
        timespec now{};
        now.tv_sec = static_cast<decltype(now.tv_sec)>(time.nSeconds);
        now.tv_nsec = static_cast<decltype(now.tv_nsec)>(time.nNanoseconds);
        m_pClock->set(now);
    }

private:
    std::unique_ptr<ScriptedClock> m_pClock;
    std::unique_ptr<ExposedController> m_pController;
};
} // namespace

std::unique_ptr<ModuleDoor> openDoor()
{
    return std::make_unique<LinkedDoor>();
}
} // namespace Differential
