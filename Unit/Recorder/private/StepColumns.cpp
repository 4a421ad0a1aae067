#include "Unit/Recorder/StepColumns.h"

#include "Unit/Text/PowerText.h"

#include <iterator>

std::string_view stepColumnNames()
{
    return "time_s,channel,state,requested_power_dBm,ptarget_dBm,pctrl_dBm,pmeasured_dBm,ppredicted_dBm,error_dB,"
           "result,"
           "detector_state,temperature_C,frequency_MHz,lateness_us";
}

void appendStepColumns(fmt::memory_buffer& buffer, const StepSample& sample)
{
    fmt::format_to(
        std::back_inserter(buffer), "{:.3f},{},{},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{},{},{:.2f},{:.3f},{}",
        static_cast<double>(sample.nTimeUs) / 1e6, sample.nChannelNumber, controllerStateName(sample.nState),
        sample.nRequestedPower / 100.0, sample.nPtarget / 100.0, sample.nPctrl / 100.0, sample.nPmeasured / 100.0,
        sample.nPredictedPctrl / 100.0, sample.nPowerError / 100.0, sample.nResult, sample.nDetectorState,
        sample.temperatureDegrees, sample.frequencyMhz, sample.nLatenessUs);
}
