#include "Simulation/Scenario/RunMeter.h"

#include "Platform/Conversions.h"
#include "Simulation/Scenario/private/JumpMeter.h"
#include "Simulation/Scenario/private/LimitCycleFinder.h"
#include "Simulation/Scenario/private/MeterTolerance.h"
#include "Simulation/Scenario/private/SteadyMeter.h"
#include "Simulation/Scenario/private/SwitchOffMeter.h"
#include "Simulation/Scenario/private/SwitchOnMeter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace
{
constexpr double NARROW_DB = 1.0 + METER_ROUNDING_DB;
constexpr double WIDE_DB = 2.0 + METER_ROUNDING_DB;
constexpr double NO_POWER_ERROR_DB = -100.0; // what no power at all counts as

double errorAgainst(double outputPowerDbm, std::int32_t nReferenceCentiDbm)
{
    return std::max(outputPowerDbm - nReferenceCentiDbm / CENTI_DB_PER_DB, NO_POWER_ERROR_DB);
}
} // namespace

class RunMeter::Implementation
{
public:
    Implementation(const MeasureSettings& settings, std::int64_t nIntervalUs)
        : m_bAgainstTarget(settings.eReference == EPowerReference::Target),
          m_toleranceDb(settings.emissionToleranceDb + METER_ROUNDING_DB),
          m_stepSeconds(static_cast<double>(nIntervalUs) / US_PER_S), m_switchOn(settings.settlingBandDb),
          m_jump(settings.settlingBandDb), m_limitCycle(static_cast<double>(nIntervalUs) / US_PER_MS)
    {}

    void add(const MeasuredStep& step)
    {
        ++m_nSteps;
        m_nFailedSteps += step.bFailed ? 1 : 0;
        const std::int32_t nReference = m_bAgainstTarget ? step.nPtarget : step.nRequested;
        const double errorDb = errorAgainst(step.outputPowerDbm, nReference);
        m_switchOn.add(step, errorDb);
        m_switchOff.add(step);
        addEmission(step);
        if (step.eStateBefore == eOPC_TX_ON && step.eState == eOPC_TX_ON) {
            addOn(step, nReference, errorDb);
        }
        else {
            m_limitCycle.startAfresh();
            if (step.eStateBefore == eOPC_TX_ON_RAMPING && step.eState == eOPC_TX_ON) {
                m_jump.onRampEnd(errorDb);
            }
            else {
                m_jump.onLeft();
            }
        }
        m_bHasPctrl = step.eState == eOPC_TX_ON;
        m_nLastPctrl = step.nPctrl;
    }

    RunMeasures measures() const;

private:
    void addEmission(const MeasuredStep& step)
    {
        const double excessDb = step.outputPowerDbm - step.highestAllowedDbm;
        if (excessDb > m_toleranceDb) {
            ++m_nSpuriousSteps;
            m_spuriousMaxDb = std::max(m_spuriousMaxDb, excessDb);
        }
    }

    void addOn(const MeasuredStep& step, std::int32_t nReference, double errorDb)
    {
        if (step.bFailed) {
            m_jump.onFailure();
            m_limitCycle.interrupt();
            return;
        }
        m_jump.add(step.nTimeUs, nReference, errorDb);
        addClosedLoop(step, errorDb);
        if (m_jump.isSteady()) {
            m_steady.add(errorDb, errorAgainst(step.outputPowerDbm, step.nRequested));
            m_limitCycle.add(nReference, nReference / CENTI_DB_PER_DB + errorDb);
        }
        else {
            m_limitCycle.startAfresh();
        }
    }

    void addClosedLoop(const MeasuredStep& step, double errorDb)
    {
        ++m_nClosedLoopSteps;
        const double absoluteDb = std::abs(errorDb);
        m_nOutsideNarrow += absoluteDb > NARROW_DB ? 1 : 0;
        m_nOutsideWide += absoluteDb > WIDE_DB ? 1 : 0;
        m_nAtUpperClamp += step.nPctrl >= step.nUpperClamp ? 1 : 0;
        m_nAtLowerClamp += step.nPctrl <= step.nLowerClamp ? 1 : 0;
        const auto nDetectorState = static_cast<std::uint32_t>(step.nDetectorState);
        if (nDetectorState < m_detectorSteps.size()) {
            ++m_detectorSteps[nDetectorState];
        }
        if (m_bHasPctrl) {
            m_nLargestPctrlStep =
                std::max(m_nLargestPctrlStep, std::abs(std::int64_t{step.nPctrl} - std::int64_t{m_nLastPctrl}));
        }
    }

    double seconds(std::uint64_t nSteps) const { return static_cast<double>(nSteps) * m_stepSeconds; }

    double detectorShare(std::size_t nState) const
    {
        return m_nClosedLoopSteps == 0
                   ? NO_MEASURE
                   : static_cast<double>(m_detectorSteps[nState]) / static_cast<double>(m_nClosedLoopSteps);
    }

    bool m_bAgainstTarget;
    double m_toleranceDb;
    double m_stepSeconds;
    SwitchOnMeter m_switchOn;
    SwitchOffMeter m_switchOff;
    JumpMeter m_jump;
    SteadyMeter m_steady;
    LimitCycleFinder m_limitCycle;

    std::uint64_t m_nSteps = 0;
    std::uint64_t m_nFailedSteps = 0;
    std::uint64_t m_nSpuriousSteps = 0;
    double m_spuriousMaxDb = 0.0;
    std::uint64_t m_nClosedLoopSteps = 0;
    std::uint64_t m_nOutsideNarrow = 0;
    std::uint64_t m_nOutsideWide = 0;
    std::uint64_t m_nAtUpperClamp = 0;
    std::uint64_t m_nAtLowerClamp = 0;
    std::array<std::uint64_t, 3> m_detectorSteps{};
    bool m_bHasPctrl = false; // the last step left the closed loop's control power behind
    std::int32_t m_nLastPctrl = 0;
    std::int64_t m_nLargestPctrlStep = -1; // -1: none was seen
};

RunMeasures RunMeter::Implementation::measures() const
{
    RunMeasures measures;
    measures.steps = static_cast<double>(m_nSteps);
    measures.failedSteps = static_cast<double>(m_nFailedSteps);
    m_switchOn.fill(measures);
    m_switchOff.fill(measures, m_stepSeconds);
    m_jump.fill(measures);
    m_steady.fill(measures);
    m_limitCycle.fill(measures);
    if (m_nLargestPctrlStep >= 0) {
        measures.largestPctrlStepDb = static_cast<double>(m_nLargestPctrlStep) / CENTI_DB_PER_DB;
    }
    measures.atUpperClampS = seconds(m_nAtUpperClamp);
    measures.atLowerClampS = seconds(m_nAtLowerClamp);
    measures.spuriousSteps = static_cast<double>(m_nSpuriousSteps);
    measures.spuriousMaxDb = m_nSpuriousSteps == 0 ? NO_MEASURE : m_spuriousMaxDb;
    measures.outside1DbS = seconds(m_nOutsideNarrow);
    measures.outside2DbS = seconds(m_nOutsideWide);
    measures.detectorState0Share = detectorShare(0);
    measures.detectorState1Share = detectorShare(1);
    measures.detectorState2Share = detectorShare(2);
    return measures;
}

RunMeter::RunMeter(const MeasureSettings& settings, std::int64_t nIntervalUs)
    : m_pImplementation(std::make_unique<Implementation>(settings, nIntervalUs))
{}

RunMeter::~RunMeter() = default;

void RunMeter::add(const MeasuredStep& step)
{
    m_pImplementation->add(step);
}

RunMeasures RunMeter::measures() const
{
    return m_pImplementation->measures();
}
