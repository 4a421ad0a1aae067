#include "tests/module/differential/ModuleSide.h"

#include "Platform/Broker/IInterface_c.h"

#include <stdexcept>
#include <string>

namespace Differential
{
namespace
{
/** Who an observer record belongs to. */
struct Identity
{
    std::int32_t nList;
    std::int32_t nObserver;
};

constexpr std::int32_t OBSERVERS = 3;

template <std::int32_t nList, class TRecord, class TValue> TRecord* observerRecord(std::int32_t nObserver)
{
    static Identity s_identities[OBSERVERS] = {{nList, 0}, {nList, 1}, {nList, 2}};
    static constexpr auto NOTIFY = [](void* vpThis, unsigned int nChannel, TValue value) {
        const Identity& identity = *static_cast<const Identity*>(vpThis);
        ModulePlatform::current().environment().tellObserver(identity.nList, identity.nObserver, nChannel,
                                                             static_cast<std::int32_t>(value));
    };
    static TRecord s_records[OBSERVERS] = {
        {&s_identities[0], NOTIFY}, {&s_identities[1], NOTIFY}, {&s_identities[2], NOTIFY}};
    return &s_records[nObserver];
}
} // namespace

ModuleSide::ModuleSide(ModuleDoor& door, Environment& environment, std::uint32_t nChannel)
    : m_door(door), m_environment(environment), m_platform(environment), m_nChannel(nChannel)
{
    m_door.construct(nChannel);
    setTime();
    auto* pInterface =
        dynamic_cast<IInterface_c*>(m_platform.m_interfaces[channelName("IOutputPowerController", nChannel)]);
    m_pTable = pInterface != nullptr ? static_cast<IOutputPowerControllerCStruct*>(pInterface->getCStruct()) : nullptr;
    if (m_pTable == nullptr) {
        m_door.destruct();
        throw std::runtime_error("no controller is published for channel " + std::to_string(nChannel));
    }
}

ModuleSide::~ModuleSide()
{
    destroy();
}

void ModuleSide::destroy()
{
    if (m_bLives) {
        m_bLives = false;
        m_door.destruct();
    }
}

ReadOuts ModuleSide::readOuts() const
{
    EOPCState eState{};
    ETxPowerActualStatus eStatus{};
    EOPCState eLoggedState{};
    EOPHDetectorState eDetector{};
    long nPctrl = 0;
    long nPmeasured = 0;
    long anLogData[6]{};
    void* const vpThis = m_pTable->vpThis;
    m_pTable->staticGetOPCState(vpThis, &eState);
    m_pTable->staticGetTxPowerActualStatus(vpThis, &eStatus);
    m_pTable->staticGetPctrl(vpThis, &nPctrl);
    m_pTable->staticGetPmeasured(vpThis, &nPmeasured);
    m_pTable->staticGetLogData(vpThis, &anLogData[0], &anLogData[1], &anLogData[2], &anLogData[3], &anLogData[4],
                               &anLogData[5], &eLoggedState, &eDetector);
    return {
        eState,
        eStatus,
        nPctrl,
        nPmeasured,
        {anLogData[0], anLogData[1], anLogData[2], anLogData[3], anLogData[4], anLogData[5], eLoggedState, eDetector}};
}

void ModuleSide::apply(const Operation& operation)
{
    const auto& an = operation.anArgument;
    EventLog& log = m_environment.log();
    void* const vpThis = m_pTable->vpThis;
    switch (operation.eKind) {
    case EOperation::Regulate:
        log.line("result ", m_pTable->staticRegulate(vpThis, an[0]));
        break;
    case EOperation::Request:
        log.line("result ", m_pTable->staticSetRequestedTxPowerState(vpThis, static_cast<ERequestedTxPowerState>(an[0]),
                                                                     static_cast<ETxPowerMode>(an[1])));
        break;
    case EOperation::ChangeFrequency:
        m_platform.tellFrequency();
        break;
    case EOperation::ReportTemperature:
        m_platform.tellTemperature(an[0]);
        break;
    case EOperation::RegisterObserver:
        registerObserver(an[0], an[1]);
        break;
    case EOperation::OpcLogCommand:
        opcCommand(an[0]);
        break;
    case EOperation::TransientLogCommand:
        transientCommand(an[0]);
        break;
    case EOperation::RestartLogs:
        restartLogs();
        break;
    case EOperation::RunPhase:
        runPhase(an[0]);
        break;
    case EOperation::Initialize:
        log.line("result ", m_door.initialize());
        break;
    case EOperation::Uninitialize:
        log.line("result ", m_door.uninitialize());
        break;
    case EOperation::EnterState:
    case EOperation::StepStateMachine:
    case EOperation::WriteInitialGain:
        m_door.apply(operation, log);
        break;
    default:
        applySetting(operation);
        break;
    }
}

void ModuleSide::applySetting(const Operation& operation)
{
    const auto& an = operation.anArgument;
    EventLog& log = m_environment.log();
    void* const vpThis = m_pTable->vpThis;
    const auto expectOk = [&log](long nResult) {
        if (nResult != EAF_OK) {
            log.line("result ", nResult);
        }
    };
    switch (operation.eKind) {
    case EOperation::SetLimits:
        expectOk(m_pTable->staticSetTxPminPmax(vpThis, an[0], an[1]));
        break;
    case EOperation::SetProductionTest:
        log.line("result ", m_pTable->staticSetProductionTestSettings(vpThis, static_cast<unsigned int>(an[0]),
                                                                      static_cast<ERfDetectorLoopMode>(an[1])));
        break;
    case EOperation::SetGain:
        expectOk(m_pTable->staticSetGain(vpThis, static_cast<EOPHDetectorState>(an[0]), static_cast<EOPCState>(an[1]),
                                         an[2]));
        break;
    case EOperation::GetGain: {
        long nGain = 0;
        expectOk(m_pTable->staticGetGain(vpThis, static_cast<EOPHDetectorState>(an[0]), static_cast<EOPCState>(an[1]),
                                         &nGain));
        log.line("gain ", nGain);
        break;
    }
    case EOperation::SetInterval:
        expectOk(m_pTable->staticSetRegulatorInterval(vpThis, an[0]));
        break;
    default:
        log.line("<unknown operation>");
        break;
    }
}

void ModuleSide::registerObserver(std::int32_t nList, std::int32_t nObserver)
{
    void* const vpThis = m_pTable->vpThis;
    switch (nList) {
    case 0:
        m_pTable->staticRegisterPctrlObserver(vpThis, observerRecord<0, IOpcPctrlObserver, int>(nObserver));
        break;
    case 1:
        m_pTable->staticRegisterPtargetObserver(vpThis, observerRecord<1, IOpcPtargetObserver, int>(nObserver));
        break;
    case 2:
        m_pTable->staticRegisterPredictedPctrlObserver(vpThis,
                                                       observerRecord<2, IOpcPredictedPctrlObserver, int>(nObserver));
        break;
    default:
        m_pTable->staticRegisterPowerModeObserver(vpThis,
                                                  observerRecord<3, IOpcPowerModeObserver, ETxPowerMode>(nObserver));
        break;
    }
}

void ModuleSide::runPhase(std::int32_t nPhase)
{
    ModuleInterface& module = *m_platform.m_pModule;
    long nResult = 0;
    switch (nPhase) {
    case 0:
        nResult = module.onModuleInit();
        break;
    case 1:
        nResult = module.onPhaseModuleStorageObjectsRetreived();
        break;
    case 2:
        nResult = module.onPhasePostFrameformatLoad();
        break;
    case 3:
        nResult = module.onPhaseStop();
        break;
    case 4:
        nResult = module.onPhaseActivation(5, eCALLBACK_PRIORITY_NORMAL);
        break;
    case 5:
        nResult = module.onPhaseEndFrameformatLoad();
        break;
    case 6:
        nResult = module.onPhaseStart();
        break;
    case 7:
        nResult = module.onPhaseFrameformatLoad();
        break;
    case 8:
        nResult = module.onPhasePreFrameformatLoad();
        break;
    default:
        nResult = module.onPhaseSetRadioChannelNearEndFinished();
        break;
    }
    m_environment.log().line("result ", nResult);
}
} // namespace Differential
