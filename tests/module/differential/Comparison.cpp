#include "tests/module/differential/Comparison.h"

#include "tests/module/differential/ModuleSide.h"
#include "tests/module/differential/ReferenceController.h"

#include <algorithm>

namespace Differential
{
std::optional<Difference> Comparison::run(const Sequence& sequence, Coverage& coverage) const
{
    EventLog expected;
    EventLog found;
    Environment expectedEnvironment(expected);
    Environment foundEnvironment(found);
    std::size_t nOperations = 0;
    std::optional<Difference> difference;
    const auto differs = [&] {
        if (expected.text() != found.text()) {
            difference = Difference{nOperations, expected.text(), found.text()};
        }
        expected.clear();
        found.clear();
        return difference.has_value();
    };

    ReferenceController reference(expectedEnvironment, coverage, sequence.nChannel, m_constants);
    ModuleSide module(m_door, foundEnvironment, sequence.nChannel);
    if (differs()) {
        return difference;
    }
    for (const Operation& operation : sequence.operations) {
        ++nOperations;
        if (!reference.isDefined(operation)) {
            continue;
        }
        const bool bDone = expectedEnvironment.apply(operation);
        foundEnvironment.apply(operation);
        if (bDone) {
            module.setTime();
            continue;
        }
        reference.apply(operation);
        module.apply(operation);
        reference.readOuts().write(expected);
        module.readOuts().write(found);
        if (differs()) {
            return difference;
        }
    }
    reference.destroy();
    module.destroy();
    differs();
    return difference;
}

std::string textOf(const Sequence& sequence, const Difference& difference)
{
    Sequence applied = sequence;
    applied.operations.resize(std::min(difference.nOperations, applied.operations.size()));
    return "Sequence " + textOf(applied) + "\nexpected:\n" + difference.sExpected + "found:\n" + difference.sFound;
}
} // namespace Differential
