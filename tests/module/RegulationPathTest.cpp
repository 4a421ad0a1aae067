// A regulator step of the built module, loaded as the unit loads it: no allocation, lock or exception.
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/TestInterface/TestInterface.h"
#include "tests/module/ProcessCounters.h"
#include "tests/support/FakeHandlers.h"
#include "tests/support/RecordingObservers.h"
#include "tests/support/RecordingOutputPowerHandler.h"
#include "tests/support/RecordingPlatform.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

namespace
{
constexpr int STEPS = 10000;

struct ValueCleaner
{
    void operator()(XMLRPC_VALUE value) const { XMLRPC_CleanupValue(value); }
};
using Value = std::unique_ptr<std::remove_pointer_t<XMLRPC_VALUE>, ValueCleaner>;

template <class TRecord> TRecord& findRecord(const char* pName)
{
    void* pBroker = nullptr;
    void* pRecord = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_GetInterface(pBroker, pName, &pRecord);
    CInterfaceBroker_DestroyInstance(pBroker);
    if (pRecord == nullptr) {
        throw std::runtime_error(std::string("nothing is published as ") + pName);
    }
    return *static_cast<TRecord*>(pRecord);
}

/** Loads the module, drives it through its start and switches the transmitter on; undoes it all. */
class RegulationPathTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        m_platform.publish("IOutputPowerHandler.0", &m_handler);
        m_platform.publish("IFrequencyHandler_Tx", &m_frequency);
        m_platform.publish("ITemperatureHandler", &m_temperature);
        m_platform.script().variables["channel.0.tx.rf.number.of.gain.blocks"] = {EAF_OK, 6};
        m_platform.script().variables["ChannelSpacing"] = {EAF_OK, 28};
        m_platform.table("Channel.0.P.Level.Over.Bandwidth.To.OPC.Target.Offset").value = [](int, int) { return 5; };
        m_platform.table("Channel.0.Frequency.Over.Temperature.To.OPC.Target.Offset").value = [](int nX, int) {
            return nX;
        };
        // A transmitter whose output follows the control power at once, a little below it.
        m_handler.m_measure = [this] { return m_handler.m_nPctrlSent - 37; };

        m_pLibrary = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(m_pLibrary, nullptr) << dlerror();
        entry<void (*)(void**, unsigned int)>("OutputPowerController_Construct")(&m_pModule, 0);
        ASSERT_NE(m_pModule, nullptr);
        ASSERT_EQ(entry<long (*)(void*)>("OutputPowerController_Initialize")(m_pModule), EAF_OK);
        ModuleInterface* pModule = m_platform.script().modules.at(0);
        ASSERT_EQ(pModule->onModuleInit(), EAF_OK);
        ASSERT_EQ(pModule->onPhaseModuleStorageObjectsRetreived(), EAF_OK);
        ASSERT_EQ(pModule->onPhasePostFrameformatLoad(), EAF_OK);
        auto* pInterface = dynamic_cast<IInterface_c*>(m_platform.script().interfaces.at("IOutputPowerController"));
        ASSERT_NE(pInterface, nullptr);
        m_pTable = static_cast<IOutputPowerControllerCStruct*>(pInterface->getCStruct());
        switchOn();
    }

    void TearDown() override
    {
        m_platform.setQuiet(false);
        if (m_pModule != nullptr) {
            EXPECT_EQ(entry<long (*)(void*)>("OutputPowerController_Uninitialize")(m_pModule), EAF_OK);
            entry<void (*)(void*)>("OutputPowerController_Destruct")(m_pModule);
        }
        if (m_pLibrary != nullptr) {
            EXPECT_EQ(dlclose(m_pLibrary), 0);
        }
        m_platform.reset();
    }

    template <class TFunction> TFunction entry(const char* pName)
    {
        return reinterpret_cast<TFunction>(dlsym(m_pLibrary, pName));
    }

    void switchOn()
    {
        m_pTable->staticRegisterPctrlObserver(m_pTable->vpThis, &m_observers.m_pctrl);
        m_pTable->staticRegisterPtargetObserver(m_pTable->vpThis, &m_observers.m_ptarget);
        m_pTable->staticRegisterPredictedPctrlObserver(m_pTable->vpThis, &m_observers.m_predictedPctrl);
        m_pTable->staticSetTxPminPmax(m_pTable->vpThis, -500, 2000);
        ASSERT_EQ(m_pTable->staticSetRequestedTxPowerState(m_pTable->vpThis, eREQUESTED_TX_POWER_ON,
                                                           eTX_POWER_MODE_STEP_LIMITED),
                  EAF_OK);
        EOPCState eState = eOPC_UNDEFINED;
        for (int i = 0; i < 30 && eState != eOPC_TX_ON; ++i) {
            ASSERT_EQ(m_pTable->staticRegulate(m_pTable->vpThis, 300), EAF_OK);
            m_pTable->staticGetOPCState(m_pTable->vpThis, &eState);
        }
        ASSERT_EQ(eState, eOPC_TX_ON);
    }

    /** Starts both logs by their commands. */
    static void startLogs()
    {
        const ManageLogsCStruct& opcLog = findRecord<ManageLogsCStruct>("Channel.0.TxOutputPowerControlLog");
        std::string sStart = "Start";
        const Value opcAnswer(opcLog.manageLogs(opcLog.vpThis, sStart.data()));
        ASSERT_EQ(XMLRPC_ValueIsFault(opcAnswer.get()), 0);
        const Value transientAnswer(requestTransientLog("Enable"));
        ASSERT_EQ(XMLRPC_ValueIsFault(transientAnswer.get()), 0);
    }

    static Value requestTransientLog(const char* pOption)
    {
        const TIMethodCStruct& method = findRecord<TIMethodCStruct>("TIManageOPCTransientLogCh0");
        XMLRPC_REQUEST request = XMLRPC_RequestNew();
        XMLRPC_VALUE parameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
        XMLRPC_VALUE options = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_AddValueToVector(options, XMLRPC_CreateValueString("RequestOption", pOption, 0));
        XMLRPC_AddValueToVector(parameters, options);
        XMLRPC_RequestSetData(request, parameters);
        Value answer(method.handle(method.vpThis, nullptr, request, nullptr));
        XMLRPC_RequestFree(request, 1);
        return answer;
    }

    /** Takes closed-loop steps whose target moves, so that observers and limits take part. */
    int regulate(int nSteps)
    {
        int nFailures = 0;
        for (int i = 0; i < nSteps; ++i) {
            const long nPtarget = 300 + (i / 50 % 2) * 200;
            nFailures += m_pTable->staticRegulate(m_pTable->vpThis, nPtarget) == EAF_OK ? 0 : 1;
        }
        return nFailures;
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
    RecordingOutputPowerHandler m_handler;
    FakeFrequencyHandler m_frequency;
    FakeTemperatureHandler m_temperature;
    RecordingObservers m_observers;
    void* m_pLibrary = nullptr;
    void* m_pModule = nullptr;
    IOutputPowerControllerCStruct* m_pTable = nullptr;
};
} // namespace

TEST(ProcessCounters, CountEachKindOnce)
{
    std::mutex mutex;
    ProcessCounters::start();
    int* volatile pInteger = new int(1); // volatile, so that the optimiser keeps the allocation
    ProcessCounts counts = ProcessCounters::stop();
    delete pInteger;
    EXPECT_EQ(counts.nNew, 1U);
    EXPECT_EQ(counts.nMalloc, ProcessCounters::isMallocCounted() ? 1U : 0U);

    ProcessCounters::start();
    mutex.lock();
    counts = ProcessCounters::stop();
    mutex.unlock();
    EXPECT_EQ(counts.nLock, 1U);
    EXPECT_EQ(counts.nNew, 0U);

    ProcessCounters::start();
    try {
        throw 1;
    }
    catch (int) {
        counts = ProcessCounters::stop();
    }
    EXPECT_EQ(counts.nThrow, 1U);
}

TEST(ProcessCounters, CountTheCAllocator)
{
    if (!ProcessCounters::isMallocCounted()) {
        GTEST_SKIP() << "the sanitizer needs the allocator for itself";
    }
    ProcessCounters::start();
    void* volatile pFirst = std::malloc(8);
    void* volatile pSecond = std::calloc(2, 8);
    void* volatile pThird = std::realloc(pFirst, 4096);
    const ProcessCounts counts = ProcessCounters::stop();
    std::free(pSecond);
    std::free(pThird);
    EXPECT_EQ(counts.nMalloc, 3U);
    EXPECT_EQ(counts.nNew, 0U);
}

TEST_F(RegulationPathTest, TheCountersSeeTheModulesOwnAllocationsAndLocks)
{
    // The transient log grows at its first sample, and while not quiet the platform allocates and locks.
    startLogs();
    ProcessCounters::start();
    EXPECT_EQ(regulate(1), 0);
    ProcessCounts counts = ProcessCounters::stop();
    EXPECT_GE(counts.nNew, 1U);
    EXPECT_GE(counts.nLock, 1U);

    m_platform.setQuiet(true);
    (void)requestTransientLog("Disable");
    (void)requestTransientLog("Enable");
    ProcessCounters::start();
    EXPECT_EQ(regulate(20), 0);
    counts = ProcessCounters::stop();
    EXPECT_GE(counts.nNew, 1U) << "the module's own vector grows by the counted operator";
    EXPECT_EQ(counts.nLock, 0U);
}

TEST_F(RegulationPathTest, AllocatesLocksAndThrowsNothingInTenThousandStepsWithBothLogs)
{
    startLogs();
    m_platform.setQuiet(true);
    ASSERT_EQ(regulate(200), 0); // grows the transient log to its end
    (void)requestTransientLog("Disable");
    (void)requestTransientLog("Enable");

    const std::size_t nReadingsBefore = m_handler.callCount(EHandlerCall::GetTxPowerReadings);
    const std::size_t nGainsBefore = m_handler.callCount(EHandlerCall::GetReducedGainFromAmplifier);
    ProcessCounters::start();
    const int nFailures = regulate(STEPS);
    const ProcessCounts counts = ProcessCounters::stop();

    EXPECT_EQ(nFailures, 0);
    EXPECT_EQ(counts.nNew, 0U);
    EXPECT_EQ(counts.nMalloc, 0U);
    EXPECT_EQ(counts.nLock, 0U);
    EXPECT_EQ(counts.nThrow, 0U);
    EXPECT_EQ(m_handler.callCount(EHandlerCall::GetTxPowerReadings) - nReadingsBefore, std::size_t{STEPS});
    EXPECT_EQ(m_handler.callCount(EHandlerCall::GetReducedGainFromAmplifier) - nGainsBefore, 6 * std::size_t{STEPS});
}

TEST_F(RegulationPathTest, AllocatesLocksAndThrowsNothingWithoutLogs)
{
    m_platform.setQuiet(true);
    ProcessCounters::start();
    const int nFailures = regulate(STEPS);
    const ProcessCounts counts = ProcessCounters::stop();
    EXPECT_EQ(nFailures, 0);
    EXPECT_EQ(counts.nNew + counts.nMalloc + counts.nLock + counts.nThrow, 0U);
}
