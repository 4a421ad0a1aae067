#!/usr/bin/env python3
"""Compares the unit's test interface with two other XML-RPC servers and tells where its time goes."""

import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time
import xmlrpc.client

import report
from common import machine
from common.markdown import replace_in
from servers import METHOD, ROOT, Unit, peers

CONNECTIONS = (1, 4)
IDLE_S = 2.0
# Calls with small answers: one is served by its connection's thread, one by the regulation thread between two steps.
SMALL_CALLS = ("system.listMethods", "Unit.Faults")


def progress(text):
    print(text, file=sys.stderr, flush=True)


class Comparison:
    def __init__(self, arguments, folder):
        self._programs = arguments.build.resolve() / "bin"
        self._arguments = arguments
        self._folder = folder
        self._samples = folder / "samples.txt"
        self._loads = {}  # by (server, connections, call): one result per round
        self._status = []
        self._idle_cpu = []
        self._parts = {}

    def run(self):
        for number in range(1, self._arguments.rounds + 1):
            progress(f"round {number} of {self._arguments.rounds}")
            self._load_unit()
            for name, start in peers(self._programs, self._samples).items():
                self._load_server(name, start())
        progress("parts of a call")
        self._measure_parts()
        return {
            "loads": [dict(server=server, call=call, **medians(results), rounds=results)
                      for (server, _, call), results in self._loads.items()],
            "unit_status": self._status,
            "unit_idle_cpu_per_s": statistics.median(self._idle_cpu),
            "parts_us": self._parts,
        }

    def _load_unit(self):
        arguments = self._arguments
        loads = len(CONNECTIONS) + len(SMALL_CALLS)
        unit = Unit(self._programs, 30 + loads * (arguments.seconds + arguments.warm_up + 1))
        try:
            samples = unit.record_samples()
            self._samples.write_text("".join(" ".join(map(str, sample)) + "\n" for sample in samples), encoding="ascii")
            self._idle_cpu.append(machine.processor_seconds_per_second(unit.pid, IDLE_S))
            status = {"idle": unit.status()}
            for connections in CONNECTIONS:
                self._load("unit", unit, connections)
                status[str(connections)] = unit.status()
            self._status.append(status)
            for call in SMALL_CALLS:
                self._load("unit", unit, 1, call)
        finally:
            unit.stop()

    def _load_server(self, name, server):
        try:
            for connections in CONNECTIONS:
                self._load(name, server, connections)
        finally:
            server.stop()

    def _load(self, name, server, connections, call=METHOD):
        body = self._folder / "request.xml"
        parameters = ({"RequestOption": "Read"},) if call == METHOD else ()
        body.write_text(xmlrpc.client.dumps(parameters, call), encoding="utf-8")
        command = [self._programs / "load_generator", "--port", str(server.port), "--pid", str(server.pid),
                   "--body", body, "--connections", str(connections), "--seconds", str(self._arguments.seconds),
                   "--warm-up", str(self._arguments.warm_up)]
        if call == METHOD:
            command += ["--samples", self._samples]
        result = json.loads(subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout)
        progress(f"  {name}, {call}, {connections} connection{'s' * (connections > 1)}: "
                 f"{result['requests_per_s']:.0f} requests/s, {result['server_cpu_us']:.0f} us of CPU each")
        self._loads.setdefault((name, connections, call), []).append(result)

    def _measure_parts(self):
        command = [self._programs / "test_interface_parts", self._samples, "--benchmark_format=json",
                   "--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
                   "--benchmark_min_time=0.2"]
        output = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE).stdout
        for part in json.loads(output)["benchmarks"]:
            name, _, manual = part["name"].partition("/")
            if part.get("aggregate_name") == "median":
                name = name.removesuffix("_median")
                # A part that is timed by itself has its processor time as "real" time.
                self._parts[name] = part["real_time" if manual else "cpu_time"] / 1000
                if "bytes" in part:
                    self._parts["bytes"] = part["bytes"]


def medians(results):
    return {name: statistics.median(result[name] for result in results) for name in results[0]}


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "benchmark", metavar="FOLDER",
                        help="where the programs were built; build/benchmark when left out")
    parser.add_argument("--rounds", type=int, default=3, metavar="N", help="how often each server is loaded; 3")
    parser.add_argument("--seconds", type=float, default=5.0, metavar="S", help="how long each time; 5")
    parser.add_argument("--warm-up", type=float, default=1.0, metavar="S", help="load before that, not counted; 1")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE",
                        help="where everything measured goes; test_interface.json in the build folder when left out")
    parser.add_argument("--read", type=pathlib.Path, metavar="FILE", help="measure nothing: report this JSON file")
    parser.add_argument("--into", type=pathlib.Path, metavar="FILE",
                        help="replace what this Markdown file holds between the two marks of the measurement")
    return parser.parse_args()


def measure(arguments):
    """Measures, writes everything into the JSON file and returns it."""
    settings = {"date": time.strftime("%Y-%m-%d"), "rounds": arguments.rounds, "seconds": arguments.seconds,
                "warm_up": arguments.warm_up}
    facts = machine.facts(arguments.build)
    with tempfile.TemporaryDirectory(prefix="opc-benchmark-") as folder:
        measured = Comparison(arguments, pathlib.Path(folder)).run()
    text = json.dumps({"settings": settings, "machine": facts, **measured}, indent=1)
    (arguments.json or arguments.build / "test_interface.json").write_text(text + "\n", encoding="utf-8")
    return json.loads(text)


def main():
    arguments = parse_arguments()
    measured = json.loads(arguments.read.read_text(encoding="utf-8")) if arguments.read else measure(arguments)
    text = report.markdown(measured)
    print(text)
    if arguments.into:
        replace_in(arguments.into, "test-interface", text)


if __name__ == "__main__":
    try:
        main()
    except (OSError, RuntimeError, subprocess.SubprocessError) as error:
        sys.exit(f"compare.py: {error}")
