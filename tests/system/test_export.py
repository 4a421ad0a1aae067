"""`opc export` makes CSV of a recording."""

import csv
import datetime
import unittest

from recorded_unit import RecordedUnit, ask, export
from unit_runner import UnitTestCase


class Export(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"

    def record(self, *arguments):
        self.assert_well(self.run_unit("--duration", "1.5", "--record", self.file, *arguments))

    def test_rows_have_both_times_and_the_values_of_all_channels(self):
        self.record()
        rows = export(self, self.file)
        self.assertEqual(len(rows), ask(self.file, "SELECT count(DISTINCT time_us) FROM step")[0][0])
        started = ask(self.file, "SELECT started_unix_us FROM run")[0][0]
        row = next(row for row in rows if float(row["time_s"]) >= 1.2)
        told = datetime.datetime.fromisoformat(row["time_iso"].replace("Z", "+00:00")).timestamp()
        self.assertAlmostEqual(told, started / 1e6 + float(row["time_s"]), places=5)
        time_us = round(float(row["time_s"]) * 1e6)
        for channel in (0, 1):
            measured, state = ask(self.file, "SELECT pmeasured_cdb, state FROM step WHERE time_us = ? AND channel = ?",
                                  time_us, channel)[0]
            self.assertEqual(float(row[f"ch{channel}/pmeasured_dBm"]), measured / 100)
            self.assertEqual(row[f"ch{channel}/state"], str(state))
            self.assertEqual(row[f"ch{channel}/state_name"], "TX_ON")
        self.assertEqual(rows[-1]["ch0/pctrl_dBm"], "", "it is off in the end")

    def test_parts_by_either_time(self):
        self.record()
        started = ask(self.file, "SELECT started_unix_us FROM run")[0][0] / 1e6

        def iso(seconds):
            return datetime.datetime.fromtimestamp(started + seconds, datetime.timezone.utc).isoformat()

        by_seconds = export(self, self.file, "--from", "0.5", "--to", "0.7", "--channel", "1")
        self.assertTrue(by_seconds)
        self.assertTrue(all(0.5 <= float(row["time_s"]) <= 0.7 for row in by_seconds))
        self.assertFalse(any(name.startswith("ch0/") for name in by_seconds[0]))
        self.assertEqual(export(self, self.file, "--from", iso(0.5), "--to", iso(0.7), "--channel", "1"), by_seconds)

    def test_resolutions(self):
        self.record()
        self.assertEqual(export(self, self.file, "--resolution", "auto"), export(self, self.file))
        self.assertEqual(export(self, self.file, "--resolution", "steps"), export(self, self.file))
        seconds = export(self, self.file, "--resolution", "seconds")
        self.assertEqual([row["time_s"] for row in seconds], ["0.000000", "1.000000"])
        self.assertEqual(len(export(self, self.file, "--resolution", "minutes")), 1)
        low, mean, high = (float(seconds[1][f"ch0/pmeasured_dBm_{part}"]) for part in ("min", "mean", "max"))
        self.assertLessEqual(low, mean)
        self.assertLessEqual(mean, high)

    def test_runs(self):
        self.record("--channels", "1")
        self.record()
        self.assertEqual(export(self, self.file, "--run", "2"), export(self, self.file, "--run", "last"))
        self.assertNotIn("ch1/pmeasured_dBm", export(self, self.file, "--run", "1")[0])
        self.assertIn("ch1/pmeasured_dBm", export(self, self.file)[0])

    def test_events(self):
        self.record()
        events = export(self, self.file, "--events", "--channel", "1")
        self.assertIn(("1", "state", "TX_ON_RAMPING to TX_ON"),
                      [(event["channel"], event["kind"], event["text"]) for event in events])
        self.assertEqual({event["channel"] for event in events} - {""}, {"1"})

    def test_a_file_gets_the_same_as_standard_output(self):
        self.record()
        output = self.folder / "run.csv"
        result = self.run_program("export", self.file, "--format", "csv", "--output", output)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        with open(output, encoding="utf-8", newline="") as file:
            self.assertEqual(list(csv.DictReader(file)), export(self, self.file))

    def test_a_unit_that_records_can_be_exported(self):
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        while not export(self, self.file, "--from", "1"):
            pass
        unit.stop()

    def test_refusals(self):
        self.record()
        output = self.folder / "run.csv"
        for arguments, error in ((("--run", "7"), f'--run: "7" is no run of {self.file}; it can be 1 to 1, or last'),
                                 (("--channel", "5"), "--channel: run 1 has no channel 5; it has 0, 1"),
                                 (("--from", "soon"), '--from: "soon" is no time; write seconds since the run began'),
                                 (("--from", "2", "--to", "1"), '--to: "1" is before --from, which is "2"'),
                                 (("--resolution", "hours"), '"hours" is not one of steps, seconds, minutes, auto'),
                                 (("--format", "xls"), '"xls" is not one of csv')):
            with self.subTest(arguments):
                result = self.run_program("export", self.file, "--output", output, *arguments)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertIn(error, result.stderr)
                self.assertFalse(output.exists())
        for file, error in ((self.folder / "none.db", "does not exist; name a recording of opc run"),
                            (self.unit_file, "is not a recording of opc run; name another file")):
            result = self.run_program("export", file)
            self.assertEqual(result.returncode, 2)
            self.assertIn(f"opc: {file}: {error}", result.stderr)


if __name__ == "__main__":
    unittest.main()
