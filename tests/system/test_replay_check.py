"""`opc replay --check` takes a recorded run again: it is equal, or the first difference is found and named."""

import contextlib
import json
import os
import re
import shutil
import sqlite3
import time
import unittest
import unittest.mock
import xmlrpc.client

from recorded_unit import RecordedUnit, ask
from unit_runner import PROGRAM, UnitTestCase

LONGEST_STOP = 200  # steps that a switch-off may take
FAULTS = """
[[fault]]
channel = 0
operation = "getPmeasured"
kind = "fail-times"
times = 3
at_s = 0.7

[[fault]]
channel = 1
operation = "setOutputPower"
kind = "intermittent"
probability = 0.3
at_s = 1.0
for_s = 0.8
"""

# Whatever changes something, each with a while to have its effect.
COMMANDS = (
    ("Unit.SetRequestedPower", {"PowerDbm": 18.25, "RadioChannelID": 1}),
    ("Unit.SetTemperature", {"TemperatureC": 41.37}),
    ("Unit.SetFrequency", {"FrequencyMhz": 5123.456, "RadioChannelID": 0}),
    ("TI.ManageOPCTransientLog", {"RequestOption": "Enable", "RadioChannelID": 0}),
    ("TI.ManageLogs", {"RequestOption": "Start", "LogName": "Channel.1.TxOutputPowerControlLog"}),
    ("Unit.SetTxPower", {"State": "off", "RadioChannelID": 1}),
    ("Unit.SetPowerMode", {"PowerMode": 0}),
    ("Unit.SetLimits", {"TxPminDbm": -5, "TxPmaxDbm": 25.5, "RadioChannelID": 1}),
    ("Unit.SetTxPower", {"State": "on", "PowerMode": 1, "RadioChannelID": 1}),
    ("Unit.SetGain", {"State": "on", "GainPercent": 35}),
    ("Unit.SetGain", {"State": "ramping", "GainPercent": 15, "DetectorState": 1, "RadioChannelID": 1}),
    ("Unit.SetProductionTest", {"ProductionTest": True, "LoopMode": 2}),
    ("Unit.SetProductionTest", {"ProductionTest": False}),
    ("Unit.SetInterval", {"IntervalMs": 10}),
    ("Unit.SetFault", {"Operation": "getPmeasured", "Kind": "wrong-value", "Value": 900, "RadioChannelID": 1}),
    ("Unit.SetFault", {"Operation": "getPmeasured", "Kind": "none", "RadioChannelID": 1}),
    ("Unit.SetFault", {"Operation": "setOutputPower", "Kind": "intermittent", "Probability": 0.2}),
    ("Unit.SetTraceLevel", {"Level": 5, "Group": "RQX.OPC"}),
    ("Unit.SetTraceLevel", {"Level": 1}),
    ("TI.ManageOPCTransientLog", {"RequestOption": "SaveToSysLog", "RadioChannelID": 0}),
    ("TI.ManageLogs", {"RequestOption": "ReadAndReset", "RadioChannelID": 1}),
    ("TI.ManageLogs", {"RequestOption": "Stop", "RadioChannelID": 1}),
    ("TI.ManageOPCTransientLog", {"RequestOption": "Disable", "RadioChannelID": 0}),
    # Each step takes longer than the interval, so that deadlines are skipped.
    ("Unit.SetFault", {"Operation": "setOutputPower", "Kind": "slow", "DelayUs": 4500}),
    ("Unit.SetInterval", {"IntervalMs": 2}),
    ("Unit.SetFault", {"Operation": "setOutputPower", "Kind": "none"}),
    ("Unit.SetRequestedPower", {"Source": "unit-file", "RadioChannelID": 1}),
    ("Unit.SetTemperature", {"Source": "unit-file"}),
)


class ReplayCheck(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"

    def unit(self, *arguments):
        unit = RecordedUnit(self, self.file, *arguments)
        unit.wait_until_on(2)
        return unit

    def call(self, unit, method, members):
        with xmlrpc.client.ServerProxy(unit.url + "/RPC2") as proxy:
            return getattr(proxy, method)(members)

    def record(self, seconds=0.8):
        """Records a run that ends well."""
        unit = self.unit()
        time.sleep(seconds)
        unit.stop()

    def change(self, statement, *parameters):
        """Changes rows of the recording and returns how many."""
        with contextlib.closing(sqlite3.connect(self.file)) as database, database:
            return database.execute(statement, parameters).rowcount

    def check(self, code, *arguments):
        """Returns what the check prints, which must end with a code and say nothing on standard error."""
        result = self.run_program("replay", self.file, "--check", *arguments)
        self.assertEqual(result.returncode, code, result.stdout + result.stderr)
        self.assertEqual(result.stderr, "")
        return result.stdout

    def check_as_json(self, code, *arguments):
        return json.loads(self.check(code, "--json", *arguments))

    def test_a_run_with_every_command_and_faults_is_equal(self):
        self.append(FAULTS)
        unit = self.unit("--speed", "3", "--start", "20")
        for method, members in COMMANDS:
            self.call(unit, method, members)
            time.sleep(0.12)
        unit.stop()
        steps, skipped, failed = ask(self.file, "SELECT max(steps), max(overruns), max(failed_steps) FROM step")[0]
        self.assertGreater(skipped, 0)
        self.assertGreater(failed, 0)
        temporary = self.folder.parent / "temporary"
        temporary.mkdir()
        with unittest.mock.patch.dict(os.environ, TMPDIR=str(temporary)):
            output = self.check(0)
        self.assertRegex(output, rf"^run 1 of unit\.db, \S+Z, opc \S+: {steps} steps of 2 channels and "
                                 rf"{len(COMMANDS)} commands carried out again in \d+\.\d s: equal\n$")
        self.assertEqual(list(temporary.iterdir()), [])
        outcome = self.check_as_json(0)
        self.assertEqual((outcome["result"], outcome["steps"], outcome["commands"], outcome["unrecorded_steps"]),
                         ("equal", steps, len(COMMANDS), 0))

    def test_one_changed_value_is_found_and_named(self):
        self.record()
        time_us, was = ask(self.file, "SELECT time_us, pctrl_cdb FROM step WHERE channel = 1 AND steps = 60")[0]
        self.assertEqual(self.change("UPDATE step SET pctrl_cdb = pctrl_cdb - 1 WHERE channel = 1 AND steps = 60"), 1)
        output = self.check(1)
        self.assertIn(f"first difference at {time_us / 1e6:.6f} s (", output)
        self.assertIn(f"), channel 1, step 60: pctrl_cdb recorded {was - 1}, now {was}\n", output)
        self.assertIn("channel 1: TX_ON_RAMPING to TX_ON\n", output)
        outcome = self.check_as_json(1)
        self.assertEqual((outcome["result"], outcome["channel"], outcome["step"], outcome["time_us"]),
                         ("different", 1, 60, time_us))
        self.assertEqual(outcome["differences"],
                         [{"quantity": "pctrl_cdb", "recorded": str(was - 1), "now": str(was)}])

    def test_every_column_but_the_lateness_is_compared(self):
        self.record(0.3)
        columns = [row[1] for row in ask(self.file, "PRAGMA table_info(step)")]
        for column in columns[columns.index("state_before"):]:
            with self.subTest(column):
                self.change(f"UPDATE step SET {column} = {column} + 1 WHERE channel = 0 AND steps = 45")
                if column == "lateness_us":
                    self.check(0)
                elif column in ("steps", "overruns"):  # what the replay itself follows
                    self.check(1)
                else:
                    self.assertIn(f"channel 0, step 45: {column} recorded ", self.check(1))
                self.change(f"UPDATE step SET {column} = {column} - 1 WHERE channel = 0 AND "
                            f"steps = {46 if column == 'steps' else 45} AND time_us = "
                            "(SELECT time_us FROM step WHERE channel = 1 AND steps = 45)")
        self.check(0)

    def test_another_gain_in_the_recorded_unit_file_makes_a_difference(self):
        self.record()
        self.change("UPDATE content SET content = replace(content, '# gain_percent_on = [20, 20, 20]', "
                    "'gain_percent_on = [90, 90, 90]')")
        self.assertRegex(self.check(1), r"first difference at .*, channel [01], step \d+: ")

    def test_a_command_that_fails_now_is_a_difference(self):
        unit = self.unit()
        self.call(unit, "Unit.SetRequestedPower", {"PowerDbm": 18})
        time.sleep(0.2)
        unit.stop()
        self.change("UPDATE event SET detail = replace(detail, '18', '1800') WHERE kind = 'command'")
        output = self.check(1)
        self.assertRegex(output, r'first difference: the command at \d+\.\d+ s, "requested power 18\.00 dBm", was '
                                 r"carried out when it was recorded, and fails now: .*PowerDbm is 1800")

    def test_a_command_that_failed_in_the_controller_fails_again(self):
        # It fails at the handler, and what it uses up there the next one has not.
        fault = {"Operation": "setProductionTestSettings", "Kind": "fail-times", "Times": 2}
        unit = self.unit()
        self.call(unit, "Unit.SetFault", fault)
        for _ in range(2):
            with self.assertRaises(xmlrpc.client.Fault):
                self.call(unit, "Unit.SetProductionTest", {"ProductionTest": True, "LoopMode": 2})
        self.call(unit, "Unit.SetProductionTest", {"ProductionTest": True, "LoopMode": 2})
        with self.assertRaises(xmlrpc.client.Fault):
            self.call(unit, "Unit.SetProductionTest", {"ProductionTest": True, "LoopMode": 7})  # never comes so far
        time.sleep(0.2)
        unit.stop()
        texts = [text for text, in ask(self.file, "SELECT text FROM event WHERE kind = 'command' ORDER BY id")]
        self.assertEqual(len(texts), 4)
        self.assertTrue(texts[1].startswith("production test: on, loop mode 2, failed: eTI_E_FAILED"), texts[1])
        self.assertEqual(texts[3], "production test: on, loop mode 2")
        self.assertEqual(self.check_as_json(0)["commands"], 4)
        self.change("UPDATE event SET detail = replace(detail, 'fail-times', 'none') WHERE kind = 'command'")
        self.assertIn("failed when it was recorded, and is carried out now", self.check(1))

    def test_a_command_whose_parameters_are_not_recorded_ends_the_check(self):
        unit = self.unit()
        self.call(unit, "TI.ManageOPCTransientLog", {"RequestOption": "Enable", "Note": "x" * 20000})
        unit.stop()
        self.assertRegex(self.check(1), r'cannot be repeated further: the command at .*, "OPC transient log.*had '
                                        r"parameters that were too long to be recorded")

    def test_a_killed_run_is_compared_as_far_as_it_goes(self):
        unit = self.unit()
        time.sleep(1.7)
        unit.kill()
        self.assertRegex(self.check(0), r"equal\n  the run has no end: the unit was killed, or goes on; compared to "
                                        r"\d+\.\d+ s\n$")

    def test_steps_that_are_gone_are_taken_again(self):
        self.record(1.5)
        # Between two skipped deadlines, and from the beginning when nothing was skipped soon.
        low, high = ask(self.file, "SELECT min(steps), max(steps) FROM step GROUP BY overruns "
                                   "ORDER BY count(*) DESC LIMIT 1")[0]
        first = ask(self.file, "SELECT coalesce(min(steps), 100) FROM step WHERE overruns > 0")[0][0] // 2
        gone = set(range(low + 5, high - 5)) | set(range(1, first))
        self.assertGreater(len(gone), 10)
        for step in gone:
            self.change("DELETE FROM step WHERE steps = ?", step)
        outcome = self.check_as_json(0)
        self.assertEqual((outcome["result"], outcome["unrecorded_steps"]), ("equal", len(gone)))
        self.assertRegex(self.check(0), rf"{len(gone)} of the \d+ steps are not recorded, or no more")

    def test_a_gap_in_which_deadlines_were_skipped_cannot_be_repeated(self):
        unit = self.unit()
        self.call(unit, "Unit.SetFault", {"Operation": "setOutputPower", "Kind": "slow", "DelayUs": 15000})
        time.sleep(0.5)
        self.call(unit, "Unit.SetFault", {"Operation": "setOutputPower", "Kind": "none"})
        unit.stop()
        skipping = ask(self.file, "SELECT min(steps) FROM step WHERE overruns > 5")[0][0]
        self.change("DELETE FROM step WHERE steps < ?", skipping)
        self.assertRegex(self.check(1), r"cannot be repeated: no steps are recorded from 0\.000000 to \d+\.\d+ s, and "
                                        r"\d+ deadlines were skipped meanwhile: it is not known which")

    def test_a_stop_that_is_not_recorded_leaves_the_end_out(self):
        self.record(2.5)
        steps = ask(self.file, "SELECT max(steps) FROM step")[0][0]
        self.assertEqual(self.change("DELETE FROM event WHERE kind = 'note' AND detail = '{\"stop\":true}'"), 1)
        output = self.check(1)
        self.assertIn(f": {steps - LONGEST_STOP} steps of 2 channels", output)
        self.assertIn(f"the last {LONGEST_STOP} steps are left out; all before are equal", output)

    def test_which_run_and_wrong_input(self):
        self.record(0.2)
        self.record(0.2)
        self.assertTrue(self.check(0).startswith("run 2 of "))
        self.assertTrue(self.check(0, "--run", "1").startswith("run 1 of "))
        for arguments, text in ((("replay", self.file, "--check", "--run", "3"), "it can be 1 to 2"),
                                (("replay", self.unit_file, "--check"), "is not a recording of opc run"),
                                (("replay", self.folder / "none.db", "--check"), "does not exist")):
            result = self.run_program(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn(text, result.stderr)

    def test_a_library_that_is_gone_is_named(self):
        built = os.path.join(os.path.dirname(PROGRAM), "..", "lib", "libOutputPowerHandler.so")
        if not os.path.exists(built):
            self.skipTest("the program does not stand beside its modules")
        shutil.copy(built, self.folder / "libOwnHandler.so")
        self.edit('library = "libOutputPowerHandler.so"', 'library = "libOwnHandler.so"')
        self.record(0.2)
        self.check(0)
        (self.folder / "libOwnHandler.so").unlink()
        result = self.run_program("replay", self.file, "--check")
        self.assertEqual(result.returncode, 2)
        self.assertIn('library libOwnHandler.so of module "OutputPowerHandler", which is not there any more; looked '
                      f"for {self.folder}/libOwnHandler.so, ", result.stderr)
        self.assertEqual(len(re.findall("\n", result.stderr)), 1)


if __name__ == "__main__":
    unittest.main()
