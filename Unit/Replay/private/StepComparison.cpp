#include "Unit/Replay/private/StepComparison.h"

#include "Unit/Text/PowerText.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace
{
/** A value of a step as text, or nothing where two steps have the same. */
struct ComparedValue
{
    const char* pName; // the column of the recording
    std::string (*text)(const StepSample&);
    bool (*equal)(const StepSample&, const StepSample&);
};

template <auto pField> ComparedValue value(const char* pName)
{
    return {pName, [](const StepSample& sample) { return fmt::format("{}", sample.*pField); },
            [](const StepSample& left, const StepSample& right) { return left.*pField == right.*pField; }};
}

template <auto pField> ComparedValue state(const char* pName)
{
    return {pName,
            [](const StepSample& sample) {
                return fmt::format("{} ({})", sample.*pField, controllerStateName(sample.*pField));
            },
            [](const StepSample& left, const StepSample& right) { return left.*pField == right.*pField; }};
}

template <std::size_t nAmplifier> ComparedValue reduction(const char* pName)
{
    return {pName, [](const StepSample& sample) { return fmt::format("{}", sample.reducedGain.at(nAmplifier)); },
            [](const StepSample& left, const StepSample& right) {
                return left.reducedGain.at(nAmplifier) == right.reducedGain.at(nAmplifier);
            }};
}

/** What people look at first comes first. */
const std::vector<ComparedValue>& comparedValues()
{
    static const std::vector<ComparedValue> VALUES = {
        state<&StepSample::nStateBefore>("state_before"),
        state<&StepSample::nState>("state"),
        value<&StepSample::nRequestedPower>("requested_cdb"),
        value<&StepSample::nPtarget>("ptarget_cdb"),
        value<&StepSample::nPctrl>("pctrl_cdb"),
        value<&StepSample::nPmeasured>("pmeasured_cdb"),
        value<&StepSample::nPredictedPctrl>("ppredicted_cdb"),
        value<&StepSample::nPowerError>("error_cdb"),
        value<&StepSample::nResult>("result"),
        value<&StepSample::nDetectorState>("detector_state"),
        value<&StepSample::nIfPower>("if_power_cdb"),
        value<&StepSample::nRfGain>("rf_gain_cdb"),
        reduction<0>("reduced_gain_1_cdb"),
        reduction<1>("reduced_gain_2_cdb"),
        reduction<2>("reduced_gain_3_cdb"),
        reduction<3>("reduced_gain_4_cdb"),
        reduction<4>("reduced_gain_5_cdb"),
        reduction<5>("reduced_gain_6_cdb"),
        value<&StepSample::temperatureDegrees>("temperature_c"),
        value<&StepSample::frequencyMhz>("frequency_mhz"),
        value<&StepSample::nOverruns>("overruns"),
        value<&StepSample::nSteps>("steps"),
        value<&StepSample::nFailedSteps>("failed_steps"),
        value<&StepSample::nTimeUs>("time_us"),
    };
    return VALUES;
}
} // namespace

std::vector<StepDifference> differencesOf(const StepSample& recorded, const StepSample& now)
{
    StepSample alike = now;
    alike.nLatenessUs = recorded.nLatenessUs;
    if (alike == recorded) { // as nearly always
        return {};
    }
    std::vector<StepDifference> differences;
    for (const ComparedValue& compared : comparedValues()) {
        if (!compared.equal(recorded, now)) {
            differences.push_back({compared.pName, compared.text(recorded), compared.text(now)});
        }
    }
    return differences;
}
