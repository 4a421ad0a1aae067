#include "tests/simulation/HandlerTable.h"
#include "tests/support/AllocationCount.h"

#include <memory>

namespace
{
TEST(OutputPowerHandler, AllocatesNothingInAStep)
{
    const HandlerTable table;
    table.switchOn(1500);
    const std::size_t nBefore = allocationCount();
    for (int i = 0; i < 1000; ++i) {
        const std::int32_t nPmeasured = table.pMeasured();
        table.detectorState(nPmeasured, eRF_DETECTOR_LOOP_MODE_NORMAL);
        table.setOutputPower(nPmeasured);
        table.txPower();
        for (std::uint32_t nAmplifier = 1; nAmplifier <= 6; ++nAmplifier) {
            table.reducedGain(nAmplifier);
        }
    }
    EXPECT_EQ(allocationCount(), nBefore);
    const auto pProof = std::make_unique<int>(1);
    EXPECT_GT(allocationCount(), nBefore) << "the count works";
}
} // namespace
