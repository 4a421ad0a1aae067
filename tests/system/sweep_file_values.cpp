/** @file
 * Prints every value that a sweep file leads to, one a line: those that it gives and those that hold otherwise.
 */
#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/SweepDefinition.h"
#include "tests/system/ConfigurationValues.h"

#include <cstdio>

namespace
{
void showSweep(const SweepDefinition& sweep)
{
    show("sweep", "title", sweep.sTitle);
    show("sweep", "scenario", sweep.sScenario);
    show("sweep", "method", static_cast<int>(sweep.eMethod));
    show("sweep", "runs", sweep.nRuns);
    show("sweep", "repeats", sweep.nRepeats);
    show("sweep", "seed", sweep.nSeed);
    show("sweep", "duration_s", sweep.durationSeconds);
    show("sweep", "measures", sweep.measures);
}

void showParameter(const SweepParameter& parameter)
{
    show("parameter", "path", parameter.sPath);
    show("parameter", "name", parameter.sName);
    for (const SweepValue& value : parameter.values) {
        show("parameter", "value", value.sToml);
    }
    show("parameter", "logarithmic", parameter.bLogarithmic);
    show("parameter", "distribution", static_cast<int>(parameter.eDistribution));
    show("parameter", "minimum", parameter.minimum);
    show("parameter", "maximum", parameter.maximum);
    show("parameter", "mean", parameter.mean);
    show("parameter", "deviation", parameter.deviation);
    show("parameter", "integer", parameter.bInteger);
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 2) {
        fmt::print(stderr, "usage: sweep_file_values SWEEP_FILE\n");
        return 2;
    }
    try {
        const SweepDefinition sweep = loadSweepDefinition(ppArguments[1]);
        showSweep(sweep);
        for (const SweepParameter& parameter : sweep.parameters) {
            showParameter(parameter);
        }
        return 0;
    }
    catch (const std::exception& error) {
        fmt::print(stderr, "sweep_file_values: {}\n", error.what());
        return 1;
    }
}
