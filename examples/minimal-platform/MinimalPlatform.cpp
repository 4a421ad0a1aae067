/** @file
 * A whole platform in one file: everything that a module imports, the three handlers that the controller looks for
 * around a toy transmitter, and a main() that loads modules, regulates and takes them down again.
 *
 * Its parts stand in the order of docs/porting.md. One thread does everything, so nothing here locks; a platform with
 * more threads guards the trace and the brokers. Powers are in hundredths of a dBm or dB.
 */
#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/KmtTrace.h"

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

// ---- 1. Trace: lines on standard error ----

GT_TraceObject OPC_trace = {4, "OPC"};
GT_TraceObject TI_trace = {4, "TI"};

// A module's trace objects are built while it is being loaded, before any of its entry points is called.
KmtTrace::KmtTrace(const char* pGroup, int /*nLevel*/) : m_pGroup(pGroup), m_pState(nullptr) {}
KmtTrace::~KmtTrace() = default;

std::ostream& KmtTrace::beginLogMsg(int nLevel, const char* pSourcePath, int nLine)
{
    // A stream without a buffer drops what it is given. It has to be one for each thread.
    thread_local std::ostream nowhere(nullptr);
    if (nLevel > OPC_trace.nLevel) {
        return nowhere;
    }
    return std::cerr << m_pGroup << ' ' << nLevel << ' ' << pSourcePath << ':' << nLine << ": ";
}

int CPlxTraceHandler_DmLevel2GtLevel(unsigned long nCode)
{
    return EAF_isFailure(static_cast<long>(nCode)) ? 1 : 5;
}

void GT_beginImpl(GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine)
{
    std::cerr << pObject->pName << ' ' << nLevel << ' ' << pSourcePath << ':' << nLine << ": ";
}

void GT_rawprintf(const char* pFormat, ...)
{
    va_list arguments;
    va_start(arguments, pFormat);
    (void)std::vfprintf(stderr, pFormat, arguments);
    va_end(arguments);
}

void GT_endImpl(void) {}

// ---- 2. Storage: named 32-bit integers, there before phase 11 ----

static std::map<std::string, std::int32_t> g_storage = {{"channel.0.tx.rf.number.of.gain.blocks", 4},
                                                        {"ChannelSpacing", 28}}; // MHz

EAFResult CStorageManager_GetVariableContentAddressByName(const char* pName, void** ppContent, int /*nReserved*/)
{
    const auto variable = g_storage.find(pName);
    if (variable == g_storage.end()) {
        return EAF_FAILED;
    }
    *ppContent = &variable->second;
    return EAF_OK;
}

// ---- 3. Calibration: one table of four corners; the controller counts a table that is missing as 0 ----

struct CCalibrationTable
{
    double x[2];        /**< ends of the first axis */
    double y[2];        /**< ends of the second axis */
    double value[2][2]; /**< by end of the second axis, then of the first */
};

/** Offset to the target: across the frequency in MHz, down the temperature in degrees Celsius. */
static CCalibrationTable g_table = {{4400, 5300}, {-40, 60}, {{-20, -10}, {10, 40}}};

EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable)
{
    if (std::string(pName) != "Channel.0.Frequency.Over.Temperature.To.OPC.Target.Offset") {
        return EAF_FAILED;
    }
    *ppTable = &g_table;
    return EAF_OK;
}

EAFResult CCalibrationTable_IsValid(CCalibrationTable* /*pTable*/, int* pValid)
{
    *pValid = 1;
    return EAF_OK;
}

EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    const CCalibrationTable& table = *pTable;
    const double x = (std::clamp<double>(nX, table.x[0], table.x[1]) - table.x[0]) / (table.x[1] - table.x[0]);
    const double y = (std::clamp<double>(nY, table.y[0], table.y[1]) - table.y[0]) / (table.y[1] - table.y[0]);
    const double low = std::lerp(table.value[0][0], table.value[0][1], x);
    const double high = std::lerp(table.value[1][0], table.value[1][1], x);
    *pValue = static_cast<int>(std::lround(std::lerp(low, high, y)));
    return EAF_OK;
}

// ---- 4. The brokers: names of C++ interfaces, names of C records ----

static std::map<std::string, IInterface*> g_interfaces;
static std::map<std::string, void*> g_records;

InterfaceBroker& InterfaceBroker::getInstance()
{
    static InterfaceBroker broker;
    return broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& sName, IInterface* pInterface)
{
    return g_interfaces.emplace(sName, pInterface).second ? EAF_OK : EAF_FAILED;
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& sName, IInterface* /*pInterface*/)
{
    return g_interfaces.erase(sName) != 0 ? EAF_OK : EAF_FAILED;
}

IInterface* InterfaceBroker::getInterface(const std::string& sName)
{
    const auto entry = g_interfaces.find(sName);
    return entry != g_interfaces.end() ? entry->second : nullptr;
}

EAFResult CInterfaceBroker_GetInstance(void** ppBroker)
{
    *ppBroker = &g_records;
    return EAF_OK;
}

EAFResult CInterfaceBroker_RegisterInterface(void* /*pBroker*/, const char* pName, void* pInterface)
{
    return g_records.emplace(pName, pInterface).second ? EAF_OK : EAF_FAILED;
}

EAFResult CInterfaceBroker_UnregisterInterface(void* /*pBroker*/, const char* pName, void* /*pInterface*/)
{
    return g_records.erase(pName) != 0 ? EAF_OK : EAF_FAILED;
}

EAFResult CInterfaceBroker_GetInterface(void* /*pBroker*/, const char* pName, void** ppInterface)
{
    const auto record = g_records.find(pName);
    auto* pInterface = dynamic_cast<IInterface_c*>(InterfaceBroker::getInstance().getInterface(pName));
    void* pTable = pInterface != nullptr ? pInterface->getCStruct() : nullptr;
    *ppInterface = record != g_records.end() ? record->second : pTable;
    return *ppInterface != nullptr ? EAF_OK : EAF_FAILED;
}

EAFResult CInterfaceBroker_DestroyInstance(void* /*pBroker*/)
{
    return EAF_OK; // the handle is nothing of its own, and modules do not give back all of theirs
}

// ---- 5. The module framework: who takes part in which phase ----

ModuleInterface::ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel,
                                 unsigned int nInstance, const unsigned long* pPhaseFilter, unsigned int nPhaseCount)
    : m_nModuleNumber(nModuleNumber), m_pName(pName), m_nModuleChannel(nChannel), m_nInstance(nInstance),
      m_pPhaseFilter(pPhaseFilter), m_nPhaseCount(nPhaseCount)
{}
ModuleInterface::~ModuleInterface() = default;
// clang-format off
long ModuleInterface::onPhaseActivation(unsigned long /*nPhase*/, ECallbackPriority /*ePriority*/) { return EAF_OK; }
long ModuleInterface::onModuleInit() { return EAF_OK; }
long ModuleInterface::onPhaseModuleStorageObjectsRetreived() { return EAF_OK; }
long ModuleInterface::onPhasePostFrameformatLoad() { return EAF_OK; }
long ModuleInterface::onPhaseEndFrameformatLoad() { return EAF_OK; }
long ModuleInterface::onPhaseStart() { return EAF_OK; }
long ModuleInterface::onPhaseStop() { return EAF_OK; }
long ModuleInterface::onPhaseFrameformatLoad() { return EAF_OK; }
long ModuleInterface::onPhasePreFrameformatLoad() { return EAF_OK; }
long ModuleInterface::onPhaseSetRadioChannelNearEndFinished() { return EAF_OK; }
// clang-format on

bool ModuleInterface::isInPhaseFilter(unsigned long nPhase) const
{
    return std::count(m_pPhaseFilter, m_pPhaseFilter + m_nPhaseCount, nPhase) != 0;
}

static std::vector<ModuleInterface*> g_modules;

CModuleManager& CModuleManager::GetInstance()
{
    static CModuleManager manager;
    return manager;
}

long CModuleManager::RegisterModule(ModuleInterface* pModule)
{
    g_modules.push_back(pModule);
    return EAF_OK;
}

long CModuleManager::UnRegisterModule(ModuleInterface* pModule)
{
    return std::erase(g_modules, pModule) != 0 ? EAF_OK : EAF_FAILED;
}

/** Calls a phase's operation on every module that takes part. @return whether none of them failed */
static bool drivePhase(unsigned long nPhase, long (ModuleInterface::*pfnOperation)())
{
    bool bWell = true;
    for (ModuleInterface* pModule : g_modules) {
        if (pModule->isInPhaseFilter(nPhase) && EAF_isFailure((pModule->*pfnOperation)())) {
            std::cerr << "phase " << nPhase << ": " << pModule->getModuleName() << " failed\n";
            bWell = false;
        }
    }
    return bWell;
}

// ---- 6. The handlers: a toy transmitter, its frequency, the unit's temperature ----

/** Gives 0.8 dB more than it is set to, and 0.01 dB less with every 25th setting. Its handler is the table below. */
class ToyTransmitter : public IOutputPowerHandler
{
public:
    explicit ToyTransmitter(bool bBroken) : m_bBroken(bBroken) { m_pCStruct = &m_table; }

    int outputPower() const { return m_bOn ? m_nPctrl + 80 - m_nSettings / 25 : OPC_POWER_OFF; }

private:
    static ToyTransmitter& self(void* vpThis) { return *static_cast<ToyTransmitter*>(vpThis); }

    static EOPHResult setOutputPower(void* vpThis, std::int32_t nPctrl, std::int32_t /*nPtarget*/)
    {
        self(vpThis).m_nPctrl = nPctrl;
        ++self(vpThis).m_nSettings;
        return EAF_OK;
    }
    static EOPHResult setTxState(void* vpThis, std::int32_t nStep)
    {
        self(vpThis).m_bOn = nStep == 4; // 2 and 3 prepare, 0 and 1 switch off
        return EAF_OK;
    }
    static EOPHResult setProductionTestSettings(void* /*vpThis*/, ERfDetectorLoopMode /*eLoopMode*/) { return EAF_OK; }
    static EOPHResult getReducedGainFromAmplifier(void* /*vpThis*/, std::uint32_t /*nAmplifier*/, std::int32_t* pGain)
    {
        *pGain = 0;
        return EAF_OK;
    }
    static EOPHResult getTxPowerReadings(void* vpThis, std::int32_t* pReading, std::int32_t* pIfPower,
                                         std::int32_t* pRfGain)
    {
        *pReading = self(vpThis).outputPower();
        *pIfPower = -2000;
        *pRfGain = self(vpThis).m_nPctrl + 2000;
        return EAF_OK;
    }
    static EOPHResult calculateDetectorUsage(void* /*vpThis*/, std::int32_t /*nPctrl*/,
                                             ERfDetectorLoopMode /*eLoopMode*/, EOPHDetectorState* pDetectorState)
    {
        *pDetectorState = eOPH_DETECTOR_STATE_0; // this detector has one range
        return EAF_OK;
    }
    static EOPHResult getPmeasured(void* vpThis, std::int32_t* pPmeasured)
    {
        *pPmeasured = self(vpThis).outputPower();
        return self(vpThis).m_bBroken ? EAF_FAILED : EAF_OK;
    }
    static EOPHResult setZembraMlmTrafTx(void* /*vpThis*/, bool /*bEnable*/) { return EAF_OK; }
    static EOPHResult getPctrlLimits(void* /*vpThis*/, std::int32_t* pLower, std::int32_t* pUpper)
    {
        *pLower = -1000;
        *pUpper = 3000;
        return EAF_OK;
    }

    // The reserved entries are never called.
    IOutputPowerHandlerCStruct m_table = {this,
                                          setOutputPower,
                                          nullptr,
                                          nullptr,
                                          setTxState,
                                          setProductionTestSettings,
                                          nullptr,
                                          getReducedGainFromAmplifier,
                                          getTxPowerReadings,
                                          calculateDetectorUsage,
                                          getPmeasured,
                                          setZembraMlmTrafTx,
                                          nullptr,
                                          getPctrlLimits};
    bool m_bBroken; /**< its detector fails */
    bool m_bOn = false;
    int m_nPctrl = 0;
    int m_nSettings = 0;
};

class ToyFrequencyHandler : public IFrequencyHandler
{
public:
    EAFResult registerObserver(Observer<IFrequencyHandler>* pObserver) override
    {
        // Told at once: until then a controller reckons with a frequency of 0.
        pObserver->onChange(this);
        return EAF_OK;
    }
    int getTxFrequency() const override { return 5000; } // MHz, as on the axis of the calibration table
};

class ToyTemperatureHandler : public ITemperatureHandler
{
};

static std::vector<ITemperatureObserver*> g_temperatureObservers;

EAFResult ITemperatureHandler::registerObserver(ITemperatureObserver* pObserver)
{
    g_temperatureObservers.push_back(pObserver);
    return EAF_OK;
}

static void reportTemperature(int nDegrees)
{
    for (const ITemperatureObserver* pObserver : g_temperatureObservers) {
        pObserver->pfnNotifyTemperature(pObserver->vpThis, nDegrees);
    }
}

// ---- 7. Loading: a library and its four entry points ----

/** Ends the program when something is not as it must be. */
static void require(bool bTrue, const std::string& sWhat)
{
    if (!bTrue) {
        std::cerr << "minimal-platform: " << sWhat << '\n';
        std::exit(1);
    }
}

struct LoadedModule
{
    std::string sName;
    void* pLibrary;
    void* pModule;
    void (*pfnConstruct)(void** ppModule, unsigned int nChannel);
    void (*pfnDestruct)(void* pModule);
    long (*pfnInitialize)(void* pModule);
    long (*pfnUninitialize)(void* pModule);
};

template <class TFunction> static void findEntryPoint(void* pLibrary, TFunction& pfn, const std::string& sName)
{
    pfn = reinterpret_cast<TFunction>(dlsym(pLibrary, sName.c_str()));
    require(pfn != nullptr, "no entry point " + sName);
}

/** Loads a module for channel 0; the names of its entry points begin with what stands between "lib" and ".so". */
static LoadedModule load(const std::string& sPath)
{
    LoadedModule module{};
    module.pLibrary = dlopen(sPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    const char* pError = dlerror();
    require(module.pLibrary != nullptr, pError != nullptr ? pError : sPath);
    const std::string sFile = sPath.substr(sPath.rfind('/') + 1);
    module.sName = sFile.substr(0, sFile.find(".so")).erase(0, sFile.rfind("lib", 0) == 0 ? 3 : 0);
    findEntryPoint(module.pLibrary, module.pfnConstruct, module.sName + "_Construct");
    findEntryPoint(module.pLibrary, module.pfnDestruct, module.sName + "_Destruct");
    findEntryPoint(module.pLibrary, module.pfnInitialize, module.sName + "_Initialize");
    findEntryPoint(module.pLibrary, module.pfnUninitialize, module.sName + "_Uninitialize");
    module.pfnConstruct(&module.pModule, 0);
    require(module.pModule != nullptr, module.sName + " was not constructed");
    return module;
}

/** Takes modules down, the last one first. No library goes before every module has gone. */
static void takeDown(std::vector<LoadedModule> modules)
{
    std::reverse(modules.begin(), modules.end());
    for (const LoadedModule& module : modules) {
        module.pfnUninitialize(module.pModule);
    }
    for (const LoadedModule& module : modules) {
        module.pfnDestruct(module.pModule);
    }
    for (const LoadedModule& module : modules) {
        dlclose(module.pLibrary);
    }
}

// ---- 8. A run: phases, switch-on, regulation, switch-off ----

static constexpr long INTERVAL_MS = 6;
static constexpr int REQUESTED_POWER = 1000; // 10 dBm
static constexpr int TOLERANCE = 30;         // 0.3 dB
static constexpr int SETTLED_STEPS = 50;     // so many at the end have to be within it
static constexpr int SWITCH_OFF_STEPS = 10;

static const char* const STATE_NAMES[] = {"off begins", "off follows", "off",   "delayed on", "delay",
                                          "on begins",  "on waits",    "ramps", "on",         "none"};

struct Options
{
    bool bFast = false;
    int nSteps = 500;
    std::string sBreak;
    std::vector<std::string> modules;
};

/** Waits for the next deadline. Those that have passed are skipped: steps in a row would move the power at once. */
static void waitForDeadline(timespec& deadline)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    do {
        deadline.tv_nsec += INTERVAL_MS * 1'000'000;
        if (deadline.tv_nsec >= 1'000'000'000) {
            deadline.tv_nsec -= 1'000'000'000;
            ++deadline.tv_sec;
        }
    } while (std::tie(deadline.tv_sec, deadline.tv_nsec) < std::tie(now.tv_sec, now.tv_nsec));
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
}

/** What the controller tells of its last step. */
struct Reading
{
    EOPCState eState = eOPC_TX_OFF;
    long nTarget = 0;
    long nPctrl = 0;
    long nMeasured = 0;
};

static Reading read(const IOutputPowerControllerCStruct& opc)
{
    Reading reading;
    long nError = 0;
    long nLowerLimit = 0;
    long nUpperLimit = 0;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    opc.staticGetLogData(opc.vpThis, &reading.nTarget, &reading.nPctrl, &nError, &reading.nMeasured, &nLowerLimit,
                         &nUpperLimit, &reading.eState, &eDetectorState);
    return reading;
}

static void print(int nStep, const Reading& reading, int nOnAir)
{
    const auto dbm = [](long nCentiDbm) { return static_cast<double>(nCentiDbm) / 100.0; };
    std::printf("%8.3f  %-11s %7.2f  %7.2f  %8.2f  %10.2f\n", static_cast<double>(nStep * INTERVAL_MS) / 1000.0,
                STATE_NAMES[reading.eState], dbm(reading.nTarget), dbm(reading.nPctrl), dbm(reading.nMeasured),
                dbm(nOnAir));
}

/** Switches on, regulates and switches off. @return what went wrong; nothing when all went well */
static std::string regulate(const IOutputPowerControllerCStruct& opc, const ToyTransmitter& toy, const Options& options)
{
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    opc.staticSetRegulatorInterval(opc.vpThis, INTERVAL_MS);
    opc.staticSetTxPminPmax(opc.vpThis, -1000, 3000);
    opc.staticSetRequestedTxPowerState(opc.vpThis, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    Reading reading;
    int nFailedSteps = 0;
    int nSettledSteps = 0;
    std::puts("  time s  state        target  control  measured  on air dBm");
    for (int nStep = 0; nStep < options.nSteps + SWITCH_OFF_STEPS; ++nStep) {
        if (!options.bFast) {
            waitForDeadline(deadline);
        }
        if (nStep % 100 == 0) {
            reportTemperature(25 + nStep / 100); // the unit warms up
        }
        if (nStep == options.nSteps) {
            opc.staticSetRequestedTxPowerState(opc.vpThis, eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
        }
        nFailedSteps += EAF_isFailure(opc.staticRegulate(opc.vpThis, REQUESTED_POWER)) ? 1 : 0;
        const EOPCState eBefore = reading.eState;
        reading = read(opc);
        if (nStep < options.nSteps) {
            const bool bOn = reading.eState == eOPC_TX_ON;
            const bool bWithin = bOn && std::labs(reading.nTarget - toy.outputPower()) <= TOLERANCE;
            nSettledSteps = bWithin ? nSettledSteps + 1 : 0;
        }
        if (reading.eState != eBefore || nStep % 100 == 0) {
            print(nStep, reading, toy.outputPower());
        }
    }
    if (nFailedSteps != 0) {
        return std::to_string(nFailedSteps) + " steps failed";
    }
    if (nSettledSteps < SETTLED_STEPS) {
        return "the power did not settle within 0.3 dB of its target";
    }
    return reading.eState == eOPC_TX_OFF && toy.outputPower() == OPC_POWER_OFF ? "" : "the transmitter did not go off";
}

static void run(const Options& options)
{
    ToyTransmitter transmitter(options.sBreak == "handler");
    ToyFrequencyHandler frequency;
    ToyTemperatureHandler temperature;
    g_interfaces = {{"IOutputPowerHandler.0", &transmitter},
                    {options.sBreak == "frequency" ? "nobody looks here" : "IFrequencyHandler_Tx", &frequency},
                    {"ITemperatureHandler", &temperature}};
    if (options.sBreak == "storage") {
        g_storage.clear();
    }
    std::vector<LoadedModule> modules;
    for (const std::string& sPath : options.modules) {
        modules.push_back(load(sPath));
    }
    for (const LoadedModule& module : modules) {
        require(!EAF_isFailure(module.pfnInitialize(module.pModule)), module.sName + " failed to initialise");
    }
    require(drivePhase(5, &ModuleInterface::onModuleInit), "a module misses what it cannot do without");
    // A module that fails in one of these two goes on with its own defaults.
    drivePhase(11, &ModuleInterface::onPhaseModuleStorageObjectsRetreived);
    drivePhase(20, &ModuleInterface::onPhasePostFrameformatLoad);
    void* pController = nullptr;
    require(!EAF_isFailure(CInterfaceBroker_GetInterface(&g_records, "IOutputPowerController", &pController)),
            "no module has published IOutputPowerController");
    const std::string sWrong =
        regulate(*static_cast<const IOutputPowerControllerCStruct*>(pController), transmitter, options);
    drivePhase(16, &ModuleInterface::onPhaseStop);
    takeDown(modules);
    require(sWrong.empty(), sWrong);
    require(g_interfaces.size() == 3 && g_records.empty() && g_modules.empty(), "a module left something registered");
}

static const char* const USAGE =
    "usage: minimal-platform [--fast] [--steps N] [--break WHAT] MODULE...\n"
    "Loads modules (lib<Name>.so) for channel 0, regulates a toy transmitter and takes everything down again.\n"
    "  --fast        steps follow each other at once instead of every 6 ms\n"
    "  --steps N     steps until the transmitter is switched off; 500\n"
    "  --break WHAT  storage: there is none; frequency: its handler is not there; handler: its detector fails\n"
    "Exit code: 0 when the power settled within 0.3 dB and all went down, 1 when not, 2 for a wrong call.\n";

/** @return whether the arguments are understood */
static bool readOptions(int nArguments, char** ppArguments, Options& options)
{
    for (int i = 1; i < nArguments; ++i) {
        const std::string sArgument = ppArguments[i];
        const std::string sNext = i + 1 < nArguments ? ppArguments[i + 1] : "";
        if (sArgument == "--fast") {
            options.bFast = true;
        }
        else if (sArgument == "--steps" && std::strtol(sNext.c_str(), nullptr, 10) > 0) {
            options.nSteps = static_cast<int>(std::strtol(ppArguments[++i], nullptr, 10));
        }
        else if (sArgument == "--break" && (sNext == "storage" || sNext == "frequency" || sNext == "handler")) {
            options.sBreak = ppArguments[++i];
        }
        else if (sArgument.rfind('-', 0) == 0) {
            std::cerr << "minimal-platform: what is " << sArgument << ' ' << sNext << "?\n";
            return false;
        }
        else {
            options.modules.push_back(sArgument);
        }
    }
    return !options.modules.empty();
}

int main(int nArguments, char** ppArguments)
{
    if (nArguments == 2 && std::string(ppArguments[1]) == "--help") {
        std::cout << USAGE;
        return 0;
    }
    Options options;
    if (!readOptions(nArguments, ppArguments, options)) {
        std::cerr << USAGE;
        return 2;
    }
    run(options);
    std::puts("settled, switched off, taken down");
    return 0;
}
