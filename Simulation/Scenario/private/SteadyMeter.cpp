#include "Simulation/Scenario/private/SteadyMeter.h"

#include "Platform/Conversions.h"
#include "Simulation/Scenario/private/MeterTolerance.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double LARGEST_CENTI_DB = 1e9;
constexpr std::uint32_t PER_MILLE = 999;

/** @return hundredths of a decibel, rounded up, so that an error is at most its count's */
std::int32_t roundedUp(double absoluteDb)
{
    const double centiDb = std::min(absoluteDb * CENTI_DB_PER_DB, LARGEST_CENTI_DB);
    const auto nBelow = static_cast<std::int32_t>(centiDb);
    return centiDb - nBelow > METER_ROUNDING_DB * CENTI_DB_PER_DB ? nBelow + 1 : nBelow;
}
} // namespace

void SteadyMeter::add(double errorDb, double requestErrorDb)
{
    const double absoluteDb = std::abs(errorDb);
    m_errors.add(roundedUp(absoluteDb));
    m_sum += errorDb;
    m_sumOfSquares += errorDb * errorDb;
    m_max = std::max(m_max, absoluteDb);
    m_requestSum += requestErrorDb;
    m_requestMax = std::max(m_requestMax, std::abs(requestErrorDb));
}

void SteadyMeter::fill(RunMeasures& measures) const
{
    const auto steps = static_cast<double>(m_errors.errors());
    measures.steadySteps = steps;
    if (m_errors.errors() == 0) {
        return;
    }
    measures.steadyMeanDb = m_sum / steps;
    measures.steadyRmsDb = std::sqrt(m_sumOfSquares / steps);
    measures.steadyP999Db = std::min(m_errors.percentile(PER_MILLE) / CENTI_DB_PER_DB, m_max);
    measures.steadyMaxDb = m_max;
    measures.requestErrorMeanDb = m_requestSum / steps;
    measures.requestErrorMaxDb = m_requestMax;
}
