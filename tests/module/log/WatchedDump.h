/** @file
 * A look at the log in the middle of its dump.
 */
#pragma once

#include "Platform/Trace/KmtTrace.h"
#include "tests/support/RecordingPlatform.h"

#include <functional>
#include <locale>
#include <string>
#include <utility>

/** Writes numbers as usual and calls a function before each. */
class WatchedNumbers : public std::num_put<char>
{
public:
    explicit WatchedNumbers(std::function<void()> watch) : m_watch(std::move(watch)) {}

protected:
    using std::num_put<char>::do_put;

    iter_type do_put(iter_type out, std::ios_base& base, char_type cFill, long nValue) const override
    {
        m_watch();
        return std::num_put<char>::do_put(out, base, cFill, nValue);
    }

private:
    std::function<void()> m_watch;
};

/** Lets a function be called before each number that this thread traces, until the platform is reset. */
inline void watchTracedNumbers(const std::function<void()>& watch)
{
    KmtTrace trace("WatchedDump", 3);
    std::ostream& stream = trace.beginLogMsg(7, __FILE__, __LINE__);
    stream.imbue(std::locale(stream.getloc(), new WatchedNumbers(watch)));
    stream << std::endl;
    RecordingPlatform::get().clearRecords();
}
