#include "tests/module/matrix/Faults.h"

#include <cstdint>
#include <span>

namespace
{
using Values = std::array<std::int32_t, 2>;

constexpr Values POWERS[] = {{INT32_MIN, INT32_MIN}, {INT32_MAX, INT32_MAX}, {-10000, -10000}, {-9900, -9900}, {0, 0}};
// Rows are 0, 1 and 2.
constexpr Values DETECTOR_STATES[] = {{-1, 0}, {3, 0}, {9, 0}, {INT32_MIN, 0}, {INT32_MAX, 0}};
constexpr Values LIMITS[] = {{INT32_MIN, INT32_MIN}, {INT32_MAX, INT32_MAX}, {INT32_MIN, INT32_MAX},
                             {INT32_MAX, INT32_MIN}, {-10000, 1000},         {-600, -10000},
                             {-10000, -10000},       {-9900, -9900},         {0, 0}};

/** What an operation may write; nothing for one without outputs. */
std::span<const Values> extremesOf(EHandlerCall eCall)
{
    switch (eCall) {
    case EHandlerCall::GetReducedGainFromAmplifier:
    case EHandlerCall::GetTxPowerReadings:
    case EHandlerCall::GetPmeasured:
        return POWERS;
    case EHandlerCall::CalculateDetectorUsage:
        return DETECTOR_STATES;
    case EHandlerCall::GetPctrlLimits:
        return LIMITS;
    default:
        return {};
    }
}
} // namespace

std::vector<Fault> faultsAt(EHandlerCall eCall, std::size_t nOrdinal)
{
    std::vector<Fault> faults;
    const auto add = [&](const std::string& sName, std::size_t nTimes, EOPHResult nResult) -> Fault& {
        faults.push_back({.sName = sName, .eCall = eCall, .nOrdinal = nOrdinal, .nTimes = nTimes, .nResult = nResult});
        return faults.back();
    };
    add("refuses once", 1, EAF_FAILED);
    add("refuses three times", 3, EAF_NULL_POINTER);
    add("refuses for ever", Fault::FOR_EVER, INT32_MAX);
    for (const EOPHResult nResult : {0x7FFF, -1, INT32_MIN}) {
        add("succeeds with " + std::to_string(nResult), 1, nResult);
    }
    add("is slow", 1, EAF_OK).eMeanwhile = EMeanwhile::TimePasses;
    add("lasts until another thread is done", 1, EAF_OK).eMeanwhile = EMeanwhile::OtherThread;
    add("lasts until an on request", 1, EAF_OK).eMeanwhile = EMeanwhile::OnRequest;
    add("lasts until an off request", 1, EAF_OK).eMeanwhile = EMeanwhile::OffRequest;
    if (extremesOf(eCall).empty()) {
        return faults;
    }
    add("writes nothing once", 1, EAF_OK).bWrites = false;
    add("never writes again", Fault::FOR_EVER, EAF_OK).bWrites = false;
    add("refuses and writes nothing", 1, EAF_FAILED).bWrites = false;
    for (const Values& values : extremesOf(eCall)) {
        const std::string sValues = std::to_string(values[0]) + " and " + std::to_string(values[1]);
        add("writes " + sValues, 1, EAF_OK).values = values;
        add("writes only " + sValues, Fault::FOR_EVER, EAF_OK).values = values;
        add("refuses with " + sValues, 1, EAF_FAILED).values = values;
    }
    return faults;
}
