#include "tests/platform/ContractHeaders.h"

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"

#include <gtest/gtest.h>

#include <climits>

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

TEST(Result, IsAFailureFrom8000HexadecimalOnComparedSigned)
{
    for (const long nSuccess : {0L, 1L, 0x7FFFL, -1L, -0x8000L, long{INT_MIN}, LONG_MIN}) {
        EXPECT_FALSE(EAF_isFailure(nSuccess)) << nSuccess;
    }
    for (const long nFailure : {0x8000L, 0x8001L, 0x8002L, 0xFFFFL, 0x10000L, long{INT_MAX}, LONG_MAX}) {
        EXPECT_TRUE(EAF_isFailure(nFailure)) << nFailure;
    }
    // A result of 32 bits with its highest bit set is negative, wherever it passes.
    EXPECT_FALSE(EAF_isFailure(static_cast<EAFResult>(0x80008000U)));
}

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
