// Every call of the handler in every scene with every kind of fault: what the controller makes of it.
#include "tests/module/matrix/Faults.h"
#include "tests/module/matrix/SceneRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace
{
constexpr int MAX_FAILURES_SHOWN = 5;

/** A scene with a setting of the logs. */
struct Stage
{
    const Scene* pScene;
    const LogSetting* pLogs;
};

std::ostream& operator<<(std::ostream& out, const Stage& stage)
{
    return out << stage.pScene->pName << ", " << stage.pLogs->pName;
}

std::vector<Stage> stages()
{
    std::vector<Stage> all;
    for (const Scene& scene : scenes()) {
        for (const LogSetting& logs : logSettings()) {
            if (scene.bWithLogs || &logs == &logSettings().front()) {
                all.push_back({&scene, &logs});
            }
        }
    }
    return all;
}

std::string stageName(const ::testing::TestParamInfo<Stage>& stage)
{
    std::string sName = std::string(stage.param.pScene->pName) + ' ' + stage.param.pLogs->pName;
    for (char& c : sName) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    }
    return sName;
}

/** Plays a stage without a fault. @return the calls that it made */
std::vector<RecordedCall> recordStage(const Stage& stage)
{
    SceneRun run(*stage.pScene, *stage.pLogs, Fault{});
    EXPECT_EQ(run.play(), "");
    return run.calls();
}

/** A fault at a recorded call. */
struct Case
{
    RecordedCall recorded;
    Fault fault;
};

/** @return every fault at every call that a stage makes; another thread, which takes long, once at each place */
std::vector<Case> casesOf(const Stage& stage)
{
    std::vector<Case> cases;
    std::set<const Place*> placesWithThread;
    for (const RecordedCall& recorded : recordStage(stage)) {
        for (Fault& fault : faultsAt(recorded.call.eCall, recorded.nOrdinal)) {
            if (fault.eMeanwhile != EMeanwhile::OtherThread || placesWithThread.insert(recorded.pPlace).second) {
                cases.push_back({recorded, std::move(fault)});
            }
        }
    }
    return cases;
}

class FaultMatrixTest : public ::testing::TestWithParam<Stage>
{
};
} // namespace

TEST_P(FaultMatrixTest, EveryFaultAtEveryCallLeavesWhatTheBehaviourSays)
{
    std::size_t nWaiting = 0;
    std::size_t nOvertaken = 0;
    int nFailures = 0;
    const std::vector<Case> cases = casesOf(GetParam());
    for (const Case& tried : cases) {
        SceneRun run(*GetParam().pScene, *GetParam().pLogs, tried.fault);
        const std::string sWrong = run.play();
        nWaiting += run.isWaitingForLimits() ? 1 : 0;
        nOvertaken += run.isRequestOvertaken() ? 1 : 0;
        EXPECT_TRUE(!run.isRequestOvertaken() || tried.recorded.pPlace->nState == eOPC_TX_ON_RAMPING)
            << tried.fault.sName << " at " << tried.recorded.pPlace->pName;
        if (!sWrong.empty() && ++nFailures <= MAX_FAILURES_SHOWN) {
            ADD_FAILURE() << sWrong;
        }
    }
    EXPECT_EQ(nFailures, 0) << "of " << cases.size() << " cases";
    std::cout << cases.size() << " cases, " << nWaiting << " of them end waiting for the upper limit, in " << nOvertaken
              << " a request was overtaken by the step under way\n";
}

INSTANTIATE_TEST_SUITE_P(Handler, FaultMatrixTest, ::testing::ValuesIn(stages()), stageName);

TEST(FaultMatrixCases, MeetEveryPlaceOfTheBehaviourAndNoOther)
{
    std::map<std::string, std::size_t> casesByPlace;
    std::size_t nCases = 0;
    for (const Stage& stage : stages()) {
        for (const Case& tried : casesOf(stage)) {
            const Place* const pPlace = tried.recorded.pPlace;
            ASSERT_NE(pPlace, nullptr) << textOf(tried.recorded.call) << " in " << stage.pScene->pName;
            ++casesByPlace[pPlace->pName];
            ++nCases;
        }
    }
    for (const Place& place : handlerPlaces()) {
        EXPECT_GT(casesByPlace[place.pName], 0U) << place.pName;
        std::cout << casesByPlace[place.pName] << " cases at " << place.pName << '\n';
    }
    std::cout << nCases << " cases in " << stages().size() << " stages\n";
}

TEST(FaultMatrixCases, NumberEveryCallOnce)
{
    for (const Stage& stage : stages()) {
        std::set<std::tuple<EHandlerCall, std::size_t>> seen;
        std::map<EHandlerCall, std::size_t> highest;
        for (const RecordedCall& recorded : recordStage(stage)) {
            EXPECT_TRUE(seen.insert({recorded.call.eCall, recorded.nOrdinal}).second) << textOf(recorded.call);
            highest[recorded.call.eCall] = std::max(highest[recorded.call.eCall], recorded.nOrdinal);
        }
        for (const auto& [eCall, nHighest] : highest) {
            for (std::size_t i = 1; i <= nHighest; ++i) {
                EXPECT_EQ(seen.count({eCall, i}), 1U) << nameOf(eCall) << ' ' << i;
            }
        }
    }
}
