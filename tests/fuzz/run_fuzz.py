#!/usr/bin/env python3
"""Builds the fuzz targets with clang's libFuzzer and sanitizers, runs them, and tells what they found.

Inputs that break a target go to build/fuzz/findings, new inputs that reach new code to build/fuzz/corpus. The exit code
is 0 when nothing was found, 1 on a finding, 2 when a target cannot be built or run."""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SOURCES = Path(__file__).resolve().parent.parent.parent
TARGETS = SOURCES / "tests" / "fuzz" / "corpus"
BUILD = SOURCES / "build" / "fuzz"
PROGRESS_S = 10
GRACE_S = 60  # beyond the time that a target was given: it ends by itself unless it hangs
MEMORY_MB = 4096
LONGEST_INPUT_S = 20
STATUS = re.compile(r"^#(\d+)\s.*?cov: (\d+)(?: ft: (\d+))?")
FINAL = re.compile(r"^stat::(\w+):\s+(\d+)")


class Run:
    """One target that runs, and what its lines said so far."""

    def __init__(self, target, given, temporary):
        self.target = target
        self.seconds = given.seconds
        self.seed = given.seed
        self.executions = 0
        self.edges = 0
        self.began = time.monotonic()
        self.ended = None
        self.code = None
        self.log = BUILD / "findings" / f"{target}.log"
        self.findings_before = set(self.findings())
        self.read = 0
        corpus = BUILD / "corpus" / target
        corpus.mkdir(parents=True, exist_ok=True)
        folder = Path(temporary) / target
        folder.mkdir()
        with self.log.open("wb") as log:
            self.process = subprocess.Popen(self.command(corpus), stdout=log, stderr=log,
                                            env=dict(os.environ, TMPDIR=str(folder)), cwd=folder)

    def command(self, corpus):
        command = [str(BUILD / "bin" / f"fuzz_{self.target}"), f"-max_total_time={self.seconds}", f"-seed={self.seed}",
                   "-print_final_stats=1", f"-rss_limit_mb={MEMORY_MB}", f"-timeout={LONGEST_INPUT_S}",
                   f"-artifact_prefix={BUILD}/findings/{self.target}-", "-max_len=4096"]
        dictionary = SOURCES / "tests" / "fuzz" / f"{self.target}.dict"
        if dictionary.exists():
            command.append(f"-dict={dictionary}")
        return command + [str(corpus), str(TARGETS / self.target)]

    def findings(self):
        return [str(path) for path in sorted((BUILD / "findings").glob(f"{self.target}-*"))
                if re.fullmatch(re.escape(self.target) + r"-(crash|leak|timeout|oom)-[0-9a-f]+", path.name)]

    def new_findings(self):
        return [path for path in self.findings() if path not in self.findings_before]

    def look(self):
        """Reads what the target has said since the last look, and whether it has ended."""
        self.code = self.process.poll()
        with self.log.open("rb") as log:
            log.seek(self.read)
            text = log.read()
        end = len(text) if self.code is not None else text.rfind(b"\n") + 1
        self.read += end
        for line in text[:end].decode(errors="replace").splitlines():
            self.take(line)
        if self.code is not None:
            self.ended = self.ended or time.monotonic()
        elif time.monotonic() - self.began > self.seconds + GRACE_S:
            self.process.kill()
            print(f"{self.target}: has not ended in time and was killed", flush=True)

    def take(self, line):
        status = STATUS.match(line)
        if status:
            self.executions = max(self.executions, int(status[1]))
            self.edges = int(status[2])
        final = FINAL.match(line)
        if final and final[1] == "number_of_executed_units":
            self.executions = int(final[2])

    def elapsed(self):
        return (self.ended or time.monotonic()) - self.began

    def rate(self):
        return self.executions / max(self.elapsed(), 1e-3)

    def progress(self):
        return f"{self.target}: {self.elapsed():.0f} of {self.seconds} s, {self.executions} executions, {self.edges} edges"


def arguments():
    parser = argparse.ArgumentParser(prog="script/fuzz", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int, default=3600, metavar="N", help="time for each target (an hour)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, metavar="N",
                        help="targets at a time (as many as there are processors)")
    parser.add_argument("--seed", type=int, default=0, metavar="N",
                        help="what the inputs come from, so that another run makes the same; another one each time "
                             "when left out")
    parser.add_argument("--list", action="store_true", help="name the targets, and do nothing else")
    parser.add_argument("targets", nargs="*", metavar="TARGET", help="which targets; all of them when left out")
    given = parser.parse_args()
    known = sorted(path.name for path in TARGETS.iterdir() if path.is_dir())
    for name in given.targets:
        if name not in known:
            parser.error(f"there is no target {name}; the targets are {', '.join(known)}")
    if given.seconds < 1 or given.jobs < 1:
        parser.error("--seconds and --jobs have to be 1 or more")
    if not 0 <= given.seed < 2**32:
        parser.error("--seed has to be from 1 to 4294967295, or 0 for another one each time")
    given.targets = given.targets or known
    return given


def build(targets):
    subprocess.run([SOURCES / "script" / "bootstrap"], check=True)
    subprocess.run(["cmake", "--preset", "fuzz"], cwd=SOURCES, check=True, stdout=subprocess.DEVNULL)
    names = [f"fuzz_{name}" for name in targets]
    subprocess.run(["cmake", "--build", "--preset", "fuzz", "--target", *names], cwd=SOURCES, check=True)
    (BUILD / "findings").mkdir(exist_ok=True)


def run_all(given, temporary):
    waiting, running, done = list(given.targets), [], []
    told = time.monotonic()
    try:
        while waiting or running:
            while waiting and len(running) < given.jobs:
                running.append(Run(waiting.pop(0), given, temporary))
            time.sleep(0.2)
            for run in list(running):
                run.look()
                if run.code is not None:
                    running.remove(run)
                    done.append(run)
                    print(f"{run.target}: ended with {run.code}", flush=True)
            if running and time.monotonic() - told >= PROGRESS_S:
                told = time.monotonic()
                print("; ".join(run.progress() for run in running), flush=True)
    finally:
        for run in running:
            run.process.kill()
            run.process.wait()
    return done


def tell(done):
    """Prints the table. Returns the exit code."""
    print(f"\n{'target':20} {'executions':>12} {'per s':>8} {'edges':>7} {'findings':>9}")
    code = 0
    for run in sorted(done, key=lambda run: run.target):
        found = run.new_findings()
        print(f"{run.target:20} {run.executions:12} {run.rate():8.0f} {run.edges:7} {len(found):9}")
        if found:
            code = 1
    for run in done:
        for path in run.new_findings():
            print(f"{path}\n  run it again: {BUILD.relative_to(SOURCES)}/bin/fuzz_{run.target} {path}")
        if run.code != 0 and not run.new_findings():
            print(f"script/fuzz: {run.target} ended with {run.code} and left no input; see {run.log}", file=sys.stderr)
            code = code or 2
    return code


def main():
    given = arguments()
    if given.list:
        print("\n".join(given.targets))
        return 0
    try:
        build(given.targets)
    except (OSError, subprocess.CalledProcessError) as error:
        print(f"script/fuzz: cannot build: {error}", file=sys.stderr)
        return 2
    temporary = tempfile.mkdtemp(prefix="opc-fuzz-")
    try:
        return tell(run_all(given, temporary))
    except KeyboardInterrupt:
        print("script/fuzz: interrupted", file=sys.stderr)
        return 2
    finally:
        shutil.rmtree(temporary, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
