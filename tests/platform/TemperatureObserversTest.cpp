#include "Control/TemperatureHandler/TemperatureObservers.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

struct Witness
{
    explicit Witness(std::vector<int>& told) : record{&told, &note} {}

    static void note(void* vpThis, int nTemperature)
    {
        static_cast<std::vector<int>*>(vpThis)->push_back(nTemperature);
    }

    ITemperatureObserver record;
};

class TemperatureObserversTest : public testing::Test
{
protected:
    TemperatureObserversTest() { TemperatureObservers::clear(); }
    void TearDown() override { TemperatureObservers::clear(); }

    std::vector<int> m_toldFirst;
    std::vector<int> m_toldSecond;
    Witness m_first{m_toldFirst};
    Witness m_second{m_toldSecond};
};

TEST_F(TemperatureObserversTest, AreToldTheTemperature)
{
    EXPECT_EQ(ITemperatureHandler::registerObserver(&m_first.record), EAF_OK);
    TemperatureObservers::notify(-40);
    EXPECT_EQ(ITemperatureHandler::registerObserver(&m_second.record), EAF_OK);
    TemperatureObservers::notify(85);
    EXPECT_THAT(m_toldFirst, ElementsAre(-40, 85));
    EXPECT_THAT(m_toldSecond, ElementsAre(85));
}

TEST_F(TemperatureObserversTest, AreToldInTheOrderOfRegistration)
{
    std::vector<int> order;
    struct Entry
    {
        std::vector<int>* pOrder;
        int nNumber;
    };
    const auto note = [](void* vpThis, int) {
        const auto& entry = *static_cast<Entry*>(vpThis);
        entry.pOrder->push_back(entry.nNumber);
    };
    Entry entries[] = {{&order, 1}, {&order, 2}, {&order, 3}};
    ITemperatureObserver records[] = {{&entries[2], note}, {&entries[0], note}, {&entries[1], note}};
    for (ITemperatureObserver& record : records) {
        EXPECT_EQ(ITemperatureHandler::registerObserver(&record), EAF_OK);
    }
    TemperatureObservers::notify(0);
    EXPECT_THAT(order, ElementsAre(3, 1, 2));
}

TEST_F(TemperatureObserversTest, RefuseWhatCannotBeCalled)
{
    ITemperatureObserver record{nullptr, nullptr};
    EXPECT_EQ(ITemperatureHandler::registerObserver(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(ITemperatureHandler::registerObserver(&record), EAF_NULL_POINTER);
    TemperatureObservers::notify(20);
}

TEST_F(TemperatureObserversTest, AreForgottenWhenCleared)
{
    ASSERT_EQ(ITemperatureHandler::registerObserver(&m_first.record), EAF_OK);
    TemperatureObservers::clear();
    TemperatureObservers::notify(20);
    EXPECT_THAT(m_toldFirst, IsEmpty());
}

} // namespace
