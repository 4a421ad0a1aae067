#include "tests/module/differential/Coverage.h"

#include <algorithm>

namespace Differential
{
namespace
{
constexpr std::size_t CORNERS = static_cast<std::size_t>(ECorner::Count);
constexpr std::size_t OUTCOMES = static_cast<std::size_t>(EOutcome::Count);
constexpr std::array<std::string_view, OUTCOMES> OUTCOME_NAMES = {"succeeded", "failed", "succeeded without writing",
                                                                  "failed without writing"};
constexpr std::array<std::string_view, CORNERS> CORNER_NAMES = {
    "ramp above upper limit",
    "ramp below requested minimum",
    "ramp below requested minimum not loop minimum",
    "ramp out of time",
    "ramp error of exactly one hundred",
    "ramp error of one hundred and one",
    "loop above upper limit",
    "loop below lower limit",
    "prediction above upper limit",
    "prediction below lower limit",
    "production test above upper limit",
    "production test below lower limit",
    "step beyond hundred thousand",
    "step limited to ten",
    "step limited to twenty",
    "step in mode zero unlimited",
    "negative product rounded",
    "product wrapped",
    "target wrapped",
    "error wrapped",
    "power wrapped",
    "detector without row",
    "gain differs by row",
    "gain differs by column",
    "requested minimum unknown",
    "upper limit unknown",
    "handler lower limit unknown",
    "handler lower limit taken",
    "mode reported then limited",
    "on request while switching on",
    "off request while switching on",
    "on request while switching off",
    "unknown request",
    "ramp told unchanged power",
    "change compared with before the ramp",
    "observer told twice",
    "opc log seeded",
    "opc log minimum fell",
    "opc log maximum rose",
    "opc log negative seed has no zero",
    "opc log read with samples",
    "transient log last sample",
    "transient log full",
    "transient log read full",
    "transient log read empty",
    "logs restarted",
    "negative gain blocks",
    "few gain blocks",
    "no gain blocks",
    "table missing",
    "table invalid",
    "table failing",
    "spacing unknown",
    "spacing fractional",
    "storage content missing",
    "handler missing",
    "handler kept from before",
    "frequency handler missing",
    "frequency entry refused",
    "temperature handler missing",
    "notified twice",
    "delay not over",
    "delay over",
    "delay wrapped",
    "delay just over",
    "delay one millisecond short",
    "interval above waits",
    "interval negative",
};

struct Expected
{
    EHandlerCall eCall;
    std::array<bool, STATES> bInState;
};

// In which states the controller calls the handler. A ramp that runs out of time ends its last step in state 8.
constexpr std::array<Expected, HANDLER_CALLS> CALLS = {
    {{EHandlerCall::SetOutputPower, {false, false, false, false, false, true, true, true, true, false}},
     {EHandlerCall::SetTxState, {true, true, false, false, false, true, true, true, false, false}},
     {EHandlerCall::SetProductionTestSettings, {true, true, true, true, true, true, true, true, true, false}},
     {EHandlerCall::GetReducedGain, {false, false, false, false, false, false, false, true, true, false}},
     {EHandlerCall::GetTxPowerReadings, {false, false, false, false, false, false, false, true, true, false}},
     {EHandlerCall::CalculateDetectorUsage, {false, false, false, false, false, false, false, true, true, false}},
     {EHandlerCall::GetPmeasured, {false, false, false, false, false, false, false, false, true, false}},
     {EHandlerCall::SetTraffic, {true, false, false, false, false, false, false, false, true, false}},
     {EHandlerCall::GetPctrlLimits, {false, false, false, false, false, true, false, false, false, false}}}};

/** @return whether the call has outputs, which it may leave unwritten */
bool hasOutputs(EHandlerCall eCall)
{
    return eCall == EHandlerCall::GetReducedGain || eCall == EHandlerCall::GetTxPowerReadings ||
           eCall == EHandlerCall::CalculateDetectorUsage || eCall == EHandlerCall::GetPmeasured ||
           eCall == EHandlerCall::GetPctrlLimits;
}

bool isSilent(std::size_t nOutcome)
{
    return nOutcome >= static_cast<std::size_t>(EOutcome::SucceededSilently);
}

bool isDelayed(std::size_t nState)
{
    return nState == 3 || nState == 4;
}

bool isPrivate(std::size_t nOperation)
{
    return nOperation == static_cast<std::size_t>(EOperation::EnterState) ||
           nOperation == static_cast<std::size_t>(EOperation::StepStateMachine) ||
           nOperation == static_cast<std::size_t>(EOperation::WriteInitialGain);
}

bool isPrivate(ECorner eCorner)
{
    return eCorner >= ECorner::DelayNotOver && eCorner <= ECorner::DelayOneMillisecondShort;
}
} // namespace

void Coverage::count(std::int64_t nState, EHandlerCall eCall, EOutcome eOutcome)
{
    ++m_anCall[static_cast<std::size_t>(nState)][static_cast<std::size_t>(eCall)][static_cast<std::size_t>(eOutcome)];
}

void Coverage::count(std::int64_t nState, EOperation eKind)
{
    ++m_anOperation[static_cast<std::size_t>(nState)][static_cast<std::size_t>(eKind)];
}

template <class TVisitor> void Coverage::visit(bool bPrivateDoor, TVisitor visitor) const
{
    for (std::size_t i = 0; i < CORNERS; ++i) {
        if (bPrivateDoor || !isPrivate(static_cast<ECorner>(i))) {
            visitor(m_anCorner[i], [i] { return std::string(CORNER_NAMES[i]); });
        }
    }
    for (std::size_t nState = 0; nState < STATES; ++nState) {
        if (nState == 9 || (!bPrivateDoor && isDelayed(nState))) {
            continue;
        }
        const std::string sState = " in state " + std::to_string(nState);
        for (const Expected& expected : CALLS) {
            for (std::size_t i = 0; expected.bInState[nState] && i < OUTCOMES; ++i) {
                if (isSilent(i) && !hasOutputs(expected.eCall)) {
                    continue;
                }
                visitor(m_anCall[nState][static_cast<std::size_t>(expected.eCall)][i], [&] {
                    return std::string(nameOf(expected.eCall)) + " " + std::string(OUTCOME_NAMES[i]) + sState;
                });
            }
        }
        // What is for the surroundings is counted by what comes of it.
        for (std::size_t i = 0; i < static_cast<std::size_t>(EOperation::AnswerOf); ++i) {
            if (bPrivateDoor || !isPrivate(i)) {
                visitor(m_anOperation[nState][i],
                        [&] { return std::string(nameOf(static_cast<EOperation>(i))) + sState; });
            }
        }
    }
}

std::vector<std::string> Coverage::missing(bool bPrivateDoor) const
{
    std::vector<std::string> names;
    visit(bPrivateDoor, [&names](std::uint64_t nCount, auto name) {
        if (nCount == 0) {
            names.push_back(name());
        }
    });
    return names;
}

std::string Coverage::summary(bool bPrivateDoor) const
{
    std::size_t nPlaces = 0;
    std::uint64_t nLeast = UINT64_MAX;
    std::string sLeast;
    visit(bPrivateDoor, [&](std::uint64_t nCount, auto name) {
        ++nPlaces;
        if (nCount < nLeast) {
            nLeast = nCount;
            sLeast = name();
        }
    });
    return std::to_string(nPlaces) + " places to reach, least often (" + std::to_string(nLeast) + " times) " + sLeast;
}
} // namespace Differential
