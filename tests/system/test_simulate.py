"""A scenario in virtual time, from the command line."""

import csv
import fcntl
import json
import os
import pty
import re
import signal
import struct
import subprocess
import termios
import time
import unittest
import xml.etree.ElementTree
import zlib

from unit_runner import TIMEOUT_S, UnitTestCase

SCENARIO = """
title = "A step & back"
duration_s = 6
seed = 5

[channel]
requested_power_dbm = 12.0

[[event]]
at_s = 0.5
request = "on"

[[event]]
at_s = 3
requested_power_dbm = 17.0
label = "up <5> dB"
"""
STEPS = 1000
LONG_S = 1e8


def png_size(data):
    """Returns width and height of a PNG file whose blocks are all whole."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, kinds = 8, []
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 4:at + 8 + length]
        assert zlib.crc32(body) == struct.unpack(">I", data[at + 8 + length:at + 12 + length])[0]
        kinds.append(kind)
        at += 12 + length
    assert kinds[0] == b"IHDR" and kinds[-1] == b"IEND"
    return struct.unpack(">II", data[16:24])


class Simulate(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.scenario = self.folder / "run.toml"
        self.scenario.write_text(SCENARIO)
        self.output = self.folder / "output"
        self.output.mkdir()

    def simulate(self, *arguments):
        return self.run_program("simulate", self.scenario, *arguments)

    def written(self):
        return sorted(path.name for path in self.output.iterdir())

    def rows(self, *arguments):
        path = self.output / "run.csv"
        self.assert_well(self.simulate("--quiet", "--csv", path, *arguments))
        with path.open(newline="") as file:
            return list(csv.DictReader(file))

    def measures(self, *arguments):
        result = self.simulate("--json", *arguments)
        self.assert_well(result)
        return json.loads(result.stdout)["measures"]


class Outputs(Simulate):
    def test_the_summary_says_what_was_run_and_how_fast(self):
        result = self.simulate()
        self.assert_well(result)
        self.assertEqual(result.stderr, "")
        for line in (rf"  scenario +{re.escape(str(self.scenario))}", "  title +A step & back",
                     "  simulated +6 s at 6 ms, seed 5", r"  took +\d+\.\d{3} s, \d+ steps/s, \d+ times real time",
                     rf"  steps +{STEPS}  .+", "  jumps +1  .+", r"  settling_max_ms +\d+\.\d ms  .+",
                     "  spurious_max_db +-  .+"):
            self.assertRegex(result.stdout, rf"(?m)^{line}$")

    def test_json_has_the_measures_and_nothing_else_is_printed(self):
        result = self.simulate("--json", "--set", "transmitter.detector_noise_db=0.05", "--duration", "3.03", "--seed", "9")
        self.assert_well(result)
        self.assertEqual(result.stderr, "")
        answer = json.loads(result.stdout)
        self.assertEqual((answer["title"], answer["seed"], answer["duration_s"]), ("A step & back", 9, 3.03))
        self.assertEqual(answer["overrides"][0], {"path": "transmitter.detector_noise_db", "value": "0.05"})
        self.assertEqual(answer["measures"]["steps"], 505)
        self.assertEqual(answer["measures"]["switch_ons"], 1)
        self.assertEqual(answer["measures"]["jumps"], 1)
        self.assertIsNone(answer["measures"]["settling_max_ms"], "it ends before the output has settled")
        self.assertEqual(answer["expectations"], [])

    def test_the_command_in_the_json_makes_the_same_run(self):
        answer = json.loads(self.simulate("--json", "--set", "channel.requested_power_dbm=9.5", "--seed", "9").stdout)
        arguments = answer["command"].split()
        self.assertEqual(arguments[:2], ["opc", "simulate"])
        again = json.loads(self.run_program(*arguments[1:], "--json").stdout)
        self.assertEqual(again["measures"], answer["measures"])

    def test_quiet_prints_nothing(self):
        result = self.simulate("--quiet")
        self.assert_well(result)
        self.assertEqual((result.stdout, result.stderr), ("", ""))

    def test_csv_has_a_row_per_step(self):
        rows = self.rows()
        self.assertEqual(len(rows), STEPS)
        self.assertEqual([row["time_s"] for row in rows[:3]], ["0.000", "0.006", "0.012"])
        self.assertEqual(rows[0]["output_power_dBm"], "-99.0000")
        self.assertEqual(rows[-1]["state"], "TX_ON")
        self.assertAlmostEqual(float(rows[-1]["output_power_dBm"]), 17.0, delta=0.3)
        jump = next(row for row in rows if row["requested_power_dBm"] == "17.00")
        self.assertEqual(jump["time_s"], "3.000")

    def test_csv_takes_one_step_of_so_many(self):
        every = self.rows()
        self.assertEqual(self.rows("--every", 300), every[::300])

    def test_csv_takes_minimum_mean_and_maximum_of_buckets(self):
        steps = self.rows()
        buckets = self.rows("--bucket", 0.6)
        self.assertEqual(len(buckets), 10)
        for number, bucket in enumerate(buckets):
            self.assertAlmostEqual(float(bucket["time_s"]), 0.6 * number)
            self.assertEqual(bucket["steps"], "100")
            values = [float(row["output_power_dBm"]) for row in steps[100 * number:100 * number + 100]
                      if row["output_power_dBm"] != "-99.0000"]
            self.assertAlmostEqual(float(bucket["output_power_min_dBm"]), min(values), delta=1e-4)
            self.assertAlmostEqual(float(bucket["output_power_mean_dBm"]), sum(values) / len(values), delta=1e-4)
            self.assertAlmostEqual(float(bucket["output_power_max_dBm"]), max(values), delta=1e-4)

    def test_csv_goes_to_a_pipe_too(self):
        result = self.simulate("--quiet", "--csv", "/dev/stdout")
        self.assert_well(result)
        self.assertEqual(len(result.stdout.splitlines()), STEPS + 1)

    def test_pictures_are_whole(self):
        self.assert_well(self.simulate("--quiet", "--plot", self.output / "run.svg", "--plot", self.output / "run.png"))
        self.assertEqual(self.written(), ["run.png", "run.svg"])
        root = xml.etree.ElementTree.parse(self.output / "run.svg").getroot()
        texts = "\n".join("".join(text.itertext()) for text in root.iter("{http://www.w3.org/2000/svg}text"))
        for text in ("A step & back", "up <5> dB", "output", "requested", "target", "Pctrl", "power in dBm",
                     "output − target in dB", "±0.1 dB", "ramping", "time in s"):
            self.assertIn(text, texts)
        width, height = png_size((self.output / "run.png").read_bytes())
        self.assertGreater(width, 1000)
        self.assertGreater(height, 800)

    def test_the_page_needs_no_other_file(self):
        self.assert_well(self.simulate("--quiet", "--html", self.output / "run.html"))
        page = (self.output / "run.html").read_text()
        outside = [url for url in re.findall(r"(?:https?:)?//[a-z][^\s\"'<>]*", page)
                   if not url.startswith("http://www.w3.org/")]  # names of XML's vocabularies; nobody fetches them
        self.assertEqual(outside, [])
        self.assertNotRegex(page, r"(?i)<script|<link|<iframe|<img|@import|url\((?!#)")
        for text in ("<h1>A step &amp; back</h1>", "<svg", "settling_max_ms", "opc simulate", "up &lt;5&gt; dB",
                     'requested_power_dbm = 12.0', "width=device-width"):
            self.assertIn(text, page)

    def test_a_drive_takes_the_place_of_the_scenarios_own(self):
        drive = self.folder / "drive.csv"
        drive.write_text("time_s,requested_power_dBm\n0,8\n2,9\n")
        rows = self.rows("--drive", drive)
        self.assertEqual([rows[0]["requested_power_dBm"], rows[400]["requested_power_dBm"]], ["8.00", "9.00"])

    def test_trace_lines_come_when_asked_for(self):
        result = self.simulate("--quiet", "--trace", 5)
        self.assert_well(result)
        self.assertIn("TX_ON_RAMPING", result.stderr)


class Repetition(Simulate):
    def test_two_runs_are_the_same_byte_for_byte(self):
        contents = []
        for name in ("first", "second"):
            folder = self.output / name
            folder.mkdir()
            files = [folder / f"run.{ending}" for ending in ("csv", "svg", "png", "html")]
            result = self.simulate("--json", "--csv", files[0], "--plot", files[1], "--plot", files[2], "--html", files[3])
            self.assert_well(result)
            contents.append([result.stdout.encode(), *(file.read_bytes() for file in files)])
        for first, second in zip(*contents):
            self.assertEqual(len(first), len(second))
            self.assertTrue(first == second)

    def test_another_seed_is_another_run(self):
        first = self.measures("--seed", 1)
        self.assertEqual(self.measures("--seed", 1), first)
        self.assertNotEqual(self.measures("--seed", 2)["steady_rms_db"], first["steady_rms_db"])

    def test_who_looks_on_changes_nothing(self):
        self.assertEqual(self.measures("--csv", self.output / "run.csv", "--plot", self.output / "run.svg"),
                         self.measures())


class RealTime(Simulate):
    """A unit that regulates by the clock of the machine, and the same in virtual time."""

    COMPARED = ("time_s", "state", "requested_power_dBm", "ptarget_dBm", "pctrl_dBm", "pmeasured_dBm",
                "ppredicted_dBm", "error_dB", "result", "detector_state", "temperature_C", "frequency_MHz")
    SECONDS = 3
    ENOUGH = 100  # steps before the first deadline that a busy machine lets pass
    ATTEMPTS = 8

    def rows_of(self, path):
        with path.open(newline="") as file:
            return [tuple(row[name] for name in self.COMPARED) for row in csv.DictReader(file) if row["channel"] == "0"]

    def test_the_steps_of_a_unit_are_those_of_the_simulation(self):
        text = self.unit_file.read_text()
        self.unit_file.write_text(text[:text.rindex("[[channel]]")])  # a scenario has one channel
        self.scenario.write_text("""
duration_s = 3
[unit]
file = "unit.toml"
[drive]
file = "profiles/fade.csv"
temperature = "linear"
[[event]]
at_s = 0
request = "on"
""")
        simulated, recorded = self.output / "simulated.csv", self.output / "recorded.csv"
        self.assert_well(self.simulate("--quiet", "--csv", simulated))
        expected = self.rows_of(simulated)
        self.assertEqual(len(expected), 500)
        for _ in range(self.ATTEMPTS):
            self.assert_well(self.run_unit("--duration", self.SECONDS, "--csv", recorded))
            rows = [row for row in self.rows_of(recorded) if float(row[0]) < self.SECONDS]
            gap = next((n for n, (row, other) in enumerate(zip(rows, expected)) if row[0] != other[0]), len(rows))
            if gap >= self.ENOUGH:
                break
        if gap < self.ENOUGH:
            self.skipTest(f"this machine is too busy for {self.ENOUGH} steps on time")
        self.assertEqual(rows[:gap], expected[:gap])


class Expectations(Simulate):
    def expect(self, text):
        self.scenario.write_text(SCENARIO + "\n[expect]\n" + text)

    def test_what_is_as_expected_is_counted(self):
        self.expect('jumps = 1\nlimit_cycle_ms = "none"\nsettling_max_ms = { max = 1000 }\n')
        result = self.simulate()
        self.assert_well(result)
        self.assertEqual(result.stderr, "")
        self.assertTrue(result.stdout.endswith("expectations\n  3 of 3 met\n"))

    def test_what_is_missed_is_listed_and_fails(self):
        self.expect('jumps = [2, 3]\nspurious_max_db = { min = 0.5 }\nsteps = 1000\n')
        for arguments in ([], ["--quiet"], ["--json"]):
            result = self.simulate("--csv", self.output / "run.csv", *arguments)
            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stderr.splitlines(), ["missed: jumps is 1, expected 2 to 3",
                                                          "missed: spurious_max_db is none, expected at least 0.5 dB"])
            self.assertEqual(self.written(), ["run.csv"], "what came out is kept, to find out why")
        met = {result["measure"]: result["met"] for result in json.loads(result.stdout)["expectations"]}
        self.assertEqual(met, {"steps": True, "jumps": False, "spurious_max_db": False})


class Failures(Simulate):
    def assert_refused(self, result, code, *texts):
        self.assertEqual(result.returncode, code, result.stderr)
        self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)
        self.assertTrue(result.stderr.startswith("opc: "), result.stderr)
        for text in texts:
            self.assertIn(text, result.stderr)
        self.assertEqual(self.written(), [])
        self.assertEqual(result.stdout, "")

    def test_bad_input_leaves_nothing(self):
        csv_file = self.output / "run.csv"
        svg_file = self.output / "run.svg"
        cases = {
            ("--set", "transmitter.detector_noise=1"): ["detector_noise"],
            ("--set", "nonsense"): ["nonsense"],
            ("--drive", "missing.csv"): ["missing.csv"],
            ("--duration", "-1"): ["duration_s"],
            ("--seed", "x"): ["--seed"],
            ("--every", "10"): ["--csv"],
            ("--csv", csv_file, "--every", "0"): ["--every"],
            ("--csv", csv_file, "--bucket", "nan"): ["--bucket"],
            ("--csv", csv_file, "--every", "2", "--bucket", "1"): ["--every", "--bucket"],
            ("--plot", self.output / "run.gif"): [".svg", ".png"],
            ("--plot", svg_file, "--plot", svg_file): ["run.svg", "two outputs"],
            ("--csv", self.output / "none" / "run.csv"): ["none/run.csv", "No such file"],
            ("--csv", csv_file, "--html", self.folder): [str(self.folder), "directory"],
            ("--json", "--quiet"): ["--quiet", "--json"],
            ("--trace", "10"): ["--trace"],
        }
        for arguments, texts in cases.items():
            with self.subTest(arguments=arguments):
                self.assert_refused(self.simulate(*arguments), 2, *texts)

    def test_a_scenario_that_is_not_there_or_wrong_is_named(self):
        self.assert_refused(self.run_program("simulate", "missing.toml"), 2, "missing.toml")
        self.scenario.write_text(SCENARIO.replace("at_s = 3", 'at_s = "later"'))
        self.assert_refused(self.simulate("--csv", self.output / "run.csv"), 2, f"{self.scenario}:14:8:", "later")

    def test_a_full_disk_is_told(self):
        result = self.simulate("--quiet", "--csv", "/dev/full")
        self.assert_refused(result, 1, "/dev/full", "No space left on device")
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = subprocess.run(self.command("simulate", self.scenario), stdout=full, stderr=subprocess.PIPE,
                                    timeout=TIMEOUT_S, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("standard output", result.stderr)

    def test_missing_gnuplot_is_told_before_the_run(self):
        result = subprocess.run(
            self.command("simulate", self.scenario, "--duration", LONG_S, "--csv", self.output / "run.csv", "--plot",
                         self.output / "run.svg"), env={**os.environ, "PATH": str(self.output)}, timeout=TIMEOUT_S,
            capture_output=True, text=True, check=False)
        self.assert_refused(result, 1, "gnuplot")

    def test_an_interrupted_run_leaves_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            old = self.output / "old.csv"
            old.write_text("old")
            process = subprocess.Popen(
                self.command("simulate", self.scenario, "--duration", LONG_S, "--csv", old, "--every", 1000, "--plot",
                             self.output / "run.svg", "--html", self.output / "run.html"),
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            deadline = time.monotonic() + TIMEOUT_S
            while len(self.written()) < 4 and time.monotonic() < deadline:  # the old file and three that are being made
                time.sleep(0.02)
            time.sleep(0.3)
            process.send_signal(number)
            output, errors = process.communicate(timeout=TIMEOUT_S)
            self.assertEqual(process.returncode, 1)
            self.assertRegex(errors, rf"^opc: {number.name}: stopped after \d+ of 16666666667 steps; no output is left\n$")
            self.assertEqual(output, "")
            self.assertEqual(self.written(), ["old.csv"])
            self.assertEqual(old.read_text(), "old")


class Progress(Simulate):
    def test_a_terminal_shows_how_far_it_is_and_is_left_clean(self):
        leader, follower = pty.openpty()
        fcntl.ioctl(follower, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 70, 0, 0))
        process = subprocess.Popen(self.command("simulate", self.scenario, "--duration", LONG_S, "--quiet"),
                                   stderr=follower, stdout=subprocess.DEVNULL)
        os.close(follower)
        time.sleep(1.5)
        process.send_signal(signal.SIGINT)
        shown = b""
        try:
            while chunk := os.read(leader, 65536):
                shown += chunk
        except OSError:  # the program has closed its end
            pass
        os.close(leader)
        self.assertEqual(process.wait(timeout=TIMEOUT_S), 1)
        *bars, last = shown.decode().split("\r\x1b[K")
        frames = "".join(bars).split("\r")[1:]
        self.assertGreaterEqual(len(frames), 3)
        self.assertLessEqual(len(frames), 17, "not more than about ten a second")
        for frame in frames:
            self.assertRegex(frame, r"^\[[# ]+\] +\d+ %  [\d.]+( [kMG])? steps/s  [\d.]+( [kMG])? x real time  \S+ left"
                                    "\x1b\\[K$")
            self.assertLess(len(frame.removesuffix("\x1b[K")), 70)
        self.assertTrue(last.startswith("opc: SIGINT"), last)


if __name__ == "__main__":
    unittest.main()
