#include "Simulation/Handlers/ISimulatedTransmitter.h"
#include "Unit/Process/RadioChannel.h"
#include "Unit/Text/PowerText.h"

void RadioChannel::want(ERequestedTxPowerState eState)
{
    m_owner.check("RadioChannel::want");
    m_wanted = eState;
    followRequest();
}

void RadioChannel::followRequest()
{
    if (!m_wanted) {
        return;
    }
    const bool bOn = *m_wanted == eREQUESTED_TX_POWER_ON;
    const EOPCState eState = state();
    // Only from the opposite resting state: in between, the controller ignores the request or begins anew.
    if (eState == (bOn ? eOPC_TX_OFF : eOPC_TX_ON)) {
        const IOutputPowerControllerCStruct& table = *m_pController;
        table.staticSetRequestedTxPowerState(table.vpThis, *m_wanted,
                                             static_cast<ETxPowerMode>(m_configuration.nPowerMode));
    }
    else if (eState == (bOn ? eOPC_TX_ON : eOPC_TX_OFF)) {
        m_wanted.reset();
    }
}

long RadioChannel::setPowerMode(int nPowerMode)
{
    m_owner.check("RadioChannel::setPowerMode");
    m_configuration.nPowerMode = nPowerMode;
    // A request for what is so already changes the mode and nothing else.
    return m_pController->staticSetRequestedTxPowerState(m_pController->vpThis,
                                                         isOn() ? eREQUESTED_TX_POWER_ON : eREQUESTED_TX_POWER_OFF,
                                                         static_cast<ETxPowerMode>(nPowerMode));
}

long RadioChannel::setLimits(double txPminDbm, double txPmaxDbm)
{
    m_owner.check("RadioChannel::setLimits");
    m_configuration.txPminDbm = txPminDbm;
    m_configuration.txPmaxDbm = txPmaxDbm;
    m_nPctrlMin = centiDb(txPminDbm);
    return m_pController->staticSetTxPminPmax(m_pController->vpThis, centiDb(txPminDbm), centiDb(txPmaxDbm));
}

long RadioChannel::setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent)
{
    m_owner.check("RadioChannel::setGain");
    return m_pController->staticSetGain(m_pController->vpThis, eDetectorState, eState, nGainPercent);
}

long RadioChannel::setProductionTest(bool bProductionTest, int nLoopMode)
{
    m_owner.check("RadioChannel::setProductionTest");
    m_configuration.bProductionTest = bProductionTest;
    m_configuration.nLoopMode = nLoopMode;
    return m_pController->staticSetProductionTestSettings(m_pController->vpThis, bProductionTest ? 1U : 0U,
                                                          static_cast<ERfDetectorLoopMode>(nLoopMode));
}

long RadioChannel::setInterval(unsigned int intervalMs)
{
    m_owner.check("RadioChannel::setInterval");
    return m_pController->staticSetRegulatorInterval(m_pController->vpThis, static_cast<long>(intervalMs));
}

GainPercent RadioChannel::gains(EOPCState eState) const
{
    m_owner.check("RadioChannel::gains");
    GainPercent gains{};
    for (std::size_t nDetectorState = 0; nDetectorState < gains.size(); ++nDetectorState) {
        long nGainPercent = 0;
        m_pController->staticGetGain(m_pController->vpThis, static_cast<EOPHDetectorState>(nDetectorState), eState,
                                     &nGainPercent);
        gains.at(nDetectorState) = static_cast<int>(nGainPercent);
    }
    return gains;
}

bool RadioChannel::setFault(EHandlerOperation eOperation, const HandlerFault& fault)
{
    m_owner.check("RadioChannel::setFault");
    if (m_pTransmitter == nullptr) {
        return false;
    }
    m_pTransmitter->setFault(eOperation, fault);
    m_faults.at(static_cast<std::size_t>(eOperation)) = fault;
    return true;
}
