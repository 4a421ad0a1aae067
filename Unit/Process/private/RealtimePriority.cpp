#include "Unit/Process/RealtimePriority.h"

#include <fmt/format.h>
#include <sched.h>

#include <system_error>

std::string giveRealtimePriority(pthread_t thread, int nPriority)
{
    sched_param parameters{};
    parameters.sched_priority = nPriority;
    const int nError = pthread_setschedparam(thread, SCHED_FIFO, &parameters);
    return nError == 0 ? std::string()
                       : fmt::format("the regulation gets no real-time priority {}: {}; allow it with ulimit -r {} or "
                                     "the capability CAP_SYS_NICE, or set realtime_priority = 0 in [unit]",
                                     nPriority, std::generic_category().message(nError), nPriority);
}
