"""The shipped scenarios go as they expect, and each of their expectations is missed when something is broken for it."""

import json
import re
import tomllib
import unittest

from unit_runner import EXAMPLES, UnitTestCase

SCENARIOS = sorted(path.stem for path in (EXAMPLES / "scenarios").glob("*.toml"))

TIMID = "channel.gain_percent_on=5"
WILD = "channel.gain_percent_on=195"  # close to the edge of stability
FROZEN = "channel.gain_percent_on=0"
UNLIMITED = "channel.power_mode=1"
# Beyond the request by 10 dB, out of an amplifier that has 5 dB more than it should.
LOUD = ("transmitter.detector_offset_db=-10", "transmitter.gain_per_ghz_db=10", "channel.frequency_mhz=5500")
NEVER_ON = 'fault.0={ operation = "setTxState", kind = "fail" }'

# Hours of warming in minutes, which the loop does not notice either.
QUICK = {"warming-fast": ("event.1.over_s=400", "duration_s=440"),
         "warming-slow": ("event.1.over_s=400", "duration_s=440")}


def stuck_at(place, seconds):
    """Returns a transmitter that from some time on no longer follows what switches it."""
    return f'fault.{place}={{ operation = "setTxState", kind = "stuck", at_s = {seconds} }}'


# What is broken in a scenario, and which of its expectations are missed then. Together they are all that it has.
BROKEN = {
    "ageing-amplifier": [
        (("event.1.over_s=300",), {"at_upper_clamp_s", "outside_1_db_s"}),
        ((FROZEN,), {"at_upper_clamp_s", "request_error_max_db"}),
    ],
    "burst": [
        ((TIMID,), {"jumps_settled", "settling_max_ms", "outside_2_db_s"}),
        ((WILD,), {"overshoot_db", "largest_pctrl_step_db"}),
        (("event.1.over_s=1.2",), {"jumps"}),
    ],
    "coarse-actuator": [
        (("transmitter.actuator_step_db=0.01",), {"steady_rms_db", "steady_max_db"}),
        (("transmitter.actuator_step_db=0.5",), {"overshoot_db", "steady_rms_db", "steady_max_db"}),
        ((TIMID,), {"settling_max_ms"}),
        ((NEVER_ON,), {"switch_ons_in_band", "jumps_settled"}),
    ],
    "cold-start": [
        ((TIMID,), {"switch_on_to_0_1_db_ms", "steady_max_db", "outside_1_db_s"}),
        ((WILD,), {"overshoot_db", "steady_max_db"}),
        (("channel.gain_percent_ramping=40",), {"ramp_steps"}),
        (LOUD, {"switch_ons_in_band", "spurious_steps"}),
    ],
    "compression": [
        ((TIMID,), {"jumps_settled", "settling_mean_ms", "settling_max_ms"}),
        ((WILD,), {"overshoot_db", "steady_max_db"}),
        (("transmitter.psat_above_max_db=3",), {"settling_mean_ms", "settling_max_ms"}),
        (("transmitter.max_power_dbm=31",), {"at_upper_clamp_s"}),
    ],
    "frequency-hop": [
        ((TIMID,), {"outside_1_db_s", "outside_2_db_s", "steady_max_db", "steady_rms_db"}),
        (("transmitter.gain_per_ghz_db=-0.5",), {"outside_1_db_s", "outside_2_db_s", "steady_max_db"}),
        (("event.1.requested_power_dbm=20",), {"jumps"}),
    ],
    "hot-start": [
        ((TIMID,), {"switch_on_to_0_1_db_ms", "steady_max_db"}),
        ((WILD,), {"overshoot_db", "steady_max_db"}),
        (("event.2.request=off",), {"switch_ons", "switch_ons_in_band", "switch_offs"}),
        (('fault.0={ operation = "setTxState", kind = "fail-times", at_s = 300 }',), {"switch_off_ms"}),
        ((stuck_at(0, 330),), {"radiating_off_s"}),
    ],
    "noisy-detector": [
        ((TIMID,), {"settling_max_ms", "outside_1_db_s"}),
        (("channel.gain_percent_on=80",), {"steady_rms_db", "steady_max_db"}),
        (("transmitter.detector_noise_db=0.005", "transmitter.actuator_step_db=0.25"), {"limit_cycle_db"}),
        ((NEVER_ON,), {"switch_ons_in_band"}),
    ],
    "production-test-lower": [
        (("event.1.production_test=false",), {"largest_pctrl_step_db", "at_lower_clamp_s", "request_error_max_db"}),
        (("event.1.loop_mode=1",), {"detector_state_2_share"}),
        (('fault.0={ operation = "setOutputPower", kind = "wrong", value = -5000 }',), {"refused_calls"}),
    ],
    "production-test-upper": [
        (("event.1.production_test=false",), {"largest_pctrl_step_db", "at_upper_clamp_s", "request_error_max_db"}),
        (LOUD, {"spurious_steps", "outside_2_db_s"}),
        (('fault.0={ operation = "setOutputPower", kind = "wrong", value = 5000 }',), {"refused_calls"}),
    ],
    "rain-fade": [
        ((TIMID,), {"steady_max_db", "steady_rms_db"}),
        ((FROZEN,), {"outside_1_db_s"}),
        (("event.2.over_s=0",), {"jumps"}),
    ],
    "recorded-drive": [
        ((TIMID,), {"jumps_settled", "settling_max_ms", "steady_max_db"}),
        (("drive.requested_power=linear",), {"jumps"}),
    ],
    "step-mode-0": [
        ((UNLIMITED,), {"largest_pctrl_step_db", "settling_max_ms", "outside_1_db_s"}),
        ((TIMID,), {"jumps_settled", "settling_max_ms"}),
        ((WILD, UNLIMITED), {"overshoot_db"}),
    ],
    "step-mode-1": [
        (("channel.power_mode=0",), {"largest_pctrl_step_db", "settling_max_ms", "steady_max_db"}),
        ((TIMID,), {"jumps_settled", "settling_max_ms", "steady_max_db"}),
        ((WILD,), {"overshoot_db"}),
    ],
    "stuck-detector": [
        (("fault.0.kind=fail",), {"failed_steps", "at_upper_clamp_s", "outside_1_db_s"}),
        (("fault.0.for_s=2",), {"settling_max_ms", "at_upper_clamp_s", "outside_1_db_s"}),
        (LOUD, {"spurious_steps", "jumps_settled"}),
    ],
    "switch-off-failures": [
        (("fault.1.times=300",), {"failed_steps", "switch_off_ms"}),
        (("fault.1.kind=fail",), {"switch_offs"}),
        ((stuck_at(1, 4.5),), {"radiating_off_s"}),
        (("fault.2.kind=stuck",), {"refused_calls", "switch_ons_in_band"}),
        ((*LOUD, "channel.requested_power_dbm=28"), {"spurious_steps"}),
    ],
    "switch-on-failures": [
        (("fault.1.times=1000",), {"failed_steps", "switch_ons", "switch_ons_in_band", "switch_on_to_0_1_db_ms",
                                   "switch_offs"}),
        (("fault.0.operation=getPmeasured",), {"at_upper_clamp_s"}),
        (("fault.5.times=2",), {"ramp_steps", "failed_steps"}),
        (("fault.8.times=3",), {"switch_off_ms"}),
        ((stuck_at(8, 24.1),), {"radiating_off_s"}),
        ((*LOUD, "channel.requested_power_dbm=28"), {"spurious_steps"}),
    ],
    "warming-fast": [
        ((FROZEN,), {"steady_mean_db", "steady_p999_db", "steady_max_db", "outside_1_db_s"}),
        (("channel.requested_power_dbm=28",), {"at_upper_clamp_s"}),
    ],
    "warming-slow": [
        ((FROZEN,), {"steady_mean_db", "steady_p999_db", "steady_max_db", "outside_1_db_s"}),
        (("channel.requested_power_dbm=28",), {"at_upper_clamp_s"}),
    ],
}


def read(scenario):
    return tomllib.loads((EXAMPLES / "scenarios" / f"{scenario}.toml").read_text())


class ShippedScenarios(UnitTestCase):
    def simulate(self, scenario, *changes):
        """Returns the exit code and what the program answers, with the expectations that were missed."""
        changes += QUICK.get(scenario, ())
        settings = [argument for change in changes for argument in ("--set", change)]
        result = self.run_program("simulate", self.folder / "scenarios" / f"{scenario}.toml", "--json", *settings)
        self.assertIn(result.returncode, (0, 1), result.stderr)
        answer = json.loads(result.stdout)
        return result.returncode, answer, {found["measure"] for found in answer["expectations"] if not found["met"]}

    def files(self):
        return sorted(self.folder.parent.rglob("*"))

    def test_each_goes_as_expected_and_leaves_no_file(self):
        before = self.files()
        for scenario in SCENARIOS:
            with self.subTest(scenario):
                code, answer, missed = self.simulate(scenario)
                self.assertEqual((code, missed), (0, set()))
                self.assertTrue(answer["expectations"], "it expects nothing")
        self.assertEqual(self.files(), before)

    def test_each_says_what_it_is_about(self):
        for scenario in SCENARIOS:
            with self.subTest(scenario):
                self.assertTrue(read(scenario)["title"])
                self.assertTrue(read(scenario)["description"].strip())

    def test_each_misses_what_is_broken(self):
        self.assertEqual(sorted(BROKEN), SCENARIOS)
        for scenario, breaks in BROKEN.items():
            for changes, missed in breaks:
                with self.subTest(scenario, changes=changes):
                    code, _, missed_now = self.simulate(scenario, *changes)
                    self.assertEqual(code, 1)
                    self.assertLessEqual(missed, missed_now)

    def test_the_table_of_the_manual_is_true(self):
        text = (EXAMPLES.parent / "docs" / "simulation.md").read_text(encoding="utf-8")
        section = text.partition("## Scenarios that ship\n")[2].partition("\n## ")[0]
        rows = re.findall(r"^\| `([\w-]+)` \| .* \| (`.*) \|$", section, re.MULTILINE)
        self.assertEqual(sorted(scenario for scenario, _ in rows), SCENARIOS)
        for scenario, figures in rows:
            with self.subTest(scenario):
                measures = self.simulate(scenario)[1]["measures"]
                shown = re.findall(r"`(\w+)` (-?[\d.]+)", figures)
                self.assertEqual(len(shown), 2, figures)
                for measure, figure in shown:
                    # Another compiler may round otherwise, and a time then differs by an interval.
                    delta = 0.1 * float(figure) + 0.01
                    self.assertAlmostEqual(measures[measure], float(figure), delta=delta, msg=measure)

    def test_all_expectations_are_among_those(self):
        for scenario, breaks in BROKEN.items():
            with self.subTest(scenario):
                self.assertEqual(set().union(*(missed for _, missed in breaks)), set(read(scenario)["expect"]))


if __name__ == "__main__":
    unittest.main()
