"""Faults of the handler are counted and regulation goes on."""

import unittest

from unit_runner import UnitTestCase, summary_of

FAULT = """
[[fault]]
channel = 0
operation = "{operation}"
kind = "{kind}"
at_s = {at_s}
{more}
"""


class Faults(UnitTestCase):
    def add_fault(self, operation, kind, at_s=0.5, more=""):
        self.append(FAULT.format(operation=operation, kind=kind, at_s=at_s, more=more))

    def failed_steps(self, result, channel):
        return int(summary_of(result.stdout)[channel]["steps"].split(",")[1].split()[0])

    def test_failed_readings_are_counted_and_tried_again(self):
        self.add_fault("getPmeasured", "fail-times", more="times = 7")
        result = self.run_unit("--duration", 1.2)
        self.assert_well(result)
        self.assertEqual(self.failed_steps(result, 0), 7)
        self.assertEqual(self.failed_steps(result, 1), 0)
        summary = summary_of(result.stdout)
        self.assertEqual(summary[0]["last state"], "TX_OFF")
        self.assertGreater(int(summary[0]["steps"].split(",")[0]), 100)

    def test_a_fault_ends_after_its_time(self):
        self.add_fault("setOutputPower", "fail", more="for_s = 0.3")
        result = self.run_unit("--duration", 1.2)
        self.assert_well(result)
        # 50 intervals of 6 ms, less those that an overrun of the test machine may take.
        self.assertLessEqual(self.failed_steps(result, 0), 50)
        self.assertGreater(self.failed_steps(result, 0), 25)

    def test_a_slow_handler_costs_deadlines_that_are_counted(self):
        self.add_fault("getPmeasured", "slow", more="delay_us = 14000\nfor_s = 0.3")
        result = self.run_unit("--duration", 1.2)
        self.assert_well(result)
        overruns = int(summary_of(result.stdout)[None]["overruns"].split()[0])
        self.assertGreaterEqual(overruns, 20)
        self.assertEqual(self.failed_steps(result, 0), 0)

    def test_a_transmitter_that_does_not_go_off_is_reported(self):
        self.add_fault("setTxState", "fail", at_s=0.5)
        result = self.run_unit("--duration", 0.7)
        self.assertEqual(result.returncode, 1)
        self.assertIn("opc run: not every transmitter went off", result.stderr.splitlines())
        summary = summary_of(result.stdout)
        self.assertEqual(summary[0]["last state"], "TX_OFF_INITIATED")
        self.assertEqual(summary[1]["last state"], "TX_OFF")


if __name__ == "__main__":
    unittest.main()
