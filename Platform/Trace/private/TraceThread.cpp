#include "Platform/Trace/private/TraceThread.h"

#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/private/TraceOutput.h"

#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace
{

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

bool isWanted(const TraceGroup& group, int nLevel)
{
    return nLevel <= group.nLevel.load(std::memory_order_relaxed);
}

/** Makes a text one line: takes line ends off its end, and makes control characters within it blanks. */
std::string_view makeOneLine(char* pText, std::size_t nSize)
{
    while (nSize > 0 && isLineEnd(pText[nSize - 1])) {
        --nSize;
    }
    std::replace_if(
        pText, pText + nSize,
        [](char c) {
            const auto nCode = static_cast<unsigned char>(c);
            return nCode < 0x20 || nCode == 0x7F;
        },
        ' ');
    return {pText, nSize};
}

// One pointer, for which there is always room beside those of the program itself: it is reached without a call.
[[gnu::tls_model("initial-exec")]] thread_local TraceThread* t_pThread = nullptr;

// Runs after the destructors of a thread's thread-local objects, which may trace too; not for the main thread, which
// traces until the process has ended.
void freeThread(void* pThread)
{
    delete static_cast<TraceThread*>(pThread);
    t_pThread = nullptr;
}

pthread_key_t makeThreadKey()
{
    pthread_key_t key{};
    if (pthread_key_create(&key, &freeThread) != 0) {
        throw std::bad_alloc();
    }
    return key;
}

} // namespace

void TraceMessage::begin(const TraceGroup& group, int nLevel, const char* pSourcePath, int nLine)
{
    m_pGroup = &group;
    m_nLevel = nLevel;
    m_bToTrace = isWanted(group, nLevel);
    m_nLine = nLine;
    m_sSourcePath.assign(pSourcePath != nullptr ? pSourcePath : "");
}

void TraceMessage::write() noexcept
{
    if (!isBegun()) {
        return;
    }
    // Emptied afterwards, not moved, so that the memory serves the next message.
    const std::string_view sText = makeOneLine(m_sText.data(), m_sText.size());
    TraceOutput::get().write(
        {m_pGroup->sName, m_nLevel, m_sSourcePath, m_nLine, sText, m_bToTrace, m_nLevel == TRACE_LEVEL_SYSTEM_LOG});
    m_sText.clear();
}

TraceMessage::int_type TraceMessage::overflow(int_type character)
{
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        m_sText.push_back(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

std::streamsize TraceMessage::xsputn(const char* pText, std::streamsize nSize)
{
    m_sText.append(pText, static_cast<std::size_t>(nSize));
    return nSize;
}

int TraceMessage::sync()
{
    write();
    return 0;
}

void TraceCodeRecord::begin(const GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine)
{
    end();
    m_pObject = pObject;
    m_nLevel = nLevel;
    m_nLine = nLine;
    m_pSourcePath = pSourcePath != nullptr ? pSourcePath : "";
}

void TraceCodeRecord::print(const char* pFormat, va_list arguments)
{
    const std::size_t nRoom = m_text.size() - m_nSize;
    if (m_pObject == nullptr || pFormat == nullptr || nRoom <= 1) {
        return;
    }
    const int nWanted = std::vsnprintf(m_text.data() + m_nSize, nRoom, pFormat, arguments);
    if (nWanted > 0) {
        m_nSize += std::min(static_cast<std::size_t>(nWanted), nRoom - 1);
    }
}

void TraceCodeRecord::end() noexcept
{
    const GT_TraceObject* const pObject = std::exchange(m_pObject, nullptr);
    const std::size_t nSize = std::exchange(m_nSize, 0);
    if (pObject == nullptr) {
        return;
    }
    const char* const pName = pObject->pName != nullptr ? pObject->pName : "";
    // The caller compared the level before it began.
    TraceOutput::get().write({pName, m_nLevel, m_pSourcePath, m_nLine, makeOneLine(m_text.data(), nSize), true, false});
}

TraceThread& TraceThread::current()
{
    if (t_pThread == nullptr) {
        static const pthread_key_t key = makeThreadKey();
        auto pThread = std::make_unique<TraceThread>();
        if (pthread_setspecific(key, pThread.get()) != 0) {
            throw std::bad_alloc();
        }
        t_pThread = pThread.release();
    }
    return *t_pThread;
}

std::ostream& TraceThread::beginMessage(const TraceGroup& group, int nLevel, const char* pSourcePath, int nLine)
{
    // A message that its caller did not end is not lost.
    if (m_message.isBegun()) {
        m_message.write();
    }
    if (m_stream.exceptions() != std::ios_base::goodbit) {
        m_stream.exceptions(std::ios_base::goodbit);
    }
    if (nLevel != TRACE_LEVEL_SYSTEM_LOG && !isWanted(group, nLevel)) {
        // A bad stream neither formats nor stores what is inserted.
        if (!m_stream.bad()) {
            m_stream.setstate(std::ios_base::badbit);
        }
        return m_stream;
    }
    m_message.begin(group, nLevel, pSourcePath, nLine);
    m_stream.clear();
    m_stream.flags(std::ios_base::skipws | std::ios_base::dec);
    m_stream.precision(6);
    m_stream.width(0);
    m_stream.fill(' ');
    return m_stream;
}
