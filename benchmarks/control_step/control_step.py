#!/usr/bin/env python3
"""Measures what a control step costs, in instructions and in time, beside the bare calls that it makes."""

import argparse
import json
import pathlib
import subprocess
import sys
import time

import callgrind
import instructions

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "benchmarks"))
import step_report  # noqa: E402
from common import machine, markdown  # noqa: E402


def progress(text):
    print(text, file=sys.stderr, flush=True)


def benchmark(program, arguments):
    """Returns the nanoseconds of a step or call, and what else the program counts, by the benchmark's name."""
    progress(f"{program.name} ...")
    command = [program, "--benchmark_format=json", f"--benchmark_repetitions={arguments.repetitions}",
               "--benchmark_report_aggregates_only=true", f"--benchmark_min_time={arguments.seconds}"]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    results = {}
    for result in json.loads(output)["benchmarks"]:
        if result["aggregate_name"] == "median":
            name = result["run_name"].removesuffix("/manual_time")
            nanoseconds = result["per_step"] * 1e9 if "per_step" in result else result["cpu_time"]
            counters = {key: result[key] for key in ("allocated_per_channel", "bytes") if key in result}
            results[name] = {"ns": nanoseconds, **counters}
    return results


def measure(arguments):
    """Measures, writes everything into the JSON file and returns it."""
    programs = arguments.build.resolve() / "bin"
    settings = {"date": time.strftime("%Y-%m-%d"), "repetitions": arguments.repetitions, "seconds": arguments.seconds}
    facts = machine.facts(arguments.build)
    progress("instructions ...")
    cases, floors = instructions.without_floors(callgrind.count(programs / "step_instructions"))
    counted = {name: {"count": case.total, **floors.get(name, {}), "functions": case.functions}
               for name, case in cases.items()}
    times = benchmark(programs / "control_step", arguments) | benchmark(programs / "log_commands", arguments)
    progress("read_by_python.py ...")
    script = pathlib.Path(__file__).with_name("read_by_python.py")
    by_python = json.loads(subprocess.run((sys.executable, "-B", script), check=True, stdout=subprocess.PIPE).stdout)
    times |= {name: {"ns": nanoseconds} for name, nanoseconds in by_python.items()}
    text = json.dumps({"settings": settings, "machine": facts, "instructions": counted, "times": times}, indent=1)
    (arguments.json or arguments.build / "control_step.json").write_text(text + "\n", encoding="utf-8")
    return json.loads(text)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "benchmark", metavar="FOLDER",
                        help="where the programs were built; build/benchmark when left out")
    parser.add_argument("--repetitions", type=int, default=5, metavar="N", help="of each benchmark; 5")
    parser.add_argument("--seconds", type=float, default=0.2, metavar="S", help="how long each time; 0.2")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE",
                        help="where everything measured goes; control_step.json in the build folder when left out")
    parser.add_argument("--read", type=pathlib.Path, metavar="FILE", help="measure nothing: report this JSON file")
    parser.add_argument("--into", type=pathlib.Path, metavar="FILE",
                        help="replace what this Markdown file holds between the two marks of the measurement")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    measured = json.loads(arguments.read.read_text(encoding="utf-8")) if arguments.read else measure(arguments)
    text = step_report.markdown(measured)
    print(text)
    if arguments.into:
        markdown.replace_in(arguments.into, "control-step", text)


if __name__ == "__main__":
    try:
        main()
    except (OSError, callgrind.CountError, subprocess.SubprocessError) as error:
        sys.exit(f"control_step.py: {error}")
