#include "tests/support/TraceDoubles.h"

#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/KmtTrace.h"
#include "tests/support/RecordingPlatform.h"

#include <cstdarg>
#include <cstdio>
#include <streambuf>
#include <utility>

GT_TraceObject OPC_trace = {7, "OPC"};
GT_TraceObject TI_trace = {7, "TI"};

namespace
{
/** Collects one message; a flush ends it. */
class MessageBuffer : public std::streambuf
{
public:
    MessageBuffer() = default;
    MessageBuffer(const MessageBuffer&) = delete;
    MessageBuffer& operator=(const MessageBuffer&) = delete;
    ~MessageBuffer() override { close(); }

    void begin(const char* pGroup, int nLevel, const char* pSourcePath, int nLine)
    {
        close();
        m_trace = RecordedTrace{pGroup, nLevel, pSourcePath, nLine, {}, true, {}, 0};
        m_bOpen = true;
    }

    void close()
    {
        if (m_bOpen || !m_trace.sText.empty()) {
            end(false);
        }
    }

protected:
    std::streamsize xsputn(const char* pText, std::streamsize nCount) override
    {
        m_trace.sText.append(pText, static_cast<std::size_t>(nCount));
        return nCount;
    }

    int_type overflow(int_type nCharacter) override
    {
        if (!traits_type::eq_int_type(nCharacter, traits_type::eof())) {
            m_trace.sText.push_back(traits_type::to_char_type(nCharacter));
        }
        return traits_type::not_eof(nCharacter);
    }

    int sync() override
    {
        end(m_bOpen && !m_trace.sText.empty() && m_trace.sText.back() == '\n');
        return 0;
    }

private:
    void end(bool bWell)
    {
        m_trace.bWellEnded = bWell;
        if (bWell) {
            m_trace.sText.pop_back();
        }
        RecordingPlatform::get().appendTrace(std::exchange(m_trace, RecordedTrace{}));
        m_bOpen = false;
    }

    RecordedTrace m_trace;
    bool m_bOpen = false;
};

/** A thread's stream: its format is kept from message to message, so that one left changed shows in the next. */
struct MessageStream
{
    MessageBuffer buffer;
    std::ostream stream{&buffer};
    std::ostream nullStream{nullptr};
};

thread_local MessageStream t_message;

/** A thread's record in printf form. */
struct GtRecord
{
    RecordedTrace trace;
    bool bOpen = false;
};

thread_local GtRecord t_record;

void endRecord(bool bWell)
{
    t_record.trace.bWellEnded = bWell;
    RecordingPlatform::get().appendTrace(std::exchange(t_record.trace, RecordedTrace{}));
    t_record.bOpen = false;
}
} // namespace

void TraceDoubles::closeOpenMessages()
{
    t_message.buffer.close();
    if (t_record.bOpen || !t_record.trace.sText.empty()) {
        endRecord(false);
    }
}

void TraceDoubles::resetFormat()
{
    const std::ostream fresh(nullptr);
    t_message.stream.copyfmt(fresh);
    t_message.stream.clear();
}

KmtTrace::KmtTrace(const char* pGroup, int nLevel) : m_pGroup(pGroup), m_pState(&RecordingPlatform::get())
{
    static_cast<RecordingPlatform*>(m_pState)->addTraceObject(pGroup, nLevel);
}

KmtTrace::~KmtTrace()
{
    static_cast<RecordingPlatform*>(m_pState)->removeTraceObject(m_pGroup);
}

std::ostream& KmtTrace::beginLogMsg(int nLevel, const char* pSourcePath, int nLine)
{
    if (static_cast<RecordingPlatform*>(m_pState)->isQuiet()) {
        return t_message.nullStream;
    }
    t_message.buffer.begin(m_pGroup, nLevel, pSourcePath, nLine);
    return t_message.stream;
}

extern "C" int CPlxTraceHandler_DmLevel2GtLevel(unsigned long nCode)
{
    RecordingPlatform& platform = RecordingPlatform::get();
    platform.recordCall([nCode] {
        char sCode[2 * sizeof nCode + 3];
        (void)std::snprintf(sCode, sizeof sCode, "%#lx", nCode);
        return "DmLevel2GtLevel(" + std::string(sCode) + ")";
    });
    const auto found = platform.script().gtLevels.find(nCode);
    return found == platform.script().gtLevels.end() ? platform.script().nDefaultGtLevel : found->second;
}

extern "C" void GT_beginImpl(GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine)
{
    if (t_record.bOpen) {
        endRecord(false);
    }
    t_record.trace = RecordedTrace{pObject->pName, nLevel, pSourcePath, nLine, {}, true, {}, 0};
    t_record.bOpen = true;
}

extern "C" void GT_rawprintf(const char* pFormat, ...)
{
    std::va_list arguments;
    std::va_list copy;
    va_start(arguments, pFormat);
    va_copy(copy, arguments);
    const int nLength = std::vsnprintf(nullptr, 0, pFormat, copy);
    va_end(copy);
    std::string sText(static_cast<std::size_t>(nLength) + 1, '\0');
    (void)std::vsnprintf(sText.data(), sText.size(), pFormat, arguments);
    va_end(arguments);
    sText.pop_back();
    t_record.trace.sText += sText;
    t_record.trace.formats.emplace_back(pFormat);
}

extern "C" void GT_endImpl(void)
{
    endRecord(t_record.bOpen);
}
