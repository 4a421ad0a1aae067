#include "Unit/Campaign/SweepDefinition.h"
#include "Unit/Campaign/private/RunDraw.h"
#include "Unit/Campaign/private/SweepValues.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr std::uint64_t SEED_STREAM = 0;
constexpr unsigned int SEED_BITS_DROPPED = 33; // what is left fits a scenario's seed

double drawNumber(const SweepParameter& parameter, double u)
{
    double value = 0.0;
    if (parameter.eDistribution == EDistribution::Normal) {
        value = parameter.mean + parameter.deviation * normalQuantile(u);
    }
    else if (parameter.eDistribution == EDistribution::LogUniform) {
        value = *parameter.minimum * exactExp(u * exactLog(*parameter.maximum / *parameter.minimum));
    }
    else if (parameter.bInteger) {
        // The bounds are as likely as what lies between.
        value = std::floor(*parameter.minimum + u * (*parameter.maximum - *parameter.minimum + 1.0));
    }
    else {
        value = *parameter.minimum + u * (*parameter.maximum - *parameter.minimum);
    }
    value = parameter.bInteger ? std::floor(value + 0.5) : nineDigits(value);
    value = parameter.minimum ? std::max(value, *parameter.minimum) : value;
    return parameter.maximum ? std::min(value, *parameter.maximum) : value;
}

SweepValue draw(const SweepParameter& parameter, double u)
{
    if (parameter.eDistribution != EDistribution::Choice) {
        return numberValue(drawNumber(parameter, u));
    }
    const auto nChosen = static_cast<std::size_t>(u * static_cast<double>(parameter.values.size()));
    return parameter.values.at(std::min(nChosen, parameter.values.size() - 1));
}
} // namespace

RunPlan planRun(const SweepDefinition& definition, std::uint64_t nNumber)
{
    RunPlan plan;
    plan.nNumber = nNumber;
    plan.nSeed = counterRandom(definition.nSeed, nNumber, SEED_STREAM) >> SEED_BITS_DROPPED;
    if (definition.eMethod == ESweepMethod::Random) {
        for (const SweepParameter& parameter : definition.parameters) {
            const std::uint64_t nRandom = counterRandom(definition.nSeed, nNumber, streamOf(parameter.sPath));
            plan.values.push_back(draw(parameter, unitInterval(nRandom)));
        }
        return plan;
    }
    std::uint64_t nRest = nNumber / definition.nRepeats; // the last parameter changes fastest
    plan.values.resize(definition.parameters.size());
    for (std::size_t n = definition.parameters.size(); n-- > 0;) {
        const std::vector<SweepValue>& values = definition.parameters[n].values;
        plan.values[n] = values[static_cast<std::size_t>(nRest % values.size())];
        nRest /= values.size();
    }
    return plan;
}
