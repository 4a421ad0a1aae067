/** @file
 * Runs of a sweep with measures that tests choose.
 */
#pragma once

#include "Unit/Campaign/SweepRuns.h"

#include <string>
#include <vector>

/** @return the key of a measure */
inline const RunMeasureKey* measureKey(const std::string& sName)
{
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (key.pName == sName) {
            return &key;
        }
    }
    return nullptr;
}

/** Four runs of a grid: (a, b) is (1, 0.5), (1, 1.5), (2, 0.5), (2, 1.5). */
class GridRuns
{
public:
    explicit GridRuns(std::vector<const RunMeasureKey*> measures, const std::string& sValuesOfA = "[1, 2]")
        : definition(parseSweepDefinition("[sweep]\nscenario = \"base.toml\"\nmethod = \"grid\"\n"
                                          "[[parameter]]\npath = \"a\"\nvalues = " +
                                              sValuesOfA + "\n[[parameter]]\npath = \"b\"\nvalues = [0.5, 1.5]\n",
                                          "sweep.toml")),
          m_collector(definition, std::move(measures))
    {}

    /** Adds the next run. */
    void add(const RunMeasures& measures, const std::string& sError = "")
    {
        ResultRow row;
        row.nNumber = m_nNext++;
        row.values = planRun(definition, row.nNumber).values;
        row.measures = measures;
        row.sError = sError;
        m_collector.add(row);
    }

    void addSettling(const std::vector<double>& values)
    {
        for (const double value : values) {
            RunMeasures measures;
            measures.settlingMaxMs = value;
            add(measures);
        }
    }

    SweepRuns finish() { return m_collector.finish(); }

    SweepDefinition definition;

private:
    SweepRunCollector m_collector;
    std::uint64_t m_nNext = 0;
};
