/** @file
 * A thread's trace: the message and the record that it is writing.
 */
#pragma once

#include "Platform/Trace/private/TraceGroups.h"

#include <array>
#include <cstdarg>
#include <ostream>
#include <streambuf>
#include <string>

struct GT_TraceObject;

/** Takes a message's text and writes the message as one line when it is flushed. */
class TraceMessage : public std::streambuf
{
public:
    void begin(const TraceGroup& group, int nLevel, const char* pSourcePath, int nLine);

    /** @return whether there is text that has not been written */
    bool isBegun() const { return m_pGroup != nullptr && !m_sText.empty(); }

    /** Writes the text gathered, if any. */
    void write() noexcept;

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* pText, std::streamsize nSize) override;
    int sync() override;

private:
    const TraceGroup* m_pGroup = nullptr;
    int m_nLevel = 0;
    bool m_bToTrace = false;
    int m_nLine = 0;
    std::string m_sSourcePath;
    std::string m_sText;
};

/** A record of the printf form, its text cut at a fixed size. */
class TraceCodeRecord
{
public:
    void begin(const GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine);
    void print(const char* pFormat, va_list arguments);
    void end() noexcept;

private:
    const GT_TraceObject* m_pObject = nullptr;
    int m_nLevel = 0;
    int m_nLine = 0;
    const char* m_pSourcePath = "";
    std::array<char, 1024> m_text{};
    std::size_t m_nSize = 0;
};

/** What each thread that traces has of its own. */
class TraceThread
{
public:
    TraceThread() : m_stream(&m_message) {}

    /** @return the calling thread's, made at its first use, freed when the thread ends */
    static TraceThread& current();

    /** @return a stream that gathers a message of the group, or swallows it when its level is not wanted */
    std::ostream& beginMessage(const TraceGroup& group, int nLevel, const char* pSourcePath, int nLine);

    TraceCodeRecord& codeRecord() { return m_codeRecord; }

private:
    TraceMessage m_message;
    std::ostream m_stream;
    TraceCodeRecord m_codeRecord;
};
