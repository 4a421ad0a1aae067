#include "tests/unit/FakeController.h"

#include "Platform/Broker/CInterfaceBroker.h"

#include <stdexcept>

namespace
{
FakeController& self(void* vpThis)
{
    return *static_cast<FakeController*>(vpThis);
}

template <class TObserver> long observe(void* vpThis, TObserver* /*pObserver*/)
{
    ++self(vpThis).nObservers;
    return EAF_OK;
}
} // namespace

FakeController::FakeController(const std::string& sName) : m_sName(sName)
{
    m_table.vpThis = this;
    fillInputs();
    fillOutputs();
    if (CInterfaceBroker_RegisterInterface(this, m_sName.c_str(), &m_table) != EAF_OK) {
        throw std::runtime_error("cannot publish " + m_sName);
    }
}

FakeController::~FakeController()
{
    CInterfaceBroker_UnregisterInterface(this, m_sName.c_str(), &m_table);
}

void FakeController::fillInputs()
{
    m_table.staticSetTxPminPmax = [](void* vpThis, long nTxPmin, long nTxPmax) -> long {
        self(vpThis).limits = {nTxPmin, nTxPmax};
        return EAF_OK;
    };
    m_table.staticSetRequestedTxPowerState = [](void* vpThis, ERequestedTxPowerState eRequested,
                                                ETxPowerMode eMode) -> long {
        FakeController& controller = self(vpThis);
        controller.requests.emplace_back(eRequested, eMode);
        const bool bWantOn = eRequested == eREQUESTED_TX_POWER_ON;
        if (bWantOn != controller.bOn) {
            controller.eState = bWantOn ? eOPC_TX_ON_INITIATED : eOPC_TX_OFF_INITIATED;
        }
        return controller.nRequestResult;
    };
    m_table.staticSetProductionTestSettings = [](void* vpThis, unsigned int nOn, ERfDetectorLoopMode eMode) -> long {
        self(vpThis).productionTest = {nOn, eMode};
        return EAF_OK;
    };
    m_table.staticSetRegulatorInterval = [](void* vpThis, long nIntervalMs) -> long {
        self(vpThis).nInterval = nIntervalMs;
        return EAF_OK;
    };
}

void FakeController::fillOutputs()
{
    m_table.staticGetOPCState = [](void* vpThis, EOPCState* pState) -> long {
        *pState = self(vpThis).eState;
        return EAF_OK;
    };
    m_table.staticGetTxPowerActualStatus = [](void* vpThis, ETxPowerActualStatus* pStatus) -> long {
        *pStatus = self(vpThis).bOn ? eTX_POWER_ACTUAL_ON : eTX_POWER_ACTUAL_OFF;
        return EAF_OK;
    };
    m_table.staticRegisterPctrlObserver = observe<IOpcPctrlObserver>;
    m_table.staticRegisterPtargetObserver = observe<IOpcPtargetObserver>;
    m_table.staticRegisterPowerModeObserver = observe<IOpcPowerModeObserver>;
    m_table.staticRegisterPredictedPctrlObserver = [](void* vpThis, IOpcPredictedPctrlObserver* pObserver) -> long {
        self(vpThis).pPredictedObserver = pObserver;
        return EAF_OK;
    };
    m_table.staticRegulate = [](void* vpThis, long nPtarget) -> long { return self(vpThis).regulate(nPtarget); };
    m_table.staticGetLogData = [](void* vpThis, long* pPtarget, long* pPctrl, long* pPowerError, long* pPmeasured,
                                  long* pTxPmin, long* pPctrlMax, EOPCState* pState,
                                  EOPHDetectorState* pDetectorState) -> long {
        *pPtarget = 101;
        *pPctrl = 102 + static_cast<long>(self(vpThis).requestedPowers.size());
        *pPowerError = self(vpThis).nPowerError;
        *pPmeasured = 104;
        *pTxPmin = 105;
        *pPctrlMax = 106;
        *pState = self(vpThis).eState;
        *pDetectorState = eOPH_DETECTOR_STATE_2;
        return EAF_OK;
    };
    m_table.staticGetGain = [](void* vpThis, EOPHDetectorState eDetectorState, EOPCState eGainState,
                               long* pGain) -> long {
        *pGain = self(vpThis).gains[{eDetectorState, eGainState}];
        return EAF_OK;
    };
    m_table.staticSetGain = [](void* vpThis, EOPHDetectorState eDetectorState, EOPCState eGainState,
                               long nGain) -> long {
        self(vpThis).gains[{eDetectorState, eGainState}] = nGain;
        return EAF_OK;
    };
}

long FakeController::regulate(long nPtarget)
{
    requestedPowers.push_back(nPtarget);
    if (onRegulate) {
        onRegulate();
    }
    if (eState == eOPC_TX_ON_INITIATED) {
        eState = eOPC_TX_ON;
        bOn = true;
    }
    else if (eState == eOPC_TX_OFF_INITIATED && !bStaysOn) {
        eState = eOPC_TX_OFF;
        bOn = false;
    }
    return nRegulateResult;
}
