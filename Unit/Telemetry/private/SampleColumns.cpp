#include "Unit/Telemetry/SampleColumns.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"

#include <cmath>

namespace
{
constexpr double CENTI = 100.0;
constexpr double KILO = 1000.0;

bool isPower(std::int32_t nPower)
{
    return nPower != OPC_POWER_OFF && nPower != OPC_POWER_UNKNOWN;
}

ColumnValue power(std::int32_t nPower)
{
    return isPower(nPower) ? ColumnValue(nPower) : std::nullopt;
}

/** What the controller keeps of its last step on the air says nothing once it is off. */
ColumnValue powerOnAir(const StepSample& sample, std::int32_t nPower)
{
    return isPower(sample.nPctrl) && sample.nState != eOPC_TX_OFF ? power(nPower) : std::nullopt;
}
} // namespace

const std::array<SampleColumn, 10>& quantityColumns()
{
    using Sample = const StepSample&;
    static const std::array<SampleColumn, 10> COLUMNS = {{
        {"requested_cdb", [](Sample s) { return ColumnValue(s.nRequestedPower); }},
        {"ptarget_cdb", [](Sample s) { return power(s.nPtarget); }},
        {"pctrl_cdb", [](Sample s) { return powerOnAir(s, s.nPctrl); }},
        {"pmeasured_cdb", [](Sample s) { return powerOnAir(s, s.nPmeasured); }},
        {"ppredicted_cdb", [](Sample s) { return powerOnAir(s, s.nPredictedPctrl); }},
        {"error_cdb", [](Sample s) { return isPower(s.nPmeasured) ? powerOnAir(s, s.nPowerError) : std::nullopt; }},
        {"rf_gain_cdb", [](Sample s) { return powerOnAir(s, s.nRfGain); }},
        {"if_power_cdb", [](Sample s) { return powerOnAir(s, s.nIfPower); }},
        {"temperature_cc", [](Sample s) { return ColumnValue(std::llround(s.temperatureDegrees * CENTI)); }},
        {"frequency_khz", [](Sample s) { return ColumnValue(std::llround(s.frequencyMhz * KILO)); }},
    }};
    return COLUMNS;
}

ColumnValue reducedGain(const StepSample& sample, std::size_t nAmplifier)
{
    return powerOnAir(sample, sample.reducedGain.at(nAmplifier));
}
