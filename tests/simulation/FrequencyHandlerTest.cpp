#include "Platform/Broker/InterfaceBroker.h"
#include "Simulation/Handlers/private/SimulatedFrequencyHandler.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace
{
/** Notes what the handler says when it calls. */
class RecordingObserver final : public Observer<IFrequencyHandler>
{
public:
    void onChange(IFrequencyHandler* pSubject) override { m_frequencies.push_back(pSubject->getTxFrequency()); }

    std::vector<int> m_frequencies;
};

TEST(FrequencyHandler, TellsItsObserversAboutChangesAndTheFirstSetting)
{
    SimulatedFrequencyHandler handler(0);
    RecordingObserver first;
    RecordingObserver second;
    EXPECT_EQ(handler.registerObserver(&first), EAF_OK);
    EXPECT_EQ(handler.registerObserver(&second), EAF_OK);
    EXPECT_EQ(handler.getTxFrequency(), 5000);
    for (const int nFrequency : {5000, 5000, 6000, 6000, 5000}) {
        handler.setTxFrequency(nFrequency);
        EXPECT_EQ(handler.getTxFrequency(), nFrequency);
    }
    EXPECT_EQ(first.m_frequencies, (std::vector<int>{5000, 6000, 5000}));
    EXPECT_EQ(second.m_frequencies, first.m_frequencies);
}

TEST(FrequencyHandler, TakesNoNullObserver)
{
    SimulatedFrequencyHandler handler(0);
    EXPECT_EQ(handler.registerObserver(nullptr), EAF_NULL_POINTER);
    handler.setTxFrequency(6000);
    EXPECT_EQ(handler.getTxFrequency(), 6000);
}

TEST(FrequencyHandler, PublishesItselfByItsChannel)
{
    const std::pair<unsigned int, const char*> cases[] = {
        {0, "IFrequencyHandler_Tx"}, {1, "IFrequencyHandler_Tx_1"}, {12, "IFrequencyHandler_Tx_12"}};
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    for (const auto& [nChannel, pName] : cases) {
        SimulatedFrequencyHandler handler(nChannel);
        EXPECT_EQ(broker.getInterface(pName), nullptr) << pName;
        EXPECT_EQ(handler.initialize(), EAF_OK) << pName;
        EXPECT_EQ(dynamic_cast<IFrequencyHandler*>(broker.getInterface(pName)), &handler);
        EXPECT_EQ(handler.uninitialize(), EAF_OK) << pName;
        EXPECT_EQ(broker.getInterface(pName), nullptr) << pName;
    }
}

TEST(FrequencyHandler, IsReadWhileItIsSet)
{
    SimulatedFrequencyHandler handler(0);
    std::thread setter([&handler] {
        for (int nFrequency = 5000; nFrequency <= 6000; ++nFrequency) {
            handler.setTxFrequency(nFrequency);
        }
    });
    int nLast = 5000;
    while (nLast < 6000) {
        const int nNow = handler.getTxFrequency();
        EXPECT_GE(nNow, nLast);
        nLast = nNow;
    }
    setter.join();
}
} // namespace
