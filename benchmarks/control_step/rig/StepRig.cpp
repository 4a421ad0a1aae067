#include "benchmarks/control_step/rig/StepRig.h"

#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/ModuleFramework/PhaseDriver.h"
#include "Platform/Storage/StorageVariables.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/TraceControl.h"
#include "Unit/XmlRpc/XmlRpcValue.h"

#include <algorithm>
#include <stdexcept>

namespace
{
constexpr const char* MODULE = "OutputPowerController";
constexpr int GAIN_PERCENT = 100;
constexpr int INTERVAL_MS = 6; // for which the closed loop's step is limited to 10
constexpr int CHANNEL_SPACING_CODE = 28;
constexpr int GAIN_BLOCKS = 6;
constexpr long WIDE_LIMIT = 3000;
constexpr int STEPS_TO_ON = 40;

std::string named(const char* pName, unsigned int nChannel)
{
    return nChannel == 0 ? pName : pName + ("_" + std::to_string(nChannel));
}

template <class TRecord> TRecord* findRecord(const std::string& sName)
{
    void* pBroker = nullptr;
    void* pRecord = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_GetInterface(pBroker, sName.c_str(), &pRecord);
    CInterfaceBroker_DestroyInstance(pBroker);
    if (pRecord == nullptr) {
        throw std::runtime_error("nothing is published as " + sName);
    }
    return static_cast<TRecord*>(pRecord);
}

void requireNoFault(const XmlRpcValue& answer, const char* pCommand)
{
    if (XMLRPC_ValueIsFault(answer.get()) != 0) {
        throw std::runtime_error(std::string("the log refuses ") + pCommand);
    }
}

void enableTransientLog()
{
    auto& method = *findRecord<TIMethodCStruct>("TIManageOPCTransientLogCh0");
    const XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_VALUE parameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
    XMLRPC_VALUE options = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    XMLRPC_AddValueToVector(options, XMLRPC_CreateValueString("RequestOption", "Enable", 0));
    XMLRPC_AddValueToVector(parameters, options);
    XMLRPC_RequestSetData(request.get(), parameters);
    requireNoFault(XmlRpcValue(method.handle(method.vpThis, nullptr, request.get(), nullptr)), "Enable");
}

void startOpcLog()
{
    auto& opcLog = *findRecord<ManageLogsCStruct>("Channel.0.TxOutputPowerControlLog");
    std::string sStart = "Start";
    requireNoFault(XmlRpcValue(opcLog.manageLogs(opcLog.vpThis, sStart.data())), "Start");
}

void setUp(const IOutputPowerControllerCStruct& table, std::size_t nObservers)
{
    Surroundings::Observers& observers = Surroundings::observers();
    for (std::size_t n = 0; n < nObservers; ++n) {
        table.staticRegisterPredictedPctrlObserver(table.vpThis, &observers.predictedPctrl.at(n));
        table.staticRegisterPtargetObserver(table.vpThis, &observers.ptarget.at(n));
        table.staticRegisterPctrlObserver(table.vpThis, &observers.pctrl.at(n));
    }
    table.staticSetRegulatorInterval(table.vpThis, INTERVAL_MS);
    table.staticSetTxPminPmax(table.vpThis, -WIDE_LIMIT, WIDE_LIMIT);
    table.staticSetGain(table.vpThis, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, GAIN_PERCENT);
}

void drivePhases()
{
    for (const unsigned long nPhase :
         {ePHASE_MODULE_INIT, ePHASE_MODULE_STORAGE_OBJECTS_RETRIEVED, ePHASE_POST_FRAMEFORMAT_LOAD})
    {
        const std::vector<PhaseFailure> failures = PhaseDriver::drive(nPhase);
        if (!failures.empty()) {
            throw std::runtime_error(failures.front().sOperation + " failed");
        }
    }
}
} // namespace

void silenceTrace()
{
    TraceControl::setLevelOfAll(0);
    TraceControl::setStandardErrorEnabled(false);
    TraceControl::setSystemLogEnabled(false);
}

void writeTraceLines(const IOutputPowerControllerCStruct& table, int nLines)
{
    for (int nLine = 0; nLine < nLines; ++nLine) {
        table.staticSetTxPminPmax(table.vpThis, -nLine, nLine);
    }
}

void regulate(const IOutputPowerControllerCStruct& table, int nSteps)
{
    int nFarOff = FAR_OFF;
    for (int nStep = 0; nStep < nSteps; ++nStep) {
        table.staticRegulate(table.vpThis, MEASURED_POWER + nFarOff);
        nFarOff = -nFarOff;
    }
}

void regulateEach(const std::vector<IOutputPowerControllerCStruct*>& tables, int nRequested)
{
    for (const IOutputPowerControllerCStruct* pTable : tables) {
        pTable->staticRegulate(pTable->vpThis, nRequested);
    }
}

StepRig::StepRig(ETables eTables, unsigned int nControllers, std::size_t nObservers)
{
    silenceTrace();
    Surroundings::setTables(eTables);
    StorageVariables::set("ChannelSpacing", CHANNEL_SPACING_CODE);
    for (unsigned int nChannel = 0; nChannel < nControllers; ++nChannel) {
        StorageVariables::set("channel." + std::to_string(nChannel) + ".tx.rf.number.of.gain.blocks", GAIN_BLOCKS);
    }
    Surroundings::publish(nControllers);
    try {
        start(nControllers, nObservers);
    }
    catch (...) {
        m_modules.clear();
        Surroundings::withdraw(nControllers);
        throw;
    }
}

StepRig::~StepRig()
{
    const auto nControllers = static_cast<unsigned int>(m_modules.size());
    m_modules.clear();
    Surroundings::withdraw(nControllers);
}

void StepRig::start(unsigned int nControllers, std::size_t nObservers)
{
    UnitConfiguration unit;
    unit.sPath = "benchmark";
    m_pLibrary = std::make_shared<ModuleLibrary>(
        unit, ModuleConfiguration{MODULE, OPC_LIBRARY_FOLDER "/libOutputPowerController.so", EModuleScope::Channel, 0});
    for (unsigned int nChannel = 0; nChannel < nControllers; ++nChannel) {
        m_modules.push_back(std::make_unique<LoadedModule>(m_pLibrary, nChannel));
        m_modules.back()->initialize();
        m_tables.push_back(findRecord<IOutputPowerControllerCStruct>(named("IOutputPowerController", nChannel)));
    }
    drivePhases();
    for (const IOutputPowerControllerCStruct* pTable : m_tables) {
        setUp(*pTable, nObservers);
    }
    m_pLog = findRecord<IOutputPowerControlLogCStruct>("IOutputPowerControlLog");
}

void StepRig::switchOn()
{
    request(eREQUESTED_TX_POWER_ON);
    for (int nStep = 0; nStep < STEPS_TO_ON; ++nStep) {
        regulateEach(m_tables, MEASURED_POWER);
    }
    requireState(eOPC_TX_ON);
}

void StepRig::request(ERequestedTxPowerState eState)
{
    for (const IOutputPowerControllerCStruct* pTable : m_tables) {
        pTable->staticSetRequestedTxPowerState(pTable->vpThis, eState, eTX_POWER_MODE_STEP_LIMITED);
    }
}

void StepRig::requireState(EOPCState eState) const
{
    for (const IOutputPowerControllerCStruct* pTable : m_tables) {
        EOPCState eActual = eOPC_UNDEFINED;
        pTable->staticGetOPCState(pTable->vpThis, &eActual);
        if (eActual != eState) {
            throw std::runtime_error("a controller is in state " + std::to_string(eActual) + " instead of " +
                                     std::to_string(eState));
        }
    }
}

void StepRig::startLogs(const StepShape& shape)
{
    if (shape.bTransientLog) {
        enableTransientLog();
    }
    if (shape.bOpcLog) {
        startOpcLog();
    }
}

SteppingRig::SteppingRig(ETables eTables, const StepShape& shape)
    : m_shape(shape), m_rig(eTables, 1, shape.nObservers),
      m_floor({&Surroundings::handler(), Surroundings::tables(), Surroundings::observers().pctrl.data(),
               Surroundings::observers().ptarget.data(), Surroundings::observers().predictedPctrl.data()},
              shape, false),
      m_storingFloor({&Surroundings::handler(), Surroundings::tables(), Surroundings::observers().pctrl.data(),
                      Surroundings::observers().ptarget.data(), Surroundings::observers().predictedPctrl.data()},
                     shape, true)
{
    m_rig.switchOn();
    m_rig.startLogs(shape);
    // Lets the transient log's storage grow, and the linker look every function up.
    run(m_rig.table(), STEPS_PER_LOG);
    run(m_floor.table(), 2);
    run(m_storingFloor.table(), 2);
    requireSameCalls();
    restartLogs();
}

void SteppingRig::run(const IOutputPowerControllerCStruct& table, int nSteps) const
{
    if (!m_shape.bSettled) {
        regulate(table, nSteps);
        return;
    }
    for (int nStep = 0; nStep < nSteps; ++nStep) {
        table.staticRegulate(table.vpThis, MEASURED_POWER);
    }
}

std::vector<std::string> SteppingRig::callsOf(const IOutputPowerControllerCStruct& table) const
{
    constexpr int STEPS = 4;
    Surroundings::setRecording(true);
    run(table, STEPS);
    Surroundings::setRecording(false);
    return Surroundings::takeCalls();
}

void SteppingRig::requireSameCalls()
{
    const std::vector<std::string> calls = callsOf(m_rig.table());
    for (const StepFloor* pFloor : {&m_floor, &m_storingFloor}) {
        const std::vector<std::string> floorCalls = callsOf(pFloor->table());
        const auto [it, itFloor] = std::mismatch(calls.begin(), calls.end(), floorCalls.begin(), floorCalls.end());
        if (it != calls.end() || itFloor != floorCalls.end()) {
            const std::string sCall = it != calls.end() ? *it : "nothing";
            const std::string sFloorCall = itFloor != floorCalls.end() ? *itFloor : "nothing";
            std::string sText = "call " + std::to_string(it - calls.begin() + 1);
            sText.append(" of the controller is ").append(sCall).append(", of its floor ").append(sFloorCall);
            throw std::runtime_error(sText + "; the floor must make the controller's calls");
        }
    }
}
