#include "tests/module/step/StepModel.h"

#include <sstream>

std::int64_t StepModel::wrapped(std::int64_t nValue)
{
    constexpr std::int64_t MODULUS = std::int64_t{1} << 32;
    std::int64_t nRest = nValue % MODULUS;
    if (nRest < 0) {
        nRest += MODULUS;
    }
    return nRest < MODULUS / 2 ? nRest : nRest - MODULUS;
}

std::int64_t StepModel::limited(std::int64_t nValue, std::int64_t nLower, std::int64_t nUpper)
{
    const bool bAbove = nValue > nUpper;
    const bool bBelow = nValue < nLower;
    return bAbove ? nUpper : bBelow ? nLower : nValue;
}

std::int64_t StepModel::gainStep(std::int64_t nGainPercent, std::int64_t nPowerError)
{
    const std::int64_t nDividend = wrapped(wrapped(nGainPercent * nPowerError) + 50);
    // Whole hundreds of the magnitude, the sign put back: rounds towards zero.
    return nDividend < 0 ? -(-nDividend / 100) : nDividend / 100;
}

std::int64_t StepModel::rampPctrl(std::int64_t nPctrl, std::int64_t nGainPercent, std::int64_t nPowerError,
                                  std::int64_t nTxPmin, std::int64_t nPctrlMax)
{
    return limited(wrapped(nPctrl + gainStep(nGainPercent, nPowerError)), nTxPmin, nPctrlMax);
}

RegulatorStep::ClosedLoopResult StepModel::closedLoop(const RegulatorStep::ClosedLoopInput& input)
{
    const std::int64_t nPctrl = input.nPctrl;
    const std::int64_t nPmeasured = input.nPmeasured;
    const std::int64_t nError = wrapped(std::int64_t{input.nPtarget} - nPmeasured);
    std::int64_t nStep = limited(gainStep(input.nGainPercent, nError), -100000, 100000);
    std::int64_t nLower = input.nPctrlMin;
    std::int64_t nUpper = input.nPctrlMax;
    if (input.bProductionTestMode) {
        nLower = wrapped(nLower - 2000);
        nUpper = wrapped(nUpper + 2000);
    }
    else if (input.bStepLimited) {
        nStep = limited(nStep, -std::int64_t{input.nMaxPctrlStep}, input.nMaxPctrlStep);
    }
    const std::int64_t nPrediction = wrapped(nPmeasured + nStep);
    return {static_cast<std::int32_t>(nError),
            static_cast<std::int32_t>(limited(wrapped(nPctrl + nStep), nLower, nUpper)),
            static_cast<std::int32_t>(input.bProductionTestMode ? nPrediction : limited(nPrediction, nLower, nUpper))};
}

bool StepModel::isSame(const RegulatorStep::ClosedLoopResult& a, const RegulatorStep::ClosedLoopResult& b)
{
    return a.nPowerError == b.nPowerError && a.nPctrl == b.nPctrl && a.nPredictedPctrl == b.nPredictedPctrl;
}

std::string StepModel::textOf(const RegulatorStep::ClosedLoopInput& input)
{
    std::ostringstream text;
    text << "target " << input.nPtarget << ", measured " << input.nPmeasured << ", control " << input.nPctrl
         << ", gain " << input.nGainPercent << ", limits " << input.nPctrlMin << " to " << input.nPctrlMax
         << ", step limit " << input.nMaxPctrlStep << (input.bStepLimited ? " on" : " off")
         << (input.bProductionTestMode ? ", production test" : "");
    return text.str();
}

std::string StepModel::textOf(const RegulatorStep::ClosedLoopResult& result)
{
    std::ostringstream text;
    text << "error " << result.nPowerError << ", control " << result.nPctrl << ", predicted " << result.nPredictedPctrl;
    return text.str();
}
