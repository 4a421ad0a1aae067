#include "tests/simulation/HandlerTable.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
/** How to come to a step of the transmitter, by the step reached. */
struct StepCase
{
    const char* pName;
    std::vector<std::int32_t> path;
    std::vector<std::int32_t> allowed;
    bool bRadiates;
};

const std::vector<StepCase>& stepCases()
{
    static const std::vector<StepCase> s_cases = {
        {"new", {}, {2, 1}, false},
        {"2", {2}, {2, 3, 0}, false},
        {"3", {2, 3}, {2, 3, 4, 0}, true},
        {"4", {2, 3, 4}, {2, 4, 0}, true},
        {"0", {2, 3, 4, 0}, {2, 0, 1}, false},
        {"1", {2, 3, 4, 0, 1}, {2, 1}, false},
        {"3 after a restart", {2, 3, 4, 2, 3}, {2, 3, 4, 0}, true},
        {"2 after a restart", {2, 3, 4, 2}, {2, 3, 0}, false},
        {"2 after off", {2, 3, 4, 0, 1, 2}, {2, 3, 0}, false},
    };
    return s_cases;
}

TEST(OutputPowerHandler, TakesTheStepsOfTheTransmitterInTheirOrderOnly)
{
    for (const StepCase& c : stepCases()) {
        for (std::int32_t nStep = -1; nStep <= 5; ++nStep) {
            SCOPED_TRACE(testing::Message() << "step " << nStep << " at " << c.pName);
            HandlerTable table;
            for (const std::int32_t nBefore : c.path) {
                ASSERT_EQ(table.setTxState(nBefore), EAF_OK);
            }
            EXPECT_EQ(std::isfinite(table.handler.outputPowerDbm()), c.bRadiates);
            const bool bAllowed = std::find(c.allowed.begin(), c.allowed.end(), nStep) != c.allowed.end();
            EXPECT_EQ(table.setTxState(nStep), bAllowed ? EAF_OK : EAF_FAILED);
            EXPECT_EQ(table.handler.refusedCalls(), bAllowed ? 0U : 1U);
            const bool bRadiates = bAllowed ? nStep == 3 || nStep == 4 : c.bRadiates;
            EXPECT_EQ(std::isfinite(table.handler.outputPowerDbm()), bRadiates);
        }
    }
}

TEST(OutputPowerHandler, RefusesAControlPowerUnlessTheChainHasPower)
{
    for (const StepCase& c : stepCases()) {
        HandlerTable table;
        for (const std::int32_t nBefore : c.path) {
            ASSERT_EQ(table.setTxState(nBefore), EAF_OK);
        }
        const bool bOff = c.path.empty() || c.path.back() == 1;
        EXPECT_EQ(table.setOutputPower(1000), bOff ? EAF_FAILED : EAF_OK) << c.pName;
        EXPECT_EQ(table.handler.refusedCalls(), bOff ? 1U : 0U) << c.pName;
    }
}

TEST(OutputPowerHandler, EnablesTrafficModulationOnlyWhenOnAndDisablesItAlways)
{
    for (const StepCase& c : stepCases()) {
        HandlerTable table;
        for (const std::int32_t nBefore : c.path) {
            ASSERT_EQ(table.setTxState(nBefore), EAF_OK);
        }
        const bool bOn = !c.path.empty() && c.path.back() == 4;
        EXPECT_EQ(table.setTraffic(false), EAF_OK) << c.pName;
        EXPECT_EQ(table.setTraffic(true), bOn ? EAF_OK : EAF_FAILED) << c.pName;
        EXPECT_EQ(table.handler.refusedCalls(), bOn ? 0U : 1U) << c.pName;
    }
}
} // namespace
