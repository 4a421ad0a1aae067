"""How late the steps of running units are, and what the units cost, with and without a busy test client.

The result goes to standard output as Markdown, progress to standard error. Run it as root for real-time priority.
"""

import argparse
import contextlib
import dataclasses
import http.client
import json
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time

from common import machine
from common.markdown import replace_in, table

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
CASES = ((1, 1), (1, 4), (1, 10), (25, 10))  # units, channels of each
SETTLE_S = 2.0  # until every channel is on
FILL_S = 1.5  # until a transient log has its 200 samples
READ = ("<?xml version='1.0'?><methodCall><methodName>TI.ManageOPCTransientLog</methodName><params><param><value>"
        "<struct><member><name>RequestOption</name><value><string>{}</string></value></member></struct></value></param>"
        "</params></methodCall>")
MODULES = """
[[module]]
name = "TemperatureHandler"
library = "libTemperatureHandler.so"
scope = "unit"
[[module]]
name = "FrequencyHandler"
library = "libFrequencyHandler.so"
[[module]]
name = "OutputPowerHandler"
library = "libOutputPowerHandler.so"
[[module]]
name = "OutputPowerController"
library = "libOutputPowerController.so"
"""


@dataclasses.dataclass
class Result:
    units: int
    channels: int
    client: bool
    cores: float  # of one core, all units together
    requests: float  # in a second
    overruns: int
    lateness: dict  # of the unit that fared worst in each, milliseconds


class Unit:
    """A running unit."""

    def __init__(self, program, folder, number, channels, priority):
        self.file = folder / f"unit{number}.toml"
        self.file.write_text(unit_file(channels, priority), encoding="utf-8")
        self.process = subprocess.Popen([program, "run", self.file], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        text=True)
        self.port = self._read_port()
        self.lines = []
        self.reader = threading.Thread(target=lambda: self.lines.extend(self.process.stdout), daemon=True)
        self.reader.start()

    def _read_port(self):
        for line in self.process.stdout:
            if found := re.match(r"test interface: http://\S+:(\d+)/", line):
                return int(found.group(1))
        raise SystemExit(f"the unit did not start: {self.process.stderr.read()}")

    def cpu_seconds(self):
        """What all its threads have used."""
        return sum(int((task / "schedstat").read_text(encoding="ascii").split()[0])
                   for task in pathlib.Path(f"/proc/{self.process.pid}/task").iterdir()) / 1e9

    def end(self):
        """Stops it. Returns its summary."""
        self.process.send_signal(signal.SIGTERM)
        errors = self.process.stderr.read()
        if self.process.wait(timeout=60) != 0:
            raise SystemExit(f"a unit failed: {errors}")
        self.reader.join()
        return "".join(self.lines).rpartition("Summary\n")[2]


class BusyClient:
    """Reads a full transient log of a unit again and again, on one connection."""

    def __init__(self, port):
        self.connection = http.client.HTTPConnection("127.0.0.1", port)
        self.requests = 0
        self.stopped = threading.Event()
        self.trouble = None
        self._call("Enable")
        time.sleep(FILL_S)
        self.thread = threading.Thread(target=self._work)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.stopped.set()
        self.thread.join()
        self.connection.close()

    def stop(self):
        """Ends the requests. Returns how many there were."""
        self.stopped.set()
        self.thread.join()
        if self.trouble:
            raise SystemExit(f"the busy client stopped: {self.trouble}")
        return self.requests

    def _work(self):
        try:
            while not self.stopped.is_set():
                self._call("Read")
                self.requests += 1
        except (OSError, http.client.HTTPException, RuntimeError) as error:
            self.trouble = error

    def _call(self, option):
        self.connection.request("POST", "/RPC2", READ.format(option), {"Content-Type": "text/xml"})
        response = self.connection.getresponse()
        if response.status != 200 or b"<fault>" in response.read():
            raise RuntimeError(f"the test interface refused {option}")


def unit_file(channels, priority):
    numbered = "".join(f"[[channel]]\nnumber = {channel}\nrequested_power_dbm = 12.0\n" for channel in range(channels))
    return (f"[unit]\ninterval_ms = 6\nrealtime_priority = {priority}\n{MODULES}[trace]\ndefault = 0\n"
            f"system_log = false\n[test_interface]\nport = 0\n{numbered}")


def measure(program, units, channels, client, options):
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        running = []
        for number in range(units):
            running.append(Unit(program, folder, number, channels, options.priority))
            stack.callback(running[-1].process.kill)
        time.sleep(SETTLE_S)
        busy = stack.enter_context(BusyClient(running[0].port)) if client else None
        before, began = [unit.cpu_seconds() for unit in running], time.monotonic()
        time.sleep(options.seconds)
        used, seconds = [unit.cpu_seconds() for unit in running], time.monotonic() - began
        requests = busy.stop() / seconds if busy else 0.0
        summaries = [unit.end() for unit in running]
    return Result(units, channels, client, (sum(used) - sum(before)) / seconds, requests,
                  sum(int(re.search(r"overruns +(\d+)", text).group(1)) for text in summaries),
                  {name: max(lateness_of(text)[name] for text in summaries) for name in lateness_of(summaries[0])})


def lateness_of(summary):
    line = re.search(r"lateness +(.*)", summary).group(1)
    return {name: float(value) for name, value in re.findall(r"(50 %|99 %|99\.9 %|max) ([\d.]+) ms", line)}


def markdown(results, facts, options):
    rows = [(result.units, result.channels, f"{result.requests:.0f}" if result.client else "",
             *(f"{result.lateness[name]:.3f}" for name in ("50 %", "99 %", "99.9 %", "max")), result.overruns,
             f"{result.cores * 100:.2f} %") for result in results]
    head = ("units", "channels of each", "requests/s of a test client", "lateness p50, ms", "p99", "p99.9", "worst",
            "deadlines skipped", "CPU of all, of one core")
    told = "\n".join(f"- {label}: {text}" for label, text in facts.items())
    priority = f"real-time priority {options.priority}" if options.priority else "no real-time priority"
    return f"{table(head, rows, numbers_from=0)}\n\n{options.seconds:g} s each, with {priority}.\n\n{told}"


def parsed(arguments):
    parser = argparse.ArgumentParser(prog="script/benchmark unit-load", description=__doc__)
    parser.add_argument("--seconds", type=float, default=20.0, help="how long each case runs (20)")
    parser.add_argument("--json", type=pathlib.Path, help="a file for everything that was measured")
    parser.add_argument("--into", type=pathlib.Path, help="a document whose figures to replace")
    parser.add_argument("--priority", type=int, default=0, help="real-time priority of the regulation, 0 to 99 (0)")
    return parser.parse_args(arguments)


def main(arguments):
    options = parsed(arguments)
    build = ROOT / "build/release"
    facts = machine.facts(build)
    results = []
    for units, channels in CASES:
        for client in (False, True):
            print(f"{units} x {channels} channels, {'a busy client' if client else 'idle'}", file=sys.stderr)
            results.append(measure(build / "bin/opc", units, channels, client, options))
    text = markdown(results, facts, options)
    if options.json:
        measured = {"machine": facts, "results": [dataclasses.asdict(result) for result in results]}
        options.json.write_text(json.dumps(measured, indent=2) + "\n", encoding="utf-8")
    if options.into:
        replace_in(options.into, "unit-load", text)
    print(text)


if __name__ == "__main__":
    main(sys.argv[1:])
