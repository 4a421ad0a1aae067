#include "Unit/Campaign/SweepRuns.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace
{
constexpr std::size_t MOST_GROUPS = 8;
constexpr std::size_t MOST_FAILURES = 20; // that are told one by one

std::string labelOf(const SweepValue& value)
{
    const std::string& sToml = value.sToml;
    return sToml.starts_with('"') ? sToml.substr(1, sToml.size() - 2) : sToml;
}

/** @return the smallest value of each group but the first */
std::vector<double> boundsOfGroups(const std::vector<double>& sorted)
{
    std::vector<double> bounds;
    for (std::size_t nGroup = 1; nGroup < MOST_GROUPS; ++nGroup) {
        const double bound = sorted[nGroup * sorted.size() / MOST_GROUPS];
        if (bound > sorted.front() && (bounds.empty() || bound > bounds.back())) {
            bounds.push_back(bound);
        }
    }
    return bounds;
}
} // namespace

SweepRunCollector::SweepRunCollector(const SweepDefinition& definition, std::vector<const RunMeasureKey*> measures)
    : m_definition(definition), m_draws(definition.parameters.size())
{
    m_runs.measures = std::move(measures);
    m_runs.values.resize(m_runs.measures.size());
}

void SweepRunCollector::add(const ResultRow& row)
{
    m_runs.numbers.push_back(row.nNumber);
    m_runs.failed.push_back(row.failed());
    if (row.failed()) {
        ++m_runs.nFailed;
        if (m_runs.failures.size() < MOST_FAILURES) {
            m_runs.failures.push_back({row.nNumber, row.sError});
        }
    }
    for (std::size_t n = 0; n < m_runs.measures.size(); ++n) {
        m_runs.values[n].push_back(row.failed() ? NO_MEASURE : row.measures.*m_runs.measures[n]->pField);
    }
    for (std::size_t n = 0; n < m_draws.size(); ++n) {
        Draws& draws = m_draws[n];
        const SweepValue& value = row.values.at(n);
        const auto [place, bNew] =
            draws.indexOf.try_emplace(value.sToml, static_cast<std::uint32_t>(draws.values.size()));
        if (bNew) {
            draws.values.push_back(value);
        }
        draws.ofRun.push_back(place->second);
    }
}

SweepRuns SweepRunCollector::finish()
{
    for (std::size_t n = 0; n < m_draws.size(); ++n) {
        m_runs.parameters.push_back(columnOf(m_definition.parameters[n], m_draws[n]));
    }
    return std::move(m_runs);
}

SweepColumn SweepRunCollector::columnOf(const SweepParameter& parameter, const Draws& draws)
{
    const bool bNumbers = std::all_of(draws.values.begin(), draws.values.end(),
                                      [](const SweepValue& value) { return value.number.has_value(); });
    if (bNumbers && parameter.values.empty() && draws.values.size() > MOST_GROUPS) {
        return groups(draws);
    }
    if (bNumbers) {
        return levelPerValue(draws, true);
    }
    Draws ordered = draws; // as the sweep file has them, whichever run came first
    const auto place = [&parameter](const SweepValue& value) {
        return std::find_if(parameter.values.begin(), parameter.values.end(),
                            [&value](const SweepValue& listed) { return listed.sToml == value.sToml; }) -
               parameter.values.begin();
    };
    std::stable_sort(
        ordered.values.begin(), ordered.values.end(),
        [&place](const SweepValue& first, const SweepValue& second) { return place(first) < place(second); });
    for (std::uint32_t& nIndex : ordered.ofRun) {
        const std::string& sToml = draws.values[nIndex].sToml;
        nIndex = static_cast<std::uint32_t>(
            std::find_if(ordered.values.begin(), ordered.values.end(),
                         [&sToml](const SweepValue& value) { return value.sToml == sToml; }) -
            ordered.values.begin());
    }
    return levelPerValue(ordered, false);
}

SweepColumn SweepRunCollector::levelPerValue(const Draws& draws, bool bNumbers)
{
    std::vector<std::uint32_t> order(draws.values.size());
    std::iota(order.begin(), order.end(), 0U);
    if (bNumbers) {
        std::stable_sort(order.begin(), order.end(), [&draws](std::uint32_t nFirst, std::uint32_t nSecond) {
            return *draws.values[nFirst].number < *draws.values[nSecond].number;
        });
    }
    SweepColumn column;
    column.bNumbers = bNumbers;
    std::vector<std::uint32_t> levelOf(order.size());
    for (std::uint32_t n = 0; n < order.size(); ++n) {
        const SweepValue& value = draws.values[order[n]];
        const double position = value.number.value_or(static_cast<double>(n));
        column.levels.push_back({labelOf(value), position, position, position});
        levelOf[order[n]] = n;
    }
    for (const std::uint32_t nIndex : draws.ofRun) {
        column.levelOf.push_back(levelOf[nIndex]);
    }
    return column;
}

/** Equal values are in the same group. */
SweepColumn SweepRunCollector::groups(const Draws& draws)
{
    std::vector<double> sorted;
    for (const std::uint32_t nIndex : draws.ofRun) {
        sorted.push_back(*draws.values[nIndex].number);
    }
    std::sort(sorted.begin(), sorted.end());
    const std::vector<double> bounds = boundsOfGroups(sorted);
    SweepColumn column;
    column.bNumbers = true;
    column.bGrouped = true;
    auto begin = sorted.begin();
    for (std::size_t nGroup = 0; nGroup <= bounds.size(); ++nGroup) {
        const auto end = nGroup == bounds.size() ? sorted.end() : std::lower_bound(begin, sorted.end(), bounds[nGroup]);
        const double middle = *(begin + (end - begin) / 2);
        const double last = *(end - 1);
        column.levels.push_back({fmt::format("{:.4g} to {:.4g}", *begin, last), middle, *begin, last});
        begin = end;
    }
    for (const std::uint32_t nIndex : draws.ofRun) {
        const auto above = std::upper_bound(bounds.begin(), bounds.end(), *draws.values[nIndex].number);
        column.levelOf.push_back(static_cast<std::uint32_t>(above - bounds.begin()));
    }
    return column;
}
