"""The safety monitor: silent about ordinary runs, and a breach of a rule is told, counted and fails."""

import json
import unittest

from live_unit import LiveUnit
from metrics_text import scrape
from unit_runner import EXAMPLES, UnitTestCase, errors_of, summary_of

COLD_START = EXAMPLES / "scenarios" / "cold-start.toml"
# An upper limit of -50 dBm, below the lower limit that the channel sets.
CROSSED = '\n[[fault]]\nchannel = 0\noperation = "getPctrlLimits"\nkind = "wrong"\nvalue = -5000\nat_s = 0\n'
CROSSED_SCENARIO = 'fault.0={ operation = "getPctrlLimits", kind = "wrong", value = -5000 }'

ON = '[[event]]\nat_s = 0.0\nrequest = "on"\n'


class SafetyMonitor(UnitTestCase):
    def test_an_ordinary_run_breaks_no_rule(self):
        result = self.run_unit("--duration", 1.5, "--safety-monitor")
        self.assert_well(result)
        self.assertEqual(errors_of(result.stderr), "")
        self.assertEqual(summary_of(result.stdout)[None]["safety violations"], "0")

    def test_without_it_nothing_is_said(self):
        self.append(CROSSED)
        result = self.run_unit("--duration", 0.5)
        self.assert_well(result)
        self.assertNotIn("safety", result.stdout + result.stderr)

    def test_a_broken_rule_is_told_with_its_calls_and_fails(self):
        self.append(CROSSED)
        result = self.run_unit("--duration", 0.5, "--safety-monitor")
        self.assertEqual(result.returncode, 1)
        told = result.stderr[result.stderr.index("opc run: safety: "):].splitlines()
        self.assertRegex(told[0], r"^opc run: safety: crossed-limits: channel 0, step 1: control power -?\d+ is above the "
                                  r"upper limit -5000, because the lower limit -?\d+ is: ")
        calls = []
        for line in told[1:]:
            if not line.startswith("    step "):
                break
            calls.append(line)
        self.assertRegex(calls[-1], r"^    step 1: setOutputPower\(-?\d+, ")
        self.assertIn("    step 1: getPctrlLimits() gave -5000, -5000", calls)
        self.assertNotIn("channel 1, step", result.stderr)
        # With step 2 and with step 3; the ramp then holds the upper limit.
        self.assertEqual(summary_of(result.stdout)[None]["safety violations"], "2")
        self.assertEqual(result.stderr.count("opc run: safety: crossed-limits"), 2)

    def test_metrics_count_them(self):
        self.append(CROSSED)
        unit = LiveUnit(self, self.command("run", self.unit_file, "--safety-monitor"))
        unit.wait_until_on(2)
        metrics = scrape(unit.url)
        self.assertIn('opc_safety_violations_total{channel="0"} 2\n', metrics)
        self.assertIn('opc_safety_violations_total{channel="1"} 0\n', metrics)

    def test_a_simulated_run_counts_them(self):
        result = self.run_program("simulate", COLD_START, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        answer = json.loads(result.stdout)
        self.assertEqual(answer["measures"]["safety_violations"], 0)
        self.assertEqual(answer["violations"], [])

    def test_a_simulated_run_fails_with_one(self):
        scenario = self.folder / "short.toml"
        scenario.write_text("duration_s = 0.5\n" + ON)
        result = self.run_program("simulate", scenario, "--set", CROSSED_SCENARIO, "--json")
        self.assertEqual(result.returncode, 1)
        self.assertIn("safety: crossed-limits: channel 0, step 1: ", result.stderr)
        answer = json.loads(result.stdout)
        self.assertGreater(answer["measures"]["safety_violations"], 0)
        first = answer["violations"][0]
        self.assertEqual((first["rule"], first["step"]), ("crossed-limits", 1))
        self.assertIn("setOutputPower(", first["calls"][-1])

    def test_a_scenario_may_expect_them(self):
        scenario = self.folder / "short.toml"
        scenario.write_text("duration_s = 0.5\n" + ON + "[expect]\nsafety_violations = [1, 1000]\n")
        result = self.run_program("simulate", scenario, "--set", CROSSED_SCENARIO)
        self.assertEqual(result.returncode, 0, result.stderr + result.stdout)
        result = self.run_program("simulate", scenario)
        self.assertEqual(result.returncode, 1)
        self.assertIn("missed: safety_violations is 0", result.stderr)


if __name__ == "__main__":
    unittest.main()
