"""A unit that runs its time."""

import csv
import pathlib
import unittest

from live_unit import LiveUnit
from unit_runner import EXAMPLES, UnitTestCase, errors_of, summary_of


class Run(UnitTestCase):
    def test_two_channels_come_on_follow_and_go_off(self):
        result = self.run_unit("--duration", 2)
        self.assert_well(result)
        self.assertEqual(errors_of(result.stderr), "")
        summary = summary_of(result.stdout)
        self.assertEqual(summary[None]["ended by"], "duration")
        self.assertEqual(summary[None]["dropped samples"], "0")
        for channel in (0, 1):
            self.assertEqual(summary[channel]["reached TX_ON"], "yes")
            self.assertEqual(summary[channel]["last state"], "TX_OFF")
            self.assertTrue(summary[channel]["steps"].endswith(", 0 failed"), summary[channel]["steps"])
            self.assertEqual(summary[channel]["refused handler calls"], "0")
            self.assertGreater(int(summary[channel]["settled steps"]), 100)

    def test_elsewhere_than_on_a_terminal_lines_are_plain(self):
        result = self.run_unit("--duration", 1.2)
        self.assert_well(result)
        self.assertNotIn("\x1b", result.stdout)
        status = [line for line in result.stdout.splitlines() if " s  channel " in line]
        for channel in (0, 1):
            states = [line.split()[4] for line in status if f" channel {channel} " in line]
            self.assertEqual(list(dict.fromkeys(states)),
                             ["TX_ON_IN_PROGRESS", "TX_ON_RAMPING", "TX_ON", "TX_OFF_IN_PROGRESS", "TX_OFF"])
            # One at each change of state, and one for the second that began meanwhile.
            self.assertEqual(len(states), 6, status)

    def test_rows_are_contiguous_and_parse(self):
        recording = self.folder / "run.csv"
        result = self.run_unit("--duration", 1.5, "--csv", recording)
        self.assert_well(result)
        with recording.open(newline="") as stream:
            rows = list(csv.DictReader(stream))
        summary = summary_of(result.stdout)
        self.assertEqual(summary[None]["recorded"], f"{len(rows)} rows in {recording}")
        skipped = int(summary[None]["overruns"].split()[0])
        for channel in ("0", "1"):
            of_channel = [row for row in rows if row["channel"] == channel]
            steps = int(summary[int(channel)]["steps"].split(",")[0])
            self.assertEqual(len(of_channel), steps)
            ticks = [round(float(row["time_s"]) * 1000) for row in of_channel]
            self.assertEqual([tick % 6 for tick in ticks], [0] * len(ticks))
            gaps = [(later - earlier) // 6 - 1 for earlier, later in zip(ticks, ticks[1:])]
            self.assertGreaterEqual(min(gaps), 0)
            self.assertEqual(sum(gaps), skipped)
            on = [row for row in of_channel if row["state"] == "TX_ON"]
            self.assertLess(abs(float(on[-1]["ptarget_dBm"]) - float(on[-1]["pmeasured_dBm"])), 0.5)
            for row in of_channel:
                for name, value in row.items():
                    if name != "state":
                        float(value)

    def test_one_channel_of_two(self):
        result = self.run_unit("--duration", 0.3, "--channels", 1)
        self.assert_well(result)
        self.assertEqual(set(summary_of(result.stdout)), {None, 0})

    def test_speed_and_start_move_through_the_profile(self):
        # Ten seconds of the profile from its 5th on in one: the jump from 10 to 14 dBm at the 10th is met.
        recording = self.folder / "run.csv"
        result = self.run_unit("--duration", 1, "--speed", 10, "--start", 5, "--channels", 1, "--csv", recording)
        self.assert_well(result)
        with recording.open(newline="") as stream:
            rows = list(csv.DictReader(stream))
        jump = next(row for row in rows if row["requested_power_dBm"] == "14.00")
        self.assertAlmostEqual(float(jump["time_s"]), 0.5, delta=0.05)
        self.assertEqual(rows[0]["temperature_C"], "27.50")

    def test_constants_hold_without_a_profile(self):
        text = self.unit_file.read_text()
        begin = text.index("[profile]")
        self.unit_file.write_text(text[:begin] + text[text.index("[transmitter]", begin):])
        recording = self.folder / "run.csv"
        self.assert_well(self.run_unit("--duration", 0.3, "--csv", recording))
        with recording.open(newline="") as stream:
            rows = list(csv.DictReader(stream))
        self.assertEqual({row["requested_power_dBm"] for row in rows if row["channel"] == "1"}, {"12.00"})
        self.assertEqual({row["temperature_C"] for row in rows}, {"25.00"})

    def test_the_unit_file_of_the_current_folder_is_found(self):
        (self.folder.parent / "unit.toml").write_text(
            self.unit_file.read_text().replace('file = "', 'file = "examples/'))
        self.assert_well(self.run_program("run", "--duration", 0.2))

    def test_help_is_enough_to_start(self):
        for arguments in (("--help",), ("run", "--help")):
            result = self.run_program(*arguments)
            self.assert_well(result)
            self.assertIn("opc run examples/unit.toml", result.stdout)
        for option in ("--duration", "--channels", "--speed", "--start", "--csv"):
            self.assertIn(option, result.stdout)

    def test_a_full_disk_stops_the_recording_and_not_the_unit(self):
        result = self.run_unit("--duration", 1, "--csv", "/dev/full")
        self.assertEqual(result.returncode, 1)
        errors = errors_of(result.stderr).splitlines()
        self.assertEqual(len(errors), 1, result.stderr)
        self.assertIn("/dev/full", errors[0])
        self.assertIn("No space left on device", errors[0])
        self.assertEqual(summary_of(result.stdout)[0]["last state"], "TX_OFF")
        self.assertGreater(int(summary_of(result.stdout)[0]["steps"].split(",")[0]), 100)

    def test_the_examples_are_complete(self):
        self.assertTrue((EXAMPLES / "profiles" / "fade.csv").is_file())
        result = self.run_program("run", EXAMPLES / "unit.toml", "--duration", 1, "--speed", 120)
        self.assert_well(result)
        self.assertEqual(errors_of(result.stderr), "")

    def test_an_address_for_everyone_is_warned_about_unless_there_is_a_token(self):
        self.edit('address = "127.0.0.1"', 'address = "0.0.0.0"')
        result = self.run_unit("--duration", 0.2)
        self.assert_well(result)
        self.assertIn("warning: everyone who reaches http://0.0.0.0:", result.stderr)
        self.edit('# token_file = "unit.token"', 'token_file = "unit.token"')
        token = self.folder / "unit.token"
        token.write_text("0123456789abcdef\n")
        token.chmod(0o640)
        result = self.run_unit("--duration", 0.2)
        self.assert_well(result)
        self.assertEqual(errors_of(result.stderr), "")
        token.chmod(0o644)
        result = self.run_unit("--duration", 0.2)
        self.assert_well(result)
        self.assertIn(f"warning: {token}: every user of this machine can read", result.stderr)

    def test_no_test_interface_is_served_when_not_wanted(self):
        for arguments in (("--no-test-interface",), ()):
            result = self.run_unit("--duration", 0.2, *arguments)
            self.assert_well(result)
            self.assertNotIn("test interface", result.stdout)
            self.edit("enabled = true" if arguments else "enabled = false", "enabled = false")

    def test_the_regulation_gets_the_priority_asked_for_or_the_unit_says_why_not(self):
        self.edit("realtime_priority = 0 ", "realtime_priority = 7 ")
        unit = LiveUnit(self, self.command("run", self.unit_file))
        tasks = pathlib.Path(f"/proc/{unit.process.pid}/task")
        # Fields 40 and 41 of stat, which has the name in brackets as its second: priority and policy (1 is FIFO).
        fields = [(tasks / task.name / "stat").read_text().rpartition(")")[2].split() for task in tasks.iterdir()]
        realtime = [number for number in fields if number[37:39] == ["7", "1"]]
        _, errors = unit.stop()
        if "warning: the regulation gets no real-time priority 7" in errors:
            self.assertIn("CAP_SYS_NICE", errors)
            self.assertEqual(len(realtime), 0)
        else:
            self.assertEqual(len(realtime), 1)


if __name__ == "__main__":
    unittest.main()
