"""`opc sweep-report` tells which parameter moves which measure, and how the worst runs are made again."""

import json
import os
import pathlib
import re
import shlex
import subprocess
import unittest

from swept import RUNS, SweptTestCase
from unit_runner import EXAMPLES, PROGRAM, TIMEOUT_S

# The last of the four combinations has its limits the wrong way.
FAILING_SWEEP = """
[sweep]
scenario = "../base scenario's.toml"
method = "grid"
repeats = 30
[[parameter]]
path = "channel.tx_pmin_dbm"
values = [-10, 20]
[[parameter]]
path = "channel.tx_pmax_dbm"
values = [30, 15]
"""


class SweepReport(SweptTestCase):
    def replay(self, command, where):
        """Runs a printed command as a shell would; returns the run's measures."""
        words = shlex.split(command)
        self.assertEqual(words[:2], ["opc", "simulate"])
        line = shlex.join([PROGRAM]) + command.removeprefix("opc") + " --json"
        result = subprocess.run(["sh", "-c", line], cwd=where, capture_output=True, text=True, timeout=TIMEOUT_S,
                                check=False)
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)["measures"]

    def test_the_printed_commands_make_the_very_same_runs(self):
        self.sweep()
        report = self.json("--worst", "2")
        self.assertEqual(report["runs"], {"total": RUNS, "made": RUNS, "failed": 0, "missing": 0})
        for measure in report["measures"]:
            with self.subTest(measure["measure"]):
                self.assertEqual(len(measure["worst"]), 2)
                for run in measure["worst"]:
                    self.assertEqual(self.replay(run["command"], self.where)[measure["measure"]], run["value"])
                self.assertEqual(measure["worst"][0]["value"], measure["maximum"])

    def test_the_commands_are_for_the_folder_where_one_stands(self):
        self.sweep()
        for where, results in ((self.where / "sweeps", "../s.db"), (pathlib.Path("/"), str(self.where / "s.db"))):
            result = subprocess.run(self.command("sweep-report", results, "--worst", "1"), cwd=where,
                                    capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
            self.assert_well(result)
            lines = result.stdout.splitlines()
            commands = [line.strip() for line in lines if line.strip().startswith("opc simulate ")]
            self.assertEqual(len(commands), 2, result.stdout)
            values = [line for line in lines if line.strip().startswith("run ")]
            for measure, command, value in zip(("settling_max_ms", "steady_rms_db"), commands, values):
                shown = float(value.partition(": ")[2].split()[0])
                self.assertAlmostEqual(self.replay(command, where)[measure], shown, delta=0.051)

    def test_the_parameter_that_moves_a_measure_comes_first(self):
        self.sweep()
        steady = self.json("--measure", "steady_rms_db")["measures"][0]
        first, *others = steady["parameters"]
        self.assertEqual(first["path"], "transmitter.detector_noise_db")
        self.assertEqual([level["level"] for level in first["levels"]], [0, 0.1])
        means = [level["mean"] for level in first["levels"]]
        self.assertAlmostEqual(first["effect"], means[1] - means[0])
        self.assertGreater(first["share_of_variance"], max(other["share_of_variance"] for other in others
                                                           if other["share_of_variance"] is not None))
        text = self.report("--measure", "steady_rms_db")
        self.assertTrue(text.startswith("Gain, limits and drives\n"), text)
        self.assertIn(f"{RUNS} of {RUNS} made, 0 failed, 0 missing", text)
        order = [line[2:].rpartition(" dB ")[0].rstrip(" 0.123456789") for line in text.splitlines()
                 if line.endswith("%")]
        names = {parameter["path"]: parameter["name"] for parameter in self.json()["parameters"]}
        self.assertEqual(order, [names[parameter["path"]] for parameter in (first, *others)])

    def test_failed_and_missing_runs_are_told(self):
        self.sweep(FAILING_SWEEP, "--shard", "1/2", code=1)
        report = self.json()
        self.assertEqual(report["runs"], {"total": 60, "made": 60, "failed": 15, "missing": 0})
        self.assertEqual(len(report["failures"]), 15)
        self.assertIn("tx_pm", report["failures"][0]["error"])
        self.assertIn("--set channel.tx_pmax_dbm=15 --seed", report["failures"][0]["command"])
        text = self.report()
        self.assertIn("60 of 60 of shard 1/2 made, 15 failed, 0 missing", text)
        self.assertIn("failed: 15 runs\n  run 90: ", text)
        by = self.json("--by", "channel.tx_pmax_dbm", "--where", "steps>0")
        self.assertEqual([(group["runs"], group["failed"], group["meeting"]) for group in by["groups"]],
                         [(30, 15, 15), (30, 0, 30)])

    def test_many_failed_runs_are_not_all_told(self):
        self.sweep(FAILING_SWEEP, code=1)
        self.assertEqual(len(self.json()["failures"]), 20)
        self.assertIn("and more, which --csv has", self.report())

    def test_measures_by_parameters_and_the_best_of_them(self):
        self.sweep()
        arguments = ("--by", "gain in percent,transmitter.detector_noise_db", "--where", "steady_rms_db<=0.05")
        report = self.json(*arguments, "--best")
        self.assertEqual(report["conditions"], ["steady_rms_db<=0.05"])
        self.assertEqual([tuple(group["levels"].values()) for group in report["groups"]],
                         [(gain, noise) for gain in (20, 50, 90) for noise in (0, 0.1)])
        for best, noise in zip(report["best"], (0, 0.1)):
            groups = {group["levels"]["channel.gain_percent_on"]: group for group in report["groups"]
                      if group["levels"]["transmitter.detector_noise_db"] == noise}
            meeting = [gain for gain, group in groups.items() if group["meeting"] == group["runs"]
                       and group["measures"]["settling_max_ms"]["without"] == 0]
            self.assertEqual(best["meeting"], meeting)
            fastest = min(meeting, key=lambda gain: groups[gain]["measures"]["settling_max_ms"]["mean"])
            self.assertEqual(best["best"], groups[fastest])
        self.assertEqual(report["best"][0]["best"]["levels"]["channel.gain_percent_on"], 90)
        rows = self.report(*arguments).splitlines()[-6:]
        self.assertEqual([row.split()[:2] for row in rows], [[gain, noise] for gain in ("20", "50", "90")
                                                             for noise in ("0", "0.1")])

    def test_wrong_arguments_and_files_are_told_in_one_line(self):
        self.sweep()
        (self.where / "text.db").write_text("no database " * 100)
        for arguments, text in ((("absent.db",), "absent.db: does not exist"),
                                ((".",), ".: is no file"),
                                (("text.db",), "text.db: is not a results file"),
                                (("s.db", "--measure", "settling_max"), "did you mean settling_max_ms?"),
                                (("s.db", "--measure", ""), '--measure: "" is no measure'),
                                (("s.db", "--worst", "-1"), "--worst"),
                                (("s.db", "--worst", "1001"), "--worst"),
                                (("s.db", "--by", "channel.gain_percent"), "did you mean channel.gain_percent_on?"),
                                (("s.db", "--by", "drive,drive.file"), '"drive.file" is named twice'),
                                (("s.db", "--by", "drive,gain in percent,noise in dB,drive.file"),
                                 '"drive.file" is named twice'),
                                (("s.db", "--where", "steps>1"), "--where requires --by"),
                                (("s.db", "--best"), "--best requires --by"),
                                (("s.db", "--by", "drive", "--worst", "1"), "excludes"),
                                (("s.db", "--by", "drive", "--where", "steps=1"), "is not a condition"),
                                (("s.db", "--by", "drive", "--where", "step>1"), "did you mean steps?"),
                                (("s.db", "--by", "drive", "--where", "steps>many"), "is not a number")):
            with self.subTest(arguments):
                result = self.run_program("sweep-report", *arguments)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
                self.assertTrue(result.stderr.startswith("opc: "), result.stderr)
                self.assertIn(text, result.stderr)
                self.assertEqual(result.stdout, "")

    def test_the_scenario_may_be_gone(self):
        self.sweep()
        (self.where / "base scenario's.toml").unlink()
        self.assertIn("the scenario is not there any more", self.report())

    def test_results_without_runs_cannot_be_reported(self):
        self.sweep()
        self.change_results("DELETE FROM run")
        result = self.run_program("sweep-report", "s.db", "--html", "p.html")
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertEqual(result.stderr, f"opc: s.db: has no finished run of {RUNS} yet; opc sweep makes them\n")
        self.assertFalse((self.where / "p.html").exists())

    def test_where_all_runs_have_failed_there_is_nothing_to_compare(self):
        self.sweep()
        self.change_results("UPDATE run SET status = 'failed', error = 'no <power>'")
        text = self.report()
        self.assertIn("no run has it", text)
        self.assertIn(f"failed: {RUNS} runs\n  run 0: no <power>\n    opc simulate ", text)
        self.report("--plot", "p.svg", "--html", "p.html")
        self.assertIn("run 0: no &lt;power&gt;", (self.where / "p.html").read_text(encoding="utf-8"))
        self.assertIn("-", self.report("--by", "drive", "--best").splitlines()[-1])

    def test_runs_that_are_missing_are_told(self):
        self.sweep()
        self.change_results("DELETE FROM run WHERE number >= 20")
        self.assertIn(f"20 of {RUNS} made, 0 failed, 4 missing", self.report())

    @unittest.skipIf("OPC_SWEEP_RUNS" in os.environ and int(os.environ["OPC_SWEEP_RUNS"]) < 1000,
                     "a quarter of the study's 5120 runs takes minutes where each is emulated or not optimised")
    def test_the_study_of_the_manual_is_true(self):
        """Two of eight runs of each combination: the best gain may be a neighbour, as the minimum is flat."""
        text = (EXAMPLES.parent / "docs" / "campaigns.md").read_text(encoding="utf-8")
        section = text.partition("## Which gain?\n")[2]
        command = re.search(r"^\$ opc (sweep-report .*\\\n.*)$", section, re.MULTILINE).group(1)
        told = re.findall(r"^([\d.]+) +([\d.]+) +(\d+ to \d+|-) +(\d+|-) +([\d.]+|-)", section, re.MULTILINE)
        self.assertEqual(len(told), 16)
        result = subprocess.run(self.command("sweep", "examples/sweeps/gain-study.toml", "--shard", "1/4", "--results",
                                             "gain-study.db"), cwd=self.where, capture_output=True, text=True,
                                timeout=4 * TIMEOUT_S, check=False)
        self.assert_well(result)
        result = self.run_program(*shlex.split(command.replace("\\\n", " ")), "--json")
        self.assert_well(result)
        for row, best in zip(told, json.loads(result.stdout)["best"], strict=True):
            noise, step, meeting, gain, mean = row
            with self.subTest(row):
                self.assertEqual([f"{level:g}" for level in best["levels"].values()], [noise, step])
                self.assertEqual(best["best"] is None, gain == "-")
                if best["best"] is not None:
                    lowest, highest = map(float, meeting.split(" to "))
                    self.assertAlmostEqual(min(best["meeting"]), lowest, delta=5)
                    self.assertAlmostEqual(max(best["meeting"]), highest, delta=15)
                    self.assertAlmostEqual(best["best"]["levels"]["channel.gain_percent_on"], float(gain), delta=25)
                    settling = best["best"]["measures"]["settling_max_ms"]["mean"]
                    self.assertAlmostEqual(settling, float(mean), delta=0.4 * float(mean) + 6.0)


if __name__ == "__main__":
    unittest.main()
