#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Simulation/Handlers/ISimulatedFrequency.h"
#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "Simulation/Handlers/ISimulatedTransmitter.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{
struct CloseLibrary
{
    void operator()(void* pLibrary) const { dlclose(pLibrary); }
};

/** A built handler module, loaded as a unit loads it. */
class LoadedModule
{
public:
    explicit LoadedModule(const std::string& sName)
        : m_pLibrary(dlopen((std::string(HANDLER_MODULE_FOLDER "/lib") + sName + ".so").c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (m_pLibrary == nullptr) {
            ADD_FAILURE() << dlerror();
            return;
        }
        load(sName + "_Construct", m_pConstruct);
        load(sName + "_Destruct", m_pDestruct);
        load(sName + "_Initialize", m_pInitialize);
        load(sName + "_Uninitialize", m_pUninitialize);
    }

    bool isComplete() const { return m_pConstruct && m_pDestruct && m_pInitialize && m_pUninitialize; }

    void (*m_pConstruct)(void** ppModule, unsigned int channel) = nullptr;
    void (*m_pDestruct)(void* pModule) = nullptr;
    long (*m_pInitialize)(void* pModule) = nullptr;
    long (*m_pUninitialize)(void* pModule) = nullptr;

private:
    template <class TFunction> void load(const std::string& sSymbol, TFunction& pFunction)
    {
        pFunction = reinterpret_cast<TFunction>(dlsym(m_pLibrary.get(), sSymbol.c_str()));
        EXPECT_NE(pFunction, nullptr) << sSymbol;
    }

    std::unique_ptr<void, CloseLibrary> m_pLibrary;
};

struct ModuleCase
{
    const char* pModule;
    unsigned int nChannel;
    const char* pPublished;
};

const ModuleCase MODULE_CASES[] = {
    {"OutputPowerHandler", 0, "IOutputPowerHandler.0"},  {"OutputPowerHandler", 7, "IOutputPowerHandler.7"},
    {"OutputPowerHandler", 35, "IOutputPowerHandler.3"}, {"FrequencyHandler", 0, "IFrequencyHandler_Tx"},
    {"FrequencyHandler", 7, "IFrequencyHandler_Tx_7"},   {"TemperatureHandler", 0, "ITemperatureHandler"},
    {"TemperatureHandler", 7, "ITemperatureHandler"},
};

class HandlerModules : public testing::TestWithParam<ModuleCase>
{
};

TEST_P(HandlerModules, PublishTheirInterfaceFromInitializeToUninitialize)
{
    const ModuleCase& c = GetParam();
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    const LoadedModule module(c.pModule);
    ASSERT_TRUE(module.isComplete());
    for (int i = 0; i < 2; ++i) {
        void* pModule = nullptr;
        module.m_pConstruct(&pModule, c.nChannel);
        ASSERT_NE(pModule, nullptr);
        EXPECT_EQ(broker.getInterface(c.pPublished), nullptr);
        EXPECT_EQ(module.m_pInitialize(pModule), EAF_OK);
        EXPECT_NE(broker.getInterface(c.pPublished), nullptr);
        EXPECT_EQ(module.m_pUninitialize(pModule), EAF_OK);
        EXPECT_EQ(broker.getInterface(c.pPublished), nullptr);
        module.m_pDestruct(pModule);
    }
}

TEST_P(HandlerModules, WithdrawThemselvesWhenDestroyedEarly)
{
    const ModuleCase& c = GetParam();
    const LoadedModule module(c.pModule);
    ASSERT_TRUE(module.isComplete());
    void* pModule = nullptr;
    module.m_pConstruct(&pModule, c.nChannel);
    EXPECT_EQ(module.m_pInitialize(pModule), EAF_OK);
    module.m_pDestruct(pModule);
    EXPECT_EQ(InterfaceBroker::getInstance().getInterface(c.pPublished), nullptr);
}

TEST_P(HandlerModules, TakeNullHandles)
{
    const LoadedModule module(GetParam().pModule);
    ASSERT_TRUE(module.isComplete());
    module.m_pConstruct(nullptr, 0);
    module.m_pDestruct(nullptr);
    EXPECT_EQ(module.m_pInitialize(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(module.m_pUninitialize(nullptr), EAF_NULL_POINTER);
}

INSTANTIATE_TEST_SUITE_P(All, HandlerModules, testing::ValuesIn(MODULE_CASES), [](const auto& paramInfo) {
    return std::string(paramInfo.param.pModule) + std::to_string(paramInfo.param.nChannel);
});

/** A module's object, published. */
class RunningModule
{
public:
    RunningModule(const std::string& sName, const std::string& sPublished) : m_module(sName), m_sPublished(sPublished)
    {
        if (m_module.isComplete()) {
            m_module.m_pConstruct(&m_pModule, 0);
            EXPECT_EQ(m_module.m_pInitialize(m_pModule), EAF_OK);
        }
    }
    ~RunningModule()
    {
        if (m_pModule != nullptr) {
            EXPECT_EQ(m_module.m_pUninitialize(m_pModule), EAF_OK);
            m_module.m_pDestruct(m_pModule);
        }
    }
    RunningModule(const RunningModule&) = delete;
    RunningModule& operator=(const RunningModule&) = delete;

    template <class TInterface> TInterface* as() const
    {
        return dynamic_cast<TInterface*>(InterfaceBroker::getInstance().getInterface(m_sPublished));
    }

private:
    LoadedModule m_module;
    std::string m_sPublished;
    void* m_pModule = nullptr;
};

TEST(OutputPowerHandlerModule, IsReachedByItsTableAndItsKnobs)
{
    const RunningModule module("OutputPowerHandler", "IOutputPowerHandler.0");
    auto* const pHandler = module.as<IOutputPowerHandler>();
    auto* const pKnobs = module.as<ISimulatedTransmitter>();
    ASSERT_NE(pHandler, nullptr);
    ASSERT_NE(pKnobs, nullptr);
    const auto& table = *static_cast<IOutputPowerHandlerCStruct*>(pHandler->getCStruct());
    EXPECT_EQ(table.setTxState(table.vpThis, 2), EAF_OK);
    EXPECT_EQ(table.setOutputPower(table.vpThis, 1500, 1500), EAF_OK);
    EXPECT_EQ(table.setTxState(table.vpThis, 3), EAF_OK);
    EXPECT_NEAR(pKnobs->outputPowerDbm(), 15.0, 0.01);
    std::int32_t nPmeasured = 0;
    EXPECT_EQ(table.getPmeasured(table.vpThis, &nPmeasured), EAF_OK);
    EXPECT_NEAR(nPmeasured, 1501, 15); // floor, noise and steps
    HandlerFault fault;
    fault.eKind = EHandlerFault::Fail;
    pKnobs->setFault(EHandlerOperation::GetPmeasured, fault);
    EXPECT_EQ(table.getPmeasured(table.vpThis, &nPmeasured), EAF_FAILED);
}

TEST(FrequencyHandlerModule, TellsAnObserverOfTheProcess)
{
    class Recorder final : public Observer<IFrequencyHandler>
    {
    public:
        void onChange(IFrequencyHandler* pSubject) override { m_nFrequency = pSubject->getTxFrequency(); }
        int m_nFrequency = 0;
    };
    const RunningModule module("FrequencyHandler", "IFrequencyHandler_Tx");
    auto* const pHandler = module.as<IFrequencyHandler>();
    auto* const pKnob = module.as<ISimulatedFrequency>();
    ASSERT_NE(pHandler, nullptr);
    ASSERT_NE(pKnob, nullptr);
    Recorder recorder;
    EXPECT_EQ(pHandler->registerObserver(&recorder), EAF_OK);
    pKnob->setTxFrequency(5600);
    EXPECT_EQ(recorder.m_nFrequency, 5600);
}

TEST(TemperatureHandlerModule, TellsAnObserverOfTheProcess)
{
    const RunningModule module("TemperatureHandler", "ITemperatureHandler");
    auto* const pKnob = module.as<ISimulatedTemperature>();
    ASSERT_NE(module.as<ITemperatureHandler>(), nullptr);
    ASSERT_NE(pKnob, nullptr);
    int nTold = 0;
    ITemperatureObserver observer{&nTold,
                                  [](void* vpThis, int nTemperature) { *static_cast<int*>(vpThis) = nTemperature; }};
    ASSERT_EQ(ITemperatureHandler::registerObserver(&observer), EAF_OK);
    pKnob->setTemperature(61);
    EXPECT_EQ(nTold, 61);
}
} // namespace
