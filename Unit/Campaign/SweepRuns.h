/** @file
 * The runs of a sweep in columns, to be counted and compared.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/** A value of a parameter, or a group of values that runs have drawn. */
struct SweepLevel
{
    std::string sLabel;
    double position = 0.0; /**< on an axis: the value, the middle one of a group, or the place of what is no number */
    double minimum = 0.0;  /**< of a group; the value itself otherwise */
    double maximum = 0.0;
};

/** A parameter's levels, and which of them each run has. */
struct SweepColumn
{
    std::vector<SweepLevel> levels; /**< ascending where they are numbers, otherwise as the sweep file has them */
    std::vector<std::uint32_t> levelOf;
    bool bNumbers = false; /**< levels are numbers or groups of them */
    bool bGrouped = false; /**< levels are groups of drawn numbers */
};

/** A run that has no measures. */
struct FailedRun
{
    std::uint64_t nNumber = 0;
    std::string sError;
};

/** The runs of a sweep; all columns have the same length. */
struct SweepRuns
{
    std::vector<const RunMeasureKey*> measures;
    std::vector<SweepColumn> parameters;
    std::vector<std::uint64_t> numbers;
    std::vector<bool> failed;
    std::vector<std::vector<double>> values; /**< by measure, then by run; NO_MEASURE where there is none */
    std::vector<FailedRun> failures;         /**< the first of them */
    std::uint64_t nFailed = 0;

    std::size_t size() const { return numbers.size(); }
};

/** Puts runs into columns. */
class SweepRunCollector
{
public:
    /** @param definition outlives this */
    SweepRunCollector(const SweepDefinition& definition, std::vector<const RunMeasureKey*> measures);

    void add(const ResultRow& row);

    /** @return the runs; draws of more than 8 different numbers in up to 8 groups of about equal count */
    SweepRuns finish();

private:
    /** The different values of a parameter, and which of them each run has. */
    struct Draws
    {
        std::map<std::string, std::uint32_t> indexOf;
        std::vector<SweepValue> values;
        std::vector<std::uint32_t> ofRun;
    };

    static SweepColumn columnOf(const SweepParameter& parameter, const Draws& draws);
    static SweepColumn levelPerValue(const Draws& draws, bool bNumbers);
    static SweepColumn groups(const Draws& draws);

    const SweepDefinition& m_definition;
    SweepRuns m_runs;
    std::vector<Draws> m_draws; // by parameter
};
