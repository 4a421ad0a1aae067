// The closed loop, what is sent and logged, and who is told.
#include "tests/module/differential/ReferenceController.h"

#include <algorithm>

namespace Differential
{
namespace
{
constexpr std::int64_t LOOP_STATE = 8;
constexpr std::int64_t WIDENED = 2000;
constexpr std::int64_t LARGEST_STEP = 100000;

std::string hex(std::int64_t nResult)
{
    char sDigits[16];
    return {sDigits, std::to_chars(sDigits, sDigits + sizeof sDigits, static_cast<std::uint32_t>(nResult), 16).ptr};
}

std::int32_t narrow(std::int64_t nValue)
{
    return static_cast<std::int32_t>(nValue);
}
} // namespace

std::int64_t ReferenceController::offset(std::size_t nTable, std::int64_t nX, std::int64_t nY)
{
    const int nFetched = m_anTable[nTable];
    if (nFetched < 0) {
        m_coverage.count(ECorner::TableMissing);
        return 0;
    }
    std::int32_t nValid = 0;
    if (isRefused(m_environment.isValid(nFetched, &nValid)) || nValid == 0) {
        m_coverage.count(ECorner::TableInvalid);
        return 0;
    }
    constexpr std::int32_t UNWRITTEN = 0;
    std::int32_t nValue = UNWRITTEN;
    if (isRefused(m_environment.interpolate(nFetched, narrow(nX), narrow(nY), &nValue))) {
        m_coverage.count(ECorner::TableFailing);
    }
    return nValue;
}

std::int64_t ReferenceController::regulate(std::int64_t nRequested)
{
    const std::int64_t nFromBandwidth = offset(0, nRequested, m_nSpacing);
    const std::int64_t nFromTemperature = offset(1, m_nFrequency, m_nTemperature);
    const std::int64_t nSum = nRequested + nFromBandwidth + nFromTemperature;
    m_nPtarget = wrapped(nSum);
    if (m_nPtarget != nSum) {
        m_coverage.count(ECorner::TargetWrapped);
    }
    if (m_nState == LOOP_STATE) {
        return closeLoop();
    }
    m_nPmeasured = m_nPctrl;
    return stepStateMachine();
}

std::int64_t ReferenceController::gainFor(std::int64_t nColumn)
{
    if (m_nDetector < 0 || m_nDetector > 2) {
        m_coverage.count(ECorner::DetectorWithoutRow);
        return 0;
    }
    const auto& row = m_anGain[static_cast<std::size_t>(m_nDetector)];
    if (row[7] != row[8]) {
        m_coverage.count(ECorner::GainDiffersByColumn);
    }
    if (m_anGain[0] != m_anGain[1] && m_anGain[1] != m_anGain[2]) {
        m_coverage.count(ECorner::GainDiffersByRow);
    }
    return row[static_cast<std::size_t>(nColumn)];
}

std::int64_t ReferenceController::correction(std::int64_t nGain)
{
    const std::int64_t nProduct = nGain * m_nError;
    const std::int64_t nRounded = wrapped(wrapped(nProduct) + m_constants.nRounding);
    if (nProduct != wrapped(nProduct)) {
        m_coverage.count(ECorner::ProductWrapped);
    }
    if (nProduct < -100 && nProduct == wrapped(nProduct)) {
        m_coverage.count(ECorner::NegativeProductRounded);
    }
    return nRounded / 100;
}

std::int64_t ReferenceController::closeLoop()
{
    std::int32_t nMeasured = 0;
    if (isRefused(m_environment.getPmeasured(&nMeasured))) {
        trace(1, "regulate(): failed to get P measured");
        return 0x8000;
    }
    m_nPmeasured = nMeasured;
    if (isRefused(m_environment.calculateDetectorUsage(narrow(m_nPctrl), narrow(m_nLoopMode), &m_nDetector))) {
        trace(1, "regulate(): failed to calculate usage of detector");
        return 0x8000;
    }
    m_nError = wrapped(m_nPtarget - m_nPmeasured);
    if (m_nError != m_nPtarget - m_nPmeasured) {
        m_coverage.count(ECorner::ErrorWrapped);
    }
    const std::int64_t nFull = correction(gainFor(LOOP_STATE));
    const std::int64_t nStep = std::clamp(nFull, -LARGEST_STEP, LARGEST_STEP);
    if (nStep != nFull) {
        m_coverage.count(ECorner::StepBeyondHundredThousand);
    }
    if (m_bProductionTest) {
        moveInProductionTest(nStep);
    }
    else {
        moveWithin(limitStep(nStep));
    }
    tellIfChanged(2, m_nPredicted);
    if (!sendAndLog()) {
        trace(1, "regulate(): failed to set Pctrl");
        return 0x8000;
    }
    tellChanges();
    return 0;
}

std::int64_t ReferenceController::limitStep(std::int64_t nStep)
{
    if (m_nMode != 0) {
        return nStep;
    }
    const std::int64_t nLimited = std::clamp(nStep, -m_nStepLimit, m_nStepLimit);
    if (m_nStepLimit == LARGEST_STEP) {
        m_coverage.count(ECorner::StepInModeZeroUnlimited);
    }
    else if (nLimited != nStep) {
        m_coverage.count(m_nStepLimit == 10 ? ECorner::StepLimitedToTen : ECorner::StepLimitedToTwenty);
    }
    return nLimited;
}

void ReferenceController::moveWithin(std::int64_t nStep)
{
    const auto within = [this](std::int64_t nPower, ECorner eAbove, ECorner eBelow) {
        if (nPower > m_nPctrlMax) {
            m_coverage.count(eAbove);
            return m_nPctrlMax;
        }
        if (nPower < m_nPctrlMin) {
            m_coverage.count(eBelow);
            return m_nPctrlMin;
        }
        return nPower;
    };
    if (wrapped(m_nPctrl + nStep) != m_nPctrl + nStep) {
        m_coverage.count(ECorner::PowerWrapped);
    }
    m_nPctrl = within(wrapped(m_nPctrl + nStep), ECorner::LoopAboveUpperLimit, ECorner::LoopBelowLowerLimit);
    m_nPredicted =
        within(wrapped(m_nPmeasured + nStep), ECorner::PredictionAboveUpperLimit, ECorner::PredictionBelowLowerLimit);
}

void ReferenceController::moveInProductionTest(std::int64_t nStep)
{
    const std::int64_t nUpper = wrapped(m_nPctrlMax + WIDENED);
    const std::int64_t nLower = wrapped(m_nPctrlMin - WIDENED);
    m_nPctrl = wrapped(m_nPctrl + nStep);
    if (m_nPctrl > nUpper) {
        m_coverage.count(ECorner::ProductionTestAboveUpperLimit);
        m_nPctrl = nUpper;
    }
    else if (m_nPctrl < nLower) {
        m_coverage.count(ECorner::ProductionTestBelowLowerLimit);
        m_nPctrl = nLower;
    }
    m_nPredicted = wrapped(m_nPmeasured + nStep);
}

bool ReferenceController::sendAndLog()
{
    const std::int32_t nResult = m_environment.setOutputPower(narrow(m_nPctrl), narrow(m_nPtarget));
    if (isRefused(nResult)) {
        trace(1, "setPctrl(): Failed to set output power in OPH (eOPHResult = " + hex(nResult));
        return false;
    }
    if (m_logs.isTransientLogActive() || m_logs.isOpcLogActive()) {
        logStep();
    }
    return true;
}

void ReferenceController::logStep()
{
    std::int32_t nUnused = 0;
    std::int32_t nIfPower = 0;
    std::int32_t nRfGain = 0;
    (void)m_environment.getTxPowerReadings(&nUnused, &nIfPower, &nRfGain);
    if (m_logs.isTransientLogActive()) {
        m_logs.addSample({m_nPtarget, m_nPctrl, m_nPmeasured, nIfPower, nRfGain});
    }
    if (m_logs.isOpcLogActive()) {
        m_logs.writeOpc(readGains({m_nPtarget, m_nPctrl, m_nPmeasured, nIfPower, nRfGain, 0, 0, 0, 0, 0, 0}));
    }
}

ReferenceLogs::Quantities ReferenceController::readGains(ReferenceLogs::Quantities quantities)
{
    m_coverage.count(m_nGainBlocks < 0    ? ECorner::NegativeGainBlocks
                     : m_nGainBlocks == 0 ? ECorner::NoGainBlocks
                                          : ECorner::FewGainBlocks);
    for (std::int64_t i = 1; i <= m_nGainBlocks; ++i) {
        std::int32_t nReduced = 0;
        const std::int32_t nResult = m_environment.getReducedGain(static_cast<std::uint32_t>(i), &nReduced);
        if (isRefused(nResult)) {
            trace(1, "setPctrl(): failed to get Reduced Gain From Amplifier " + std::to_string(i) + "for channel " +
                         std::to_string(m_nChannel) + " (eOPHResult = " + hex(nResult));
        }
        quantities[static_cast<std::size_t>(i) + 4] = nReduced;
    }
    return quantities;
}

void ReferenceController::tell(std::size_t nList, std::int64_t nValue)
{
    const std::vector<std::int32_t>& observers = m_observed[nList].observers;
    for (std::size_t i = 0; i < observers.size(); ++i) {
        if (std::find(observers.begin(), observers.begin() + static_cast<std::ptrdiff_t>(i), observers[i]) !=
            observers.begin() + static_cast<std::ptrdiff_t>(i))
        {
            m_coverage.count(ECorner::ObserverToldTwice);
        }
        m_environment.tellObserver(static_cast<std::int32_t>(nList), observers[i], m_nChannel, narrow(nValue));
    }
}

void ReferenceController::tellIfChanged(std::size_t nList, std::int64_t nValue)
{
    if (m_observed[nList].nLastTold != nValue) {
        m_observed[nList].nLastTold = nValue;
        tell(nList, nValue);
    }
}

void ReferenceController::tellChanges()
{
    if (m_bTold && m_observed[0].nLastTold == m_nPctrl) {
        m_coverage.count(ECorner::ChangeComparedWithBeforeTheRamp);
    }
    m_bTold = false;
    tellIfChanged(1, m_nPtarget);
    tellIfChanged(0, m_nPctrl);
    tellIfChanged(2, m_nPredicted);
}
} // namespace Differential
