"""How many runs a second a sweep makes on one and on two cores.

The sweep is examples/sweeps/gain-noise-actuator.toml. The result goes to standard output as Markdown, progress to
standard error.
"""

import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

from common import machine
from common.markdown import replace_in, table

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SWEEP = ROOT / "examples/sweeps/gain-noise-actuator.toml"
RUNS = 1000  # as the sweep says


def seconds_of_sweep(program, jobs):
    with tempfile.TemporaryDirectory() as folder:
        began = time.monotonic()
        subprocess.run([program, "sweep", SWEEP, "--jobs", str(jobs), "--results", f"{folder}/results.db"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return time.monotonic() - began


def markdown(rates, facts, rounds):
    one = statistics.median(rates[1])
    rows = [(jobs, f"{statistics.median(found):.0f}", f"{min(found):.0f} to {max(found):.0f}",
             f"{statistics.median(found) / one:.2f}") for jobs, found in rates.items()]
    told = "\n".join(f"- {label}: {text}" for label, text in facts.items())
    return f"{table(('runs at a time', 'runs/s', 'range', '× one'), rows, 0)}\n\nMedians of {rounds} sweeps.\n\n{told}"


def main():
    parser = argparse.ArgumentParser(prog="script/benchmark sweep", description=__doc__)
    parser.add_argument("--rounds", type=int, default=3, help="how often each is measured (3)")
    parser.add_argument("--json", type=pathlib.Path, help="a file for everything that was measured")
    parser.add_argument("--into", type=pathlib.Path, help="a document whose figures to replace")
    options = parser.parse_args()
    build = ROOT / "build/release"
    facts = machine.facts(build)
    rates = {1: [], 2: []}
    for number in range(options.rounds):
        for jobs, found in rates.items():
            print(f"round {number + 1} of {options.rounds}, {jobs} at a time", file=sys.stderr)
            found.append(RUNS / seconds_of_sweep(build / "bin/opc", jobs))
    text = markdown(rates, facts, options.rounds)
    if options.json:
        measured = {"machine": facts, "runs_per_second": rates}
        options.json.write_text(json.dumps(measured, indent=2) + "\n", encoding="utf-8")
    if options.into:
        replace_in(options.into, "sweep", text)
    print(text)


if __name__ == "__main__":
    main()
