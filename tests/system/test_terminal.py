"""On a terminal the status lines are redrawn in place."""

import fcntl
import os
import pty
import struct
import subprocess
import termios
import unittest

from unit_runner import TIMEOUT_S, UnitTestCase


class Terminal(UnitTestCase):
    def setUp(self):
        super().setUp()
        # Where there is no system logger, a line above the status lines would say so.
        self.edit("system_log = true", "system_log = false")

    def run_on_terminal(self, columns, *arguments):
        leader, follower = pty.openpty()
        fcntl.ioctl(follower, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        process = subprocess.Popen(self.command("run", self.unit_file, *arguments), stdin=follower, stdout=follower,
                                   stderr=follower, close_fds=True)
        os.close(follower)
        chunks = []
        try:
            while chunk := os.read(leader, 65536):
                chunks.append(chunk)
        except OSError:  # the program has closed its end
            pass
        os.close(leader)
        self.assertEqual(process.wait(timeout=TIMEOUT_S), 0)
        return b"".join(chunks).decode()

    def test_a_line_per_channel_is_redrawn(self):
        output = self.run_on_terminal(80, "--duration", 1)
        frames = output.split("\x1b[3A\r\x1b[J")
        self.assertGreater(len(frames), 5)
        for frame in frames[1:-1]:
            lines = frame.splitlines()
            self.assertEqual(len(lines), 3, frame)
            self.assertTrue(lines[0].startswith("ch"), frame)
            self.assertEqual([line.split()[0] for line in lines[1:]], ["0", "1"])
            self.assertLess(max(map(len, lines)), 80)
        self.assertIn(" TX_ON ", output)
        self.assertIn("Summary", frames[-1])

    def test_a_narrow_terminal_cuts_the_lines(self):
        output = self.run_on_terminal(40, "--duration", 0.5, "--no-test-interface")
        status = output.split("Summary")[0].replace("\x1b[3A\r\x1b[J", "")
        self.assertLess(max(map(len, status.splitlines())), 40)

    def test_failures_stand_above_the_status_lines(self):
        self.append('\n[[fault]]\nchannel = 0\noperation = "getPmeasured"\nkind = "fail-times"\ntimes = 3\nat_s = 0.4\n')
        output = self.run_on_terminal(200, "--duration", 1)
        frames = output.split("\x1b[3A\r\x1b[J")
        told = [line for frame in frames for line in frame.splitlines() if "failed to get P measured" in line]
        self.assertEqual(len(told), 3, output)
        for frame in frames[1:-1]:
            self.assertTrue(frame.splitlines()[-1].startswith(" 1"), frame)


if __name__ == "__main__":
    unittest.main()
