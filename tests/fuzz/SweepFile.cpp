// A sweep file: each run of one that is accepted has a value for each parameter, within its bounds, and always the
// same.
#include "Unit/Campaign/SweepDefinition.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cmath>

namespace
{
void checkValue(const SweepParameter& parameter, const SweepValue& value)
{
    require(!value.sToml.empty(), "a value without text");
    if (!parameter.values.empty()) {
        require(std::any_of(parameter.values.begin(), parameter.values.end(),
                            [&](const SweepValue& listed) { return listed.sToml == value.sToml; }),
                "a value that is not listed: " + value.sToml);
        return;
    }
    require(value.number && std::isfinite(*value.number), "a draw that is no number: " + value.sToml);
    requireWithin(*value.number, parameter.minimum.value_or(-INFINITY), parameter.maximum.value_or(INFINITY), "a draw");
    require(!parameter.bInteger || std::floor(*value.number) == *value.number, "a draw that is not whole");
}

void checkRun(const SweepDefinition& definition, std::uint64_t nRun)
{
    const RunPlan plan = planRun(definition, nRun);
    const RunPlan again = planRun(definition, nRun);
    require(plan.nNumber == nRun && plan.nSeed <= 2147483647 && plan.nSeed == again.nSeed, "a wrong run");
    require(plan.values.size() == definition.parameters.size(), "a run without a value for each parameter");
    for (std::size_t n = 0; n < plan.values.size(); ++n) {
        require(plan.values[n].sToml == again.values[n].sToml, "a run that is another one the next time");
        checkValue(definition.parameters[n], plan.values[n]);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    const std::string sPath = "folder/sweep.toml"; // is only named
    SweepDefinition definition;
    if (!accepts(sPath, sText, [&] { definition = parseSweepDefinition(sText, sPath); })) {
        return 0;
    }
    require(!definition.parameters.empty(), "a sweep of nothing");
    require(definition.nRuns >= 1 && definition.nRuns <= 100'000'000, "a wrong number of runs");
    for (const std::uint64_t nRun : {std::uint64_t{0}, definition.nRuns / 2, definition.nRuns - 1}) {
        checkRun(definition, nRun);
    }
    return 0;
}
