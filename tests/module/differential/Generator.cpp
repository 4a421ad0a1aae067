#include "tests/module/differential/Generator.h"

#include <algorithm>
#include <array>

namespace Differential
{
namespace
{
std::int32_t number(EHandlerCall eCall)
{
    return static_cast<std::int32_t>(eCall);
}
} // namespace

void Generator::add(EOperation eKind, std::initializer_list<std::int32_t> arguments)
{
    Operation operation{eKind, {}};
    std::copy(arguments.begin(), arguments.end(), operation.anArgument.begin());
    m_sequence.operations.push_back(operation);
}

Sequence Generator::sequence()
{
    m_sequence = {};
    constexpr std::array<std::uint32_t, 6> CHANNELS = {0, 0, 1, 3, 12, 4294967295U};
    m_sequence.nChannel = CHANNELS[static_cast<std::size_t>(below(CHANNELS.size()))];
    m_nNoiseOneIn = oneIn(4) ? 4 : between(12, 60);
    const auto nLength = static_cast<std::size_t>(between(100, 900));
    m_nTarget = between(-1500, 1500);
    start();
    while (m_sequence.operations.size() < nLength) {
        episode();
    }
    readAll();
    return std::move(m_sequence);
}

void Generator::start()
{
    if (oneIn(12)) {
        noise();
        return;
    }
    add(EOperation::Initialize);
    for (const std::int32_t nTable : {0, 1}) {
        if (!oneIn(3)) {
            add(EOperation::TableOffset, {nTable, 0, 0, between(-20, 20)});
        }
        else if (oneIn(2)) {
            add(EOperation::TableAnswer, {nTable, between(0, 3), 1, 0});
        }
    }
    add(EOperation::Storage, {0, 0, oneIn(4) ? between(-2, 8) : between(1, 6), 1});
    add(EOperation::Storage, {1, 0, spacingCode(), 1});
    for (const std::int32_t nPhase : {0, 1, 2}) {
        add(EOperation::RunPhase, {nPhase});
    }
    for (std::int32_t nList = 0; nList < 4; ++nList) {
        for (std::int32_t nTimes = between(0, 2); nTimes > 0; --nTimes) {
            add(EOperation::RegisterObserver, {nList, between(0, 2)});
        }
    }
    add(EOperation::SetLimits, {between(-2500, 0), 2000});
}

void Generator::episode()
{
    struct Weighted
    {
        std::int32_t nWeight;
        void (Generator::*pEpisode)();
    };
    static constexpr Weighted EPISODES[] = {
        {5, &Generator::switchOn},     {2, &Generator::rampToTheBound}, {3, &Generator::switchOff},
        {5, &Generator::closedLoop},   {3, &Generator::faultOnce},      {1, &Generator::faultForAWhile},
        {2, &Generator::outputs},      {1, &Generator::surroundings},   {1, &Generator::rare},
        {2, &Generator::logs},         {1, &Generator::fillLogs},       {1, &Generator::delayedSwitchOn},
        {1, &Generator::connectAgain}, {1, &Generator::noise},          {4, &Generator::everyday}};
    std::int32_t nWeights = 0;
    for (const Weighted& weighted : EPISODES) {
        nWeights += weighted.nWeight;
    }
    std::int32_t nDrawn = below(nWeights);
    for (const Weighted& weighted : EPISODES) {
        nDrawn -= weighted.nWeight;
        if (nDrawn < 0) {
            (this->*weighted.pEpisode)();
            return;
        }
    }
}

std::int32_t Generator::target()
{
    if (oneIn(300)) {
        return any();
    }
    if (oneIn(12)) {
        m_nTarget = between(-2600, 2600);
    }
    return m_nTarget + (oneIn(3) ? between(-150, 150) : 0);
}

void Generator::regulate(int nTimes)
{
    for (int i = 0; i < nTimes; ++i) {
        add(EOperation::Regulate, {target()});
        if (oneIn(m_nNoiseOneIn)) {
            noise();
        }
    }
}

void Generator::switchOn()
{
    if (oneIn(3)) {
        add(EOperation::SetLimits, {oneIn(6) ? power() : between(-2500, 500), any()});
    }
    add(EOperation::Request, {1, mode()});
    regulate(between(4, 26));
    if (oneIn(4)) {
        add(EOperation::Request, {1, mode()});
    }
    if (oneIn(3)) {
        // A minimum of the ramp that is not the loop's.
        add(EOperation::SetLimits, {between(-500, 1500), 0});
    }
    regulate(between(1, 6));
}

// The first step of a ramp has the requested minimum as its power, so its error can be chosen.
void Generator::rampToTheBound()
{
    constexpr std::array<std::int32_t, 6> ERRORS = {100, 101, -100, -101, 149, -149};
    const std::int32_t nMinimum = between(-1500, 500);
    add(EOperation::Request, {0, mode()});
    regulate(2);
    everyday();
    add(EOperation::TableOffset, {0, 0, 0, 0});
    add(EOperation::TableOffset, {1, 0, 0, 0});
    add(EOperation::SetInterval, {oneIn(2) ? 6 : 12});
    add(EOperation::SetLimits, {nMinimum, 0});
    add(EOperation::Request, {1, mode()});
    for (int i = between(4, 24); i > 0; --i) {
        add(EOperation::Regulate, {nMinimum + ERRORS[static_cast<std::size_t>(below(ERRORS.size()))]});
    }
}

void Generator::switchOff()
{
    add(EOperation::Request, {0, mode()});
    for (int i = between(1, 4); i > 0; --i) {
        if (oneIn(2)) {
            noise();
        }
        regulate(1);
    }
}

void Generator::closedLoop()
{
    if (oneIn(4)) {
        add(EOperation::FollowPower, {1, between(-300, 300)});
    }
    if (oneIn(5)) {
        add(EOperation::Request, {1, mode()});
    }
    regulate(between(2, 40));
}

void Generator::faultOnce()
{
    add(EOperation::FaultOf, {below(HANDLER_CALLS), oneIn(4) ? result() : failure(), below(2), between(1, 3)});
    regulate(between(1, 4));
}

void Generator::faultForAWhile()
{
    const std::int32_t nCall = below(HANDLER_CALLS);
    add(EOperation::AnswerOf, {nCall, oneIn(4) ? result() : failure(), below(2)});
    regulate(between(1, 5));
    add(EOperation::AnswerOf, {nCall, 0, 1});
}

void Generator::outputs()
{
    switch (below(5)) {
    case 0:
        add(EOperation::OutputOf, {number(EHandlerCall::GetPctrlLimits), oneIn(3) ? -10000 : between(-3000, 0),
                                   oneIn(5)    ? power()
                                   : oneIn(12) ? -10000
                                               : between(0, 3000)});
        break;
    case 1:
        add(EOperation::OutputOf,
            {number(EHandlerCall::CalculateDetectorUsage), oneIn(4) ? (oneIn(2) ? 3 : any()) : between(0, 2)});
        break;
    case 2:
        add(EOperation::OutputOf, {number(EHandlerCall::GetReducedGain), between(-50, 50), below(4)});
        break;
    case 3:
        add(EOperation::OutputOf, {number(EHandlerCall::GetTxPowerReadings), any(), any(), any()});
        break;
    default:
        add(EOperation::FollowPower, {0, 0});
        add(EOperation::OutputOf, {number(EHandlerCall::GetPmeasured), oneIn(3) ? any() : power()});
        break;
    }
    regulate(between(1, 6));
}

void Generator::surroundings()
{
    switch (below(6)) {
    case 0:
        add(EOperation::TableAnswer, {below(2), between(0, 3), between(-1, 1), oneIn(2) ? 0 : 0x18000});
        break;
    case 1:
        add(EOperation::TableOffset, {below(2), between(-3, 3), between(-3, 3), power()});
        break;
    case 2:
        add(EOperation::Storage, {0, result(), oneIn(2) ? between(-2, 8) : any(), below(4)});
        break;
    case 3:
        add(EOperation::Storage, {1, result(), oneIn(3) ? any() : spacingCode(), 1});
        break;
    case 4:
        add(EOperation::Publish, {below(3), below(4)});
        break;
    default:
        add(EOperation::FrequencyEntry, {result()});
        break;
    }
    add(EOperation::RunPhase, {below(3)});
    regulate(between(0, 3));
}

// Settings that hide others when they stay: extreme gains, limits, intervals and production test.
void Generator::rare()
{
    switch (below(5)) {
    case 0:
        add(EOperation::SetGain, {below(3), 7 + below(2), oneIn(2) ? any() : between(-200, 2000)});
        break;
    case 1:
        add(EOperation::SetInterval, {interval()});
        break;
    case 2:
        add(EOperation::SetLimits, {power(), any()});
        break;
    case 3:
        add(EOperation::SetProductionTest, {oneIn(4) ? any() : 1, oneIn(4) ? any() : below(3)});
        break;
    default:
        add(EOperation::OutputOf, {number(EHandlerCall::GetPctrlLimits), any(), any()});
        break;
    }
    regulate(between(1, 12));
}

void Generator::logs()
{
    for (int i = between(1, 3); i > 0; --i) {
        if (oneIn(2)) {
            add(EOperation::OpcLogCommand, {oneIn(3) ? 0 : below(OPC_LOG_OPTIONS.size())});
        }
        else if (oneIn(6)) {
            add(EOperation::RestartLogs);
        }
        else {
            add(EOperation::TransientLogCommand, {oneIn(3) ? 0 : below(TRANSIENT_LOG_OPTIONS.size())});
        }
        regulate(between(0, 6));
    }
}

void Generator::fillLogs()
{
    if (!oneIn(4)) {
        logs();
        return;
    }
    everyday();
    switchOn();
    add(EOperation::OpcLogCommand, {0});
    add(EOperation::TransientLogCommand, {0});
    const std::int32_t nNoiseOneIn = m_nNoiseOneIn;
    m_nNoiseOneIn = 1000;
    regulate(between(195, 215));
    m_nNoiseOneIn = nNoiseOneIn;
    add(EOperation::TransientLogCommand, {oneIn(4) ? 3 : 2});
    add(EOperation::OpcLogCommand, {2});
}

void Generator::delayedSwitchOn()
{
    if (!m_bPrivateDoor) {
        closedLoop();
        return;
    }
    add(EOperation::EnterState, {3 + (oneIn(8) ? 1 : 0)});
    for (int i = below(3); i > 0; --i) {
        noise();
    }
    regulate(1);
    for (int i = between(1, 4); i > 0; --i) {
        if (oneIn(2)) {
            // Around the delay's end, with and without the last nanosecond of a millisecond.
            add(EOperation::AdvanceClock, {1, between(98, 101) * 1'000'000 - below(2)});
        }
        else {
            add(EOperation::AdvanceClock, {oneIn(10) ? between(4294960, 4294970) : below(2), below(1'000'000'000)});
        }
        if (oneIn(2)) {
            noise();
        }
        regulate(1);
    }
}

// Takes back what keeps sequences from going deep.
void Generator::everyday()
{
    if (oneIn(2)) {
        add(EOperation::Heal);
    }
    for (const std::int32_t nTable : {0, 1}) {
        if (oneIn(3)) {
            add(EOperation::TableAnswer, {nTable, 0, 1, 0});
            add(EOperation::TableOffset, {nTable, 0, 0, between(-30, 30)});
        }
    }
    if (oneIn(3)) {
        add(EOperation::SetProductionTest, {0, 0});
    }
    if (oneIn(3)) {
        add(EOperation::SetLimits, {between(-2500, -100), 0});
    }
    if (oneIn(4)) {
        add(EOperation::SetInterval, {oneIn(3) ? between(3, 30) : 6});
    }
    if (oneIn(4)) {
        add(EOperation::SetGain, {below(3), 7 + below(2), between(5, 120)});
    }
    if (oneIn(12)) {
        connectAgain();
    }
}

void Generator::connectAgain()
{
    for (const std::int32_t nWhat : {0, 1, 2}) {
        add(EOperation::Publish, {nWhat, 0});
    }
    add(EOperation::FrequencyEntry, {0});
    add(EOperation::RunPhase, {0});
}

void Generator::readAll()
{
    add(EOperation::OpcLogCommand, {2});
    add(EOperation::TransientLogCommand, {2});
    for (std::int32_t nRow = 0; nRow < 3; ++nRow) {
        for (std::int32_t nColumn = 0; nColumn < 9; ++nColumn) {
            add(EOperation::GetGain, {nRow, nColumn});
        }
    }
}
} // namespace Differential
