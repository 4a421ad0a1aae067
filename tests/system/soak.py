"""Runs the unit for long, and judges whether it stays as it was.

script/soak virtual  simulates weeks of ten channels with random requests, drives and faults, as fast as it goes.
script/soak real     runs `opc run` in real time with ten channels, every kind of client and random commands.

Both watch memory, threads and descriptors and see that nothing happens that must not; a report and a CSV file of all
samples come at the end. Memory is judged by its level and its trend after a warm-up, never by one sample.

Exit code: 0 when all went well, 1 when something did not, 2 for a wrong call.
"""

import argparse
import os
import pathlib
import re
import sys
import tempfile
import time

import soak_real
import soak_virtual

ROOT = pathlib.Path(__file__).resolve().parents[2]


def above_zero(text):
    try:
        number = float(text)
    except ValueError:
        number = 0.0
    if not 0.0 < number < 1e6:
        raise argparse.ArgumentTypeError(f"{text!r} has to be a number above 0")
    return number


def from_one(most):
    def read(text):
        if not re.fullmatch(r"\d+", text) or not 1 <= int(text) <= most:
            raise argparse.ArgumentTypeError(f"{text!r} has to be a whole number from 1 to {most}")
        return int(text)
    return read


def parsed_arguments():
    parser = argparse.ArgumentParser(prog="script/soak", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    kinds = parser.add_subparsers(dest="kind", required=True, metavar="virtual|real")
    virtual = kinds.add_parser("virtual", help="weeks of simulated channels")
    virtual.add_argument("--days", type=above_zero, default=30.0, help="simulated days of each channel; 30")
    virtual.add_argument("--jobs", type=from_one(64), default=os.cpu_count() or 1, help="channels at a time; one per core")
    real = kinds.add_parser("real", help="a running unit with clients")
    how_long = real.add_mutually_exclusive_group()
    how_long.add_argument("--hours", type=above_zero, help="how long")
    how_long.add_argument("--minutes", type=above_zero, help="how long; 20 minutes when neither is given")
    how_long.add_argument("--seconds", type=above_zero, help="how long, for a short look")
    real.add_argument("--priority", type=from_one(99), default=0, metavar="1..99",
                      help="real-time priority of the regulation; needs the right to it")
    real.add_argument("--overrun-share", type=float, default=0.01, metavar="SHARE",
                      help="share of the deadlines that may be skipped, 0 to 1; 0.01")
    for each in (virtual, real):
        each.add_argument("--channels", type=from_one(100), default=10, help="channels; 10")
        each.add_argument("--seed", type=from_one(1 << 31), default=1, help="what happens comes from it; 1")
        each.add_argument("--program", type=pathlib.Path, help="the program; build/release/bin/opc")
        each.add_argument("--report", type=pathlib.Path, metavar="FOLDER",
                          help="where report and CSV go; build/soak/KIND-DATE")
    options = parser.parse_args()
    options.program = options.program or ROOT / "build" / "release" / "bin" / "opc"
    if not os.access(options.program, os.X_OK):
        parser.error(f"--program: {options.program} is no program; build it with script/build release opc")
    if options.kind == "real":
        options.seconds = options.seconds or 60.0 * (options.minutes or 60.0 * (options.hours or 1.0 / 3.0))
    options.report = options.report or ROOT / "build" / "soak" / time.strftime(f"{options.kind}-%Y%m%d-%H%M%S")
    return options


def virtual_report(options, folder):
    runs = sorted(soak_virtual.soak(options.program, folder, options, say), key=lambda run: run.channel)
    lines = []
    failures = []
    for run in runs:
        run.watch.write(options.report / f"channel-{run.channel}.csv")
        lines += [run.line()] + ["  " + growth.line() for growth in run.watch.growths()]
        failures += [f"channel {run.channel}: {failure}" for failure in run.failures]
        if run.failures:
            (options.report / run.file.name).write_text(run.file.read_text())
    return lines, failures


def real_report(options, folder):
    soak = soak_real.Soak(options.program, folder, options, say)
    soak.run()
    soak.watch.write(options.report / "samples.csv")
    lines = [growth.line() for growth in soak.growths()]
    lines += [f"{client.name}: {client.turns} turns" for client in soak.clients]
    lines += [f"deadlines without a step: {soak.watcher.missing} of all channels", "", soak.summary]
    return lines, soak.failures


def say(text):
    print(text, file=sys.stderr, flush=True)


def main():
    options = parsed_arguments()
    options.report.mkdir(parents=True, exist_ok=True)
    say(f"script/soak: report in {options.report}")
    with tempfile.TemporaryDirectory(prefix="opc-soak-") as folder:
        lines, failures = (virtual_report if options.kind == "virtual" else real_report)(options, folder)
    settings = ", ".join(f"{name} {value}" for name, value in vars(options).items()
                         if name in ("days", "seconds", "channels", "seed"))
    verdict = "FAILED" if failures else "well"
    report = "\n".join([f"Soak, {options.kind}: {settings}", "", *lines, "", *(f"FAILED: {text}" for text in failures),
                        f"Verdict: {verdict}", ""])
    (options.report / "report.txt").write_text(report)
    print(report, end="")
    return 1 if failures else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, RuntimeError) as error:
        print(f"script/soak: {error}", file=sys.stderr)
        sys.exit(1)
    except KeyboardInterrupt:
        sys.exit(130)
