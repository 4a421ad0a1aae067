#include "tests/module/differential/Campaign.h"

#include "tests/module/differential/Generator.h"
#include "tests/module/differential/Shrinker.h"

#include <iostream>

namespace Differential
{
Options& options()
{
    static Options s_options;
    return s_options;
}

std::optional<Finding> Campaign::run(ModuleDoor& door, const Constants& constants)
{
    const Comparison comparison(door, constants);
    while (m_nSteps < m_options.nSteps) {
        const std::uint64_t nSeed = m_options.nSeed + m_nSequences;
        if (m_options.bProgress) {
            std::cout << "sequence of seed " << nSeed << std::endl; // flushed: the next line may never come
        }
        const Sequence sequence = Generator(nSeed, door.isPrivate()).sequence();
        const std::optional<Difference> difference = comparison.run(sequence, m_coverage);
        ++m_nSequences;
        m_nSteps += difference ? difference->nOperations : sequence.operations.size();
        if (difference) {
            Coverage ignored;
            const Sequence shortest = shrunk(
                sequence, [&](const Sequence& candidate) { return comparison.run(candidate, ignored).has_value(); },
                m_options.nShrinkTrials);
            const std::optional<Difference> shown = comparison.run(shortest, ignored);
            return Finding{nSeed, m_nSteps, shortest.operations.size(), textOf(shortest, shown ? *shown : *difference)};
        }
    }
    return std::nullopt;
}
} // namespace Differential
