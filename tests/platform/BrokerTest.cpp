#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class PlainInterface : public virtual IInterface
{
};

struct Table
{
    void* vpThis;
};

class TabledInterface : public IInterface_c
{
public:
    explicit TabledInterface(bool bWithTable)
    {
        if (bWithTable) {
            m_pCStruct = &m_table;
        }
    }

    Table m_table{this};
};

class BrokerTest : public testing::Test
{
protected:
    BrokerTest()
    {
        BrokerDirectory::clearMissedLookups();
        CInterfaceBroker_GetInstance(&m_pBroker);
    }
    void TearDown() override
    {
        for (const std::string& sName : BrokerDirectory::publishedNames()) {
            m_broker.unregisterInterface(sName, nullptr);
            CInterfaceBroker_UnregisterInterface(m_pBroker, sName.c_str(), nullptr);
        }
        CInterfaceBroker_DestroyInstance(m_pBroker);
    }

    void* find(const char* pName)
    {
        void* pFound = this;
        const EAFResult nResult = CInterfaceBroker_GetInterface(m_pBroker, pName, &pFound);
        EXPECT_EQ(nResult, pFound != nullptr ? EAF_OK : EAF_FAILED);
        return pFound;
    }

    InterfaceBroker& m_broker = InterfaceBroker::getInstance();
    void* m_pBroker = nullptr;
    PlainInterface m_first;
    PlainInterface m_second;
    Table m_record{nullptr};
    Table m_otherRecord{nullptr};
};

TEST_F(BrokerTest, IsOneForTheProcess)
{
    EXPECT_EQ(&InterfaceBroker::getInstance(), &m_broker);
}

TEST_F(BrokerTest, FindsWhatWasPublished)
{
    EXPECT_EQ(m_broker.registerInterface("A", &m_first), EAF_OK);
    EXPECT_EQ(m_broker.registerInterface("B", &m_second), EAF_OK);
    EXPECT_EQ(m_broker.getInterface("A"), &m_first);
    EXPECT_EQ(m_broker.getInterface("B"), &m_second);
    EXPECT_EQ(m_broker.getInterface("C"), nullptr);
}

TEST_F(BrokerTest, KeepsTheFirstOfADuplicateName)
{
    ASSERT_EQ(m_broker.registerInterface("A", &m_first), EAF_OK);
    EXPECT_EQ(m_broker.registerInterface("A", &m_second), EAF_FAILED);
    EXPECT_EQ(m_broker.registerInterface("A", &m_first), EAF_FAILED);
    EXPECT_EQ(m_broker.getInterface("A"), &m_first);
}

TEST_F(BrokerTest, RefusesANullInterface)
{
    EXPECT_EQ(m_broker.registerInterface("A", nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_broker.unregisterInterface("A", nullptr), EAF_FAILED);
}

TEST_F(BrokerTest, WithdrawsOnlyWhatMatches)
{
    ASSERT_EQ(m_broker.registerInterface("A", &m_first), EAF_OK);
    EXPECT_EQ(m_broker.unregisterInterface("B", &m_first), EAF_FAILED);
    EXPECT_EQ(m_broker.unregisterInterface("A", &m_second), EAF_FAILED);
    EXPECT_EQ(m_broker.getInterface("A"), &m_first);
    EXPECT_EQ(m_broker.unregisterInterface("A", &m_first), EAF_OK);
    EXPECT_EQ(m_broker.getInterface("A"), nullptr);
    EXPECT_EQ(m_broker.unregisterInterface("A", &m_first), EAF_FAILED);
}

TEST_F(BrokerTest, WithdrawsByNameForNull)
{
    ASSERT_EQ(m_broker.registerInterface("A", &m_first), EAF_OK);
    EXPECT_EQ(m_broker.unregisterInterface("A", nullptr), EAF_OK);
    EXPECT_EQ(m_broker.registerInterface("A", &m_second), EAF_OK);
    EXPECT_EQ(m_broker.getInterface("A"), &m_second);
}

TEST_F(BrokerTest, RefusesNullArgumentsAtTheCDoor)
{
    void* pFound = nullptr;
    EXPECT_EQ(CInterfaceBroker_GetInstance(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_RegisterInterface(nullptr, "A", &m_record), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, nullptr, &m_record), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_UnregisterInterface(nullptr, "A", &m_record), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_UnregisterInterface(m_pBroker, nullptr, &m_record), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_GetInterface(nullptr, "A", &pFound), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_GetInterface(m_pBroker, nullptr, &pFound), EAF_NULL_POINTER);
    EXPECT_EQ(CInterfaceBroker_GetInterface(m_pBroker, "A", nullptr), EAF_NULL_POINTER);
    EXPECT_THAT(BrokerDirectory::publishedNames(), IsEmpty());
    EXPECT_THAT(BrokerDirectory::missedLookups(), IsEmpty());
}

TEST_F(BrokerTest, KeepsRecordsByTheSameRules)
{
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", &m_record), EAF_OK);
    EXPECT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", &m_otherRecord), EAF_FAILED);
    EXPECT_EQ(find("A"), &m_record);
    EXPECT_EQ(CInterfaceBroker_UnregisterInterface(m_pBroker, "B", nullptr), EAF_FAILED);
    EXPECT_EQ(CInterfaceBroker_UnregisterInterface(m_pBroker, "A", &m_otherRecord), EAF_FAILED);
    EXPECT_EQ(CInterfaceBroker_UnregisterInterface(m_pBroker, "A", &m_record), EAF_OK);
    EXPECT_EQ(find("A"), nullptr);
}

TEST_F(BrokerTest, CopiesTheNameOfARecord)
{
    std::string sName = "A";
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, sName.c_str(), &m_record), EAF_OK);
    sName[0] = 'B';
    EXPECT_EQ(find("A"), &m_record);
}

TEST_F(BrokerTest, KeepsRecordsWhenAHandleIsGivenBack)
{
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", &m_record), EAF_OK);
    void* pOther = nullptr;
    ASSERT_EQ(CInterfaceBroker_GetInstance(&pOther), EAF_OK);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(pOther), EAF_OK);
    EXPECT_EQ(find("A"), &m_record);
}

TEST_F(BrokerTest, FindsTheTableOfACppInterfaceAtTheCDoor)
{
    TabledInterface tabled(true);
    ASSERT_EQ(m_broker.registerInterface("A", &tabled), EAF_OK);
    EXPECT_EQ(find("A"), &tabled.m_table);
    EXPECT_EQ(static_cast<Table*>(find("A"))->vpThis, &tabled);
}

TEST_F(BrokerTest, PrefersARecordToATable)
{
    TabledInterface tabled(true);
    ASSERT_EQ(m_broker.registerInterface("A", &tabled), EAF_OK);
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", &m_record), EAF_OK);
    EXPECT_EQ(find("A"), &m_record);
    EXPECT_THAT(BrokerDirectory::publishedNames(), ElementsAre("A"));
}

TEST_F(BrokerTest, FindsNoTableWhereThereIsNone)
{
    TabledInterface tabled(false);
    ASSERT_EQ(m_broker.registerInterface("Null", &tabled), EAF_OK);
    ASSERT_EQ(m_broker.registerInterface("Plain", &m_first), EAF_OK);
    EXPECT_EQ(find("Null"), nullptr);
    EXPECT_EQ(find("Plain"), nullptr);
    EXPECT_THAT(BrokerDirectory::missedLookups(), ElementsAre("Null", "Plain"));
}

TEST_F(BrokerTest, DoesNotShowRecordsAsCppInterfaces)
{
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "A", &m_record), EAF_OK);
    EXPECT_EQ(m_broker.getInterface("A"), nullptr);
}

TEST_F(BrokerTest, ListsThePublishedNamesSorted)
{
    ASSERT_EQ(m_broker.registerInterface("C", &m_first), EAF_OK);
    ASSERT_EQ(m_broker.registerInterface("A", &m_second), EAF_OK);
    ASSERT_EQ(CInterfaceBroker_RegisterInterface(m_pBroker, "B", &m_record), EAF_OK);
    EXPECT_THAT(BrokerDirectory::publishedNames(), ElementsAre("A", "B", "C"));
}

TEST_F(BrokerTest, ListsMissedNamesOnceInOrder)
{
    ASSERT_EQ(m_broker.registerInterface("There", &m_first), EAF_OK);
    m_broker.getInterface("Z");
    find("Y");
    m_broker.getInterface("There");
    find("Z");
    m_broker.getInterface("X");
    EXPECT_THAT(BrokerDirectory::missedLookups(), ElementsAre("Z", "Y", "X"));
    BrokerDirectory::clearMissedLookups();
    EXPECT_THAT(BrokerDirectory::missedLookups(), IsEmpty());
}

TEST_F(BrokerTest, BoundsTheMissedNames)
{
    for (int nName = 0; nName < 5000; ++nName) {
        m_broker.getInterface("Missing" + std::to_string(nName));
    }
    EXPECT_EQ(BrokerDirectory::missedLookups().size(), 1000U);
    EXPECT_EQ(BrokerDirectory::missedLookups().front(), "Missing0");
}

} // namespace
