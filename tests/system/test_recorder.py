"""`opc run --record` keeps what the unit did, whatever happens to the unit and to the disk."""

import json
import os
import random
import resource
import shutil
import sqlite3
import subprocess
import time
import unittest

from live_unit import PythonClient
from recorded_unit import TOLERANCE_S, RecordedUnit, ask, eight_channels, export
from unit_runner import TIMEOUT_S, UnitTestCase, errors_of, summary_of

LOST_S = 1.0  # at most, of what happened before a kill
KILLS = 20 if int(os.environ.get("OPC_SWEEP_RUNS", "1000")) >= 1000 and not os.environ.get("OPC_SANITIZER") else 4


class RecorderTestCase(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"


class Recorder(RecorderTestCase):
    def test_a_run_has_its_steps_its_events_and_its_files(self):
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        self.assert_well(self.run_program("ctl", "--unit", unit.url, "power", "18", "--channel", "1"))
        client = PythonClient(unit.url)
        client.transient(RequestOption="Enable", RadioChannelID=0)
        client.log(RequestOption="Read", RadioChannelID=0)
        output, _ = unit.stop()
        steps = int(summary_of(output)[0]["steps"].partition(",")[0])
        self.assertEqual(summary_of(output)[None]["recording"], f"{2 * steps} steps in {self.file}")
        self.assertEqual(ask(self.file, "SELECT channel, count(*), max(steps) FROM step GROUP BY channel"),
                         [(0, steps, steps), (1, steps, steps)])
        self.assertEqual(ask(self.file, "PRAGMA integrity_check"), [("ok",)])
        commands = ask(self.file, "SELECT channel, text, detail, steps, time_us FROM event WHERE kind = 'command'")
        self.assertEqual([command[:2] for command in commands],
                         [(1, "requested power 18.00 dBm"), (0, "OPC transient log Enable")])
        self.assertEqual(json.loads(commands[0][2]),
                         {"method": "Unit.SetRequestedPower", "params": {"RadioChannelID": 1, "PowerDbm": 18.0}})
        # The command is in force from the step after those that it names.
        before, after = ask(self.file, "SELECT requested_cdb FROM step WHERE channel = 1 AND steps IN (?, ?) "
                                       "ORDER BY steps", commands[0][3], commands[0][3] + 1)
        self.assertNotEqual(before[0], 1800)
        self.assertEqual(after[0], 1800)
        self.assertEqual(ask(self.file, "SELECT time_us FROM step WHERE channel = 1 AND steps = ?",
                             commands[0][3] + 1), [(commands[0][4],)])
        states = ask(self.file, "SELECT text FROM event WHERE kind = 'state' AND channel = 0")
        self.assertIn(("TX_ON_RAMPING to TX_ON",), states)
        files = dict(ask(self.file, "SELECT name, content FROM file WHERE kind <> 'unit'"))
        self.assertEqual(files["storage.toml"], (self.folder / "storage.toml").read_text())
        self.assertEqual(len(files), 4)
        self.assertEqual(ask(self.file, "SELECT content FROM file WHERE kind = 'unit'"),
                         [(self.unit_file.read_text(),)])

    def test_the_unit_file_can_name_the_recording(self):
        self.edit('# file = "unit.db"', 'file = "kept.db"')
        self.assert_well(self.run_unit("--duration", "0.3"))
        self.assertEqual(ask(self.folder / "kept.db", "SELECT count(*) FROM run"), [(1,)])

    def test_a_run_that_does_not_start_leaves_nothing(self):
        self.edit('library = "libOutputPowerHandler.so"', 'library = "libNoHandler.so"')
        self.assertEqual(self.run_unit("--record", self.file).returncode, 2)
        self.assertFalse(self.file.exists())


class Kills(RecorderTestCase):
    def test_a_kill_loses_a_second_at_most_and_never_the_file(self):
        self.unit_file.write_text(eight_channels(self.unit_file.read_text()))
        lost = []
        for number in range(1, KILLS + 1):
            unit = RecordedUnit(self, self.file)
            time.sleep(random.uniform(0.0, 3.5))
            killed = time.time()
            unit.kill()
            with self.subTest(kill=number):
                self.assertEqual(ask(self.file, "PRAGMA integrity_check"), [("ok",)])
                runs = ask(self.file, "SELECT id, started_unix_us, ended_us FROM run ORDER BY id")
                run, started, ended = runs[-1]
                self.assertEqual(run, number)  # of earlier runs, one that had no step yet is gone
                self.assertIsNone(ended)
                steps, last, times = ask(self.file, "SELECT max(steps), max(time_us), count(DISTINCT time_us) "
                                                    "FROM step WHERE run = ?", run)[0]
                lost.append(killed - started / 1e6 - (last or 0) / 1e6)
                self.assertLess(lost[-1], LOST_S + TOLERANCE_S)
                self.assertEqual(steps or 0, times, "steps are missing between others")
                sums = ask(self.file, "SELECT sum(steps) FROM second WHERE run = ? UNION ALL "
                                      "SELECT count(*) FROM step WHERE run = ?", run, run)
                self.assertEqual(sums[0], sums[1] if steps else (None,))
        print(f"lost by {len(lost)} kills: mean {sum(lost) / len(lost):.2f} s, most {max(lost):.2f} s")
        longest = ask(self.file, "SELECT run FROM second GROUP BY run ORDER BY count(*) DESC LIMIT 1")[0][0]
        self.assertTrue(export(self, self.file, "--run", longest, "--resolution", "seconds"))


class Refusals(RecorderTestCase):
    def refusal(self, *command_before, file=None):
        """Returns the line that a unit ends with that cannot record there."""
        file = file or self.file
        before = file.read_bytes() if file.is_file() else None
        names = sorted(path.name for path in file.parent.iterdir()) if file.parent.is_dir() else None
        result = subprocess.run([*command_before, *self.command("run", self.unit_file, "--duration", "1", "--record",
                                                                file)],
                                capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        self.assertEqual((result.returncode, result.stdout), (2, ""), result.stderr)
        self.assertEqual(file.read_bytes() if file.is_file() else None, before)
        if names is not None:
            self.assertEqual(sorted(path.name for path in file.parent.iterdir()), names)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        return result.stderr.removeprefix(f"opc: {file}: ").rstrip("\n")

    def test_files_of_others(self):
        self.file.write_text("notes\n")
        self.assertEqual(self.refusal(), "is not a recording of opc run; name another file")
        self.file.unlink()
        with sqlite3.connect(self.file) as database:
            database.execute("CREATE TABLE run(id)")
        database.close()
        self.assertEqual(self.refusal(), "is not a recording of opc run; name another file")

    def test_a_recording_of_a_newer_program(self):
        self.assert_well(self.run_unit("--duration", "0.1", "--record", self.file))
        with sqlite3.connect(self.file) as database:
            database.execute("PRAGMA user_version = 9")
        database.close()
        self.assertEqual(self.refusal(), "is a recording of version 9, and this program knows version 1; use a newer "
                                         "opc, or name another file")

    def test_folders(self):
        self.assertEqual(self.refusal(file=self.folder), "is no file; name another file to record into")
        self.assertEqual(self.refusal(file=self.folder / "none" / "unit.db"),
                         "cannot be written: No such file or directory; name another file to record into")

    def test_a_file_that_cannot_be_written(self):
        # The superuser may write what nobody may; without this right it is as everybody else.
        drop = []
        if os.geteuid() == 0:
            if not shutil.which("setpriv"):
                self.skipTest("the superuser may write every file")
            drop = ["setpriv", "--bounding-set=-dac_override", "--inh-caps=-dac_override"]
        self.assert_well(self.run_unit("--duration", "0.1", "--record", self.file))
        self.file.chmod(0o444)
        self.assertEqual(self.refusal(*drop),
                         "cannot be written: Permission denied; name another file to record into")

    def test_a_second_unit(self):
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        result = self.run_unit("--duration", "1", "--record", self.file)
        self.assertEqual((result.returncode, result.stderr),
                         (2, f"opc: {self.file}: another process is at work on it; wait for its end, or name another "
                             "file to record into\n"))
        unit.stop()
        self.assertEqual(ask(self.file, "SELECT count(*) FROM run"), [(1,)])


class FullDisk(RecorderTestCase):
    def wait_for_error(self, unit, text):
        end = time.monotonic() + TIMEOUT_S
        while text not in "".join(unit.errors()):
            self.assertLess(time.monotonic(), end, "".join(unit.errors()))
            time.sleep(0.05)

    def assert_goes_on(self, unit, fill, give_room, reason):
        """Lets the disk be full for a while; the unit regulates all the time and then records again."""
        unit.wait_until_on(2)
        fill()
        self.wait_for_error(unit, "recording pauses")
        before = unit.status()["Channels"][0]["Steps"]
        time.sleep(2.5)
        self.assertGreater(unit.status()["Channels"][0]["Steps"] - before, 100)
        give_room()
        self.wait_for_error(unit, "recording goes on")
        _, errors = unit.stop()
        self.assertEqual(errors_of(errors),
                         f"opc run: {unit.file}: recording pauses: {reason}; it goes on when that is over\n"
                         f"opc run: {unit.file}: recording goes on; nothing is lost\n")
        self.assertEqual(ask(unit.file, "PRAGMA integrity_check"), [("ok",)])
        self.assertEqual(*ask(unit.file, "SELECT max(steps), count(*) FROM step WHERE channel = 0")[0])

    def test_a_full_disk_pauses_the_recording_and_nothing_else(self):
        disk = self.folder.parent / "disk"
        disk.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4m", "tmpfs", disk], capture_output=True,
                                 check=False)
        if mounted.returncode != 0:
            self.skipTest("no file system may be mounted here")
        self.addCleanup(subprocess.run, ["umount", disk], check=True)
        filler = disk / "filler"

        def fill():
            with open(filler, "wb", buffering=0) as file:
                try:
                    while True:
                        file.write(bytes(4096))
                except OSError:
                    pass

        self.assert_goes_on(RecordedUnit(self, disk / "unit.db"), fill, filler.unlink, "the disk is full")

    def test_a_limit_of_the_files_size_does_the_same(self):
        unit = RecordedUnit(self, self.file)
        unlimited = resource.prlimit(unit.process.pid, resource.RLIMIT_FSIZE)

        def limit():
            resource.prlimit(unit.process.pid, resource.RLIMIT_FSIZE, (4096, unlimited[1]))

        def give_room():
            resource.prlimit(unit.process.pid, resource.RLIMIT_FSIZE, unlimited)

        self.assert_goes_on(unit, limit, give_room, "disk I/O error")


if __name__ == "__main__":
    unittest.main()
