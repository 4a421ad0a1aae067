#include "Platform/Broker/InterfaceBroker.h"
#include "Simulation/Handlers/private/SimulatedTemperatureHandler.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
/** Notes the temperatures that it is told. */
struct RecordingObserver
{
    std::vector<int> temperatures;
    ITemperatureObserver record{this, [](void* vpThis, int nTemperature) {
                                    static_cast<RecordingObserver*>(vpThis)->temperatures.push_back(nTemperature);
                                }};
};

IInterface* published()
{
    return InterfaceBroker::getInstance().getInterface("ITemperatureHandler");
}

TEST(TemperatureHandler, TellsItsObserversAboutChangesAndTheFirstSetting)
{
    SimulatedTemperatureHandler handler(0);
    ASSERT_EQ(handler.initialize(), EAF_OK);
    RecordingObserver observer;
    ASSERT_EQ(ITemperatureHandler::registerObserver(&observer.record), EAF_OK);
    for (const int nTemperature : {25, 25, 30, 30, -5}) {
        handler.setTemperature(nTemperature);
    }
    EXPECT_EQ(observer.temperatures, (std::vector<int>{25, 30, -5}));
}

TEST(TemperatureHandler, ForgetsItsObserversWhenItIsWithdrawn)
{
    RecordingObserver observer;
    SimulatedTemperatureHandler handler(0);
    ASSERT_EQ(handler.initialize(), EAF_OK);
    EXPECT_EQ(dynamic_cast<SimulatedTemperatureHandler*>(published()), &handler);
    ASSERT_EQ(ITemperatureHandler::registerObserver(&observer.record), EAF_OK);
    EXPECT_EQ(handler.uninitialize(), EAF_OK);
    EXPECT_EQ(handler.uninitialize(), EAF_FAILED);
    EXPECT_EQ(published(), nullptr);
    handler.setTemperature(40);
    EXPECT_TRUE(observer.temperatures.empty());
}

TEST(TemperatureHandler, IsTheOnlyOneOfItsUnit)
{
    RecordingObserver observer;
    SimulatedTemperatureHandler handler(0);
    ASSERT_EQ(handler.initialize(), EAF_OK);
    ASSERT_EQ(ITemperatureHandler::registerObserver(&observer.record), EAF_OK);
    {
        SimulatedTemperatureHandler other(1);
        EXPECT_EQ(other.initialize(), EAF_FAILED);
    }
    EXPECT_EQ(dynamic_cast<SimulatedTemperatureHandler*>(published()), &handler);
    handler.setTemperature(40);
    EXPECT_EQ(observer.temperatures, std::vector<int>{40}) << "the one that never was the unit's cleared nothing";
}

TEST(TemperatureHandler, WithdrawsItselfWhenItGoes)
{
    {
        SimulatedTemperatureHandler handler(0);
        ASSERT_EQ(handler.initialize(), EAF_OK);
    }
    EXPECT_EQ(published(), nullptr);
}
} // namespace
