#include "tests/unit/safety/MonitoredLife.h"

#include <random>

namespace
{
/** Everything that a controller may meet, drawn at random. */
class RandomLife : public MonitoredLife, public ::testing::WithParamInterface<unsigned int>
{
protected:
    int draw(int nLowest, int nHighest) { return std::uniform_int_distribution<int>(nLowest, nHighest)(m_random); }
    bool oneIn(int n) { return draw(1, n) == 1; }

    void ask()
    {
        switch (draw(0, 9)) {
        case 0:
            m_pMonitored->setTxPminPmax(oneIn(8) ? OPC_POWER_UNKNOWN : draw(-3000, 2500), 0);
            break;
        case 1:
        case 2:
        case 3:
            m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, static_cast<ETxPowerMode>(draw(0, 4)));
            break;
        case 4:
            m_pMonitored->setRequestedTxPowerState(static_cast<ERequestedTxPowerState>(draw(0, 2)),
                                                   static_cast<ETxPowerMode>(draw(0, 4)));
            break;
        case 5:
            m_pMonitored->setProductionTestSettings(oneIn(2), static_cast<ERfDetectorLoopMode>(draw(0, 2)));
            break;
        case 6:
            m_pMonitored->setRegulatorInterval(draw(1, 30));
            break;
        case 7:
            m_pMonitored->setGain(static_cast<EOPHDetectorState>(draw(0, 2)),
                                  oneIn(2) ? eOPC_TX_ON : eOPC_TX_ON_RAMPING, draw(-50, 400));
            break;
        default:
            break;
        }
    }

    void disturb()
    {
        for (int nCall = 0; nCall < static_cast<int>(EHandlerCall::Count); ++nCall) {
            const auto eCall = static_cast<EHandlerCall>(nCall);
            m_handler.setResult(eCall, oneIn(12) ? EAF_FAILED : EAF_OK);
            m_handler.setWritesOutputs(eCall, !oneIn(12));
        }
        m_handler.m_nPctrlLower = oneIn(6) ? OPC_POWER_UNKNOWN : draw(-4000, 2000);
        m_handler.m_nPctrlUpper = oneIn(200) ? OPC_POWER_UNKNOWN : draw(-2500, 4000);
        m_handler.m_eDetectorState = static_cast<EOPHDetectorState>(draw(0, 3));
    }

    /** Lets observers ask for something now and then, in the middle of a step or a request. */
    void observe()
    {
        m_pMonitored->registerPctrlObserver(&m_pctrlObserver);
        m_pMonitored->registerPredictedPctrlObserver(&m_predictedObserver);
    }

    static void onNotified(void* vpThis, unsigned int /*nChannel*/, int /*nPower*/)
    {
        auto& life = *static_cast<RandomLife*>(vpThis);
        if (life.oneIn(20)) {
            life.ask();
        }
    }

    std::mt19937 m_random{GetParam()};
    IOpcPctrlObserver m_pctrlObserver{this, &onNotified};
    IOpcPredictedPctrlObserver m_predictedObserver{this, &onNotified};
};

TEST_P(RandomLife, BreaksNoRule)
{
    m_handler.m_measure = [this] { return m_handler.m_nPctrlSent + draw(-300, 300); };
    if (GetParam() % 2 == 0) {
        observe();
    }
    int nPtarget = 0;
    int nStepsOn = 0;
    for (int nStep = 0; nStep < 5000; ++nStep) {
        if (oneIn(10)) {
            ask();
        }
        if (oneIn(10)) {
            disturb();
        }
        if (oneIn(20)) {
            nPtarget = oneIn(20) ? draw(-2'000'000'000, 2'000'000'000) : draw(-4000, 5000);
        }
        m_pMonitored->regulate(nPtarget);
        nStepsOn += m_pMonitored->getOPCState() == eOPC_TX_ON ? 1 : 0;
    }
    EXPECT_TRUE(isCleanButForHazards()) << reported();
    EXPECT_GT(nStepsOn, 100);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLife, ::testing::Range(1U, 21U));
} // namespace
