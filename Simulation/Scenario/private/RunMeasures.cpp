#include "Simulation/Scenario/RunMeasures.h"

const std::array<RunMeasureKey, RUN_MEASURE_COUNT>& runMeasureKeys()
{
    using M = RunMeasures;
    static constexpr std::array<RunMeasureKey, RUN_MEASURE_COUNT> KEYS = {{
        {"steps", &M::steps, "steps of the regulator"},
        {"failed_steps", &M::failedSteps, "steps that failed"},
        {"overruns", &M::overruns, "deadlines skipped because handler calls took too long"},
        {"refused_calls", &M::refusedCalls, "calls that the simulated handler refused"},
        {"safety_violations", &M::safetyViolations, "breaches of a safety rule"},
        {"switch_ons", &M::switchOns, "times the transmitter was switched on"},
        {"switch_ons_in_band", &M::switchOnsInBand, "switch-ons that came within the settling band", EWorse::Smaller},
        {"switch_on_to_1_db_ms", &M::switchOnTo1DbMs, "from switching on to an error of at most 1 dB, longest"},
        {"switch_on_to_0_1_db_ms", &M::switchOnTo01DbMs,
         "from switching on to an error within the settling band, "
         "longest"},
        {"ramp_steps", &M::rampSteps, "steps of a switch-on's ramp, most"},
        {"switch_offs", &M::switchOffs, "times the transmitter was switched off to the end"},
        {"switch_off_ms", &M::switchOffMs, "from switching off to off, longest"},
        {"radiating_off_s", &M::radiatingOffS, "time with output power although off"},
        {"jumps", &M::jumps, "jumps of the reference by more than 0.2 dB"},
        {"jumps_settled", &M::jumpsSettled, "jumps after which the output settled", EWorse::Smaller},
        {"settling_mean_ms", &M::settlingMeanMs, "from a jump to a settled output, mean"},
        {"settling_max_ms", &M::settlingMaxMs, "from a jump to a settled output, longest"},
        {"overshoot_db", &M::overshootDb, "how far the output went beyond its new value, largest"},
        {"steady_steps", &M::steadySteps, "closed-loop steps that count as steady", EWorse::Smaller},
        {"steady_mean_db", &M::steadyMeanDb, "error of the steady steps, mean", EWorse::FartherFromZero},
        {"steady_rms_db", &M::steadyRmsDb, "error of the steady steps, root mean square"},
        {"steady_p999_db", &M::steadyP999Db, "absolute error that 99.9 % of the steady steps do not exceed"},
        {"steady_max_db", &M::steadyMaxDb, "absolute error of the steady steps, largest"},
        {"limit_cycle_db", &M::limitCycleDb, "amplitude of the largest limit cycle, 0 for none"},
        {"limit_cycle_ms", &M::limitCycleMs, "period of that limit cycle"},
        {"largest_pctrl_step_db", &M::largestPctrlStepDb, "largest step of the control power in the closed loop"},
        {"at_upper_clamp_s", &M::atUpperClampS, "time with the control power at its upper clamp"},
        {"at_lower_clamp_s", &M::atLowerClampS, "time with the control power at its lower clamp"},
        {"spurious_steps", &M::spuriousSteps, "steps with more output power than allowed"},
        {"spurious_max_db", &M::spuriousMaxDb, "output power above what is allowed in those, largest"},
        {"outside_1_db_s", &M::outside1DbS, "time in the closed loop with an error of more than 1 dB"},
        {"outside_2_db_s", &M::outside2DbS, "time in the closed loop with an error of more than 2 dB"},
        {"detector_state_0_share", &M::detectorState0Share, "share of the closed loop with a trusted detector",
         EWorse::Smaller},
        {"detector_state_1_share", &M::detectorState1Share, "share of the closed loop with a usable detector"},
        {"detector_state_2_share", &M::detectorState2Share,
         "share of the closed loop with a detector that tells "
         "little"},
        {"request_error_mean_db", &M::requestErrorMeanDb, "output less requested power of the steady steps, mean",
         EWorse::FartherFromZero},
        {"request_error_max_db", &M::requestErrorMaxDb, "output less requested power of the steady steps, largest"},
    }};
    return KEYS;
}
