"""Signals stop a running unit through the transmitters' switch-off."""

import signal
import subprocess
import time
import unittest

from unit_runner import TIMEOUT_S, UnitTestCase, summary_of


class Stopping(UnitTestCase):
    def start(self):
        process = subprocess.Popen(self.command("run", self.unit_file), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   text=True, cwd=self.folder)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.kill)
        return process

    def wait_until_on(self, process):
        lines = []
        while sum("  TX_ON  " in line for line in lines) < 2:
            line = process.stdout.readline()
            self.assertNotEqual(line, "", "the unit ended before it was on")
            lines.append(line)

    def assert_off_and_well(self, process, name):
        output, errors = process.communicate(timeout=TIMEOUT_S)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(errors, "")
        summary = summary_of(output)
        self.assertEqual(summary[None]["ended by"], name)
        for channel in (0, 1):
            self.assertEqual(summary[channel]["last state"], "TX_OFF")
            self.assertEqual(summary[channel]["refused handler calls"], "0")

    def test_a_signal_switches_off_and_ends_well(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number.name):
                process = self.start()
                self.wait_until_on(process)
                process.send_signal(number)
                self.assert_off_and_well(process, number.name)

    def test_a_signal_while_switching_on_is_obeyed(self):
        process = self.start()
        line = process.stdout.readline()
        self.assertIn("TX_ON_IN_PROGRESS", line)
        process.send_signal(signal.SIGTERM)
        self.assert_off_and_well(process, "SIGTERM")

    def test_further_signals_do_no_harm(self):
        process = self.start()
        self.wait_until_on(process)
        for _ in range(5):
            process.send_signal(signal.SIGINT)
            process.send_signal(signal.SIGTERM)
            time.sleep(0.002)
        output, errors = process.communicate(timeout=TIMEOUT_S)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(summary_of(output)[1]["last state"], "TX_OFF")

    def test_a_reader_that_goes_away_leaves_the_unit_running(self):
        process = self.start()
        process.stdout.readline()
        process.stdout.close()
        time.sleep(1.2)
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(timeout=TIMEOUT_S), 0)


if __name__ == "__main__":
    unittest.main()
