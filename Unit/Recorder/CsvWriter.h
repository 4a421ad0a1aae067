/** @file
 * Records a run's steps as CSV.
 */
#pragma once

#include "Unit/Process/StepSample.h"

#include <fmt/format.h>

#include <string>

/**
 * A CSV file with a row per step and channel. Use it from one thread.
 *
 * Opening checks that the file can be written and changes nothing in it; what it held goes when recording begins. A
 * file that opening made is taken away again if recording never begins.
 */
class CsvWriter
{
public:
    /** @throws ConfigurationError when the file cannot be opened for writing */
    explicit CsvWriter(std::string sPath);
    ~CsvWriter();

    CsvWriter(const CsvWriter&) = delete;
    CsvWriter& operator=(const CsvWriter&) = delete;

    /** Empties the file and writes the header row. */
    void begin();

    /** Adds a row to what is written at the next flush. */
    void add(const StepSample& sample);

    /** Writes what has gathered. After a failure nothing is written any more. */
    void flush();

    /** @return what went wrong with writing; empty when nothing did */
    const std::string& error() const { return m_sError; }

    const std::string& path() const { return m_sPath; }
    std::uint64_t rowsWritten() const { return m_nRowsWritten; }

private:
    void fail(const char* pAction);

    std::string m_sPath;
    int m_fd = -1;
    bool m_bCreated = false;
    bool m_bBegun = false;
    fmt::memory_buffer m_buffer;
    std::uint64_t m_nRowsGathered = 0;
    std::uint64_t m_nRowsWritten = 0;
    std::string m_sError;
};
