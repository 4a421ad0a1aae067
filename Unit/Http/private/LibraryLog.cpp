#include "Unit/Http/private/LibraryLog.h"

#include <array>
#include <string_view>

namespace
{
// The library found the request wrong and answers it by itself.
constexpr std::string_view OWN_ANSWER = "HTTP response code is ";

// There was no connection, no memory or no thread for a client.
constexpr std::array<std::string_view, 5> NO_ROOM = {"Error accepting connection", "Error allocating memory",
                                                     "Failed to create a", "Hit process or system resource limit",
                                                     "Server reached connection limit"};
} // namespace

std::optional<std::string> turnedAwayText(const std::string& sLine)
{
    const auto nAnswer = sLine.find(OWN_ANSWER);
    if (nAnswer != std::string::npos) {
        const auto nStatus = nAnswer + OWN_ANSWER.size();
        return "malformed request refused with status " +
               sLine.substr(nStatus, sLine.find_first_not_of("0123456789", nStatus) - nStatus);
    }
    for (const std::string_view beginning : NO_ROOM) {
        if (std::string_view(sLine).substr(0, beginning.size()) == beginning) {
            return sLine.substr(0, sLine.find_last_not_of(" \n") + 1);
        }
    }
    return std::nullopt;
}
