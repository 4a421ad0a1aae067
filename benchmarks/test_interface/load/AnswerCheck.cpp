#include "benchmarks/test_interface/load/AnswerCheck.h"

#include <map>
#include <regex>
#include <string_view>

namespace
{
using Members = std::map<std::string, int>;

std::size_t occurrences(const std::string& sText, std::string_view sPart)
{
    std::size_t nCount = 0;
    for (std::size_t nAt = sText.find(sPart); nAt != std::string::npos; nAt = sText.find(sPart, nAt + sPart.size())) {
        ++nCount;
    }
    return nCount;
}

Members expectedMembers(const Sample& sample)
{
    Members members;
    for (std::size_t n = 0; n < sample.size(); ++n) {
        members.emplace(SAMPLE_MEMBERS.at(n), sample.at(n));
    }
    return members;
}

/** @return the integer members of each struct in the array, which lie one after the other, whatever their order */
std::vector<Members> structsOf(const std::string& sBody, Members& outside)
{
    static const std::regex MEMBER(R"(<name>(\w+)</name>\s*<value>\s*<(?:int|i4)>(-?\d+)</)");
    std::vector<Members> structs;
    for (std::sregex_iterator it(sBody.begin(), sBody.end(), MEMBER); it != std::sregex_iterator(); ++it) {
        const std::string sName = (*it)[1];
        if (sName == "RadioChannelID") {
            outside.emplace(sName, std::stoi((*it)[2]));
            continue;
        }
        if (structs.empty() || structs.back().size() == SAMPLE_MEMBERS.size()) {
            structs.emplace_back();
        }
        structs.back().emplace(sName, std::stoi((*it)[2]));
    }
    return structs;
}
} // namespace

std::string whyNotSuccess(const std::string& sBody)
{
    if (occurrences(sBody, "<methodResponse>") != 1 || occurrences(sBody, "</methodResponse>") != 1) {
        return "no response";
    }
    return occurrences(sBody, "<fault>") == 0 ? "" : "a fault";
}

std::string whyNotSamples(const std::string& sBody, const std::vector<Sample>& samples)
{
    std::string sWhy = whyNotSuccess(sBody);
    if (!sWhy.empty()) {
        return sWhy;
    }
    Members outside;
    const std::vector<Members> structs = structsOf(sBody, outside);
    if (outside != Members{{"RadioChannelID", 0}} || occurrences(sBody, "<name>OPCLog</name>") != 1) {
        return "no RadioChannelID 0 or no OPCLog";
    }
    if (structs.size() != samples.size() || occurrences(sBody, "<struct>") != samples.size() + 1) {
        return "has " + std::to_string(structs.size()) + " samples instead of " + std::to_string(samples.size());
    }
    for (std::size_t n = 0; n < samples.size(); ++n) {
        if (structs[n] != expectedMembers(samples[n])) {
            return "sample " + std::to_string(n + 1) + " is another one";
        }
    }
    return "";
}
