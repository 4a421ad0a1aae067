#include "Unit/Simulator/StepCsv.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Conversions.h"
#include "Unit/Recorder/StepColumns.h"
#include "Unit/Text/PowerText.h"

#include <cmath>
#include <iterator>
#include <string_view>

namespace
{
std::string bucketHeader()
{
    std::string sHeader = "time_s,steps,failed_steps,state";
    for (const QuantityKey& quantity : quantityKeys()) {
        for (const char* const pWhat : {"min", "mean", "max"}) {
            sHeader += fmt::format(",{}_{}_{}", quantity.pName, pWhat, quantity.pUnit);
        }
    }
    return sHeader + "\n";
}
} // namespace

StepCsv::StepCsv(const std::string& sPath, const StepCsvSettings& settings)
    : m_file(sPath), m_settings(settings),
      m_nBucketUs(static_cast<std::uint64_t>(std::llround(settings.bucketSeconds.value_or(0.0) * US_PER_S)))
{
    m_file.write(settings.bucketSeconds
                     ? bucketHeader()
                     : fmt::format("{},output_power_dBm,lower_clamp_dBm,upper_clamp_dBm\n", stepColumnNames()));
}

void StepCsv::onStep(const VirtualStep& step)
{
    if (m_nBucketUs > 0) {
        addToBucket(step);
    }
    else if (m_nSteps++ % m_settings.nEvery == 0) {
        writeStep(step);
    }
}

void StepCsv::addToBucket(const VirtualStep& step)
{
    const std::uint64_t nBucket = step.sample.nTimeUs / m_nBucketUs;
    if (m_bucket.nSteps > 0 && nBucket != m_nBucket) {
        writeBucket();
    }
    m_nBucket = nBucket;
    m_bucket.add(step);
}

void StepCsv::writeStep(const VirtualStep& step)
{
    appendStepColumns(m_row, step.sample);
    const double outputDbm = std::isfinite(step.outputPowerDbm) ? step.outputPowerDbm : OPC_POWER_OFF / CENTI_DB_PER_DB;
    fmt::format_to(std::back_inserter(m_row), ",{:.4f},{:.2f},{:.2f}", outputDbm, step.nLowerClamp / CENTI_DB_PER_DB,
                   step.nUpperClamp / CENTI_DB_PER_DB);
    endRow();
}

void StepCsv::writeBucket()
{
    const auto out = std::back_inserter(m_row);
    fmt::format_to(out, "{:.3f},{},{},{}", static_cast<double>(m_nBucket * m_nBucketUs) / US_PER_S, m_bucket.nSteps,
                   m_bucket.nFailedSteps, controllerStateName(m_bucket.nLastState));
    for (std::size_t nQuantity = 0; nQuantity < QUANTITY_COUNT; ++nQuantity) {
        const ValueRange& range = m_bucket.ranges.at(nQuantity);
        const int nDecimals = quantityKeys().at(nQuantity).nDecimals;
        if (range.hasValues()) {
            fmt::format_to(out, ",{:.{}f},{:.{}f},{:.{}f}", range.minimum, nDecimals, range.mean(), nDecimals + 2,
                           range.maximum, nDecimals);
        }
        else {
            m_row.append(std::string_view(",,,"));
        }
    }
    endRow();
    m_bucket = StepBucket();
}

void StepCsv::endRow()
{
    m_row.push_back('\n');
    m_file.write({m_row.data(), m_row.size()});
    m_row.clear();
    ++m_nRows;
}

void StepCsv::finish()
{
    if (m_bucket.nSteps > 0) {
        writeBucket();
    }
    m_file.finish();
}
