#include "Unit/TestServer/private/RefusalTrace.h"

#include "Platform/Trace/KmtTrace.h"

#include <algorithm>

namespace
{
constexpr int LEVEL_FAILURE = 1;
constexpr const char* SOURCE_PATH = "Unit/TestServer/private/RefusalTrace";

constexpr std::size_t LONGEST_REFUSAL = 300;

/** @return what a client has sent, without what a terminal could take for a command, and no longer than a line */
std::string forTrace(std::string sText)
{
    std::replace_if(
        sText.begin(), sText.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    if (sText.size() > LONGEST_REFUSAL) {
        sText.replace(LONGEST_REFUSAL, std::string::npos, "...");
    }
    return sText;
}

KmtTrace& trace()
{
    static KmtTrace group("UNIT.TI", LEVEL_FAILURE);
    return group;
}
} // namespace

RefusalTrace::RefusalTrace()
{
    (void)trace(); // so that its level can be set before the first refusal
}

void RefusalTrace::write(const std::string& sText)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now - m_secondBegan >= std::chrono::seconds(1)) {
        m_secondBegan = now;
        m_nLines = 0;
    }
    if (m_nLines >= MAX_LINES_PER_SECOND) {
        ++m_nLeftOut;
        return;
    }
    ++m_nLines;
    std::ostream& line = trace().beginLogMsg(LEVEL_FAILURE, SOURCE_PATH, __LINE__);
    line << forTrace(sText);
    if (m_nLeftOut > 0) {
        line << " (and " << m_nLeftOut << " more before)";
        m_nLeftOut = 0;
    }
    line << std::endl;
}
