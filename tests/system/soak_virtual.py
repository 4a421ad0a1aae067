"""Soaks channels in virtual time: weeks of random requests, drives and faults in minutes."""

import json
import pathlib
import random
import subprocess
import time

from soak_watch import Watch

DAY_S = 86400.0
EVENTS_PER_DAY = 600
FAULTS_PER_DAY = 40
INTERVAL_S = 0.006
FAULTY = ("getPmeasured", "setOutputPower", "setTxState", "calculateDetectorUsage", "setZembraMlmTrafTx",
          "getReducedGainFromAmplifier")
SAMPLE_S = 0.5

# Whatever happens: nothing is radiated while off nor above what is allowed, and no call is made out of its turn.
EXPECTED = {"radiating_off_s": 0, "spurious_steps": 0, "refused_calls": 0}


def event_of(chance):
    """Returns a random event without its time, as lines."""
    kind = chance.randrange(100)
    if kind < 46:
        return [f"requested_power_dbm = {chance.uniform(-8.0, 24.0):.2f}"]
    if kind < 62:
        return ['request = "off"']
    if kind < 82:
        return ['request = "on"']
    if kind < 88:
        return [f"frequency_mhz = {chance.uniform(4800.0, 5200.0):.3f}"]
    if kind < 91:
        return [f"temperature_c = {chance.uniform(-33.0, 55.0):.2f}", f"over_s = {chance.uniform(300.0, 900.0):.1f}"]
    if kind < 96:
        return [f"power_mode = {chance.randrange(2)}"]
    return [f"gain_percent_on = {chance.randrange(10, 30)}"]


def events_text(chance, duration_s):
    """Events that follow each other; one that takes time is over before the next begins or the run ends."""
    text = []
    now = 0.0
    while True:
        lines = event_of(chance)
        over = next((float(line.split("= ")[1]) for line in lines if line.startswith("over_s")), 0.0)
        if now + over >= duration_s - 1.0:
            return "\n".join(text)
        text.append(f"\n[[event]]\nat_s = {now:.3f}\n" + "\n".join(lines if text else ['request = "on"']))
        now += over + chance.expovariate(EVENTS_PER_DAY / DAY_S) + 0.05


def faults_text(chance, duration_s):
    text = []
    free = dict.fromkeys(FAULTY, 0.0)  # from when on an operation has no fault
    now = 0.0
    while True:
        now += chance.expovariate(FAULTS_PER_DAY / DAY_S)
        operation = chance.choice(FAULTY)
        begin = max(now, free[operation] + 1.0)
        lasts = min(chance.expovariate(1.0 / 5.0) + 0.01, 30.0)
        if begin + lasts >= duration_s:
            return "\n".join(text)
        kind = chance.choice(('kind = "fail"', f'kind = "fail-times"\ntimes = {chance.randrange(1, 50)}',
                              f'kind = "intermittent"\nprobability = {chance.uniform(0.05, 0.9):.2f}',
                              f'kind = "slow"\ndelay_us = {chance.randrange(100, 20000)}'))
        text.append(f'\n[[fault]]\nat_s = {begin:.3f}\nfor_s = {lasts:.3f}\noperation = "{operation}"\n{kind}')
        free[operation] = begin + lasts


def scenario_text(seed, channel, days):
    """Returns the scenario of a channel; the same seed gives the same."""
    chance = random.Random(f"{seed}/{channel}")
    duration_s = days * DAY_S
    expected = "\n".join(f"{name} = {value}" for name, value in EXPECTED.items())
    return (f'title = "Soak: channel {channel} of seed {seed}, {days:g} days"\nduration_s = {duration_s:.3f}\n'
            f"seed = {chance.randrange(1 << 31)}\n\n[expect]\n{expected}\n"
            + events_text(chance, duration_s) + "\n" + faults_text(chance, duration_s) + "\n")


class Run:
    """The run of a channel, under watch."""

    def __init__(self, program, folder, seed, channel, days):
        self.channel = channel
        self.days = days
        self.file = pathlib.Path(folder) / f"channel-{channel}.toml"
        self.file.write_text(scenario_text(seed, channel, days), encoding="utf-8")
        self._output = (pathlib.Path(folder) / f"channel-{channel}.json").open("w+", encoding="utf-8")
        self._errors = (pathlib.Path(folder) / f"channel-{channel}.err").open("w+", encoding="utf-8")
        self.process = subprocess.Popen([str(program), "simulate", str(self.file), "--json"], stdin=subprocess.DEVNULL,
                                        stdout=self._output, stderr=self._errors)
        self.watch = Watch(self.process.pid)
        self.begin = time.monotonic()
        self.seconds = 0.0
        self.measures = {}
        self.failures = []

    def poll(self):
        """Takes a sample. Returns whether the run goes on."""
        if self.process.poll() is None:
            self.watch.sample()
            return True
        self.seconds = time.monotonic() - self.begin
        self._judge()
        return False

    def _judge(self):
        self._output.seek(0)
        self._errors.seek(0)
        errors = self._errors.read()
        text = self._output.read()
        self._output.close()
        self._errors.close()
        try:
            self.measures = json.loads(text)["measures"]
        except (ValueError, KeyError) as error:
            self.failures.append(f"no measures ({error}); exit code {self.process.returncode}: {errors.strip()[-500:]}")
            return
        for name, value in EXPECTED.items():
            if self.measures.get(name) != value:
                self.failures.append(f"{name} is {self.measures.get(name)} and has to be {value}")
        if self.measures.get("safety_violations"):
            self.failures.append(f"{self.measures['safety_violations']} safety rules were broken: {errors.strip()[-2000:]}")
        deadlines = round(self.days * DAY_S / INTERVAL_S)
        taken = self.measures["steps"] + self.measures["overruns"]
        if abs(taken - deadlines) > 1:
            self.failures.append(f"{taken} steps and skipped deadlines, where there were {deadlines}")
        if self.process.returncode != 0 and not self.failures:
            self.failures.append(f"exit code {self.process.returncode}: {errors.strip()[-500:]}")
        self.failures += [f"{growth.name} grows: {growth.line()}" for growth in self.watch.growths() if growth.grows]

    def stop(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()

    def line(self):
        most = max((row["rss_kib"] for row in self.watch.rows), default=0)
        figures = ", ".join(f"{name} {self.measures.get(name)}" for name in
                            ("steps", "failed_steps", "overruns", "switch_ons", "switch_offs", "jumps"))
        return f"channel {self.channel}: {self.seconds:.1f} s, at most {most} KiB; {figures}"


def soak(program, folder, options, say):
    """Runs all channels, some at a time. Returns the runs."""
    waiting = list(range(options.channels))
    running, done = [], []
    try:
        told = time.monotonic()
        while waiting or running:
            while waiting and len(running) < options.jobs:
                running.append(Run(program, folder, options.seed, waiting.pop(0), options.days))
            time.sleep(SAMPLE_S if options.days > 1 else 0.05)
            for run in [run for run in running if not run.poll()]:
                running.remove(run)
                done.append(run)
                say(run.line() + ("" if not run.failures else "  FAILED"))
            if time.monotonic() - told >= 10.0:
                told = time.monotonic()
                say(f"{len(done)} of {options.channels} channels done, {len(running)} running")
    finally:
        for run in running:
            run.stop()
    return done
