"""What `opc ctl` shows: tables, CSV, plots, and the same again and again."""

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
import threading
import time
import unittest
import xml.etree.ElementTree as ElementTree

from fake_unit import STATUS, TRANSIENT, ControlTestCase, FakeUnit
from unit_runner import PROGRAM, TIMEOUT_S


class OutputTestCase(ControlTestCase):
    def setUp(self):
        super().setUp()
        self.unit = self.serve(FakeUnit())

    def start(self, *arguments, **options):
        return subprocess.Popen([PROGRAM, "ctl", "--unit", self.unit.url, *arguments], cwd=self.folder,
                                stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, **options)

    def wait_for_calls(self, count):
        deadline = time.monotonic() + TIMEOUT_S
        while len(self.unit.calls) < count:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)

    def interrupt(self, process, with_signal=signal.SIGINT):
        process.send_signal(with_signal)
        output, errors = process.communicate(timeout=TIMEOUT_S)
        self.assertEqual((process.returncode, errors), (0, ""))
        return output


class Tables(OutputTestCase):
    def test_status(self):
        result = self.ask(self.unit, "status")
        self.assert_well(result)
        lines = result.stdout.splitlines()
        self.assertEqual(lines[0], "interval 6 ms, up 12.3 s, temperature 25.0 C (constant)")
        rows = {line[:15].strip(): re.split(r" {2,}", line[15:].strip()) for line in lines[4:]}
        self.assertEqual(rows["channel"], ["0", "12"])
        self.assertEqual(rows["requested dBm"], ["40.00 (profile)", "30.00 (constant)"])
        self.assertEqual(rows["control dBm"], ["39.50", "-"])
        self.assertEqual(rows["error dB"], ["0.00", "-"])
        self.assertEqual(rows["steps"], ["5000000000", "10"])
        self.assertEqual(rows["production test"], ["on, loop mode 1", "off"])
        self.assertLess(len(lines), 24)
        self.assertEqual(len({len(line) for line in lines[4:]}), 1, result.stdout)

    def test_logs_are_shown_in_decibels(self):
        self.assert_well(self.ask(self.unit, "log", "transient", "read"),
                         "sample  set dBm  target dBm  detected dBm  IF dBm  gain dB\n"
                         "1           off       10.00       unknown  -12.34     0.00\n"
                         "2         39.95       40.00         39.91  -10.05    50.05\n")
        self.assert_well(self.ask(self.unit, "log", "opc", "read"),
                         "object           unit  actual  minimum  maximum\n"
                         "TxRfPowerSet      dBm   39.95    -0.05    40.00\n"
                         "TxRfGainInitial    dB  -99.00   -99.00   -99.00\n")

    def test_no_faults(self):
        self.unit.answers["Unit.Faults"] = {"Faults": []}
        self.assert_well(self.ask(self.unit, "fault", "list"), "no faults are set\n")

    def test_csv(self):
        for arguments, expected in (
                ("gain", "state,detector_state_0_percent,detector_state_1_percent,detector_state_2_percent\n"
                         "ramping,10,20,30\non,40,50,60\n"),
                ("log transient read", "sample,tx_rf_power_set_dBm,tx_rf_power_target_dBm,tx_rf_detected_power_dBm,"
                                       "tx_if_power_dBm,tx_rf_gain_dB\n"
                                       "1,,10.00,,-12.34,0.00\n2,39.95,40.00,39.91,-10.05,50.05\n"),
                ("log opc read", "object,unit,actual,minimum,maximum\nTxRfPowerSet,dBm,39.95,-0.05,40.00\n"
                                 "TxRfGainInitial,dB,-99.00,-99.00,-99.00\n"),
                ("trace level", "group,level\nRQX.OPC,1\nRQX.OPCL,4\n"),
                ("fault list", "operation,kind,times,value,delay_us,probability\n"
                               "getPmeasured,slow,1,0,500,0.5\n")):
            with self.subTest(arguments):
                self.assert_well(self.ask(self.unit, *arguments.split(), "--csv", "-"), expected)

    def test_status_as_csv_in_a_file(self):
        path = self.folder / "status.csv"
        path.write_text("old\n" * 1000)
        result = self.ask(self.unit, "status", "--csv", path)
        self.assert_well(result)
        self.assertIn("channel ", result.stdout)
        rows = list(csv.DictReader(path.read_text().splitlines()))
        self.assertEqual([row["channel"] for row in rows], ["0", "12"])
        self.assertEqual([row["power_error_dB"] for row in rows], ["-0.001", ""])
        self.assertEqual([row["steps"] for row in rows], ["5000000000", "10"])
        self.assertEqual([row["lateness_mean_us"] for row in rows], ["12.4", "12.4"])

    def test_a_failed_call_leaves_files_alone(self):
        old, new = self.folder / "old.csv", self.folder / "new.csv"
        old.write_text("old\n")
        self.unit.answers["Unit.Status"] = {}
        for path in (old, new):
            self.assert_fails(self.ask(self.unit, "status", "--csv", path), 1)
        self.assertEqual(old.read_text(), "old\n")
        self.assertFalse(new.exists())

    def test_a_full_disk(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            process = self.start("tx", "on", stdout=full)
            errors = process.communicate(timeout=TIMEOUT_S)[1]
        self.assertEqual((process.returncode, errors.count("\n")), (1, 1))
        self.assertIn("No space left", errors)

    def test_output_that_nobody_reads(self):
        for arguments in (("status",), ("status", "--watch", "0.02"), ("status", "--json"), ("tx", "on")):
            with self.subTest(arguments):
                reading, writing = os.pipe()
                process = self.start(*arguments, stdout=writing)
                os.close(writing)
                os.close(reading)
                self.assertEqual((process.communicate(timeout=TIMEOUT_S)[1], process.returncode), ("", 0))


class Watching(OutputTestCase):
    def test_tables_one_after_the_other(self):
        process = self.start("gain", "--watch", "0.05", stdout=subprocess.PIPE)
        self.wait_for_calls(3)
        tables = self.interrupt(process).split("\n\n")
        self.assertGreaterEqual(len(tables), 2)
        for table in tables:
            self.assertEqual(len(table.strip().splitlines()), 3, table)

    def test_every_second_when_nothing_else_is_said(self):
        begin = time.monotonic()
        process = self.start("gain", "--watch", stdout=subprocess.PIPE)
        self.wait_for_calls(3)
        self.assertGreater(time.monotonic() - begin, 1.9)
        self.interrupt(process, signal.SIGTERM)

    def test_rows_with_their_time(self):
        process = self.start("--watch", "0.05", "status", "--csv", "status.csv", stdout=subprocess.DEVNULL)
        self.wait_for_calls(4)
        self.interrupt(process)
        lines = (self.folder / "status.csv").read_text().splitlines()
        self.assertEqual(sum(line.startswith("time_utc,channel,") for line in lines), 1)
        times = [row["time_utc"] for row in csv.DictReader(lines)]
        self.assertGreaterEqual(len(times), 6)
        self.assertEqual(times[0::2], times[1::2])
        self.assertGreater(times[2], times[0])
        self.assertRegex(times[0], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")

    def test_json_lines(self):
        process = self.start("status", "--json", "--watch", "0.05", stdout=subprocess.PIPE)
        self.wait_for_calls(3)
        lines = self.interrupt(process).splitlines()
        self.assertGreaterEqual(len(lines), 2)
        for line in lines:
            self.assertEqual(json.loads(line), STATUS)

    def test_a_signal_ends_a_call_that_is_not_answered(self):
        asked, released = threading.Event(), threading.Event()
        self.addCleanup(released.set)

        def wait():
            asked.set()
            released.wait(TIMEOUT_S)
            return STATUS

        self.unit.answers["Unit.Status"] = wait
        process = self.start("status", "--watch", stdout=subprocess.PIPE)
        self.assertTrue(asked.wait(TIMEOUT_S))
        begin = time.monotonic()
        self.interrupt(process)
        self.assertLess(time.monotonic() - begin, 10)

    def test_a_terminal_is_redrawn(self):
        leader, follower = pty.openpty()
        fcntl.ioctl(follower, termios.TIOCSWINSZ, struct.pack("HHHH", 10, 30, 0, 0))
        process = self.start("status", "--watch", "0.05", stdout=follower)
        os.close(follower)
        self.wait_for_calls(4)
        process.send_signal(signal.SIGINT)
        chunks = []
        try:
            while chunk := os.read(leader, 65536):
                chunks.append(chunk)
        except OSError:  # the program has closed its end
            pass
        os.close(leader)
        process.communicate(timeout=TIMEOUT_S)
        frames = b"".join(chunks).decode().split("\x1b[9A\r\x1b[J")
        self.assertGreaterEqual(len(frames), 3)
        for frame in frames:
            self.assertEqual(frame.count("\r\n"), 9, frame)
            self.assertLessEqual(max(map(len, frame.splitlines())), 30)


class Plots(OutputTestCase):
    def plot(self, name, *arguments, **options):
        return self.control("--unit", self.unit.url, "log", "transient", "read", "--plot", name, *arguments, **options)

    def test_an_svg(self):
        self.assert_well(self.plot("a 'b'|.svg"), "")
        text = "".join(ElementTree.parse(self.folder / "a 'b'|.svg").getroot().itertext())
        for part in ("Transient log of channel 1", "power in dBm", "sample", "IF power and gain", "gain in dB",
                     "target", "detected", "power set"):
            self.assertIn(part, text)

    def test_a_png_beside_a_csv(self):
        self.assert_well(self.plot("log.png", "--csv", "log.csv"), "")
        self.assertEqual((self.folder / "log.png").read_bytes()[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(len((self.folder / "log.csv").read_text().splitlines()), 3)

    def test_a_full_log_and_logs_with_nothing_to_draw(self):
        sample, blank = TRANSIENT["OPCLog"][1], {"TxRfPowerSet": -9900, "TxRfPowerTarget": -9900}
        for samples in ([sample] * 200, [sample], [blank] * 3, [{}], [7]):
            with self.subTest(samples=samples[:1]):
                self.unit.answers["TI.ManageOPCTransientLog"] = {"RadioChannelID": 0, "OPCLog": samples}
                self.assert_well(self.plot("log.svg"), "")
                self.assertIn("power in dBm", (self.folder / "log.svg").read_text())

    def test_without_gnuplot(self):
        self.assert_fails(self.plot("log.svg", environment={**os.environ, "PATH": str(self.folder)}), 1,
                          "gnuplot is not installed", "--csv")
        self.assertFalse((self.folder / "log.svg").exists())

    def test_a_gnuplot_that_fails(self):
        program = self.folder / "gnuplot"
        program.write_text("#!/bin/sh\necho 'line 0: no such terminal' >&2\nexit 3\n")
        program.chmod(0o755)
        environment = {**os.environ, "PATH": f"{self.folder}:{os.environ['PATH']}"}
        self.assert_fails(self.plot("log.svg", environment=environment), 1, "line 0: no such terminal")
        self.assertFalse((self.folder / "log.svg").exists())

    def test_a_place_that_cannot_be_written(self):
        self.assert_fails(self.plot("nowhere/log.svg"), 1, "nowhere/log.svg", "No such file")


if __name__ == "__main__":
    unittest.main()
