#include "Unit/TestServer/private/RefusalTrace.h"

#include "Platform/Trace/KmtTrace.h"

namespace
{
constexpr int LEVEL_FAILURE = 1;
constexpr const char* SOURCE_PATH = "Unit/TestServer/private/RefusalTrace";

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
    line << sText;
    if (m_nLeftOut > 0) {
        line << " (and " << m_nLeftOut << " more before)";
        m_nLeftOut = 0;
    }
    line << std::endl;
}
