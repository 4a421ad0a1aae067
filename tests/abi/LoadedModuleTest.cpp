// The module loaded into a process that holds the recording platform.
#include "Control/OutputPowerController/IOutputPowerControlLog.h"
#include "tests/abi/ModuleProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <vector>

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{
class LoadedModule : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        m_platform.publish("ITemperatureHandler", &m_temperature);
        m_platform.script().variables["channel.0.tx.rf.number.of.gain.blocks"].nValue = 2;
        m_platform.script().variables["channel.3.tx.rf.number.of.gain.blocks"].nValue = 4;
        m_platform.script().variables["ChannelSpacing"].nValue = 28;
    }

    void TearDown() override
    {
        EXPECT_TRUE(m_platform.areTracesWellFormed());
        m_platform.reset();
        EXPECT_FALSE(LoadedLibrary::isLoaded());
    }

    /** Takes every module known to the manager through the start phases. */
    void start()
    {
        for (ModuleInterface* pModule : m_platform.script().modules) {
            EXPECT_EQ(pModule->onModuleInit(), EAF_OK);
            EXPECT_EQ(pModule->onPhaseModuleStorageObjectsRetreived(), EAF_OK);
            EXPECT_EQ(pModule->onPhasePostFrameformatLoad(), EAF_OK);
        }
    }

    /** Switches a channel on through its C table. */
    static void switchOn(const ModuleChannel& channel)
    {
        const IOutputPowerControllerCStruct& table = channel.table();
        EXPECT_EQ(table.staticSetTxPminPmax(table.vpThis, -2000, 2000), EAF_OK);
        EXPECT_EQ(table.staticRegulate(table.vpThis, 300), EAF_OK);
        EXPECT_EQ(
            table.staticSetRequestedTxPowerState(table.vpThis, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED),
            EAF_OK);
        EOPCState eState = eOPC_TX_OFF;
        for (int i = 0; i < 30 && eState != eOPC_TX_ON; ++i) {
            EXPECT_EQ(table.staticRegulate(table.vpThis, 300), EAF_OK);
            EXPECT_EQ(table.staticGetOPCState(table.vpThis, &eState), EAF_OK);
        }
        EXPECT_EQ(eState, eOPC_TX_ON);
    }

    static int fault(XMLRPC_VALUE xValue)
    {
        return XMLRPC_ValueIsFault(xValue) != 0 ? XMLRPC_GetValueFaultCode(xValue) : 0;
    }

    /** @return the text of "StandardResponse"; releases the value */
    static std::string standardResponse(XMLRPC_VALUE xValue)
    {
        const char* const pText = XMLRPC_VectorGetStringWithID(xValue, "StandardResponse");
        std::string sText = pText != nullptr ? pText : "none";
        XMLRPC_CleanupValue(xValue);
        return sText;
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
    FakeTemperatureHandler m_temperature;
};

TEST_F(LoadedModule, BringsItsTraceObjectsAndTakesThemAlong)
{
    for (int nRound = 0; nRound < 3; ++nRound) {
        {
            const LoadedLibrary library;
            EXPECT_THAT(m_platform.traceObjects(), Contains("RQX.OPC, 3").Times(1));
            EXPECT_THAT(m_platform.traceObjects(), Contains("RQX.OPCL, 3").Times(1));
        }
        EXPECT_THAT(m_platform.traceObjects(), IsEmpty());
        EXPECT_FALSE(LoadedLibrary::isLoaded());
    }
}

TEST_F(LoadedModule, IsFoundAndCastAcrossTheLibrarysBorder)
{
    LoadedLibrary library;
    const ModuleChannel channel0(library, 0);
    const ModuleChannel channel3(library, 3);
    ASSERT_NE(channel0.controller(), nullptr);
    ASSERT_NE(channel3.controller(), nullptr);
    EXPECT_NE(channel0.controller(), channel3.controller());
    std::map<std::string, IInterface*>& interfaces = m_platform.script().interfaces;
    EXPECT_NE(dynamic_cast<IOutputPowerControlLog*>(interfaces["IOutputPowerControlLog"]), nullptr);
    EXPECT_NE(dynamic_cast<IOutputPowerControlLog*>(interfaces["IOutputPowerControlLog_3"]), nullptr);
    EXPECT_NE(dynamic_cast<IInterface_c*>(interfaces["IOutputPowerController_3"]), nullptr);
    EXPECT_EQ(dynamic_cast<IOutputPowerController*>(interfaces["IOutputPowerControlLog"]), nullptr);
    // The controller hears the frequency by itself: what the manager and the broker hold is one object.
    ASSERT_EQ(m_platform.script().modules.size(), 2U);
    EXPECT_EQ(dynamic_cast<IOutputPowerController*>(m_platform.script().modules[1]), channel3.controller());
    EXPECT_EQ(m_platform.script().modules[1]->getModuleChannel(), 3U);
}

/** @return one of the table's members as a C caller that counts finds it */
template <class TFunction> TFunction memberAt(const void* pTable, std::size_t nIndex)
{
    TFunction function = nullptr;
    std::memcpy(&function, static_cast<const char*>(pTable) + nIndex * sizeof(void*), sizeof function);
    return function;
}

TEST_F(LoadedModule, CTableServesByIndex)
{
    LoadedLibrary library;
    const ModuleChannel channel(library, 3);
    start();
    const void* const pTable = channel.controller()->getCStruct();
    void* const pThis = memberAt<void*>(pTable, 0);
    EXPECT_EQ(pThis, channel.controller());

    EXPECT_EQ(memberAt<long (*)(void*, long, long)>(pTable, 1)(pThis, -1500, 0), EAF_OK);
    EXPECT_EQ(memberAt<long (*)(void*, int, int)>(pTable, 2)(pThis, 7, 1), EAF_NULL_POINTER);
    EXPECT_EQ(memberAt<long (*)(void*, unsigned int, int)>(pTable, 3)(pThis, 0, 2), EAF_OK);
    EXPECT_EQ(memberAt<long (*)(void*, long)>(pTable, 4)(pThis, 5), EAF_OK);
    int nState = -1;
    EXPECT_EQ(memberAt<long (*)(void*, int*)>(pTable, 5)(pThis, &nState), EAF_OK);
    EXPECT_EQ(nState, 2);
    EXPECT_EQ(memberAt<long (*)(void*, int*)>(pTable, 6)(pThis, &nState), EAF_OK);
    EXPECT_EQ(nState, 0);
    long nValue = 0;
    EXPECT_EQ(memberAt<long (*)(void*, long*)>(pTable, 7)(pThis, &nValue), EAF_OK);
    EXPECT_EQ(nValue, OPC_POWER_OFF);
    EXPECT_EQ(memberAt<long (*)(void*, long)>(pTable, 12)(pThis, 300), EAF_OK);
    std::array<long, 6> anValue{};
    int nDetectorState = -1;
    using GetLogData = long (*)(void*, long*, long*, long*, long*, long*, long*, int*, int*);
    EXPECT_EQ(memberAt<GetLogData>(pTable, 13)(pThis, &anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4],
                                               &anValue[5], &nState, &nDetectorState),
              EAF_OK);
    EXPECT_EQ(anValue[0], 300);
    EXPECT_EQ(anValue[4], -1500);
    EXPECT_EQ(nState, 2);
    EXPECT_EQ(memberAt<long (*)(void*, long*)>(pTable, 14)(pThis, &nValue), EAF_OK);
    EXPECT_EQ(memberAt<long (*)(void*, int, int, long)>(pTable, 15)(pThis, 1, 8, 77), EAF_OK);
    EXPECT_EQ(memberAt<long (*)(void*, int, int, long*)>(pTable, 16)(pThis, 1, 8, &nValue), EAF_OK);
    EXPECT_EQ(nValue, 77);
}

TEST_F(LoadedModule, ObserversRegisterByIndex)
{
    LoadedLibrary library;
    const ModuleChannel channel(library, 0);
    start();
    const void* const pTable = channel.controller()->getCStruct();
    struct Record
    {
        void* vpThis;
        void (*pfnNotify)(void*, unsigned int, int);
    };
    std::array<int, 4> anNotified{};
    const auto count = [](void* vpThis, unsigned int, int) { ++*static_cast<int*>(vpThis); };
    std::array<Record, 4> observers = {
        Record{&anNotified[0], count}, {&anNotified[1], count}, {&anNotified[2], count}, {&anNotified[3], count}};
    for (std::size_t i = 0; i < observers.size(); ++i) {
        EXPECT_EQ(memberAt<long (*)(void*, Record*)>(pTable, 8 + i)(channel.controller(), &observers[i]), EAF_OK);
    }
    switchOn(channel);
    EXPECT_THAT(anNotified, Each(testing::Gt(0)));
    EXPECT_EQ(anNotified[3], 1); // the request's mode
}

TEST_F(LoadedModule, RegulatesAndLogsOnEveryLoad)
{
    for (int nRound = 0; nRound < 3; ++nRound) {
        {
            LoadedLibrary library;
            ModuleChannel channel0(library, 0);
            ModuleChannel channel3(library, 3);
            start();
            EXPECT_EQ(standardResponse(channel0.manageTransientLog("Enable")), "OK");
            EXPECT_EQ(standardResponse(channel3.manageOpcLog("Start")), "OK");
            switchOn(channel0);
            switchOn(channel3);

            XMLRPC_VALUE xRead = channel0.manageTransientLog("Read");
            EXPECT_EQ(fault(xRead), 0);
            EXPECT_EQ(XMLRPC_VectorGetIntWithID(xRead, "RadioChannelID"), 0);
            EXPECT_GT(XMLRPC_VectorSize(XMLRPC_VectorGetValueWithID(xRead, "OPCLog")), 0);
            XMLRPC_CleanupValue(xRead);

            xRead = channel3.manageOpcLog("Read");
            EXPECT_EQ(fault(xRead), 0);
            EXPECT_EQ(XMLRPC_VectorSize(XMLRPC_VectorGetValueWithID(xRead, "Channel.3.TxOutputPowerControlLog")), 12);
            XMLRPC_CleanupValue(xRead);
            EXPECT_EQ(channel3.m_handler.callCount(EHandlerCall::GetReducedGainFromAmplifier) % 4, 0U);

            xRead = channel3.manageTransientLog("Read");
            EXPECT_EQ(fault(xRead), 4); // never enabled on this channel
            XMLRPC_CleanupValue(xRead);
            for (ModuleInterface* pModule : m_platform.script().modules) {
                EXPECT_EQ(pModule->onPhaseStop(), EAF_OK);
            }
        }
        EXPECT_FALSE(LoadedLibrary::isLoaded());
        EXPECT_THAT(m_platform.script().modules, IsEmpty());
        EXPECT_THAT(m_platform.script().records, IsEmpty());
        for (const auto& [sName, pInterface] : m_platform.script().interfaces) {
            EXPECT_THAT(sName, Not(HasSubstr("IOutputPowerControl")));
        }
        m_platform.script().temperatureObservers.clear();
        m_platform.clearRecords();
    }
}

TEST_F(LoadedModule, HearsFrequencyAndTemperatureAcrossTheLibrarysBorder)
{
    LoadedLibrary library;
    ModuleChannel channel0(library, 0);
    ModuleChannel channel3(library, 3);
    start();
    m_platform.clearRecords();
    channel3.m_frequency.change(7125);
    FakeTemperatureHandler::report(-40);
    EXPECT_THAT(m_platform.traceTexts(5), ElementsAre("onChange(): Tx frequency changed from 0 to 7125",
                                                      "notifyTemperature(): New temperature = -40 for channel 0",
                                                      "notifyTemperature(): New temperature = -40 for channel 3"));
    CCalibrationTable& table = m_platform.table("Channel.3.Frequency.Over.Temperature.To.OPC.Target.Offset");
    table.value = [](int nFrequency, int nTemperature) { return nFrequency + nTemperature; };
    EXPECT_EQ(m_platform.script().modules[1]->onModuleInit(), EAF_OK); // fetches the table now
    EXPECT_EQ(channel3.controller()->regulate(300), EAF_OK);
    std::array<int, 6> anValue{};
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    channel3.controller()->getLogData(&anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4], &anValue[5],
                                      &eState, &eDetectorState);
    EXPECT_EQ(anValue[0], 300 + 7125 - 40);
    EXPECT_EQ(eState, eOPC_TX_OFF);
}

TEST_F(LoadedModule, EntryPointsRefuseNull)
{
    const LoadedLibrary library;
    library.construct(nullptr, 0);
    library.destruct(nullptr);
    EXPECT_EQ(library.initialize(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(library.uninitialize(nullptr), EAF_NULL_POINTER);
    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 4U);
    for (const RecordedTrace& trace : traces) {
        EXPECT_EQ(trace.sGroup, "OPC");
        EXPECT_EQ(trace.sSourcePath, "Control/OutputPowerController/private/OutputPowerController_c");
        EXPECT_EQ(trace.sText, "Null pointer in argument      code: 0x8002\n");
    }
    EXPECT_THAT((std::array<int, 4>{traces[0].nLine, traces[1].nLine, traces[2].nLine, traces[3].nLine}),
                ElementsAre(30, 45, 59, 73));
}
} // namespace
