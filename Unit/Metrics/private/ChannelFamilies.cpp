#include "Unit/Metrics/private/ChannelFamilies.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Unit/Text/PowerText.h"

#include <array>
#include <cmath>
#include <optional>

namespace
{
using Value = std::optional<double>;

constexpr double CENTI = 100.0;
constexpr double HERTZ_PER_MEGAHERTZ = 1e6;

/** A family with one value of each channel at most. */
struct ChannelFamily
{
    const char* pName;
    const char* pHelp;
    prometheus::MetricType eType;
    Value (*read)(const ChannelMetrics&);
};

template <std::int32_t StepSample::*PMember> Value power(const ChannelMetrics& channel)
{
    if (!channel.lastStep) {
        return std::nullopt;
    }
    const std::int32_t nCenti = channel.lastStep.value().*PMember;
    return nCenti == OPC_POWER_OFF || nCenti == OPC_POWER_UNKNOWN ? Value() : nCenti / CENTI;
}

/** @return a power of the loop. Once the transmitter is off the controller keeps some of them, which mean nothing then
 */
template <std::int32_t StepSample::*PMember> Value regulated(const ChannelMetrics& channel)
{
    const bool bRegulated =
        channel.lastStep && (channel.lastStep->nState == eOPC_TX_ON_RAMPING || channel.lastStep->nState == eOPC_TX_ON);
    return bRegulated ? power<PMember>(channel) : Value();
}

/** @return a number of the last step, which nobody reads more exactly than to a thousandth */
template <float StepSample::*PMember> Value thousandths(const ChannelMetrics& channel)
{
    constexpr double THOUSAND = 1000.0;
    return channel.lastStep ? Value(std::round(double{channel.lastStep.value().*PMember} * THOUSAND) / THOUSAND)
                            : Value();
}

Value frequencyHertz(const ChannelMetrics& channel)
{
    const Value megahertz = thousandths<&StepSample::frequencyMhz>(channel);
    return megahertz ? Value(std::round(*megahertz * HERTZ_PER_MEGAHERTZ)) : Value();
}

template <auto PMember> Value ofStep(const ChannelMetrics& channel)
{
    return channel.lastStep ? Value(static_cast<double>(channel.lastStep.value().*PMember)) : Value();
}

/** @return a count of steps, which is 0 before the first */
template <auto PMember> Value stepCount(const ChannelMetrics& channel)
{
    return ofStep<PMember>(channel).value_or(0.0);
}

template <auto PMember> Value ofInside(const ChannelMetrics& channel)
{
    return channel.inside ? Value(static_cast<double>(channel.inside.value().*PMember)) : Value();
}

template <bool LogActivity::*PMember> Value logRuns(const ChannelMetrics& channel)
{
    return channel.inside ? Value(channel.inside->logs.*PMember ? 1.0 : 0.0) : Value();
}

Value refusedCalls(const ChannelMetrics& channel)
{
    return channel.inside && channel.inside->nRefusedCalls ? Value(static_cast<double>(*channel.inside->nRefusedCalls))
                                                           : Value();
}

Value transientSamples(const ChannelMetrics& channel)
{
    return channel.nTransientSamples ? Value(static_cast<double>(*channel.nTransientSamples)) : Value();
}

Value safetyViolations(const ChannelMetrics& channel)
{
    return channel.nSafetyViolations ? Value(static_cast<double>(*channel.nSafetyViolations)) : Value();
}

constexpr std::array CHANNEL_FAMILIES{
    ChannelFamily{"opc_tx_on", "Whether the transmitter counts as on.", GAUGE, ofInside<&ChannelInside::bOn>},
    ChannelFamily{"opc_requested_power_dbm", "Power that is requested.", GAUGE, power<&StepSample::nRequestedPower>},
    ChannelFamily{"opc_target_power_dbm", "Power that the loop aims at, while ramping or on.", GAUGE,
                  regulated<&StepSample::nPtarget>},
    ChannelFamily{"opc_control_power_dbm", "Power that the loop sets, while ramping or on.", GAUGE,
                  regulated<&StepSample::nPctrl>},
    ChannelFamily{"opc_measured_power_dbm", "Power that the detector measures, while ramping or on.", GAUGE,
                  regulated<&StepSample::nPmeasured>},
    ChannelFamily{"opc_predicted_power_dbm", "Power that the loop predicts, while ramping or on.", GAUGE,
                  regulated<&StepSample::nPredictedPctrl>},
    ChannelFamily{"opc_power_error_db", "Target less measured power while on, target less control power while ramping.",
                  GAUGE, regulated<&StepSample::nPowerError>},
    ChannelFamily{"opc_if_power_dbm", "Power at the gain chain's input.", GAUGE, power<&StepSample::nIfPower>},
    ChannelFamily{"opc_rf_gain_db", "Gain of the chain.", GAUGE, power<&StepSample::nRfGain>},
    ChannelFamily{"opc_detector_state", "Detector state, from 0.", GAUGE, ofStep<&StepSample::nDetectorState>},
    ChannelFamily{"opc_temperature_celsius", "Temperature at the transmitter.", GAUGE,
                  thousandths<&StepSample::temperatureDegrees>},
    ChannelFamily{"opc_frequency_hertz", "Transmit frequency.", GAUGE, frequencyHertz},
    ChannelFamily{"opc_steps_total", "Regulator steps taken.", COUNTER, stepCount<&StepSample::nSteps>},
    ChannelFamily{"opc_failed_steps_total", "Regulator steps that returned a failure.", COUNTER,
                  stepCount<&StepSample::nFailedSteps>},
    ChannelFamily{"opc_ramps_total", "Ramps that have begun.", COUNTER, ofInside<&ChannelInside::nRamps>},
    ChannelFamily{"opc_ramp_duration_seconds",
                  "From the latest ramp's begin until the error on the air was within 1 dB, or until now.", GAUGE,
                  ofInside<&ChannelInside::rampSeconds>},
    ChannelFamily{"opc_notifications_total", "Calls of the controller's observers.", COUNTER,
                  ofInside<&ChannelInside::nNotifications>},
    ChannelFamily{"opc_handler_refused_calls_total", "Calls that the simulated hardware refused.", COUNTER,
                  refusedCalls},
    ChannelFamily{"opc_safety_violations_total", "Breaches of the transmitter's safety rules, where a monitor watches.",
                  COUNTER, safetyViolations},
    ChannelFamily{"opc_transient_log_samples", "Samples that the transient log holds.", GAUGE, transientSamples},
    ChannelFamily{"opc_transient_log_running", "Whether the transient log was enabled and not disabled since.", GAUGE,
                  logRuns<&LogActivity::bTransientLogRuns>},
    ChannelFamily{"opc_statistics_log_running", "Whether the OPC log was started and not stopped since.", GAUGE,
                  logRuns<&LogActivity::bOpcLogRuns>}};

MetricLabels labelsOf(const ChannelMetrics& channel)
{
    return {{"channel", std::to_string(channel.nNumber)}};
}

prometheus::MetricFamily states(const std::vector<ChannelMetrics>& channels)
{
    Family family("opc_channel_state", "Whether the controller is in a state: 1 for that one, 0 for the others.",
                  GAUGE);
    for (const ChannelMetrics& channel : channels) {
        for (std::int32_t nState = eOPC_TX_OFF_INITIATED; channel.lastStep && nState <= eOPC_UNDEFINED; ++nState) {
            MetricLabels labels = labelsOf(channel);
            labels.push_back({"state", controllerStateName(nState)});
            family.add(std::move(labels), channel.lastStep->nState == nState ? 1.0 : 0.0);
        }
    }
    return family.take();
}

prometheus::MetricFamily stepTimes(const std::vector<ChannelMetrics>& channels)
{
    Family family("opc_step_duration_seconds",
                  "What a regulator step took, the simulation of its transmitter included.",
                  prometheus::MetricType::Histogram);
    for (const ChannelMetrics& channel : channels) {
        family.add(labelsOf(channel), channel.stepTimes);
    }
    return family.take();
}

void addUnlessEmpty(Families& families, prometheus::MetricFamily family)
{
    if (!family.metric.empty()) {
        families.push_back(std::move(family));
    }
}
} // namespace

void addChannelFamilies(Families& families, const std::vector<ChannelMetrics>& channels)
{
    addUnlessEmpty(families, states(channels));
    for (const ChannelFamily& entry : CHANNEL_FAMILIES) {
        Family family(entry.pName, entry.pHelp, entry.eType);
        for (const ChannelMetrics& channel : channels) {
            if (const Value value = entry.read(channel)) {
                family.add(labelsOf(channel), *value);
            }
        }
        addUnlessEmpty(families, family.take());
    }
    addUnlessEmpty(families, stepTimes(channels));
}
