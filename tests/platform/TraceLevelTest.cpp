#include "Platform/Trace/GtTrace.h"
#include "tests/platform/TraceFixture.h"

#include <syslog.h>

#include <atomic>
#include <optional>
#include <thread>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* LEVEL_PATH = "Control/Some/private/File";

class TraceLevelTest : public TraceFixture
{
protected:
    static void write(KmtTrace& trace, int nLevel)
    {
        trace.beginLogMsg(nLevel, LEVEL_PATH, 1) << "level " << nLevel << std::endl;
    }

    static std::optional<int> levelOf(const std::string& sGroup)
    {
        for (const TraceGroupLevel& group : TraceControl::levels()) {
            if (group.sGroup == sGroup) {
                return group.nLevel;
            }
        }
        return std::nullopt;
    }
};

TEST_F(TraceLevelTest, LetsThroughWhatIsAtOrBelowTheLevel)
{
    KmtTrace trace("Level.Limit", 3);
    for (const int nLevel : {0, 1, 2, 3, 5, 6, 7}) {
        write(trace, nLevel);
    }
    EXPECT_THAT(texts(), ElementsAre("level 0", "level 1", "level 2", "level 3"));
    EXPECT_THAT(systemLogLines(), IsEmpty());
}

TEST_F(TraceLevelTest, SendsLevelFourToTheSystemLogAtAnyLevel)
{
    KmtTrace trace("Level.System", 0);
    const std::string sWritten = standardErrorOf([&trace] { write(trace, 4); });
    EXPECT_EQ(sWritten, "");
    ASSERT_EQ(systemLogLines().size(), 1U);
    EXPECT_EQ(systemLogLines()[0].nPriority, LOG_USER | LOG_INFO);
    EXPECT_EQ(systemLogLines()[0].sText, "Level.System: level 4");
    EXPECT_EQ(SystemLogRecorder::identity(), "opc");
    EXPECT_EQ(SystemLogRecorder::facility(), LOG_USER);
    EXPECT_THAT(texts(), ElementsAre("level 4"));
}

TEST_F(TraceLevelTest, SendsLevelFourToStandardErrorByItsLevel)
{
    KmtTrace trace("Level.Both", 4);
    EXPECT_NE(standardErrorOf([&trace] { write(trace, 4); }).find("Level.Both 4 "), std::string::npos);
    TraceControl::setLevel("Level.Both", 3);
    EXPECT_EQ(standardErrorOf([&trace] { write(trace, 4); }), "");
    EXPECT_EQ(systemLogLines().size(), 2U);
}

TEST_F(TraceLevelTest, SilencesTheSystemLog)
{
    KmtTrace trace("Level.Silent", 5);
    TraceControl::setSystemLogEnabled(false);
    write(trace, 4);
    EXPECT_THAT(systemLogLines(), IsEmpty());
    TraceControl::setSystemLogEnabled(true);
    write(trace, 4);
    EXPECT_EQ(systemLogLines().size(), 1U);
}

TEST_F(TraceLevelTest, SilencesStandardError)
{
    KmtTrace trace("Level.Quiet", 5);
    const std::string sWritten = standardErrorOf([&trace] {
        TraceControl::setStandardErrorEnabled(false);
        write(trace, 1);
    });
    EXPECT_EQ(sWritten, "");
    EXPECT_EQ(m_records.size(), 1U);
}

TEST_F(TraceLevelTest, ChangesWhileTheGroupIsInUse)
{
    KmtTrace trace("Level.Change", 3);
    write(trace, 5);
    TraceControl::setLevel("Level.Change", 5);
    write(trace, 5);
    TraceControl::setLevel("Level.Change", 0);
    write(trace, 1);
    EXPECT_THAT(texts(), ElementsAre("level 5"));
}

TEST_F(TraceLevelTest, HoldsForAGroupToCome)
{
    TraceControl::setLevel("Level.ToCome", 7);
    EXPECT_EQ(levelOf("Level.ToCome"), std::nullopt);
    KmtTrace trace("Level.ToCome", 3);
    EXPECT_EQ(levelOf("Level.ToCome"), 7);
    write(trace, 7);
    EXPECT_EQ(m_records.size(), 1U);
}

TEST_F(TraceLevelTest, IsSharedByTraceObjectsOfOneName)
{
    KmtTrace first("Level.Shared", 5);
    KmtTrace second("Level.Shared", 3);
    EXPECT_EQ(levelOf("Level.Shared"), 5);
    TraceControl::setLevel("Level.Shared", 1);
    write(first, 2);
    write(second, 2);
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TraceLevelTest, OutlivesTheTraceObject)
{
    {
        std::string sName = "Level.Outlives";
        const KmtTrace trace(sName.c_str(), 5);
        TraceControl::setLevel(sName, 6);
        sName.assign(sName.size(), 'x');
    }
    EXPECT_EQ(levelOf("Level.Outlives"), 6);
    const KmtTrace again("Level.Outlives", 3);
    EXPECT_EQ(levelOf("Level.Outlives"), 6);
}

TEST_F(TraceLevelTest, IsListedSortedByGroup)
{
    const KmtTrace second("Level.B", 2);
    const KmtTrace first("Level.A", 1);
    const std::vector<TraceGroupLevel> levels = TraceControl::levels();
    EXPECT_TRUE(std::is_sorted(levels.begin(), levels.end(),
                               [](const TraceGroupLevel& a, const TraceGroupLevel& b) { return a.sGroup < b.sGroup; }));
    EXPECT_EQ(levelOf("Level.A"), 1);
    EXPECT_EQ(levelOf("Level.B"), 2);
    EXPECT_EQ(levelOf("OPC"), 3);
    EXPECT_EQ(levelOf("TI"), 3);
}

TEST_F(TraceLevelTest, ReachesTheTraceObjectsByName)
{
    TraceControl::setLevel("OPC", 6);
    EXPECT_EQ(OPC_trace.nLevel, 6);
    EXPECT_EQ(TI_trace.nLevel, 3);
    TraceControl::setLevel("TI", 1);
    EXPECT_EQ(TI_trace.nLevel, 1);
    EXPECT_EQ(levelOf("OPC"), 6);
}

TEST_F(TraceLevelTest, MayChangeWhileAThreadTraces)
{
    constexpr int MESSAGES = 2000;
    KmtTrace trace("Level.Running", 7);
    std::atomic<bool> bDone{false};
    std::thread tracer([&trace, &bDone] {
        for (int nMessage = 0; nMessage < MESSAGES; ++nMessage) {
            write(trace, 5);
        }
        bDone = true;
    });
    for (int nRound = 0; !bDone; ++nRound) {
        TraceControl::setLevel("Level.Running", nRound % 2 == 0 ? 3 : 7);
        TraceControl::levels();
    }
    tracer.join();
    TraceControl::setLevel("Level.Running", 5);
    const std::size_t nBefore = m_records.size();
    EXPECT_LE(nBefore, static_cast<std::size_t>(MESSAGES));
    write(trace, 5);
    EXPECT_EQ(m_records.size(), nBefore + 1);
}

// Its level holds for every group to come, so it runs in a process of its own.
TEST_F(TraceLevelTest, OfAllReachesGroupsKnownAndToCome)
{
    const auto check = [] {
        const KmtTrace known("Level.Known", 3);
        TraceControl::setLevel("Level.Preset", 2);
        TraceControl::setLevelOfAll(6);
        const KmtTrace preset("Level.Preset", 3);
        const KmtTrace fresh("Level.Fresh", 3);
        TraceControl::setLevel("Level.Later", 1);
        const KmtTrace later("Level.Later", 3);
        const bool bGood = levelOf("Level.Known") == 6 && levelOf("Level.Preset") == 6 && levelOf("Level.Fresh") == 6 &&
                           levelOf("Level.Later") == 1 && OPC_trace.nLevel == 6 && TI_trace.nLevel == 6;
        _exit(bGood ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

} // namespace
