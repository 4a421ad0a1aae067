#include "Unit/Campaign/ResultsMerge.h"
#include "Unit/Campaign/private/SweepCall.h"
#include "Unit/Text/ShellWord.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
/** @return whether all files are parts of the same division */
bool oneDivision(const std::vector<MergedFile>& files)
{
    return std::all_of(files.begin(), files.end(),
                       [&files](const MergedFile& file) { return file.shard.nCount == files.front().shard.nCount; });
}

bool isComplete(const std::vector<bool>& finished, const Shard& shard)
{
    for (std::uint64_t nRun = shard.nIndex - 1; nRun < finished.size(); nRun += shard.nCount) {
        if (!finished[static_cast<std::size_t>(nRun)]) {
            return false;
        }
    }
    return true;
}

std::string callFor(const MergeOutcome& outcome, const Shard& shard)
{
    const auto file = std::find_if(outcome.files.begin(), outcome.files.end(),
                                   [&shard](const MergedFile& merged) { return merged.shard == shard; });
    return sweepCall(outcome.sSweepFile, shard, file == outcome.files.end() ? "" : file->sPath);
}
} // namespace

std::string sweepCall(const std::string& sSweepFile, const Shard& shard, const std::string& sResults)
{
    std::string sCall = "opc sweep " + shellWord(sSweepFile);
    if (shard.nCount > 1) {
        sCall += fmt::format(" --shard {}/{}", shard.nIndex, shard.nCount);
    }
    return sResults.empty() ? sCall : sCall + " --results " + shellWord(sResults);
}

std::string missingRunsText(const std::vector<bool>& finished, std::size_t nMost)
{
    std::string sText;
    std::size_t nShown = 0;
    std::uint64_t nLeft = 0;
    for (std::size_t nBegin = 0; nBegin < finished.size(); ++nBegin) {
        if (finished[nBegin]) {
            continue;
        }
        std::size_t nEnd = nBegin + 1;
        while (nEnd < finished.size() && !finished[nEnd]) {
            ++nEnd;
        }
        if (nShown < nMost) {
            ++nShown;
            sText += (sText.empty() ? "" : ", ") + std::to_string(nBegin);
            sText += nEnd - nBegin > 1 ? fmt::format("-{}", nEnd - 1) : "";
        }
        else {
            nLeft += nEnd - nBegin;
        }
        nBegin = nEnd;
    }
    return nLeft == 0 ? sText : fmt::format("{} and {} more", sText, nLeft);
}

std::vector<std::string> missingRunsCommands(const MergeOutcome& outcome, const std::string& sOutput, std::size_t nMost)
{
    std::vector<std::string> commands;
    if (outcome.nDone == outcome.finished.size()) {
        return commands;
    }
    if (outcome.bWritten) {
        return {sweepCall(outcome.sSweepFile, {}, sOutput)};
    }
    if (outcome.files.empty() || !oneDivision(outcome.files)) {
        return commands;
    }
    Shard shard = outcome.files.front().shard;
    for (shard.nIndex = 1; shard.nIndex <= shard.nCount && commands.size() < nMost; ++shard.nIndex) {
        if (!isComplete(outcome.finished, shard)) {
            commands.push_back(callFor(outcome, shard));
        }
    }
    return commands;
}
