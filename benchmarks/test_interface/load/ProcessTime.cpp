#include "benchmarks/test_interface/load/ProcessTime.h"

#include <unistd.h>

#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

double processorSecondsOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string sLine;
    std::getline(file, sLine);
    // The second field is the program's name in parentheses, which may hold blanks.
    std::istringstream fields(sLine.substr(sLine.rfind(')') + 1));
    constexpr int FIELDS_BEFORE_TIMES = 11;
    std::string sSkipped;
    for (int n = 0; n < FIELDS_BEFORE_TIMES; ++n) {
        fields >> sSkipped;
    }
    double user = 0;
    double system = 0;
    double childrenUser = 0;
    double childrenSystem = 0;
    if (!(fields >> user >> system >> childrenUser >> childrenSystem)) {
        throw std::runtime_error("cannot read the processor time of process " + std::to_string(process));
    }
    return (user + system + childrenUser + childrenSystem) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double ownProcessorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    constexpr double SECONDS_PER_NANOSECOND = 1e-9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * SECONDS_PER_NANOSECOND;
}
