#include "Unit/Campaign/ResultsMerge.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/NewResultsFile.h"
#include "Unit/Campaign/private/SweepCall.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

namespace
{
namespace fs = std::filesystem;

void refuseTwice(const std::vector<std::string>& files)
{
    std::map<std::pair<dev_t, ino_t>, std::string> known;
    for (const std::string& sPath : files) {
        struct stat information = {};
        if (stat(sPath.c_str(), &information) != 0) {
            continue; // told when its turn comes
        }
        const auto [first, bNew] = known.try_emplace({information.st_dev, information.st_ino}, sPath);
        if (!bNew) {
            throw ConfigurationError(fmt::format("{}: is given twice{}; name each file once", sPath,
                                                 first->second == sPath ? "" : ", as " + first->second));
        }
    }
}

/** @return what a file of all runs says that stands elsewhere than the one it is made of */
CampaignDescription describeWhole(const ResultsFile& part, const std::string& sOutput)
{
    CampaignDescription description = part.description();
    description.shard = {};
    const fs::path scenario = fs::absolute(part.path()).parent_path() / description.sScenarioFile;
    description.sScenarioFile = scenario.lexically_normal()
                                    .lexically_proximate(fs::absolute(sOutput).lexically_normal().parent_path())
                                    .string();
    return description;
}

std::optional<ResultRow> findRun(const ResultsFile& file, std::uint64_t nRun)
{
    std::optional<ResultRow> found;
    file.forEach([&](const ResultRow& row) {
        if (row.nNumber == nRun) {
            found = row;
        }
    });
    return found;
}

std::string firstDifference(const ResultRow& here, const ResultRow& there)
{
    const auto same = [](double first, double second) {
        return first == second || (std::isnan(first) && std::isnan(second));
    };
    for (const RunMeasureKey& key : runMeasureKeys()) {
        const double first = here.measures.*key.pField;
        const double second = there.measures.*key.pField;
        if (!same(first, second)) {
            return fmt::format("{} {} here and {} there", key.pName, first, second);
        }
    }
    return here.sError != there.sError ? fmt::format("\"{}\" here and \"{}\" there", here.sError, there.sError)
                                       : fmt::format("seed {} here and {} there", here.nSeed, there.nSeed);
}

/** Ends the reading of a file. */
struct Stopped
{
};

/** Joins one file after the other: there may be more of them than a process may have open. */
class Merge
{
public:
    Merge(const MergeOptions& options, IMergeObserver& observer) : m_options(options), m_observer(observer) {}

    MergeOutcome run()
    {
        refuseTwice(m_options.files);
        for (const std::string& sPath : m_options.files) {
            const ResultsFile file = ResultsFile::openToReadAlone(sPath);
            check(file);
            copy(file);
            m_outcome.files.push_back({sPath, file.description().shard});
        }
        if (m_output && (m_options.bPartial || m_outcome.nDone == m_outcome.finished.size())) {
            m_output->finish();
            m_outcome.bWritten = true;
        }
        return m_outcome;
    }

private:
    void check(const ResultsFile& file)
    {
        if (!m_output) {
            m_first = file.description();
            m_outcome.sSweepFile = m_first.sSweepFile;
            m_outcome.finished.resize(static_cast<std::size_t>(file.definition().nRuns));
            m_output.emplace(m_options.sOutput, describeWhole(file, m_options.sOutput), file.definition());
            return;
        }
        const std::vector<std::string> reasons = differences(m_first, file.description());
        if (!reasons.empty()) {
            throw ConfigurationError(fmt::format("{}: has results of another campaign than {}: {}; merge the files of "
                                                 "one campaign",
                                                 file.path(), m_options.files.front(), fmt::join(reasons, "; ")));
        }
    }

    void copy(const ResultsFile& file)
    {
        (void)file.finishedRuns(); // refuses runs that the campaign does not have
        file.forEach([&](const ResultRow& row) {
            if (m_observer.wantsStop()) {
                throw Stopped();
            }
            add(file, row);
            m_observer.onProgress(m_outcome.nDone, m_outcome.finished.size());
        });
    }

    void add(const ResultsFile& file, const ResultRow& row)
    {
        const EAddedRun eAdded = m_output->add(row);
        if (eAdded == EAddedRun::Differs) {
            refuseContradiction(file, row);
        }
        if (eAdded == EAddedRun::New) {
            m_outcome.finished[static_cast<std::size_t>(row.nNumber)] = true;
            ++m_outcome.nDone;
            m_outcome.nFailed += row.failed() ? 1 : 0;
        }
    }

    [[noreturn]] void refuseContradiction(const ResultsFile& file, const ResultRow& row) const
    {
        for (const MergedFile& earlier : m_outcome.files) {
            const std::optional<ResultRow> other = findRun(ResultsFile::openToRead(earlier.sPath), row.nNumber);
            if (!other) {
                continue;
            }
            if (row.failed() != other->failed()) {
                const MergedFile failed = row.failed() ? MergedFile{file.path(), file.description().shard} : earlier;
                throw ConfigurationError(fmt::format(
                    "{}: run {} {} here and {} in {}: {}; make it again with {} --retry-failed", file.path(),
                    row.nNumber, row.failed() ? "failed" : "went well", row.failed() ? "went well" : "failed",
                    earlier.sPath, row.failed() ? row.sError : other->sError,
                    sweepCall(m_outcome.sSweepFile, failed.shard, failed.sPath)));
            }
            throw ConfigurationError(fmt::format(
                "{}: run {} is another one than in {}: {}; the same run is the same on every machine of a kind: find "
                "out which is right, and leave out the other file",
                file.path(), row.nNumber, earlier.sPath, firstDifference(row, *other)));
        }
        throw std::runtime_error(fmt::format("{}: run {} was changed while it was read", file.path(), row.nNumber));
    }

    const MergeOptions& m_options;
    IMergeObserver& m_observer;
    CampaignDescription m_first;
    std::optional<NewResultsFile> m_output;
    MergeOutcome m_outcome;
};
} // namespace

MergeOutcome mergeResults(const MergeOptions& options, IMergeObserver& observer)
{
    Merge merge(options, observer);
    try {
        return merge.run();
    }
    catch (const Stopped&) {
        MergeOutcome outcome;
        outcome.bStopped = true;
        return outcome;
    }
}
