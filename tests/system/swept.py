"""Small sweeps for the tests of what is made of them."""

import json
import sqlite3

from unit_runner import UnitTestCase

SCENARIO = """
duration_s = 4.0
[[event]]
at_s = 0.0
request = "on"
[[event]]
at_s = 1.0
requested_power_dbm = 12.0
"""
DRIVE = "time_s,requested_power_dBm\n0,10\n2,{power}\n"
SWEEP = """
[sweep]
title = "Gain, limits and drives"
scenario = "../base scenario's.toml"
method = "grid"
repeats = 2
measures = ["settling_max_ms", "steady_rms_db"]
[[parameter]]
path = "channel.gain_percent_on"
name = "gain in percent"
values = [20, 50, 90]
[[parameter]]
path = "transmitter.detector_noise_db"
name = "noise in dB"
values = [0, 0.1]
[[parameter]]
path = "drive.file"
name = "drive"
values = ["quiet drive.csv", "../loud.csv"]
"""
RUNS = 24

# A sweep that is split into shards.
SPLIT_SCENARIO = """
duration_s = 1.0
[[event]]
at_s = 0.0
request = "on"
"""
SPLIT_SWEEP = """
[sweep]
scenario = "base.toml"
method = "random"
runs = 22
[[parameter]]
path = "transmitter.detector_noise_db"
distribution = "log-uniform"
minimum = 0.005
maximum = 0.5
"""


class SweptTestCase(UnitTestCase):
    """Gives each test a scenario, two drives and a sweep whose paths want to be quoted and sought."""

    def setUp(self):
        super().setUp()
        self.where = self.folder.parent
        (self.where / "base scenario's.toml").write_text(SCENARIO)
        (self.where / "sweeps").mkdir()
        (self.where / "sweeps" / "quiet drive.csv").write_text(DRIVE.format(power=11))
        (self.where / "loud.csv").write_text(DRIVE.format(power=20))

    def sweep(self, text=SWEEP, *arguments, code=0):
        (self.where / "sweeps" / "s.toml").write_text(text)
        result = self.run_program("sweep", "sweeps/s.toml", "--results", "s.db", *arguments)
        self.assertEqual(result.returncode, code, result.stderr)

    def report(self, *arguments, results="s.db"):
        result = self.run_program("sweep-report", results, *arguments)
        self.assert_well(result)
        return result.stdout

    def json(self, *arguments):
        return json.loads(self.report("--json", *arguments))

    def change_results(self, statement):
        database = sqlite3.connect(self.where / "s.db")
        with database:
            database.execute(statement)
        database.close()
