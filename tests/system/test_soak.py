"""script/soak: a short soak goes well, the same seed gives the same events, and what grows is found."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import soak_virtual
from soak_watch import Watch
from unit_runner import PROGRAM, TIMEOUT_S

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "script" / "soak"
DAYS = "0.02" if os.environ.get("OPC_SANITIZER") else "0.2"


class Growing(unittest.TestCase):
    def growth(self, values, name="rss_kib"):
        watch = Watch(os.getpid())
        watch.rows = [{"time_s": float(second), "rss_kib": 50_000, "anon_kib": 40_000, "descriptors": 10, "threads": 5,
                       name: value} for second, value in enumerate(values)]
        return [growth.name for growth in watch.growths() if growth.grows]

    def test_a_leak_is_found(self):
        self.assertEqual(self.growth([50_000 + 200 * second for second in range(200)]), ["rss_kib"])
        self.assertEqual(self.growth([10 + second // 20 for second in range(200)], "descriptors"), ["descriptors"])
        self.assertEqual(self.growth([5 + second // 20 for second in range(200)], "threads"), ["threads"])

    def test_a_warm_up_is_none(self):
        self.assertEqual(self.growth([min(50_000 + 2000 * second, 120_000) for second in range(200)]), [])

    def test_single_samples_are_none(self):
        self.assertEqual(self.growth([90_000 if second in (60, 190, 198) else 50_000 for second in range(200)]), [])

    def test_what_comes_and_goes_is_none(self):
        self.assertEqual(self.growth([10 + second * 7 % 23 for second in range(200)], "descriptors"), [])

    def test_a_process_is_sampled_until_it_ends(self):
        process = subprocess.Popen([sys.executable, "-c", "input()"], stdin=subprocess.PIPE)
        watch = Watch(process.pid)
        self.assertTrue(watch.sample(more=1))
        process.communicate(b"\n")
        self.assertFalse(watch.sample())
        self.assertEqual(len(watch.rows), 1)
        self.assertGreater(watch.rows[0]["rss_kib"], 0)


class Soak(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="opc-test-")
        self.addCleanup(temporary.cleanup)
        self.report = pathlib.Path(temporary.name) / "report"

    def soak(self, *arguments):
        return subprocess.run([str(SCRIPT), *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=4 * TIMEOUT_S, check=False)

    def run_soak(self, kind, *arguments, code=0):
        result = self.soak(kind, "--program", PROGRAM, "--report", str(self.report), *arguments)
        self.assertEqual(result.returncode, code, result.stdout + result.stderr)
        self.assertEqual((self.report / "report.txt").read_text(), result.stdout)
        return result.stdout

    def test_the_same_seed_gives_the_same_events(self):
        text = soak_virtual.scenario_text(3, 1, 1.0)
        self.assertEqual(text, soak_virtual.scenario_text(3, 1, 1.0))
        self.assertNotEqual(text, soak_virtual.scenario_text(4, 1, 1.0))
        self.assertGreater(text.count("[[event]]"), 50)
        self.assertGreater(text.count("[[fault]]"), 10)

    def test_virtual_channels_go_well(self):
        report = self.run_soak("virtual", "--days", DAYS, "--channels", "2", "--jobs", "1")
        self.assertIn("Verdict: well", report)
        counts = [int(count) for count in re.findall(r"steps (\d+), failed_steps", report)]
        self.assertEqual(len(counts), 2)
        self.assertGreater(min(counts), 200_000)
        self.assertTrue((self.report / "channel-1.csv").read_text().startswith("time_s,rss_kib"))

    def test_a_running_unit_goes_well(self):
        report = self.run_soak("real", "--seconds", "15", "--channels", "3", "--overrun-share", "1")
        self.assertIn("Verdict: well", report)
        self.assertIn("ended by              SIGTERM", report)
        self.assertGreater((self.report / "samples.csv").read_text().count("\n"), 3)

    def test_a_unit_that_falls_behind_fails(self):
        report = self.run_soak("real", "--seconds", "3", "--channels", "1", "--overrun-share", "-1", code=1)
        self.assertIn("of the deadlines were skipped", report)
        self.assertIn("Verdict: FAILED", report)

    def test_a_program_that_ends_at_once_fails(self):
        result = self.soak("virtual", "--program", "/bin/false", "--days", "0.01", "--channels", "1", "--report",
                           str(self.report))
        self.assertEqual(result.returncode, 1)
        self.assertIn("no measures", result.stdout)
        result = self.soak("real", "--program", "/bin/false", "--seconds", "1", "--report", str(self.report))
        self.assertEqual(result.returncode, 1)
        self.assertIn("the unit does not start", result.stderr)

    def test_a_wrong_call_is_refused(self):
        for arguments in ((), ("virtual", "--days", "0"), ("virtual", "--jobs", "x"), ("real", "--hours", "1", "--minutes", "2"),
                          ("real", "--program", "/nowhere")):
            self.assertEqual(self.soak(*arguments).returncode, 2, arguments)


if __name__ == "__main__":
    unittest.main()
