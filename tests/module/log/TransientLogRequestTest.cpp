// How the transient log's command reads its request.
#include "tests/module/log/TransientLogCommandTest.h"

#include <ctime>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
const std::string MISSING_FAULT =
    faultText(2, "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageOPCTransientLog failed due to missing tag RequestOption");
const char* const MISSING_TRACE =
    "COutputPowerControlLog_HandleTIManageOPCTransientLog: Required tag RequestOption of type string missing";

class TransientLogRequestTest : public TransientLogCommandTest
{
protected:
    void SetUp() override
    {
        m_log.addSamples(2);
        m_platform.clearRecords();
    }

    /** Sends a request and expects it to be refused for want of an option, with nothing changed. */
    void expectMissing(XMLRPC_REQUEST xRequest)
    {
        EXPECT_EQ(send(xRequest), MISSING_FAULT);
        EXPECT_THAT(takeTraces(), ElementsAre(tiTrace(MISSING_TRACE, "0xa102")));
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
        EXPECT_TRUE(m_log.isTransientLogActive());
    }

    static XMLRPC_VALUE structOf(XMLRPC_VALUE xMember)
    {
        XMLRPC_VALUE xStruct = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_AddValueToVector(xStruct, xMember);
        return xStruct;
    }

    static XMLRPC_VALUE option(const char* pName, const char* pText)
    {
        return XMLRPC_CreateValueString(pName, pText, 0);
    }
};

TEST_F(TransientLogRequestTest, NullObjectIsRefusedWithoutATrace)
{
    XMLRPC_REQUEST xRequest = requestOf({structOf(option("RequestOption", "Enable"))});
    EXPECT_EQ(takeText(OutputPowerControlLog::statichandleTIManageOPCTransientLog(nullptr, nullptr, xRequest, nullptr)),
              faultText(2, "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageOPCTransientLog failed due to vpThis NULL pointer"));
    XMLRPC_RequestFree(xRequest, 1);
    EXPECT_THAT(takeTraces(), IsEmpty());
}

TEST_F(TransientLogRequestTest, NoParametersAreAMissingOption)
{
    expectMissing(XMLRPC_RequestNew());
    expectMissing(requestOf({}));
    expectMissing(parsed(""));
    expectMissing(parsed("<params/>"));
}

TEST_F(TransientLogRequestTest, AParameterThatIsNoStructIsAMissingOption)
{
    expectMissing(requestOf({XMLRPC_CreateValueInt(nullptr, 1)}));
    expectMissing(requestOf({option(nullptr, "Enable")}));
    expectMissing(requestOf({XMLRPC_CreateVector(nullptr, xmlrpc_vector_array)}));
    expectMissing(parsed("<params><param><value><array><data><value><string>Enable</string></value></data></array>"
                         "</value></param></params>"));
}

TEST_F(TransientLogRequestTest, AStructWithoutTheMemberIsAMissingOption)
{
    expectMissing(requestOf({XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct)}));
    expectMissing(requestOf({structOf(option("Option", "Enable"))}));
    expectMissing(requestOf({structOf(option("requestoption", "Enable"))}));
    expectMissing(requestOf({structOf(option("REQUESTOPTION", "Enable"))}));
    expectMissing(requestOf({structOf(option("RequestOption ", "Enable"))}));
    expectMissing(requestOf({structOf(option("RequestOptio", "Enable"))}));
}

TEST_F(TransientLogRequestTest, AnOptionThatIsNoStringIsAMissingOption)
{
    expectMissing(requestOf({structOf(XMLRPC_CreateValueInt("RequestOption", 1))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateValueBoolean("RequestOption", 1))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateValueDouble("RequestOption", 1.0))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateValueBase64("RequestOption", "Enable", 6))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateValueDateTime("RequestOption", std::time_t{86400}))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateVector("RequestOption", xmlrpc_vector_array))}));
    expectMissing(requestOf({structOf(XMLRPC_CreateVector("RequestOption", xmlrpc_vector_struct))}));
}

TEST_F(TransientLogRequestTest, OnlyTheFirstParameterIsRead)
{
    expectMissing(requestOf({XMLRPC_CreateValueInt(nullptr, 1), structOf(option("RequestOption", "Enable"))}));
    EXPECT_EQ(
        send(requestOf({structOf(option("RequestOption", "Disable")), structOf(option("RequestOption", "Enable"))})),
        STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
}

TEST_F(TransientLogRequestTest, AStringWithoutTextIsAMissingOption)
{
    m_prepare = [](XmlRpcCalls& calls) { calls.hideTexts(); };
    EXPECT_EQ(sendWatched("Enable",
                          [](const XmlRpcCalls& calls) {
                              EXPECT_THAT(calls.additions(), IsEmpty());
                              EXPECT_THAT(calls.releases(), IsEmpty());
                          }),
              MISSING_FAULT);
    EXPECT_THAT(takeTraces(), ElementsAre(tiTrace(MISSING_TRACE, "0xa102")));
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
}

TEST_F(TransientLogRequestTest, OtherMembersAreIgnored)
{
    XMLRPC_VALUE xStruct = structOf(XMLRPC_CreateValueInt("Extra", 1));
    XMLRPC_AddValueToVector(xStruct, option("RequestOption", "Disable"));
    XMLRPC_AddValueToVector(xStruct, option("requestOption", "Enable"));
    EXPECT_EQ(send(requestOf({xStruct})), STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isTransientLogActive());
}

TEST_F(TransientLogRequestTest, ReadingLeavesTheRequestReadable)
{
    // A server may have walked the parameters before: the command starts from the first again.
    XMLRPC_REQUEST xRequest =
        requestOf({structOf(option("RequestOption", "Disable")), XMLRPC_CreateValueInt(nullptr, 1)});
    XMLRPC_VectorRewind(XMLRPC_RequestGetData(xRequest));
    XMLRPC_VectorNext(XMLRPC_RequestGetData(xRequest));
    EXPECT_EQ(send(xRequest), STANDARD_RESPONSE);
}

TEST_F(TransientLogRequestTest, ReadsAParsedRequest)
{
    EXPECT_EQ(send(parsed("<params><param><value><struct><member><name>RequestOption</name><value><string>Disable"
                          "</string></value></member></struct></value></param></params>")),
              STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isTransientLogActive());
}

TEST_F(TransientLogRequestTest, AnEmptyOptionIsInvalidRatherThanMissing)
{
    EXPECT_EQ(send(parsed("<params><param><value><struct><member><name>RequestOption</name><value><string></string>"
                          "</value></member></struct></value></param></params>")),
              INVALID_FAULT);
    EXPECT_THAT(takeTraces(), ElementsAre(calledTrace("")));
}
} // namespace
