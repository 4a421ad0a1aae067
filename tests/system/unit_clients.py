"""Every kind of client of a running unit, each in a thread of its own, that checks what it is answered."""

import csv
import http.client
import json
import random
import subprocess
import threading
import time
import urllib.request
import xmlrpc.client

TIMEOUT_S = 60
STATES = {"TX_OFF_INITIATED", "TX_OFF_IN_PROGRESS", "TX_OFF", "TX_ON_INITIATED", "TX_ON_IN_PROGRESS", "TX_ON_RAMPING",
          "TX_ON"}


class WrongAnswer(Exception):
    """A client got what it must not get."""


def expect(condition, what):
    if not condition:
        raise WrongAnswer(what)


class StreamEnded(Exception):
    """The unit has ended a stream, as it does with a reader that took nothing for ten seconds on a busy machine."""


class Client(threading.Thread):
    """Calls turn() until it is told to end. Its trouble is kept, and ends it."""

    pause_s = 0.0
    channels = 2  # of the unit, from 0
    reach_us = 1 << 40  # how far back it asks

    def __init__(self, url, seed):
        super().__init__(name=type(self).__name__)
        self.url = url
        self.port = int(url.rpartition(":")[2])
        self.chance = random.Random(seed)
        self.turns = 0
        self.trouble = None
        self.ended = threading.Event()

    def run(self):
        try:
            while not self.ended.is_set():
                self.turn()
                self.turns += 1
                self.ended.wait(self.pause_s)
        except Exception as error:  # pylint: disable=broad-except: whatever it is, the test has to name it
            if not self.ended.is_set():
                self.trouble = f"{self.name}: {type(error).__name__}: {error}"
        finally:
            self.close()

    def turn(self):
        raise NotImplementedError

    def close(self):
        """Lets go of what turn() keeps."""

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=TIMEOUT_S) as answer:
            return answer.read()

    def some_time_us(self):
        """Returns a time of the run, no earlier than the client reaches back."""
        clock_us = json.loads(self.get("/api/unit"))["clock_us"]
        return self.chance.randrange(max(0, clock_us - self.reach_us), clock_us + 1)

    def call(self, method, *arguments):
        with xmlrpc.client.ServerProxy(self.url + "/RPC2") as proxy:
            return getattr(proxy, method)(*arguments)


class StreamReader(Client):
    """An open page: reads the stream, goes on where it stopped after closing it, and misses no sample."""

    MESSAGES = 100  # until it opens the stream anew

    def __init__(self, url, seed):
        super().__init__(url, seed)
        self.run_name = None
        self.last = None
        self.samples = 0

    def turn(self):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=TIMEOUT_S)
        after = f"?run={self.run_name}&after={self.last}" if self.last is not None else ""
        connection.request("GET", "/api/stream" + after)
        stream = connection.getresponse()
        expect(stream.status == 200, f"the stream answers {stream.status}")
        try:
            for _ in range(self.MESSAGES):
                if self.ended.is_set():
                    return
                self.take(self.message(stream))
        except (StreamEnded, ConnectionError, http.client.HTTPException):
            self.ended.wait(0.1)  # and goes on after the last sample, as the page does
        finally:
            connection.close()

    @staticmethod
    def message(stream):
        fields = {}
        while True:
            line = stream.readline().decode()
            if line == "":
                raise StreamEnded
            if line == "\n":
                return fields
            name, _, value = line.rstrip("\n").partition(":")
            fields[name] = value.strip()

    def take(self, message):
        event = message.get("event")
        data = json.loads(message["data"]) if "data" in message else {}
        if event == "run":
            expect(self.run_name in (None, data["run"]), "the run has changed")
            self.run_name = data["run"]
        elif event == "steps":
            self.take_steps(int(message["id"]), data)

    def take_steps(self, last, data):
        expect(data["gap"] == 0, f"{data['gap']} samples are lost")
        count = sum(len(channel["t_us"]) for channel in data["channels"])
        expect(self.last is None or last - self.last == count, f"{count} samples from {self.last} to {last}")
        for channel in data["channels"]:
            times = channel["t_us"]
            expect(times == sorted(set(times)), "times do not ascend")
            lengths = {len(column) for column in channel.values() if isinstance(column, list) and column is not
                       channel.get("reduced_gain_cdb")}
            expect(lengths == {len(times)}, f"columns of different lengths: {lengths}")
        self.last = last
        self.samples += count


class PageReader(Client):
    """Asks for the page, for the unit and for events."""

    pause_s = 0.1

    def turn(self):
        expect(b"<html" in self.get("/"), "the page is no page")
        unit = json.loads(self.get("/api/unit"))
        expect(len(unit["channels"]) > 0 and unit["replay"] is None, f"a strange unit: {unit}")
        limit = self.chance.randrange(1, 300)
        events = json.loads(self.get(f"/api/events?limit={limit}"))["events"]
        expect(len(events) <= limit, "too many events")
        numbers = [event["id"] for event in events]
        expect(len(set(numbers)) == len(numbers), "an event came twice")


class HistoryReader(Client):
    """Asks for ranges of every length, of what the unit holds and of what is recorded."""

    pause_s = 0.05

    def turn(self):
        begin = self.some_time_us()
        length = self.chance.choice((1, 6000, 1_000_000, 20_000_000, 1 << 40))
        points = self.chance.choice((1, 100, 2000, 100_000))
        channel = self.chance.randrange(self.channels + 1)  # one that is not there, too
        answer = json.loads(self.get(f"/api/history?channel={channel}&from_us={begin}&to_us={begin + length}"
                                     f"&points={points}"))
        expect(answer["source"] in ("ring", "steps", "seconds", "minutes"), f"a strange source: {answer['source']}")
        for found in answer["channels"]:
            times = found["t_us"]
            expect(len(times) <= points, f"{len(times)} points of {points}")
            expect(times == sorted(set(times)), "times do not ascend")
            expect(not times or (begin - 60_000_000 <= times[0] and times[-1] <= begin + length + 60_000_000),
                   "times out of the range")


class MetricsReader(Client):
    """Scrapes, and sees that nothing that counts ever goes back."""

    pause_s = 0.2

    def __init__(self, url, seed):
        super().__init__(url, seed)
        self.counters = {}

    def turn(self):
        names = set()
        for line in self.get("/metrics").decode().splitlines():
            if line.startswith("# TYPE ") and line.endswith((" counter", " histogram")):
                names.add(line.split()[2])
            elif not line.startswith("#"):
                key, _, value = line.rpartition(" ")
                name = key.partition("{")[0]
                if any(name in (counter, counter + "_bucket", counter + "_count") for counter in names):
                    expect(float(value) >= self.counters.get(key, 0.0), f"{key} went back to {value}")
                    self.counters[key] = float(value)


class LogReader(Client):
    """A test tool: lets both logs record, reads and empties them."""

    def turn(self):
        channel = self.chance.randrange(self.channels)
        log = {"LogName": f"Channel.{channel}.TxOutputPowerControlLog"}
        transient = {"RadioChannelID": channel}
        option = self.chance.choice(("Enable", "Read", "Read", "Disable", "SaveToSysLog"))
        try:
            answer = self.call("TI.ManageOPCTransientLog", {**transient, "RequestOption": option})
            if option == "Read":
                expect(answer["RadioChannelID"] == channel and len(answer["OPCLog"]) > 0, "a strange transient log")
        except xmlrpc.client.Fault as fault:
            expect("can not read empty log" in fault.faultString, fault.faultString)
        option = self.chance.choice(("Start", "Read", "ReadAndReset", "Stop"))
        answer = self.call("TI.ManageLogs", {**log, "RequestOption": option})
        if option.startswith("Read"):
            expect(len(next(iter(answer.values())) if isinstance(answer, dict) else answer) == 12, "a strange OPC log")


class Commander(Client):
    """Wants whatever a client may want, at random; commands() are all its kinds."""

    def turn(self):
        method, arguments = self.chance.choice(self.commands())
        self.call(method, arguments)
        for channel in self.call("Unit.Status")["Channels"]:
            expect(channel["State"] in STATES, f"a strange state: {channel['State']}")

    def commands(self):
        chance = self.chance
        channel = {"RadioChannelID": chance.randrange(self.channels)}
        operation = chance.choice(("getPmeasured", "setOutputPower", "setTxState", "calculateDetectorUsage"))
        fault = chance.choice(({"Kind": "fail-times", "Times": chance.randrange(1, 20)},
                               {"Kind": "intermittent", "Probability": 0.2}, {"Kind": "none"}, {"Kind": "none"}))
        return (
            ("Unit.SetRequestedPower", {**channel, "PowerDbm": round(chance.uniform(-12.0, 32.0), 2)}),
            ("Unit.SetRequestedPower", {**channel, "Source": "unit-file"}),
            ("Unit.SetTxPower", {**channel, "State": chance.choice(("on", "off"))}),
            ("Unit.SetTxPower", {**channel, "State": "on"}),
            ("Unit.SetPowerMode", {**channel, "PowerMode": chance.randrange(3)}),
            ("Unit.SetFrequency", {**channel, "FrequencyMhz": round(chance.uniform(4900.0, 5100.0), 3)}),
            ("Unit.SetTemperature", {"TemperatureC": round(chance.uniform(-40.0, 70.0), 2)}),
            ("Unit.SetGain", {**channel, "State": chance.choice(("ramping", "on")),
                              "GainPercent": chance.randrange(5, 60)}),
            ("Unit.SetLimits", {**channel, "TxPminDbm": chance.choice((-10.0, -5.0)), "TxPmaxDbm": 30.0}),
            ("Unit.SetInterval", {"IntervalMs": chance.choice((6, 8, 12))}),
            ("Unit.SetFault", {**channel, "Operation": operation, **fault}),
            ("Unit.SetTraceLevel", {"Group": "RQX.OPC", "Level": chance.choice((0, 1, 4))}),
        )


class CtlUser(Client):
    """Somebody who types opc ctl."""

    COMMANDS = (("status", "--json"), ("gain",), ("fault", "list"), ("trace", "level"), ("power", "12.5"),
                ("tx", "on", "--channel", "1"), ("log", "opc", "start"), ("log", "opc", "read"))

    def __init__(self, url, seed, program):
        super().__init__(url, seed)
        self.program = program

    def turn(self):
        arguments = self.chance.choice(self.COMMANDS)
        result = subprocess.run([self.program, "ctl", "--unit", self.url, *arguments], stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        expect(result.returncode == 0, f"{arguments}: {result.returncode}: {result.stderr}")


class Exporter(Client):
    """Exports the end of the recording while it grows."""

    pause_s = 0.5

    def __init__(self, url, seed, program, file):
        super().__init__(url, seed)
        self.program = program
        self.file = file
        self.rows = 0

    def turn(self):
        what = self.chance.choice((("--resolution", "steps"), ("--resolution", "seconds"), ("--events",)))
        begin_s = f"{self.some_time_us() / 1e6:.6f}"
        result = subprocess.run([self.program, "export", str(self.file), "--from", begin_s, *what],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        if self.rows == 0 and "has no run yet" in result.stderr:
            return
        expect(result.returncode == 0, f"{what}: {result.returncode}: {result.stderr}")
        times = [float(row["time_s"]) for row in csv.DictReader(result.stdout.splitlines())]
        expect(times == sorted(times), "exported times do not ascend")
        self.rows = max(self.rows, len(times))


def run_clients(clients, seconds, tick=None):
    """Lets clients do what they do for a time, or until one is in trouble. Returns the troubles."""
    end = time.monotonic() + seconds
    for client in clients:
        client.start()
    while time.monotonic() < end and not any(client.trouble for client in clients):
        time.sleep(0.1)
        if tick:
            tick()
    for client in clients:
        client.ended.set()
    for client in clients:
        client.join(TIMEOUT_S)
    return [client.trouble for client in clients if client.trouble] + [
        f"{client.name} hangs" for client in clients if client.is_alive()]
