#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/ModuleFramework/PhaseDriver.h"
#include "Platform/ModuleFramework/PhaseDriver_c.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> calls;

class TestModule : public ModuleInterface
{
public:
    TestModule(const char* pName, std::vector<unsigned long> filter, unsigned int nChannel = 0)
        : TestModule(pName, nChannel, std::make_shared<std::vector<unsigned long>>(std::move(filter)))
    {}
    ~TestModule() override { CModuleManager::GetInstance().UnRegisterModule(this); }
    TestModule(const TestModule&) = delete;
    TestModule& operator=(const TestModule&) = delete;

    long onPhaseActivation(unsigned long, ECallbackPriority) override { return called("onPhaseActivation"); }
    long onModuleInit() override { return called("onModuleInit"); }
    long onPhaseModuleStorageObjectsRetreived() override { return called("onPhaseModuleStorageObjectsRetreived"); }
    long onPhasePostFrameformatLoad() override { return called("onPhasePostFrameformatLoad"); }
    long onPhaseEndFrameformatLoad() override { return called("onPhaseEndFrameformatLoad"); }
    long onPhaseStart() override { return called("onPhaseStart"); }
    long onPhaseStop() override { return called("onPhaseStop"); }
    long onPhaseFrameformatLoad() override { return called("onPhaseFrameformatLoad"); }
    long onPhasePreFrameformatLoad() override { return called("onPhasePreFrameformatLoad"); }

    long m_nResult = EAF_OK;
    std::function<void()> m_action;

private:
    TestModule(const char* pName, unsigned int nChannel, std::shared_ptr<std::vector<unsigned long>> pFilter)
        : ModuleInterface(7, pName, nChannel, 3, pFilter->data(), static_cast<unsigned int>(pFilter->size())),
          m_pFilter(std::move(pFilter))
    {
        EXPECT_EQ(CModuleManager::GetInstance().RegisterModule(this), EAF_OK);
    }

    long called(const std::string& sOperation)
    {
        calls.push_back(std::string(getModuleName()) + "." + sOperation);
        if (m_action) {
            m_action();
        }
        return m_nResult;
    }

    std::shared_ptr<std::vector<unsigned long>> m_pFilter;
};

class PhaseTest : public testing::Test
{
protected:
    PhaseTest() { calls.clear(); }
};

TEST_F(PhaseTest, DrivesEachPhaseByItsNumber)
{
    const TestModule module("A", {5, 11, 16, 20});
    const std::vector<std::pair<unsigned long, std::string>> phases = {{5, "A.onModuleInit"},
                                                                       {11, "A.onPhaseModuleStorageObjectsRetreived"},
                                                                       {20, "A.onPhasePostFrameformatLoad"},
                                                                       {16, "A.onPhaseStop"}};
    for (const auto& phase : phases) {
        calls.clear();
        EXPECT_THAT(PhaseDriver::drive(phase.first), IsEmpty());
        EXPECT_THAT(calls, ElementsAre(phase.second));
    }
}

TEST_F(PhaseTest, DrivesOnlyModulesWithThePhaseInTheirFilter)
{
    const TestModule a("A", {5});
    const TestModule b("B", {11});
    const TestModule c("C", {});
    PhaseDriver::drive(5);
    EXPECT_THAT(calls, ElementsAre("A.onModuleInit"));
    PhaseDriver::drive(16);
    EXPECT_EQ(calls.size(), 1U);
}

TEST_F(PhaseTest, TakesAModuleWithoutAFilterForOneWithoutPhases)
{
    const ModuleInterface module(1, "A", 2, 3, nullptr, 4);
    EXPECT_FALSE(module.isInPhaseFilter(5));
}

TEST_F(PhaseTest, KeepsTheOrderOfRegistration)
{
    const TestModule b("B", {5});
    const TestModule c("C", {5});
    const TestModule a("A", {5});
    PhaseDriver::drive(5);
    EXPECT_THAT(calls, ElementsAre("B.onModuleInit", "C.onModuleInit", "A.onModuleInit"));
}

TEST_F(PhaseTest, RefusesAPhaseThatIsNotDriven)
{
    const TestModule module("A", {0, 6, 19});
    for (const unsigned long nPhase : {0UL, 6UL, 19UL, 21UL}) {
        EXPECT_THROW(PhaseDriver::drive(nPhase), std::invalid_argument);
        EXPECT_EQ(PhaseDriver_Drive(nPhase), EAF_FAILED);
    }
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(PhaseTest, GoesOnAfterAFailureAndReportsIt)
{
    TestModule a("A", {5}, 1);
    TestModule b("B", {5}, 2);
    TestModule c("C", {5}, 3);
    a.m_nResult = EAF_FAILED;
    b.m_nResult = 0x7FFF;
    c.m_nResult = EAF_NULL_POINTER;
    const std::vector<PhaseFailure> failures = PhaseDriver::drive(5);
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_EQ(failures[0].sModuleName, "A");
    EXPECT_EQ(failures[0].nChannel, 1U);
    EXPECT_EQ(failures[0].sOperation, "onModuleInit");
    EXPECT_EQ(failures[0].nResult, EAF_FAILED);
    EXPECT_EQ(failures[1].sModuleName, "C");
    EXPECT_EQ(failures[1].nChannel, 3U);
    EXPECT_EQ(failures[1].nResult, EAF_NULL_POINTER);
    EXPECT_EQ(calls.size(), 3U);
}

TEST_F(PhaseTest, ReportsTheNamesMissedInThatModulesCall)
{
    InterfaceBroker::getInstance().getInterface("MissedBefore");
    TestModule a("A", {5});
    TestModule b("B", {5});
    TestModule c("C", {5});
    for (TestModule* const pModule : {&a, &c}) {
        pModule->m_nResult = EAF_FAILED;
        pModule->m_action = [pModule] {
            InterfaceBroker::getInstance().getInterface(std::string("MissedBy") + pModule->getModuleName());
        };
    }
    b.m_action = [] { InterfaceBroker::getInstance().getInterface("MissedByB"); };
    const std::vector<PhaseFailure> failures = PhaseDriver::drive(5);
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_THAT(failures[0].missedInterfaces, ElementsAre("MissedByA"));
    EXPECT_THAT(failures[1].missedInterfaces, ElementsAre("MissedByC"));
}

TEST_F(PhaseTest, LeavesOutAModuleTakenOutDuringThePhase)
{
    TestModule a("A", {5});
    TestModule b("B", {5});
    a.m_action = [&b] { CModuleManager::GetInstance().UnRegisterModule(&b); };
    PhaseDriver::drive(5);
    EXPECT_THAT(calls, ElementsAre("A.onModuleInit"));
}

TEST_F(PhaseTest, TellsCProgramsWhetherAModuleFailed)
{
    TestModule module("A", {5});
    EXPECT_EQ(PhaseDriver_Drive(5), EAF_OK);
    module.m_nResult = EAF_FAILED;
    EXPECT_EQ(PhaseDriver_Drive(5), EAF_FAILED);
}

TEST_F(PhaseTest, KeepsExceptionsFromCPrograms)
{
    TestModule module("A", {5});
    module.m_action = [] { throw std::runtime_error("out of order"); };
    EXPECT_THROW(PhaseDriver::drive(5), std::runtime_error);
    EXPECT_EQ(PhaseDriver_Drive(5), EAF_FAILED);
}

TEST(ModuleManager, RefusesWhatItCannotKeep)
{
    CModuleManager& manager = CModuleManager::GetInstance();
    const std::size_t nBefore = PhaseDriver::moduleCount();
    EXPECT_EQ(manager.RegisterModule(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(manager.UnRegisterModule(nullptr), EAF_FAILED);
    ModuleInterface module(1, "A", 0, 0, nullptr, 0);
    EXPECT_EQ(manager.UnRegisterModule(&module), EAF_FAILED);
    EXPECT_EQ(manager.RegisterModule(&module), EAF_OK);
    EXPECT_EQ(manager.RegisterModule(&module), EAF_FAILED);
    EXPECT_EQ(PhaseDriver::moduleCount(), nBefore + 1);
    EXPECT_EQ(manager.UnRegisterModule(&module), EAF_OK);
    EXPECT_EQ(PhaseDriver::moduleCount(), nBefore);
}

TEST(ModuleInterface, SucceedsInEveryPhaseUnlessOverridden)
{
    const unsigned long filter[] = {5, 20};
    ModuleInterface module(15000, "Name", 2, 4, filter, 2);
    EXPECT_EQ(module.getModuleNumber(), 15000U);
    EXPECT_STREQ(module.getModuleName(), "Name");
    EXPECT_EQ(module.getModuleChannel(), 2U);
    EXPECT_EQ(module.getModuleInstance(), 4U);
    EXPECT_TRUE(module.isInPhaseFilter(20));
    EXPECT_FALSE(module.isInPhaseFilter(11));
    EXPECT_EQ(module.onPhaseActivation(5, eCALLBACK_PRIORITY_NORMAL), EAF_OK);
    EXPECT_EQ(module.onModuleInit(), EAF_OK);
    EXPECT_EQ(module.onPhaseModuleStorageObjectsRetreived(), EAF_OK);
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), EAF_OK);
    EXPECT_EQ(module.onPhaseEndFrameformatLoad(), EAF_OK);
    EXPECT_EQ(module.onPhaseStart(), EAF_OK);
    EXPECT_EQ(module.onPhaseStop(), EAF_OK);
    EXPECT_EQ(module.onPhaseFrameformatLoad(), EAF_OK);
    EXPECT_EQ(module.onPhasePreFrameformatLoad(), EAF_OK);
    EXPECT_EQ(module.onPhaseSetRadioChannelNearEndFinished(), EAF_OK);
}

} // namespace
