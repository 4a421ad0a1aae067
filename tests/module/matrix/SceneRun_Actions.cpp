// What is done with the module and with the model, between the handler's calls and during them.
#include "tests/module/matrix/SceneRun.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>
#include <thread>
#include <utility>

namespace
{
/** Waits until another thread has used what other threads may use; gives up when it cannot. */
void useFromOtherThread(ExposedController& controller)
{
    std::promise<void> done;
    std::future<void> isDone = done.get_future();
    std::thread thread([&controller, done = std::move(done)]() mutable {
        std::array<int, 6> anPower{};
        EOPCState eState = eOPC_UNDEFINED;
        EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
        controller.getLogData(&anPower[0], &anPower[1], &anPower[2], &anPower[3], &anPower[4], &anPower[5], &eState,
                              &eDetectorState);
        controller.getOPCState();
        controller.getTxPowerActualStatus();
        controller.getPctrl();
        controller.getPmeasured();
        controller.getGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON);
        controller.notifyTemperature(25);
        done.set_value();
    });
    // By the clock that is not scripted.
    const auto deadline = std::chrono::system_clock::now() + std::chrono::seconds(60);
    if (isDone.wait_until(deadline) != std::future_status::ready) {
        std::cerr << "another thread cannot use the controller while the handler lasts" << std::endl;
        std::abort();
    }
    thread.join();
}
} // namespace

void SceneRun::happenMeanwhile(EMeanwhile eMeanwhile)
{
    switch (eMeanwhile) {
    case EMeanwhile::Nothing:
        break;
    case EMeanwhile::TimePasses:
        m_clock.advanceMs(FaultyHandler::SLOW_CALL_MS);
        break;
    case EMeanwhile::OtherThread:
        useFromOtherThread(*m_controller);
        break;
    case EMeanwhile::OnRequest:
        foresee({EAction::OnRequest});
        m_monitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
        break;
    case EMeanwhile::OffRequest:
        foresee({EAction::OffRequest});
        m_monitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
        break;
    }
}

int SceneRun::actOnModule(const Action& action)
{
    const auto eMode = static_cast<ETxPowerMode>(action.nMode);
    switch (action.eAction) {
    case EAction::OnRequest:
        return m_monitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eMode);
    case EAction::OffRequest:
        return m_monitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eMode);
    case EAction::ProductionTest:
        return m_monitored->setProductionTestSettings(action.nValue != 0,
                                                      static_cast<ERfDetectorLoopMode>(action.nMode));
    case EAction::Regulate:
        return m_monitored->regulate(action.nValue);
    case EAction::EnterDelay:
        m_controller->m_eOPCState = eOPC_DELAYED_TX_ON_INITIATED;
        m_bDelayUnheard = true;
        return EAF_OK;
    case EAction::Wait:
        m_clock.advanceMs(action.nValue);
        return EAF_OK;
    }
    return EAF_FAILED;
}

int SceneRun::actOnModel(const Action& action)
{
    switch (action.eAction) {
    case EAction::OnRequest:
        return m_model.request(1, action.nMode);
    case EAction::OffRequest:
        return m_model.request(0, action.nMode);
    case EAction::ProductionTest:
        return m_model.setProductionTest(action.nValue != 0, action.nMode);
    case EAction::Regulate:
        return m_model.regulate(action.nValue);
    case EAction::EnterDelay:
        m_model.enterDelayedSwitchOn();
        return EAF_OK;
    case EAction::Wait:
        m_model.advanceMs(action.nValue);
        return EAF_OK;
    }
    return EAF_FAILED;
}

void SceneRun::foresee(const Action& action)
{
    const bool bOn = m_controller->m_eTxPowerActualStatus == eTX_POWER_ACTUAL_ON;
    if (action.eAction == EAction::EnterDelay || (action.eAction == EAction::OnRequest && !bOn)) {
        m_eEnd = eOPC_TX_ON;
    }
    else if (action.eAction == EAction::OffRequest && bOn) {
        m_eEnd = eOPC_TX_OFF;
    }
}
