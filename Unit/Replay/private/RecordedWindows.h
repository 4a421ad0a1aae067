/** @file
 * Reads a recording row by row.
 */
#pragma once

#include "Unit/Recorder/Recording.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

/**
 * Hands out the rows of a run one at a time, in the order of their times. Reads some seconds of the run at once, so
 * that neither the memory grows with the recording nor a row costs a query.
 */
template <class TRow> class RecordedWindows
{
public:
    using Reader = std::function<void(const RecordedRange& range, const std::function<void(const TRow&)>& add)>;

    /** @param range what to hand out; its end must be near what there is, since empty seconds cost a query, too */
    RecordedWindows(Reader read, const RecordedRange& range) : m_read(std::move(read)), m_left(range) {}

    /** @return the next row, null at the end; until pop() */
    const TRow* peek()
    {
        while (m_nNext == m_rows.size() && m_left.nFromUs <= m_left.nToUs) {
            m_nNext = 0;
            m_rows.clear();
            RecordedRange window = m_left;
            window.nToUs = std::min(m_left.nToUs, m_left.nFromUs + WINDOW_US);
            m_left.nFromUs = window.nToUs + 1;
            m_read(window, [this](const TRow& row) { m_rows.push_back(row); });
        }
        return m_nNext < m_rows.size() ? &m_rows[m_nNext] : nullptr;
    }

    void pop() { ++m_nNext; }

private:
    static constexpr std::uint64_t WINDOW_US = 20'000'000;

    Reader m_read;
    RecordedRange m_left; // what has not been read
    std::vector<TRow> m_rows;
    std::size_t m_nNext = 0;
};
