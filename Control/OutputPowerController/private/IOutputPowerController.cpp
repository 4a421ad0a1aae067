#include "Control/OutputPowerController/IOutputPowerController.h"

namespace
{

/**
 * Calls an operation of the interface behind a C handle.
 * @return EAF_NULL_POINTER for a null handle, else what the call returns
 */
template <class TCall> long onController(void* vpThis, TCall call)
{
    if (vpThis == nullptr) {
        return EAF_NULL_POINTER;
    }
    return call(*static_cast<IOutputPowerController*>(vpThis));
}

/** As onController(), for operations whose outcome C callers are not told. */
template <class TCall> long onControllerAlwaysOk(void* vpThis, TCall call)
{
    return onController(vpThis, [&call](IOutputPowerController& controller) -> long {
        call(controller);
        return EAF_OK;
    });
}

} // namespace

IOutputPowerController::IOutputPowerController()
    : m_cStruct{this,
                &staticSetTxPminPmax,
                &staticSetRequestedTxPowerState,
                &staticSetProductionTestSettings,
                &staticSetRegulatorInterval,
                &staticGetOPCState,
                &staticGetTxPowerActualStatus,
                &staticGetPctrl,
                &staticRegisterPctrlObserver,
                &staticRegisterPtargetObserver,
                &staticRegisterPredictedPctrlObserver,
                &staticRegisterPowerModeObserver,
                &staticRegulate,
                &staticGetLogData,
                &staticGetPmeasured,
                &staticSetGain,
                &staticGetGain}
{
    m_pCStruct = &m_cStruct;
}

long IOutputPowerController::staticSetTxPminPmax(void* vpThis, long nTxPmin, long nTxPmax)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) {
        controller.setTxPminPmax(static_cast<int>(nTxPmin), static_cast<unsigned int>(nTxPmax));
    });
}

long IOutputPowerController::staticSetRequestedTxPowerState(void* vpThis, ERequestedTxPowerState eState,
                                                            ETxPowerMode eMode)
{
    return onController(
        vpThis, [=](IOutputPowerController& controller) { return controller.setRequestedTxPowerState(eState, eMode); });
}

long IOutputPowerController::staticSetProductionTestSettings(void* vpThis, unsigned int nProductionTest,
                                                             ERfDetectorLoopMode eLoopMode)
{
    return onController(vpThis, [=](IOutputPowerController& controller) {
        return controller.setProductionTestSettings(nProductionTest != 0, eLoopMode);
    });
}

long IOutputPowerController::staticSetRegulatorInterval(void* vpThis, long nIntervalMs)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) {
        controller.setRegulatorInterval(static_cast<int>(nIntervalMs));
    });
}

long IOutputPowerController::staticGetOPCState(void* vpThis, EOPCState* pState)
{
    return onControllerAlwaysOk(vpThis,
                                [=](IOutputPowerController& controller) { *pState = controller.getOPCState(); });
}

long IOutputPowerController::staticGetTxPowerActualStatus(void* vpThis, ETxPowerActualStatus* pStatus)
{
    return onControllerAlwaysOk(
        vpThis, [=](IOutputPowerController& controller) { *pStatus = controller.getTxPowerActualStatus(); });
}

long IOutputPowerController::staticGetPctrl(void* vpThis, long* pPctrl)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) { *pPctrl = controller.getPctrl(); });
}

long IOutputPowerController::staticRegisterPctrlObserver(void* vpThis, IOpcPctrlObserver* pObserver)
{
    return onControllerAlwaysOk(
        vpThis, [=](IOutputPowerController& controller) { controller.registerPctrlObserver(pObserver); });
}

long IOutputPowerController::staticRegisterPtargetObserver(void* vpThis, IOpcPtargetObserver* pObserver)
{
    return onControllerAlwaysOk(
        vpThis, [=](IOutputPowerController& controller) { controller.registerPtargetObserver(pObserver); });
}

long IOutputPowerController::staticRegisterPredictedPctrlObserver(void* vpThis, IOpcPredictedPctrlObserver* pObserver)
{
    return onControllerAlwaysOk(
        vpThis, [=](IOutputPowerController& controller) { controller.registerPredictedPctrlObserver(pObserver); });
}

long IOutputPowerController::staticRegisterPowerModeObserver(void* vpThis, IOpcPowerModeObserver* pObserver)
{
    return onControllerAlwaysOk(
        vpThis, [=](IOutputPowerController& controller) { controller.registerPowerModeObserver(pObserver); });
}

long IOutputPowerController::staticRegulate(void* vpThis, long nPtarget)
{
    return onController(
        vpThis, [=](IOutputPowerController& controller) { return controller.regulate(static_cast<int>(nPtarget)); });
}

long IOutputPowerController::staticGetLogData(void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError,
                                              long* pPmeasured, long* pTxPmin, long* pPctrlMax, EOPCState* pState,
                                              EOPHDetectorState* pDetectorState)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) {
        int anValue[6] = {};
        controller.getLogData(&anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4], &anValue[5], pState,
                              pDetectorState);
        *pPtarget = anValue[0];
        *pPctrl = anValue[1];
        *pPowerError = anValue[2];
        *pPmeasured = anValue[3];
        *pTxPmin = anValue[4];
        *pPctrlMax = anValue[5];
    });
}

long IOutputPowerController::staticGetPmeasured(void* vpThis, long* pPmeasured)
{
    return onControllerAlwaysOk(vpThis,
                                [=](IOutputPowerController& controller) { *pPmeasured = controller.getPmeasured(); });
}

long IOutputPowerController::staticSetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState,
                                           long nGainPercent)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) {
        controller.setGain(eDetectorState, eState, static_cast<int>(nGainPercent));
    });
}

long IOutputPowerController::staticGetGain(void* vpThis, EOPHDetectorState eDetectorState, EOPCState eState,
                                           long* pGainPercent)
{
    return onControllerAlwaysOk(vpThis, [=](IOutputPowerController& controller) {
        *pGainPercent = controller.getGain(eDetectorState, eState);
    });
}
