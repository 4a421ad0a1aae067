/** @file
 * Many sequences in a row, from the program's options.
 */
#pragma once

#include "tests/module/differential/Comparison.h"
#include "tests/module/differential/Coverage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Differential
{
/** What the program's options say. */
struct Options
{
    std::uint64_t nSteps = 0;            /**< operations, at least; sequences are never cut */
    std::uint64_t nSeed = 1;             /**< of the first sequence; each further one has the next */
    unsigned int nShrinkTrials = 50'000; /**< sequences to try while shrinking a finding */
    bool bProgress = false;              /**< print the seed of each sequence before it runs */
};

/** @return the options of this process, which the program sets before its tests run */
Options& options();

/** A difference, shrunk. */
struct Finding
{
    std::uint64_t nSeed = 0;     /**< of the sequence alone */
    std::uint64_t nSteps = 0;    /**< operations until it was found, over all sequences */
    std::size_t nOperations = 0; /**< of the shrunk sequence */
    std::string sText;           /**< for whoever reads the failure */
};

/** Runs sequences until the steps are done or the first difference is found. */
class Campaign
{
public:
    explicit Campaign(const Options& chosen) : m_options(chosen) {}

    std::optional<Finding> run(ModuleDoor& door, const Constants& constants = {});
    const Coverage& coverage() const { return m_coverage; }
    std::uint64_t steps() const { return m_nSteps; }
    std::uint64_t sequences() const { return m_nSequences; }

private:
    Options m_options;
    Coverage m_coverage;
    std::uint64_t m_nSteps = 0;
    std::uint64_t m_nSequences = 0;
};
} // namespace Differential
