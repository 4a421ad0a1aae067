"""The job array that ships makes a sweep on a Slurm cluster, shard by shard."""

import pathlib
import re
import subprocess
import time
import unittest

from local_slurm import COMMAND_S, LocalSlurm
from swept import SPLIT_SCENARIO, SPLIT_SWEEP
from unit_runner import PROGRAM, UnitTestCase

JOBS_S = 60
MERGE = "opc sweep-merge all.db sweep-*-of-4.db"


class SlurmArray(UnitTestCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.slurm = LocalSlurm()
        cls.addClassCleanup(cls.slurm.stop)
        cls.slurm.environment["PATH"] = f"{pathlib.Path(PROGRAM).parent}:{cls.slurm.environment['PATH']}"

    def setUp(self):
        super().setUp()
        self.where = self.folder.parent
        self.script = self.folder / "sweeps" / "slurm-array.sh"
        (self.where / "base.toml").write_text(SPLIT_SCENARIO)
        (self.where / "sweep.toml").write_text(SPLIT_SWEEP)

    def submit(self, *arguments):
        """Returns the job's number."""
        result = subprocess.run(["sbatch", "--parsable", *map(str, arguments)], cwd=self.where, timeout=COMMAND_S,
                                env=self.slurm.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                check=False)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout.strip()

    def wait_for_jobs(self):
        self.wait_for(lambda: not self.slurm.ask("squeue", "--noheader",
                                                 "--states=PENDING,RUNNING,COMPLETING").strip())

    def wait_for(self, condition):
        deadline = time.monotonic() + JOBS_S
        while not condition():
            if time.monotonic() >= deadline:
                self.fail(f"{self.slurm.ask('squeue')}\n{self.outputs()}\n{self.slurm.logs()}")
            time.sleep(0.2)

    def wait_for_log(self, text):
        self.wait_for(lambda: text in self.outputs())

    def state_of(self, job):
        """Returns the states of a job's tasks."""
        lines = self.slurm.ask("squeue", "--noheader", "--states=all", f"--jobs={job}", "--format=%T").split()
        return sorted(set(lines))

    def outputs(self):
        return "\n".join(f"{path.name}: {path.read_text()}" for path in sorted(self.where.glob("*.log")))

    def csv_of(self, results):
        self.assert_well(self.run_program("sweep-report", results, "--csv", "report.csv"))
        return (self.where / "report.csv").read_bytes()

    def test_the_array_and_the_job_that_joins_it_come_to_the_undivided_sweep(self):
        array = self.submit("--array=1-4", self.script, "sweep.toml")
        merge = self.submit(f"--dependency=afterany:{array}", "--output=merge.log", "--wrap", MERGE)
        self.wait_for_jobs()
        self.assertEqual(self.state_of(array), ["COMPLETED"], self.outputs())
        self.assertEqual(self.state_of(merge), ["COMPLETED"], self.outputs())
        self.assertEqual((self.where / "merge.log").read_text(), "22 of 22 runs, 0 failed, from 4 files, in all.db\n")
        self.assertEqual(len(list(self.where.glob("sweep-?-of-4.db"))), 4)
        self.assert_well(self.run_program("sweep", "sweep.toml"))
        self.assertEqual(self.csv_of("all.db"), self.csv_of("sweep.db"))

    def test_single_tasks_go_on_with_their_shards(self):
        self.submit("--array=1,3", self.script, "sweep.toml", 4)
        merge = self.submit("--dependency=singleton", "--job-name=opc-sweep", "--output=merge.log", "--wrap", MERGE)
        self.wait_for_jobs()
        self.assertEqual(self.state_of(merge), ["FAILED"], self.outputs())
        self.assertIn("  opc sweep sweep.toml --shard 2/4\n  opc sweep sweep.toml --shard 4/4\n",
                      (self.where / "merge.log").read_text())
        again = self.submit("--array=1-4", "--output=again-%a.log", self.script, "sweep.toml")
        self.wait_for_jobs()
        self.assertEqual(self.state_of(again), ["COMPLETED"], self.outputs())
        self.assertIn("6 runs, 6 of them done already", (self.where / "again-1.log").read_text())
        self.assertIn("6 runs, 0 of them done already", (self.where / "again-2.log").read_text())
        self.assert_well(self.run_program("sweep-merge", "all.db", *sorted(self.where.glob("sweep-?-of-4.db"))))

    def test_a_requeued_task_goes_on_with_its_shard(self):
        (self.where / "sweep.toml").write_text(SPLIT_SWEEP.replace("runs = 22", "runs = 20000\nduration_s = 100"))
        job = self.submit("--array=1-1", self.script, "sweep.toml", 2)
        self.addCleanup(self.slurm.ask, "scancel", job)
        self.wait_for_log("10000 runs, 0 of them done already")
        results = self.where / "sweep-1-of-2.db-wal"
        size = results.stat().st_size
        self.wait_for(lambda: results.stat().st_size > size)
        self.slurm.ask("scontrol", "requeue", job)
        self.wait_for_log("opc: SIGTERM: stopped with ")
        # Slurm would wait for two minutes.
        self.wait_for(lambda: self.slurm.ask("scontrol", "update", f"JobId={job}", "StartTime=now")
                      or re.search(r"10000 runs, [1-9][0-9]* of them done already", self.outputs()))

    def test_an_array_that_is_no_division_is_refused(self):
        job = self.submit("--array=2-3", "--output=array-%a.log", self.script, "sweep.toml")
        self.wait_for_jobs()
        self.assertEqual(self.state_of(job), ["FAILED"], self.outputs())
        self.assertEqual((self.where / "array-2.log").read_text(),
                         "slurm-array.sh: the array is not 1-2; give the number of shards after sweep.toml\n")
        self.assertEqual(list(self.where.glob("*.db")), [])


if __name__ == "__main__":
    unittest.main()
