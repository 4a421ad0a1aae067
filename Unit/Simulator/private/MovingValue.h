/** @file
 * A value that stays, or moves in a straight line.
 */
#pragma once

#include <cstdint>

/** A value over virtual time. */
class MovingValue
{
public:
    explicit MovingValue(double value) : m_from(value), m_to(value) {}

    /** Moves from a value at a time to another one; at once when that takes no time. */
    void move(double from, double to, std::int64_t nStartNs, std::int64_t nOverNs)
    {
        m_from = from;
        m_to = to;
        m_nStartNs = nStartNs;
        m_nOverNs = nOverNs;
    }

    /** @param nNs not before the latest move began */
    double at(std::int64_t nNs) const
    {
        const std::int64_t nPassedNs = nNs - m_nStartNs;
        if (nPassedNs >= m_nOverNs) {
            return m_to;
        }
        return m_from + static_cast<double>(nPassedNs) / static_cast<double>(m_nOverNs) * (m_to - m_from);
    }

    /** @return when the value has arrived */
    std::int64_t endNs() const { return m_nStartNs + m_nOverNs; }

private:
    double m_from;
    double m_to;
    std::int64_t m_nStartNs = 0;
    std::int64_t m_nOverNs = 0;
};
