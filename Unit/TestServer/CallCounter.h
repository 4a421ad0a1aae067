/** @file
 * How often the test interface was asked for what, and what it refused.
 */
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/** The calls of a method. */
struct CallCounts
{
    std::uint64_t nCalls = 0;
    std::map<int, std::uint64_t> faults; /**< calls that ended with a fault, by its code */
};

/** Counts calls by method and fault. Any thread. */
class CallCounter
{
public:
    /** What calls of names that no method has are counted under, so that clients cannot make up names without end. */
    static constexpr const char* UNKNOWN_METHOD = "unknown";

    /** What requests that never became a call are counted under. */
    static constexpr const char* NO_CALL = "unreadable";

    /** Tells of methods before their first call. */
    void expect(const std::vector<std::string>& methods);

    void countResult(const std::string& sMethod);
    void countFault(const std::string& sMethod, int nCode);

    /** @return the counts by method; every method that is expected or was counted has them */
    std::map<std::string, CallCounts> counts() const;

private:
    mutable std::mutex m_mutex;
    std::map<std::string, CallCounts> m_counts;
};
