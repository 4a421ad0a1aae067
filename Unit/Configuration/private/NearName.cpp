#include "Unit/Configuration/NearName.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace
{
/** @return how many characters have to be changed, put in or taken out to make one text of the other */
std::size_t distance(const std::string& sOne, const std::string& sOther)
{
    std::vector<std::size_t> distances(sOther.size() + 1);
    std::iota(distances.begin(), distances.end(), 0);
    for (const char c : sOne) {
        std::size_t diagonal = distances[0]++;
        for (std::size_t i = 1; i < distances.size(); ++i) {
            const std::size_t changed = diagonal + (c == sOther[i - 1] ? 0 : 1);
            diagonal = distances[i];
            distances[i] = std::min({changed, distances[i] + 1, distances[i - 1] + 1});
        }
    }
    return distances.back();
}
} // namespace

std::string nearName(const std::string& sText, const std::vector<std::string>& names)
{
    constexpr std::size_t LONGEST_COMPARED = 100;
    constexpr std::size_t LETTERS_PER_SLIP = 3;
    if (sText.size() > LONGEST_COMPARED) {
        return "";
    }
    std::string sNearest;
    std::size_t nFewest = sText.size() / LETTERS_PER_SLIP + 1;
    for (const std::string& sName : names) {
        const std::size_t nSlips = distance(sText, sName);
        if (nSlips < nFewest) {
            nFewest = nSlips;
            sNearest = sName;
        }
    }
    return sNearest;
}

std::string knownNames(const std::string& sText, const std::vector<std::string>& names, const std::string& sWhat)
{
    const std::string sNear = nearName(sText, names);
    const std::string sMeant = sNear.empty() ? "" : fmt::format("did you mean {}? ", sNear);
    return fmt::format("{}{}: {}", sMeant, sWhat, fmt::join(names, ", "));
}
