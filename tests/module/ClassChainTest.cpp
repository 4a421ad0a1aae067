// The controller's bases, casts, table of virtual operations and C table.
#include "tests/support/ControllerTest.h"

#include <cstring>
#include <type_traits>

namespace
{
/** @return the slot of a virtual operation in the table of the class that it is named by, as the C++ ABI numbers them
 */
template <class TMember> std::size_t slotOf(TMember pOperation)
{
    static_assert(std::is_member_function_pointer_v<TMember>);
    std::size_t nOffset = 0;
    std::memcpy(&nOffset, &pOperation, sizeof nOffset);
#if !defined(__arm__) && !defined(__aarch64__)
    // The offset plus one: other architectures keep the mark of a virtual operation elsewhere.
    nOffset -= 1;
#endif
    return nOffset / sizeof(void*);
}

class ClassChainTest : public ControllerTest
{
};

using C = OutputPowerController;
using I = IOutputPowerController;
} // namespace

TEST_F(ClassChainTest, EveryBaseIsReachedFromTheBrokeredPointer)
{
    IInterface* pInterface = m_platform.script().interfaces.at("IOutputPowerController");
    ASSERT_NE(pInterface, nullptr);
    EXPECT_NE(dynamic_cast<IInterface_c*>(pInterface), nullptr);
    EXPECT_EQ(dynamic_cast<I*>(pInterface), m_pController.get());
    EXPECT_EQ(dynamic_cast<ModuleInterface*>(pInterface), m_pController.get());
    EXPECT_EQ(dynamic_cast<Observer<IFrequencyHandler>*>(pInterface), m_pController.get());
    EXPECT_EQ(dynamic_cast<C*>(pInterface), m_pController.get());
    EXPECT_EQ(dynamic_cast<IFrequencyHandler*>(pInterface), nullptr);
}

TEST_F(ClassChainTest, TheModuleInterfaceIsThePrimaryBase)
{
    EXPECT_EQ(static_cast<void*>(static_cast<ModuleInterface*>(m_pController.get())),
              static_cast<void*>(m_pController.get()));
    const auto* pObject = reinterpret_cast<const char*>(m_pController.get());
    const auto* pObserver =
        reinterpret_cast<const char*>(static_cast<const Observer<IFrequencyHandler>*>(m_pController.get()));
    const auto* pInterface = reinterpret_cast<const char*>(static_cast<const I*>(m_pController.get()));
    EXPECT_LT(pObject, pObserver);
    EXPECT_LT(pObserver, pInterface);
}

TEST_F(ClassChainTest, TheCTableIsTheSameEveryTimeAndHoldsTheInterfacePointer)
{
    auto* pTable = static_cast<IOutputPowerControllerCStruct*>(m_pController->getCStruct());
    ASSERT_NE(pTable, nullptr);
    EXPECT_EQ(m_pController->getCStruct(), pTable);
    EXPECT_EQ(pTable->vpThis, static_cast<void*>(static_cast<I*>(m_pController.get())));
}

TEST_F(ClassChainTest, TheCTableDrivesThisController)
{
    auto* pTable = static_cast<IOutputPowerControllerCStruct*>(m_pController->getCStruct());
    EXPECT_EQ(pTable->staticSetTxPminPmax(pTable->vpThis, -500, 3000), EAF_OK);
    EXPECT_EQ(controller().m_nTxPmin, -500);
    long nPctrl = 1;
    EXPECT_EQ(pTable->staticGetPctrl(pTable->vpThis, &nPctrl), EAF_OK);
    EXPECT_EQ(nPctrl, OPC_POWER_OFF);
    EXPECT_EQ(pTable->staticGetPctrl(nullptr, &nPctrl), EAF_NULL_POINTER);
    EXPECT_EQ(nPctrl, OPC_POWER_OFF);
}

TEST(VirtualOperations, OfTheModuleStandInTheOrderOfThePhases)
{
    // Slots 0 and 1 are the destructor.
    EXPECT_EQ(slotOf(&C::onPhaseActivation), 2U);
    EXPECT_EQ(slotOf(&C::onModuleInit), 3U);
    EXPECT_EQ(slotOf(&C::onPhaseModuleStorageObjectsRetreived), 4U);
    EXPECT_EQ(slotOf(&C::onPhasePostFrameformatLoad), 5U);
    EXPECT_EQ(slotOf(&C::onPhaseEndFrameformatLoad), 6U);
    EXPECT_EQ(slotOf(&C::onPhaseStart), 7U);
    EXPECT_EQ(slotOf(&C::onPhaseStop), 8U);
    EXPECT_EQ(slotOf(&C::onPhaseFrameformatLoad), 9U);
    EXPECT_EQ(slotOf(&C::onPhasePreFrameformatLoad), 10U);
    EXPECT_EQ(slotOf(&C::onPhaseSetRadioChannelNearEndFinished), 11U);
    EXPECT_EQ(slotOf(&C::onChange), 12U);
}

TEST(VirtualOperations, OfTheControllerFollowInTheOrderOfTheCTable)
{
    const std::size_t inPrimary[] = {slotOf(&C::setTxPminPmax),
                                     slotOf(&C::setRequestedTxPowerState),
                                     slotOf(&C::setProductionTestSettings),
                                     slotOf(&C::setRegulatorInterval),
                                     slotOf(&C::getOPCState),
                                     slotOf(&C::getTxPowerActualStatus),
                                     slotOf(&C::getPctrl),
                                     slotOf(&C::registerPctrlObserver),
                                     slotOf(&C::registerPtargetObserver),
                                     slotOf(&C::registerPredictedPctrlObserver),
                                     slotOf(&C::registerPowerModeObserver),
                                     slotOf(&C::regulate),
                                     slotOf(&C::getLogData),
                                     slotOf(&C::getPmeasured),
                                     slotOf(&C::setGain),
                                     slotOf(&C::getGain)};
    for (std::size_t i = 0; i < std::size(inPrimary); ++i) {
        EXPECT_EQ(inPrimary[i], 13U + i) << i;
    }
}

TEST(VirtualOperations, OfTheInterfaceFollowTheDestructorAndTheCTable)
{
    const std::size_t inInterface[] = {slotOf(&I::getCStruct),
                                       slotOf(&I::setTxPminPmax),
                                       slotOf(&I::setRequestedTxPowerState),
                                       slotOf(&I::setProductionTestSettings),
                                       slotOf(&I::setRegulatorInterval),
                                       slotOf(&I::getOPCState),
                                       slotOf(&I::getTxPowerActualStatus),
                                       slotOf(&I::getPctrl),
                                       slotOf(&I::registerPctrlObserver),
                                       slotOf(&I::registerPtargetObserver),
                                       slotOf(&I::registerPredictedPctrlObserver),
                                       slotOf(&I::registerPowerModeObserver),
                                       slotOf(&I::regulate),
                                       slotOf(&I::getLogData),
                                       slotOf(&I::getPmeasured),
                                       slotOf(&I::setGain),
                                       slotOf(&I::getGain)};
    for (std::size_t i = 0; i < std::size(inInterface); ++i) {
        EXPECT_EQ(inInterface[i], 2U + i) << i;
    }
}
