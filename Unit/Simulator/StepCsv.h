/** @file
 * The steps of a run as CSV.
 */
#pragma once

#include "Unit/Files/NewFile.h"
#include "Unit/Simulator/StepBucket.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <string>

/** Which rows a file of steps has. */
struct StepCsvSettings
{
    std::uint64_t nEvery = 1;            /**< a row for the first of so many steps */
    std::optional<double> bucketSeconds; /**< rows with minimum, mean and maximum over so many seconds instead */
};

/** Writes a row per step or per bucket; the file has its name when finish() has returned. */
class StepCsv final : public IStepReceiver
{
public:
    /** @throws ConfigurationError when the file cannot be made */
    StepCsv(const std::string& sPath, const StepCsvSettings& settings);

    /** @throws std::runtime_error when the file cannot be written */
    void onStep(const VirtualStep& step) override;

    /** @throws std::runtime_error when the file cannot be written */
    void finish();

    const std::string& path() const { return m_file.path(); }
    std::uint64_t rows() const { return m_nRows; }

private:
    void addToBucket(const VirtualStep& step);
    void writeStep(const VirtualStep& step);
    void writeBucket();
    void endRow();

    NewFile m_file;
    StepCsvSettings m_settings;
    fmt::memory_buffer m_row;
    StepBucket m_bucket;
    std::uint64_t m_nBucketUs;
    std::uint64_t m_nBucket = 0; // number of the bucket that is being filled
    std::uint64_t m_nSteps = 0;
    std::uint64_t m_nRows = 0;
};
