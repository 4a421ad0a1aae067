#include "Unit/Simulator/StepBucket.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Conversions.h"
#include "Platform/EAFResult.h"

#include <algorithm>
#include <cmath>

const std::array<QuantityKey, QUANTITY_COUNT>& quantityKeys()
{
    static constexpr std::array<QuantityKey, QUANTITY_COUNT> KEYS = {{{"requested_power", "dBm", 2},
                                                                      {"ptarget", "dBm", 2},
                                                                      {"pctrl", "dBm", 2},
                                                                      {"pmeasured", "dBm", 2},
                                                                      {"output_power", "dBm", 4},
                                                                      {"error", "dB", 2},
                                                                      {"output_error", "dB", 4},
                                                                      {"temperature", "C", 2},
                                                                      {"frequency", "MHz", 3}}};
    return KEYS;
}

EOnDegree onDegree(std::int32_t nState)
{
    switch (nState) {
    case eOPC_TX_ON:
        return eDEGREE_ON;
    case eOPC_TX_ON_RAMPING:
        return eDEGREE_RAMPING;
    case eOPC_TX_OFF:
        return eDEGREE_OFF;
    default:
        return eDEGREE_SWITCHING;
    }
}

void ValueRange::add(double value)
{
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
    sum += value;
    ++nValues;
}

void ValueRange::add(const ValueRange& other)
{
    minimum = std::min(minimum, other.minimum);
    maximum = std::max(maximum, other.maximum);
    sum += other.sum;
    nValues += other.nValues;
}

void StepBucket::addPower(EQuantity eQuantity, std::int32_t nCentiDbm)
{
    if (nCentiDbm != OPC_POWER_OFF && nCentiDbm != OPC_POWER_UNKNOWN) {
        range(eQuantity).add(nCentiDbm / CENTI_DB_PER_DB);
    }
}

void StepBucket::add(const VirtualStep& step)
{
    const StepSample& sample = step.sample;
    const bool bFailed = EAF_isFailure(sample.nResult);
    lastSeconds = static_cast<double>(sample.nTimeUs) / US_PER_S;
    firstSeconds = nSteps == 0 ? lastSeconds : firstSeconds;
    ++nSteps;
    nFailedSteps += bFailed ? 1 : 0;
    nLastState = sample.nState;
    nLowestDegree = std::min<int>(nLowestDegree, onDegree(sample.nState));
    addPower(EQuantity::RequestedPower, sample.nRequestedPower);
    addPower(EQuantity::TargetPower, sample.nPtarget);
    addPower(EQuantity::ControlPower, sample.nPctrl);
    addPower(EQuantity::MeasuredPower, sample.nPmeasured);
    const bool bRadiates = std::isfinite(step.outputPowerDbm);
    if (bRadiates) {
        range(EQuantity::OutputPower).add(step.outputPowerDbm);
    }
    if (sample.nStateBefore == eOPC_TX_ON && sample.nState == eOPC_TX_ON && !bFailed) {
        range(EQuantity::ControlError).add(sample.nPowerError / CENTI_DB_PER_DB);
        if (bRadiates) {
            range(EQuantity::OutputError).add(step.outputPowerDbm - sample.nPtarget / CENTI_DB_PER_DB);
        }
    }
    range(EQuantity::Temperature).add(static_cast<double>(sample.temperatureDegrees));
    range(EQuantity::Frequency).add(static_cast<double>(sample.frequencyMhz));
}

void StepBucket::add(const StepBucket& later)
{
    firstSeconds = nSteps == 0 ? later.firstSeconds : firstSeconds;
    lastSeconds = later.lastSeconds;
    nSteps += later.nSteps;
    nFailedSteps += later.nFailedSteps;
    nLastState = later.nLastState;
    nLowestDegree = std::min(nLowestDegree, later.nLowestDegree);
    for (std::size_t nQuantity = 0; nQuantity < QUANTITY_COUNT; ++nQuantity) {
        ranges[nQuantity].add(later.ranges[nQuantity]);
    }
}
