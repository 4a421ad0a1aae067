#include "tests/platform/ContractHeaders.h"

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"

#include <gtest/gtest.h>

namespace
{

class CountingLog : public IInterface_c
{
public:
    CountingLog() { m_pCStruct = &m_table; }

    int m_nRestarts = 0;

private:
    static long restart(void* vpThis) { return ++static_cast<CountingLog*>(vpThis)->m_nRestarts; }

    IOutputPowerControlLogCStruct m_table{this, &restart};
};

TEST(ContractHeaders, LetACProgramUseTheBroker)
{
    EXPECT_EQ(useBrokerFromC(), 0);
}

TEST(ContractHeaders, LetACProgramCallACppInterface)
{
    CountingLog log;
    ASSERT_EQ(InterfaceBroker::getInstance().registerInterface("CountingLog", &log), EAF_OK);
    EXPECT_EQ(restartLogsFromC("CountingLog"), 1);
    EXPECT_EQ(log.m_nRestarts, 1);
    EXPECT_EQ(InterfaceBroker::getInstance().unregisterInterface("CountingLog", &log), EAF_OK);
    EXPECT_EQ(restartLogsFromC("CountingLog"), -1);
}

} // namespace
