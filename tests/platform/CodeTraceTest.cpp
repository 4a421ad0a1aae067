#include "Platform/Trace/GtTrace.h"
#include "tests/platform/TraceFixture.h"

#include <thread>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

using CodeTraceTest = TraceFixture;

constexpr const char* CODE_PATH = "Control/Some/private/File_c";

TEST_F(CodeTraceTest, MapsCodesToLevels)
{
    const struct
    {
        unsigned long nCode;
        int nLevel;
    } cases[] = {{0x8002, 1}, {0x8000, 1}, {0xA102, 2}, {0x800, 5}, {0, 7}, {0x8001, 7}, {0xFFFFFFFF, 7}};
    for (const auto& code : cases) {
        EXPECT_EQ(CPlxTraceHandler_DmLevel2GtLevel(code.nCode), code.nLevel) << code.nCode;
    }
}

TEST_F(CodeTraceTest, BeginsAtLevelThree)
{
    EXPECT_EQ(OPC_trace.nLevel, 3);
    EXPECT_EQ(TI_trace.nLevel, 3);
    EXPECT_STREQ(OPC_trace.pName, "OPC");
    EXPECT_STREQ(TI_trace.pName, "TI");
}

TEST_F(CodeTraceTest, GathersARecordIntoALine)
{
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 45);
    GT_rawprintf("Null pointer in %s\n", "argument");
    GT_rawprintf("      code: %#lx\n", 0x8002UL);
    EXPECT_THAT(texts(), IsEmpty());
    GT_endImpl();
    ASSERT_EQ(m_records.size(), 1U);
    EXPECT_EQ(m_records[0].sGroup, "OPC");
    EXPECT_EQ(m_records[0].nLevel, 1);
    EXPECT_EQ(m_records[0].sSourcePath, CODE_PATH);
    EXPECT_EQ(m_records[0].nLine, 45);
    EXPECT_EQ(m_records[0].sText, "Null pointer in argument       code: 0x8002");
}

TEST_F(CodeTraceTest, WritesToStandardErrorAlone)
{
    const std::string sWritten = standardErrorOf([] {
        GT_beginImpl(&TI_trace, 4, CODE_PATH, 7);
        GT_rawprintf("text");
        GT_endImpl();
    });
    EXPECT_THAT(sWritten, MatchesRegex("[^ ]+ TI 4 Control/Some/private/File_c:7: text\n"));
    EXPECT_THAT(systemLogLines(), IsEmpty());
}

TEST_F(CodeTraceTest, CutsALongRecord)
{
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 1);
    GT_rawprintf("%s", std::string(1000, 'a').c_str());
    GT_rawprintf("%s", std::string(1000, 'b').c_str());
    GT_rawprintf("more");
    GT_endImpl();
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 2);
    GT_rawprintf("short");
    GT_endImpl();
    EXPECT_THAT(texts(), ElementsAre(std::string(1000, 'a') + std::string(23, 'b'), "short"));
}

TEST_F(CodeTraceTest, EndsARecordWhenTheNextBegins)
{
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 1);
    GT_rawprintf("first");
    GT_beginImpl(&TI_trace, 1, CODE_PATH, 2);
    GT_rawprintf("second");
    GT_endImpl();
    EXPECT_THAT(texts(), ElementsAre("first", "second"));
}

TEST_F(CodeTraceTest, LeavesOutWhatBelongsToNoRecord)
{
    GT_rawprintf("before");
    GT_endImpl();
    GT_beginImpl(nullptr, 1, CODE_PATH, 1);
    GT_rawprintf("of no object");
    GT_endImpl();
    GT_beginImpl(&OPC_trace, 1, nullptr, 1);
    GT_rawprintf(nullptr);
    GT_rawprintf("text");
    GT_endImpl();
    GT_endImpl();
    EXPECT_THAT(texts(), ElementsAre("text"));
}

TEST_F(CodeTraceTest, KeepsTheRecordsOfThreadsApart)
{
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 1);
    GT_rawprintf("of this ");
    std::thread([] {
        GT_rawprintf("of nobody");
        GT_beginImpl(&TI_trace, 1, CODE_PATH, 2);
        GT_rawprintf("of another thread");
        GT_endImpl();
    }).join();
    GT_rawprintf("thread");
    GT_endImpl();
    EXPECT_THAT(texts(), ElementsAre("of another thread", "of this thread"));
}

TEST_F(CodeTraceTest, StandsBesideAStreamMessage)
{
    KmtTrace trace("Test.Beside", 5);
    std::ostream& message = trace.beginLogMsg(5, CODE_PATH, 1);
    message << "stream ";
    GT_beginImpl(&OPC_trace, 1, CODE_PATH, 2);
    GT_rawprintf("code");
    message << "message" << std::endl;
    GT_endImpl();
    EXPECT_THAT(texts(), ElementsAre("stream message", "code"));
}

} // namespace
