"""`opc sweep-merge` joins the shards of a sweep to what the undivided sweep comes to."""

import sqlite3
import subprocess
import unittest

from swept import SPLIT_SCENARIO, SPLIT_SWEEP
from unit_runner import TIMEOUT_S, UnitTestCase

SHARDS = [f"sweep-{index}-of-4.db" for index in (1, 2, 3, 4)]


class SweepMerge(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.where = self.folder.parent
        (self.where / "base.toml").write_text(SPLIT_SCENARIO)
        (self.where / "sweep.toml").write_text(SPLIT_SWEEP)

    def sweep(self, *arguments):
        self.assert_well(self.run_program("sweep", "sweep.toml", *arguments))

    def make_shards(self, *indices):
        for index in indices:
            self.sweep("--shard", f"{index}/4")

    def report(self, results):
        self.assert_well(self.run_program("sweep-report", results, "--csv", "report.csv"))
        return (self.where / "report.csv").read_bytes()

    def made(self):
        """Returns what stands under the output's name or one that it had on its way."""
        return sorted(path.name for path in self.where.iterdir() if "all.db" in path.name)

    def test_all_shards_come_to_the_undivided_sweep(self):
        self.sweep()
        self.make_shards(1, 2, 3, 4)
        before = [(self.where / shard).read_bytes() for shard in SHARDS]
        result = self.run_program("sweep-merge", "all.db", *reversed(SHARDS))
        self.assert_well(result)
        self.assertEqual((result.stdout, result.stderr), ("22 of 22 runs, 0 failed, from 4 files, in all.db\n", ""))
        self.assertEqual(self.report("all.db"), self.report("sweep.db"))
        self.assertEqual([(self.where / shard).read_bytes() for shard in SHARDS], before)
        self.assertEqual(self.made(), ["all.db"])

    def test_missing_runs_are_told_with_the_command_that_makes_them(self):
        self.make_shards(1, 3, 4)
        others = [SHARDS[0], SHARDS[2], SHARDS[3]]
        result = self.run_program("sweep-merge", "all.db", *others)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "16 of 22 runs, 0 failed, from 3 files\nmissing 6 runs: 1, 5, 9, 13, 17, 21\n"
                                        "  opc sweep sweep.toml --shard 2/4\n")
        self.assertEqual(result.stderr, "opc: all.db was not made: 6 of 22 runs are missing; make them, or join what "
                                        "there is with --partial\n")
        self.assertEqual(self.made(), [])
        command = result.stdout.splitlines()[-1].split()
        self.assert_well(self.run_program(*command[1:]))
        self.assert_well(self.run_program("sweep-merge", "all.db", *SHARDS))

    def test_a_partial_file_is_gone_on_with(self):
        self.sweep()
        self.make_shards(1, 3)
        result = self.run_program("sweep-merge", "--partial", "all.db", SHARDS[0], SHARDS[2])
        self.assert_well(result)
        self.assertEqual(result.stdout.splitlines()[-1], "  opc sweep sweep.toml --results all.db")
        going_on = self.run_program("sweep", "sweep.toml", "--results", "all.db")
        self.assert_well(going_on)
        self.assertIn("22 runs, 11 of them done already", going_on.stderr)
        self.assertEqual(self.report("all.db"), self.report("sweep.db"))

    def test_a_killed_shard_counts_as_far_as_it_got(self):
        self.make_shards(1)
        # As a kill leaves it: what was written last stands in the journal only.
        process = subprocess.Popen(["python3", "-c", "import sqlite3, sys, os\n"
                                    "file = sqlite3.connect(sys.argv[1])\n"
                                    "file.execute('PRAGMA journal_mode = WAL')\n"
                                    "file.execute('DELETE FROM run WHERE number > 4')\n"
                                    "file.commit()\n"
                                    "os._exit(0)", str(self.where / SHARDS[0])])
        self.assertEqual(process.wait(timeout=TIMEOUT_S), 0)
        self.assertTrue((self.where / f"{SHARDS[0]}-wal").exists())
        result = self.run_program("sweep-merge", "--partial", "all.db", SHARDS[0])
        self.assertEqual(result.stdout.splitlines()[0], "2 of 22 runs, 0 failed, from 1 file, in all.db")

    def test_wrong_files_are_told_in_one_line(self):
        self.make_shards(1, 2)
        self.sweep()
        (self.where / "text.db").write_text("no database " * 100)
        (self.where / "there.db").write_text("")
        (self.where / "other.toml").write_text(SPLIT_SWEEP.replace("22", "23"))
        self.assert_well(self.run_program("sweep", "other.toml"))
        with sqlite3.connect(self.where / SHARDS[1]) as file:
            file.execute("UPDATE run SET steps = 7 WHERE number = 5")
        file.close()
        for arguments, text in ((("all.db", SHARDS[0], "absent.db"), "absent.db: does not exist"),
                                (("all.db", "examples"), "examples: is no file"),
                                (("all.db", "text.db"), "text.db: is not a results file"),
                                (("all.db", SHARDS[0], "other.db"), "number of runs was 22 and is 23"),
                                (("all.db", SHARDS[0], f"./{SHARDS[0]}"), "is given twice"),
                                (("all.db", "sweep.db", SHARDS[1]), "run 5 is another one than in sweep.db: steps 7"),
                                (("there.db", SHARDS[0]), "there.db: exists already"),
                                (("nowhere/all.db", SHARDS[0]), "nowhere/all.db: cannot be written"),
                                (("all.db",), "RESULTS.db")):
            with self.subTest(arguments):
                result = self.run_program("sweep-merge", *arguments)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertEqual((result.stdout, result.stderr.count("\n")), ("", 1), result.stderr)
                self.assertTrue(result.stderr.startswith("opc: "), result.stderr)
                self.assertIn(text, result.stderr)
                self.assertEqual(self.made(), [])

    def test_a_file_that_a_sweep_is_at_work_on_is_refused(self):
        (self.where / "long.toml").write_text(SPLIT_SWEEP.replace("runs = 22", "runs = 100000\nduration_s = 100"))
        process = subprocess.Popen(self.command("sweep", "long.toml", "--jobs", "1"), cwd=self.where,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait, TIMEOUT_S)
        self.addCleanup(process.kill)
        self.assertIn(b"100000 runs", process.stderr.readline())
        result = self.run_program("sweep-merge", "--partial", "all.db", "long.db")
        self.assertEqual((result.returncode, self.made()), (2, []))
        self.assertEqual(result.stderr, "opc: long.db: another process is at work on it; wait for its end, or name "
                                        "another file\n")


if __name__ == "__main__":
    unittest.main()
