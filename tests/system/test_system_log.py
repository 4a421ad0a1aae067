"""Lines of level 4 reach a system logger; the unit does not depend on it."""

import signal
import time
import unittest

from rsyslog_runner import RsyslogCase
from unit_runner import summary_of

ON = "RQX.OPC: handleOPCStateMachine():   TX ON"
OFF = "RQX.OPC: handleOPCStateMachine():   TX OFF"
CHANNELS = 8


class SystemLog(RsyslogCase):
    def assert_says_once(self, errors, reason):
        """Standard error has nothing but the one line that there is no logger."""
        lines = errors.splitlines()
        self.assertEqual(len(lines), 1, errors)
        self.assertIn(f"no system logger at /dev/log ({reason})", lines[0])

    def wait_until_on(self, process, channels=2):
        seen = 0
        while seen < channels:
            line = process.stdout.readline()
            self.assertNotEqual(line, "", "the unit ended before it was on")
            seen += "  TX_ON  " in line

    def add_channels(self):
        """Adds channels until their lines are more than a logger's socket takes unread."""
        self.append("".join(f"\n[[channel]]\nnumber = {number}\n" for number in range(2, CHANNELS)))

    def test_milestones_arrive_whole_and_in_order(self):
        self.start_logger()
        unit = self.start_unit("--duration", 1)
        self.assertEqual(self.finish_unit(unit).stderr, "")
        log = self.wait_for_log(unit, 4)
        self.assertEqual([line.text for line in log], [ON, ON, OFF, OFF])
        self.assertEqual({(line.priority, line.identity) for line in log}, {("user.info", "opc")})

    def test_facility_and_severity_are_the_unit_files(self):
        self.edit('system_log_facility = "user"', 'system_log_facility = "local0"')
        self.edit('system_log_severity = "info"', 'system_log_severity = "notice"')
        self.start_logger()
        unit = self.start_unit("--duration", 0.8)
        self.finish_unit(unit)
        self.assertEqual([line.priority for line in self.wait_for_log(unit, 4)], ["local0.notice"] * 4)

    def test_a_unit_file_may_silence_it(self):
        self.edit("system_log = true", "system_log = false")
        self.start_logger()
        silent = self.start_unit("--duration", 0.8)
        self.assertEqual(self.finish_unit(silent).stderr, "")
        self.edit("system_log = false", "system_log = true")
        heard = self.start_unit("--duration", 0.8)
        self.finish_unit(heard)
        self.wait_for_log(heard, 4)
        self.assertEqual(self.log_of(silent), [])

    def test_without_a_logger_the_unit_says_so_once(self):
        result = self.run_unit("--duration", 2.5)
        self.assert_well(result)
        self.assert_says_once(result.stderr, "No such file or directory")
        self.assertEqual(summary_of(result.stdout)[0]["reached TX_ON"], "yes")

    def test_a_logger_that_dies_leaves_the_unit_running(self):
        self.start_logger()
        unit = self.start_unit()
        self.wait_until_on(unit)
        self.assertEqual([line.text for line in self.wait_for_log(unit, 2)], [ON, ON])
        self.kill_logger()
        time.sleep(1.2)
        unit.send_signal(signal.SIGTERM)
        result = self.finish_unit(unit)
        self.assert_says_once(result.stderr, "Connection refused")
        self.assertEqual(summary_of(result.stdout)[0]["last state"], "TX_OFF")
        self.assertEqual(len(self.log_of(unit)), 2)

    def test_a_logger_that_comes_later_is_found(self):
        unit = self.start_unit()
        self.wait_until_on(unit)
        self.start_logger()
        unit.send_signal(signal.SIGTERM)
        self.assert_says_once(self.finish_unit(unit).stderr, "No such file or directory")
        self.assertEqual([line.text for line in self.wait_for_log(unit, 2)], [OFF, OFF])

    def test_a_logger_that_is_started_anew_gets_the_lines(self):
        self.start_logger()
        unit = self.start_unit()
        self.wait_until_on(unit)
        self.wait_for_log(unit, 2)
        self.kill_logger()
        self.start_logger()
        unit.send_signal(signal.SIGTERM)
        self.assertEqual(self.finish_unit(unit).stderr, "")
        self.assertEqual([line.text for line in self.wait_for_log(unit, 4)], [ON, ON, OFF, OFF])

    def test_a_logger_that_hangs_holds_nothing_up(self):
        self.add_channels()
        self.start_logger()
        self.signal_logger(signal.SIGSTOP)
        unit = self.start_unit()
        self.wait_until_on(unit, CHANNELS)
        unit.send_signal(signal.SIGTERM)
        begin = time.monotonic()
        result = self.finish_unit(unit)
        self.assertLess(time.monotonic() - begin, 3)
        self.assertEqual(summary_of(result.stdout)[CHANNELS - 1]["last state"], "TX_OFF")
        self.assertEqual(summary_of(result.stdout)[None]["dropped samples"], "0")
        self.signal_logger(signal.SIGCONT)
        log = self.wait_for_log(unit, CHANNELS)
        self.assertEqual([line.text for line in log[:CHANNELS]], [ON] * CHANNELS)


if __name__ == "__main__":
    unittest.main()
