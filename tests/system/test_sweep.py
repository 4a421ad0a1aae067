"""`opc sweep` makes many runs, whatever ends it in between, and `opc sweep-report` tells what they came to."""

import csv
import os
import random
import signal
import subprocess
import time
import unittest

from unit_runner import EXAMPLES, TIMEOUT_S, UnitTestCase

SCENARIO = """
duration_s = 1.0
[[event]]
at_s = 0.0
request = "on"
[[event]]
at_s = 0.5
requested_power_dbm = 12.0
"""
SWEEP = """
[sweep]
scenario = "base.toml"
method = "random"
runs = {runs}
duration_s = {duration}
[[parameter]]
path = "transmitter.detector_noise_db"
distribution = "log-uniform"
minimum = 0.005
maximum = 0.5
[[parameter]]
path = "transmitter.actuator_step_db"
distribution = "choice"
values = [0.01, 0.1, 0.5]
"""
LIMITS_SWEEP = """
[sweep]
scenario = "base.toml"
method = "grid"
repeats = 10
[[parameter]]
path = "channel.tx_pmin_dbm"
values = [-10, 20]
[[parameter]]
path = "channel.tx_pmax_dbm"
values = [30, 15]
"""
RUNS = int(os.environ.get("OPC_SWEEP_RUNS", "1000"))
LONG_S = 100.0  # so long that all runs take some seconds, and can be disturbed
KILLS = 3


class Sweep(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.where = self.folder.parent
        (self.where / "base.toml").write_text(SCENARIO)
        self.write_sweep(RUNS, LONG_S)

    def write_sweep(self, runs, duration=1.0):
        (self.where / "sweep.toml").write_text(SWEEP.format(runs=runs, duration=duration))

    def start(self, *arguments):
        process = subprocess.Popen(self.command("sweep", "sweep.toml", *arguments), cwd=self.where,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        process.kill()
        process.communicate(timeout=TIMEOUT_S)

    def report(self, results):
        """Returns the bytes of the CSV file."""
        target = self.where / "report.csv"
        target.unlink(missing_ok=True)
        self.assert_well(self.run_program("sweep-report", results, "--csv", target))
        return target.read_bytes()

    def rows(self, results):
        return list(csv.DictReader(self.report(results).decode().splitlines()))

    def wait_for_rows(self, process, results, more_than):
        """Waits until the results file has more than so many runs; returns how many it has."""
        deadline = time.monotonic() + TIMEOUT_S
        while time.monotonic() < deadline and process.poll() is None:
            if (self.where / results).exists():
                result = self.run_program("sweep-report", results, "--csv", "looked.csv")
                done = (self.where / "looked.csv").read_bytes().count(b"\n") - 1 if result.returncode == 0 else 0
                if done > more_than:
                    return done
            time.sleep(0.02)
        self.fail(f"ended with {process.returncode} before it had more than {more_than} runs")

    def test_killed_three_times_it_comes_to_the_same_bytes(self):
        self.assert_well(self.run_program("sweep", "sweep.toml", "--jobs", 2, "--results", "undisturbed.db"))
        expected = self.report("undisturbed.db")
        self.assertEqual(expected.count(b"\n"), RUNS + 1)

        seed = random.randrange(2**32)
        chance = random.Random(seed)
        done = []
        with self.subTest(seed=seed):
            for _ in range(KILLS):
                process = self.start("--jobs", "2", "--results", "killed.db")
                self.wait_for_rows(process, "killed.db", done[-1] if done else 0)
                time.sleep(chance.uniform(0.0, 0.4))
                process.send_signal(signal.SIGKILL)
                process.communicate(timeout=TIMEOUT_S)
                self.assertEqual(process.returncode, -signal.SIGKILL)
                done.append(len(self.rows("killed.db")))
                self.assertLess(done[-1], RUNS)
            result = self.run_program("sweep", "sweep.toml", "--jobs", 2, "--results", "killed.db")
            self.assert_well(result)
            self.assertIn(f"{RUNS} runs, {done[-1]} of them done already", result.stderr)
            self.assertEqual(self.report("killed.db"), expected)

    def test_a_signal_stops_it_with_a_line_that_says_how_to_go_on(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number.name):
                results = f"{number.name}.db"
                process = self.start("--jobs", "1", "--results", results)
                self.wait_for_rows(process, results, 0)
                process.send_signal(number)
                errors = process.communicate(timeout=TIMEOUT_S)[1]
                self.assertEqual(process.returncode, 1, errors)
                done = len(self.rows(results))
                self.assertLess(done, RUNS)
                self.assertEqual(errors.splitlines()[-1], f"opc: {number.name}: stopped with {done} of {RUNS} runs in "
                                                          f"{results}; the same command goes on from there")
                self.assertFalse((self.where / f"{results}-wal").exists())

    def test_shards_have_each_run_once_and_the_same_as_the_whole(self):
        self.write_sweep(20)
        self.assert_well(self.run_program("sweep", "sweep.toml"))
        for index in (1, 2, 3):
            self.assert_well(self.run_program("sweep", "sweep.toml", "--shard", f"{index}/3"))
        parts = [row for index in (1, 2, 3) for row in self.rows(f"sweep-{index}-of-3.db")]
        self.assertEqual(sorted(parts, key=lambda row: int(row["run"])), self.rows("sweep.db"))

    def test_failed_runs_are_told_and_made_again_when_asked_for(self):
        # Each value goes with the others' first ones; the last of the four combinations has its limits the wrong way.
        (self.where / "sweep.toml").write_text(LIMITS_SWEEP)
        failed = "opc: 10 of 40 runs failed; column error of opc sweep-report says why, and --retry-failed makes them again"
        for arguments, done in (((), 0), ((), 40), (("--retry-failed",), 30)):
            with self.subTest(arguments=arguments, done=done):
                result = self.run_program("sweep", "sweep.toml", *arguments)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn(f"40 runs, {done} of them done already", result.stderr)
                self.assertEqual(result.stderr.splitlines()[-1], failed)
                self.assertEqual(result.stdout, "40 runs, 10 failed, in sweep.db\n")
                rows = self.rows("sweep.db")
                self.assertEqual([bool(row["error"]) for row in rows], [False] * 30 + [True] * 10)
                self.assertIn("tx_pm", rows[-1]["error"])
                self.assertEqual(rows[-1]["steps"], "")

    def test_wrong_arguments_and_files_are_told_in_one_line(self):
        (self.where / "text.db").write_text("no database " * 100)
        for arguments, text in ((("sweep", "absent.toml"), "absent.toml: cannot be read"),
                                (("sweep", "sweep.toml", "--shard", "4/3"), '--shard: "4/3" is not a shard'),
                                (("sweep", "sweep.toml", "--shard", "0/3"), '--shard: "0/3" is not a shard'),
                                (("sweep", "sweep.toml", "--shard", "1/3x"), '--shard: "1/3x" is not a shard'),
                                (("sweep", "sweep.toml", "--jobs", "0"), "--jobs"),
                                (("sweep", "sweep.toml", "--results", "text.db"), "is not a results file"),
                                (("sweep-report", "absent.db", "--csv", "a.csv"), "absent.db: does not exist"),
                                (("sweep-report", "text.db", "--csv", "a.csv"), "is not a results file")):
            with self.subTest(arguments):
                result = self.run_program(*arguments)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
                self.assertTrue(result.stderr.startswith("opc: "), result.stderr)
                self.assertIn(text, result.stderr)
        self.assertFalse((self.where / "a.csv").exists())

    def test_results_of_another_campaign_are_refused(self):
        self.write_sweep(3)
        self.assert_well(self.run_program("sweep", "sweep.toml"))
        self.write_sweep(4)
        result = self.run_program("sweep", "sweep.toml")
        self.assertEqual(result.returncode, 2)
        self.assertIn("sweep.db: has results of another campaign: number of runs was 3 and is 4", result.stderr)

    def test_the_shipped_sweeps_run(self):
        shard = f"1/{30 * 1000 // RUNS}"
        for sweep in sorted((EXAMPLES / "sweeps").glob("*.toml")):
            if "[sweep]" in sweep.read_text():
                with self.subTest(sweep.name):
                    self.assert_well(self.run_program("sweep", f"examples/sweeps/{sweep.name}", "--shard", shard))


if __name__ == "__main__":
    unittest.main()
