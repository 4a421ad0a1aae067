// The OPC log's command when the library refuses additions.
#include "tests/module/log/OpcLogCommandTest.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
const std::string FAULT = faultText(4, "eTI_E_FAILED, TI.ManageLogs OpcLog failed to create response vector");
constexpr std::size_t OBJECTS = 12;
constexpr std::size_t ADDITIONS_PER_OBJECT = 5;

class OpcLogFailureTest : public OpcLogCommandTest
{
protected:
    void prepare(bool bActive, std::size_t nFailingAddition)
    {
        fill();
        m_log.setOpcLogActive(bActive);
        m_platform.clearRecords();
        m_prepare = [nFailingAddition](XmlRpcCalls& calls) { calls.failAddition(nFailingAddition); };
    }

    /** Reads with one addition failing. @return the answer's text */
    std::string read(const char* pOption, bool bActive, std::size_t nFailingAddition,
                     const std::function<void(const XmlRpcCalls&)>& watch)
    {
        prepare(bActive, nFailingAddition);
        std::string sAnswer = manageWatched(pOption, watch);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
        return sAnswer;
    }

    void expectFailureTrace()
    {
        EXPECT_THAT(takeTraces(), ElementsAre(tiTrace("Failed to create response vector", "0x8000")));
    }

    const char* m_apReads[2] = {"Read", "ReadAndReset"};
};

TEST_F(OpcLogFailureTest, AddsAllInOrder)
{
    fill();
    manageWatched("Read", [](const XmlRpcCalls& calls) {
        const Texts additions = calls.additionTexts();
        ASSERT_EQ(additions.size(), OBJECTS * ADDITIONS_PER_OBJECT + 1);
        EXPECT_EQ(additions[0], "ObjectName: \"TxRfPowerSet\"");
        EXPECT_EQ(additions[1], "ActualValue: 1");
        EXPECT_EQ(additions[2], "MinValue: -11");
        EXPECT_EQ(additions[3], "MaxValue: 11");
        EXPECT_EQ(additions[4], filledObjects()[0].text());
        EXPECT_EQ(additions[59], filledObjects()[11].text());
        EXPECT_EQ(additions[60], arrayText(ARRAY_OF_CHANNEL_3, OBJECTS));
    });
}

TEST_F(OpcLogFailureTest, AMemberThatCannotBeAddedIsLeftOut)
{
    for (const char* pOption : m_apReads) {
        for (std::size_t nObject = 1; nObject <= OBJECTS; ++nObject) {
            for (int nMember = 0; nMember < 4; ++nMember) {
                const std::size_t nAddition =
                    ADDITIONS_PER_OBJECT * (nObject - 1) + static_cast<std::size_t>(nMember) + 1;
                EXPECT_EQ(read(pOption, nMember % 2 == 0, nAddition,
                               [](const XmlRpcCalls& calls) {
                                   EXPECT_EQ(calls.additions().size(), OBJECTS * ADDITIONS_PER_OBJECT + 1);
                                   EXPECT_EQ(calls.releases().size(), 1U); // the member itself
                               }),
                          inBraces(arrayText(ARRAY_OF_CHANNEL_3, OBJECTS, nObject, nMember)));
                EXPECT_THAT(takeTraces(), IsEmpty());
                EXPECT_EQ(isZero(), pOption == m_apReads[1]);
            }
        }
    }
}

TEST_F(OpcLogFailureTest, AnObjectThatCannotBeAddedEndsTheRead)
{
    for (const char* pOption : m_apReads) {
        for (std::size_t nObject = 1; nObject <= OBJECTS; ++nObject) {
            const std::size_t nAddition = ADDITIONS_PER_OBJECT * nObject;
            EXPECT_EQ(read(pOption, nObject % 2 == 0, nAddition,
                           [&](const XmlRpcCalls& calls) {
                               EXPECT_EQ(calls.additions().size(), nAddition); // later objects are not built
                               EXPECT_THAT(calls.releaseTexts(),
                                           ElementsAre(filledObjects()[nObject - 1].text(),
                                                       arrayText(ARRAY_OF_CHANNEL_3, nObject - 1), "{}"));
                               for (const XmlRpcCalls::Value& released : calls.releases()) {
                                   EXPECT_EQ(calls.releasesOf(released.xValue), 1U);
                               }
                           }),
                      FAULT);
            expectFailureTrace();
            EXPECT_FALSE(isZero());
            EXPECT_FALSE(m_log.m_bOpcLogFirstSample);
        }
    }
}

TEST_F(OpcLogFailureTest, AnArrayThatCannotBeAddedIsNotReleased)
{
    for (const char* pOption : m_apReads) {
        for (const bool bActive : {true, false}) {
            XMLRPC_VALUE xArray = nullptr;
            EXPECT_EQ(read(pOption, bActive, OBJECTS * ADDITIONS_PER_OBJECT + 1,
                           [&xArray](const XmlRpcCalls& calls) {
                               EXPECT_THAT(calls.releaseTexts(), ElementsAre("{}"));
                               xArray = calls.additions().back().xValue;
                           }),
                      faultText(4, "Failed to add XMLRPC value to vector."));
            // Whoever made the addition fail has the array.
            EXPECT_EQ(takeText(xArray), arrayText(ARRAY_OF_CHANNEL_3, OBJECTS));
            EXPECT_THAT(takeTraces(), ElementsAre(tiTrace("Failed to add XMLRPC value to vector.", "0x8000")));
            EXPECT_FALSE(isZero());
        }
    }
}

TEST_F(OpcLogFailureTest, AnActionStaysDoneWhenItsResponseFails)
{
    const auto watch = [](const XmlRpcCalls& calls) {
        EXPECT_THAT(calls.releaseTexts(), ElementsAre("StandardResponse: \"OK\"", "{}"));
    };
    prepare(false, 1);
    EXPECT_EQ(manageWatched("Start", watch), FAULT);
    expectFailureTrace();
    EXPECT_TRUE(isZero());
    EXPECT_TRUE(m_log.isOpcLogActive());

    prepare(true, 1);
    EXPECT_EQ(manageWatched("Stop", watch), FAULT);
    expectFailureTrace();
    EXPECT_FALSE(isZero());
    EXPECT_FALSE(m_log.isOpcLogActive());

    prepare(true, 1);
    EXPECT_EQ(manageWatched("SaveToSysLog", watch), FAULT);
    const Texts traces = takeTraces();
    ASSERT_EQ(traces.size(), 15U);
    EXPECT_EQ(traces[13], "RQX.OPCL 4: ****** END OF OPC LOG ******");
    EXPECT_EQ(traces[14], tiTrace("Failed to create response vector", "0x8000"));
    EXPECT_FALSE(isZero());
    EXPECT_TRUE(m_log.isOpcLogActive());
}

TEST_F(OpcLogFailureTest, TracesOnlyWhenTheTraceObjectsLevelAdmitsTheCode)
{
    m_platform.script().gtLevels[0x8000] = 8;
    prepare(true, 1);
    EXPECT_EQ(manage("Stop"), FAULT);
    EXPECT_THAT(takeTraces(), IsEmpty());
    m_platform.script().gtLevels[0x8000] = 7;
    prepare(true, 1);
    EXPECT_EQ(manage("Stop"), FAULT);
    EXPECT_THAT(takeTraces(), ElementsAre("TI 7: Failed to create response vector      code: 0x8000\n"));
}
} // namespace
