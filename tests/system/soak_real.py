"""Soaks a running unit in real time: clients, random commands and faults, and what the unit uses meanwhile."""

import pathlib
import re
import signal
import subprocess
import threading
import time
import urllib.error
import urllib.request

import unit_clients
from soak_watch import Watch

SAMPLE_S = 1.0
FEED_S = 60.0  # the unit fills its memory of the latest steps for so long
MARGIN_CDB = 2000  # that production test has beyond the limits of the control power
LIMITS_CDB = (-1000, 3000)

# What a step may make of a state: the machine's arrows, and what a request between two steps adds.
NEXT = {2: {2, 5, 6}, 5: {5, 6}, 6: {6, 7}, 7: {7, 8}, 8: {8, 0, 1}, 0: {0, 1}, 1: {1, 2}}

UNIT = """
[unit]
interval_ms = 6
realtime_priority = {priority}
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
[trace]
default = 0
system_log = false
[test_interface]
port = 0
[recorder]
steps_hours = 0.02
max_mb = 64
"""


class Commander(unit_clients.Commander):
    """Commands a few times a second, at the interval that the unit began with."""

    pause_s = 0.2

    def commands(self):
        return [command for command in super().commands()
                if command[0] not in ("Unit.SetInterval", "Unit.SetTraceLevel")]


class LogReader(unit_clients.LogReader):
    pause_s = 0.3


class Watcher(unit_clients.StreamReader):
    """Looks at every step: states follow the machine, powers stay within what is allowed, no step is missing."""

    def __init__(self, url, seed):
        super().__init__(url, seed)
        self.states = {}
        self.times = {}
        self.missing = 0  # deadlines without a step

    def take_steps(self, last, data):
        super().take_steps(last, data)
        for channel in data["channels"]:
            self._look_at(channel)

    def _look_at(self, channel):
        number = channel["c"]
        for time_us, state, power in zip(channel["t_us"], channel["state"], channel["pctrl_cdb"]):
            before = self.states.get(number)
            if before is not None:
                step_us = time_us - self.times[number]
                unit_clients.expect(step_us > 0 and step_us % 6000 == 0, f"channel {number}: a step after {step_us} us")
                self.missing += step_us // 6000 - 1
                unit_clients.expect(state in NEXT[before] or step_us > 6000 and state in NEXT,
                                    f"channel {number}: state {before} became {state} at {time_us} us")
            unit_clients.expect(power is None or LIMITS_CDB[0] - MARGIN_CDB <= power <= LIMITS_CDB[1] + MARGIN_CDB,
                                f"channel {number}: {power} at {time_us} us is beyond every limit")
            self.states[number] = state
            self.times[number] = time_us


def metrics_of(url):
    """Returns the values of a scrape by their names and labels."""
    with urllib.request.urlopen(url + "/metrics", timeout=unit_clients.TIMEOUT_S) as answer:
        lines = answer.read().decode().splitlines()
    return {key: float(value) for key, _, value in (line.rpartition(" ") for line in lines if not line.startswith("#"))}


def monitor_option(program):
    """Has a program that can do so judge every call of its controllers by the safety rules."""
    help_text = subprocess.run([str(program), "run", "--help"], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               check=False).stdout
    return ["--safety-monitor"] if "--safety-monitor" in help_text else []


class Unit:
    """A running unit with a file of its own in a folder."""

    def __init__(self, program, folder, channels, priority):
        folder = pathlib.Path(folder)
        self.file = folder / "unit.toml"
        powers = "".join(f"\n[[channel]]\nnumber = {number}\nrequested_power_dbm = {5 + number}\n"
                         for number in range(channels))
        self.file.write_text(UNIT.format(priority=priority) + powers, encoding="utf-8")
        self.recording = folder / "unit.db"
        self._errors = (folder / "unit.err").open("w+", encoding="utf-8")
        self.process = subprocess.Popen([str(program), "run", str(self.file), "--record", str(self.recording),
                                         *monitor_option(program)],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=self._errors, text=True)
        self.lines = []
        self.url = None
        self._told = threading.Event()
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        if not self._told.wait(unit_clients.TIMEOUT_S) or self.url is None:
            self.stop()
            raise RuntimeError("the unit does not start: " + self.errors())

    def _read(self):
        summary = False
        for line in self.process.stdout:
            found = re.search(r"test interface: (http://\S+)/RPC2", line)
            if found:
                self.url = found.group(1)
                self._told.set()
            summary = summary or line.startswith("Summary")
            if summary:
                self.lines.append(line)
        self._told.set()
        self.process.stdout.close()

    def stop(self):
        """Stops the unit. Returns its exit code."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(unit_clients.TIMEOUT_S)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self._reader.join()
        return self.process.returncode

    def errors(self):
        self._errors.seek(0)
        return self._errors.read()[-2000:]


class Soak:
    """A run of a unit with its clients."""

    def __init__(self, program, folder, options, say):
        self._options = options
        self._say = say
        self.failures = []
        self.summary = ""
        self.unit = Unit(program, folder, options.channels, options.priority)
        self.watch = Watch(self.unit.process.pid)
        self.clients = self._clients(program)
        self.watcher = self.clients[0]
        self.last = {}
        self._told = self._sampled = self._begin = time.monotonic()

    def _clients(self, program):
        url, seed = self.unit.url, self._options.seed
        kinds = (Watcher, unit_clients.StreamReader, unit_clients.PageReader, unit_clients.HistoryReader, LogReader,
                 unit_clients.MetricsReader, Commander, Commander)
        clients = [kind(url, f"{seed}/{number}") for number, kind in enumerate(kinds)]
        clients.append(unit_clients.Exporter(url, f"{seed}/export", program, self.unit.recording))
        for client in clients:
            client.channels = self._options.channels
        clients[-1].pause_s = 10.0
        clients[3].pause_s = 1.0
        clients[2].pause_s = clients[5].pause_s = 1.0
        return clients

    def run(self):
        """Carries it out, to its end or to the first trouble."""
        troubles = unit_clients.run_clients(self.clients, self._options.seconds, self._tick)
        if self.unit.process.poll() is not None:
            troubles.append(f"the unit has ended with {self.unit.process.returncode}")
        code = self.unit.stop()
        self.summary = "".join(self.unit.lines)
        self.failures += troubles
        if code != 0:
            self.failures.append(f"the unit's exit code is {code}: {self.unit.errors()}")
        self._judge()

    def _tick(self):
        now = time.monotonic()
        if now - self._sampled < SAMPLE_S:
            return
        self._sampled = now
        try:
            self.last = metrics_of(self.unit.url)
        except (OSError, urllib.error.URLError) as error:
            self.failures.append(f"no metrics: {error}")
            return
        self.watch.sample(**self._figures())
        if now - self._told >= 10.0:
            self._told = now
            row = self.watch.rows[-1]
            self._say(f"{now - self._begin:6.0f} s of {self._options.seconds:.0f}: {row['rss_kib']} KiB, {row['descriptors']} "
                      f"descriptors, {row['threads']} threads, {row['overruns']:.0f} deadlines skipped")

    def _figures(self):
        def value(name):
            return self.last.get(name, 0.0)

        count = value("opc_lateness_seconds_count")
        return {"deadlines": count, "overruns": value("opc_overruns_total"),
                "late_over_5ms": count - value('opc_lateness_seconds_bucket{le="0.005"}'),
                "commands": value("opc_commands_total"),
                "longest_command_s": value("opc_longest_command_seconds"),
                "dropped": value("opc_samples_dropped_total")}

    def _judge(self):
        options = self._options
        if not self.watch.rows:
            self.failures.append("no sample was taken")
            return
        last = self.watch.rows[-1]
        skipped = last["overruns"] / max(last["deadlines"] + last["overruns"], 1.0)
        if skipped > options.overrun_share:
            self.failures.append(f"{100 * skipped:.3f} % of the deadlines were skipped; {100 * options.overrun_share:g} % "
                                 "are allowed")
        if last["dropped"] > 0:
            self.failures.append(f"{last['dropped']:.0f} samples were dropped")
        self.failures += [f"{growth.name} grows: {growth.line()}" for growth in self.growths() if growth.grows]
        idle = [client.name for client in self.clients if client.turns == 0 and getattr(client, "samples", 0) == 0]
        if idle:
            self.failures.append(f"never answered: {', '.join(idle)}")

    def growths(self):
        """What fills up in the first minute is no leak; a run that is hardly longer is judged with that in mind."""
        if self._options.seconds >= 4 * FEED_S:
            return self.watch.growths(1.5 * FEED_S)
        filling = 64 * 1024
        return self.watch.growths(0.0, {"rss_kib": filling, "anon_kib": filling, "descriptors": 16, "threads": 16})
