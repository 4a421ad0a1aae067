#include "Unit/Campaign/SweepEffects.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace
{
void count(MeasureStatistics& statistics, double value)
{
    if (std::isnan(value)) {
        ++statistics.nWithout;
        return;
    }
    // The mean moves by the share of each value, which keeps it exact where all are the same.
    ++statistics.nRuns;
    const bool bFirst = statistics.nRuns == 1;
    statistics.mean =
        bFirst ? value : statistics.mean + (value - statistics.mean) / static_cast<double>(statistics.nRuns);
    statistics.minimum = bFirst ? value : std::min(statistics.minimum, value);
    statistics.maximum = bFirst ? value : std::max(statistics.maximum, value);
}

void addShare(ParameterEffect& effect, const MeasureStatistics& all, double totalSquares)
{
    double lowest = NO_MEASURE;
    double highest = NO_MEASURE;
    double squares = 0.0;
    std::size_t nLevels = 0;
    for (const MeasureStatistics& level : effect.levels) {
        if (level.nRuns > 0) {
            ++nLevels;
            lowest = std::fmin(lowest, level.mean);
            highest = std::fmax(highest, level.mean);
            squares += static_cast<double>(level.nRuns) * (level.mean - all.mean) * (level.mean - all.mean);
        }
    }
    effect.effect = highest - lowest;
    if (all.nRuns > 1 && all.maximum > all.minimum) {
        effect.share = std::min(squares / totalSquares, 1.0);
        effect.chance = static_cast<double>(nLevels - 1) / static_cast<double>(all.nRuns - 1);
    }
}

ParameterEffect effectOf(const SweepRuns& runs, std::size_t nParameter, std::size_t nMeasure,
                         const MeasureStatistics& all, double totalSquares)
{
    const SweepColumn& column = runs.parameters[nParameter];
    ParameterEffect effect;
    effect.nParameter = nParameter;
    effect.levels.resize(column.levels.size());
    for (std::size_t nRun = 0; nRun < runs.size(); ++nRun) {
        if (!runs.failed[nRun]) {
            count(effect.levels[column.levelOf[nRun]], runs.values[nMeasure][nRun]);
        }
    }
    addShare(effect, all, totalSquares);
    return effect;
}

double medianOf(std::vector<double> values)
{
    if (values.empty()) {
        return NO_MEASURE;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return values.size() % 2 == 1 ? *middle : (*middle + *std::max_element(values.begin(), middle)) / 2.0;
}

std::vector<std::size_t> worstOf(const RunMeasureKey& key, const std::vector<double>& values,
                                 std::vector<std::size_t> indices, std::size_t nWorst)
{
    const auto nKept = static_cast<std::ptrdiff_t>(std::min(nWorst, indices.size()));
    std::partial_sort(indices.begin(), indices.begin() + nKept, indices.end(),
                      [&](std::size_t nFirst, std::size_t nSecond) {
                          const bool bWorse = isWorse(key, values[nFirst], values[nSecond]);
                          return bWorse || (!isWorse(key, values[nSecond], values[nFirst]) && nFirst < nSecond);
                      });
    indices.resize(static_cast<std::size_t>(nKept));
    return indices;
}
} // namespace

MeasureStatistics statisticsOf(const SweepRuns& runs, std::size_t nMeasure, const std::vector<std::size_t>& indices)
{
    MeasureStatistics statistics;
    for (const std::size_t nRun : indices) {
        if (!runs.failed[nRun]) {
            count(statistics, runs.values[nMeasure][nRun]);
        }
    }
    return statistics;
}

bool isWorse(const RunMeasureKey& key, double first, double second)
{
    switch (key.eWorse) {
    case EWorse::Smaller:
        return first < second;
    case EWorse::FartherFromZero:
        return std::abs(first) > std::abs(second);
    case EWorse::Larger:
        break;
    }
    return first > second;
}

MeasureEffects effectsOn(const SweepRuns& runs, std::size_t nMeasure, std::size_t nWorst)
{
    MeasureEffects effects;
    effects.nMeasure = nMeasure;
    const std::vector<double>& values = runs.values[nMeasure];
    std::vector<std::size_t> indices;
    std::vector<double> present;
    for (std::size_t nRun = 0; nRun < runs.size(); ++nRun) {
        if (runs.failed[nRun]) {
            continue;
        }
        count(effects.all, values[nRun]);
        if (!std::isnan(values[nRun])) {
            indices.push_back(nRun);
            present.push_back(values[nRun]);
        }
        else if (!effects.nFirstWithout) {
            effects.nFirstWithout = nRun;
        }
    }
    const double totalSquares =
        std::accumulate(present.begin(), present.end(), 0.0, [&effects](double sum, double value) {
            return sum + (value - effects.all.mean) * (value - effects.all.mean);
        });
    for (std::size_t nParameter = 0; nParameter < runs.parameters.size(); ++nParameter) {
        effects.parameters.push_back(effectOf(runs, nParameter, nMeasure, effects.all, totalSquares));
    }
    std::stable_sort(effects.parameters.begin(), effects.parameters.end(),
                     [](const ParameterEffect& first, const ParameterEffect& second) {
                         return !std::isnan(first.share) && (std::isnan(second.share) || first.share > second.share);
                     });
    effects.median = medianOf(std::move(present));
    if (effects.all.nRuns == 1 || effects.all.maximum > effects.all.minimum) {
        effects.worst = worstOf(*runs.measures[nMeasure], values, std::move(indices), nWorst);
    }
    return effects;
}
