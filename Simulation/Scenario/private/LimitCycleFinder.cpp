#include "Simulation/Scenario/private/LimitCycleFinder.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace
{
constexpr std::int32_t CONSTANT_CENTI_DB = 5;
constexpr double FLAT_MEAN_SQUARE = 1e-6;   // dB squared: 0.001 dB rms
constexpr double CYCLE_CORRELATION = 0.5;   // after one period
constexpr double LASTING_CORRELATION = 0.4; // two periods and at least LASTING_STEPS later: noise does not last
constexpr std::size_t LASTING_STEPS = 32;
constexpr double SAME_PEAK = 0.9; // peaks this close to the highest are those of the period's multiples
} // namespace

void LimitCycleFinder::addToWindow(std::int32_t nReferenceCentiDbm, double outputDbm)
{
    const std::int32_t nLowest = std::min(m_nLowestReference, nReferenceCentiDbm);
    const std::int32_t nHighest = std::max(m_nHighestReference, nReferenceCentiDbm);
    if (m_nSteps == 0 || nHighest - nLowest > CONSTANT_CENTI_DB) {
        m_nSteps = 0;
        m_nLowestReference = nReferenceCentiDbm;
        m_nHighestReference = nReferenceCentiDbm;
    }
    else {
        m_nLowestReference = nLowest;
        m_nHighestReference = nHighest;
    }
    m_window[m_nSteps++] = outputDbm;
    if (m_nSteps == WINDOW_STEPS) {
        lookAtWindow();
        m_nSteps = 0;
        m_nToSkip = WINDOW_EVERY_STEPS - WINDOW_STEPS;
    }
}

void LimitCycleFinder::lookAtWindow()
{
    m_bLooked = true;
    if (!removeTrend()) {
        return;
    }
    correlate();
    const double period = findPeriod();
    if (period == 0.0) {
        return;
    }
    const double amplitudeDb = amplitudeOf(period);
    if (amplitudeDb > m_largestDb) {
        m_largestDb = amplitudeDb;
        m_largestMs = period * m_intervalMs;
    }
}

/** Takes the straight line of least squares out of the window. @return whether anything is left */
bool LimitCycleFinder::removeTrend()
{
    constexpr auto n = static_cast<double>(WINDOW_STEPS);
    constexpr double middle = (n - 1.0) / 2.0;
    constexpr double sumOfSquaredTimes = n * (n * n - 1.0) / 12.0;
    const std::span<double> window(m_window.data(), WINDOW_STEPS);
    double sum = 0.0;
    double sumByTime = 0.0;
    double time = -middle;
    for (const double value : window) {
        sum += value;
        sumByTime += value * time;
        time += 1.0;
    }
    const double mean = sum / n;
    const double slope = sumByTime / sumOfSquaredTimes;
    double sumOfSquares = 0.0;
    time = -middle;
    for (double& value : window) {
        value -= mean + slope * time;
        sumOfSquares += value * value;
        time += 1.0;
    }
    m_meanSquare = sumOfSquares / n;
    return m_meanSquare > FLAT_MEAN_SQUARE;
}

/** Several lags at once, because each sum alone would wait for its own last addition. */
void LimitCycleFinder::correlate()
{
    for (std::size_t nFirstLag = 0; nFirstLag < LAGS; nFirstLag += LAGS_AT_ONCE) {
        std::array<double, LAGS_AT_ONCE> sums{};
        for (std::size_t nStep = 0; nStep + nFirstLag < WINDOW_STEPS; ++nStep) {
            for (std::size_t nLag = 0; nLag < LAGS_AT_ONCE; ++nLag) {
                sums[nLag] += m_window[nStep] * m_window[nStep + nFirstLag + nLag];
            }
        }
        for (std::size_t nLag = 0; nLag < LAGS_AT_ONCE; ++nLag) {
            const auto nPairs = static_cast<double>(WINDOW_STEPS - nFirstLag - nLag);
            m_correlations[nFirstLag + nLag] = sums[nLag] / nPairs / m_meanSquare;
        }
    }
}

double LimitCycleFinder::correlation(std::size_t nLag) const
{
    double sum = 0.0;
    for (std::size_t nStep = 0; nStep + nLag < WINDOW_STEPS; ++nStep) {
        sum += m_window[nStep] * m_window[nStep + nLag];
    }
    return sum / static_cast<double>(WINDOW_STEPS - nLag) / m_meanSquare;
}

/** @return the period in steps; 0 when nothing repeats */
double LimitCycleFinder::findPeriod() const
{
    std::size_t nFirst = 1;
    while (nFirst <= LONGEST_LAG && m_correlations[nFirst] >= 0.0) {
        ++nFirst;
    }
    const auto isPeak = [this](std::size_t nLag) {
        return m_correlations[nLag] >= m_correlations[nLag - 1] && m_correlations[nLag] >= m_correlations[nLag + 1];
    };
    double highest = 0.0;
    for (std::size_t nLag = nFirst; nLag <= LONGEST_LAG; ++nLag) {
        highest = isPeak(nLag) ? std::max(highest, m_correlations[nLag]) : highest;
    }
    if (highest < CYCLE_CORRELATION) {
        return 0.0;
    }
    std::size_t nPeriod = nFirst;
    while (!isPeak(nPeriod) || m_correlations[nPeriod] < SAME_PEAK * highest) {
        ++nPeriod;
    }
    return m_correlations[nPeriod] < CYCLE_CORRELATION ? 0.0 : refinedPeriod(nPeriod);
}

/** Follows the peaks of the period's multiples. @return the period; 0 when they do not last */
double LimitCycleFinder::refinedPeriod(std::size_t nPeriod) const
{
    const std::size_t nLastMultiple = std::max<std::size_t>(2, LONGEST_LAG / nPeriod);
    const std::size_t nCheckedMultiple = std::max<std::size_t>(2, (LASTING_STEPS + nPeriod - 1) / nPeriod);
    auto period = static_cast<double>(nPeriod);
    for (std::size_t nMultiple = 2; nMultiple <= nLastMultiple; ++nMultiple) {
        const auto nLag = static_cast<std::size_t>(std::lround(period * static_cast<double>(nMultiple)));
        const double before = correlation(nLag - 1);
        const double here = correlation(nLag);
        const double after = correlation(nLag + 1);
        const double peak = std::max({before, here, after});
        if (nMultiple == nCheckedMultiple && peak < LASTING_CORRELATION) {
            return 0.0;
        }
        const double curvature = 2.0 * here - before - after;
        if (curvature > 0.0 && peak >= LASTING_CORRELATION) {
            const double shift = std::clamp((after - before) / (2.0 * curvature), -1.0, 1.0);
            period = (static_cast<double>(nLag) + shift) / static_cast<double>(nMultiple);
        }
    }
    return period;
}

/** @return half the peak-to-peak of the mean period, in decibels */
double LimitCycleFinder::amplitudeOf(double period) const
{
    std::array<double, LAGS> sums{};
    std::array<double, LAGS> counts{};
    const auto nPhases = static_cast<std::size_t>(std::lround(period));
    for (std::size_t nStep = 0; nStep < WINDOW_STEPS; ++nStep) {
        const double turns = static_cast<double>(nStep) / period;
        const double phase = (turns - std::floor(turns)) * static_cast<double>(nPhases);
        const std::size_t nPhase = static_cast<std::size_t>(std::lround(phase)) % nPhases;
        sums[nPhase] += m_window[nStep];
        counts[nPhase] += 1.0;
    }
    double lowest = 0.0; // the mean of a period without its trend is about 0
    double highest = 0.0;
    for (std::size_t nPhase = 0; nPhase < nPhases; ++nPhase) {
        const double mean = counts[nPhase] > 0.0 ? sums[nPhase] / counts[nPhase] : 0.0;
        lowest = std::min(lowest, mean);
        highest = std::max(highest, mean);
    }
    return (highest - lowest) / 2.0;
}

void LimitCycleFinder::fill(RunMeasures& measures) const
{
    measures.limitCycleDb = m_bLooked ? m_largestDb : NO_MEASURE;
    measures.limitCycleMs = m_largestMs;
}
