"""Signals stop a running unit through the transmitters' switch-off."""

import fcntl
import os
import signal
import subprocess
import time
import unittest

from unit_runner import TIMEOUT_S, UnitTestCase, errors_of, line_with, summary_of


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
        self.assertEqual(errors_of(errors), "")
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
        line_with(process, "TX_ON_IN_PROGRESS")
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

    def test_a_reader_that_stalls_does_not_keep_the_transmitters_on(self):
        # The trace, which is written by the regulating thread, tells when the transmitters go off.
        self.edit('"RQX.OPC" = 1 ', '"RQX.OPC" = 4 ')
        channels = 8
        self.append("".join(f"\n[[channel]]\nnumber = {number}\n" for number in range(2, channels)))
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        smallest = 4096
        fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, smallest)
        os.write(writer, b"-" * smallest)
        trace = self.folder / "trace.txt"
        with trace.open("w") as errors:
            process = subprocess.Popen(self.command("run", self.unit_file), stdout=writer, stderr=errors)
        self.addCleanup(process.kill)
        os.close(writer)
        self.wait_for(lambda: trace.read_text().count("TX ON") == channels)
        time.sleep(1.2)
        process.send_signal(signal.SIGTERM)
        self.wait_for(lambda: trace.read_text().count("TX OFF") == channels)
        self.assertIsNone(process.poll(), "the unit ended although nobody read its output")
        while os.read(reader, smallest):
            pass
        self.assertEqual(process.wait(timeout=TIMEOUT_S), 0)


if __name__ == "__main__":
    unittest.main()
