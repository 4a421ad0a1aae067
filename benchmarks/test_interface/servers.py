"""The servers that are compared, each started for a round of load and stopped after it."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import xmlrpc.client

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
METHOD = "TI.ManageOPCTransientLog"
SAMPLES = 200
INTERVAL_S = 0.006
MEMBERS = ("TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain")
START_TIMEOUT_S = 20
STOP_TIMEOUT_S = 10
ADDRESS = re.compile(r"http://127\.0\.0\.1:(\d+)/RPC2")


class Server:
    """A server's process; the address is what it prints."""

    def __init__(self, command):
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        self.pid = self._process.pid
        self.port = None
        self._listens = threading.Event()
        self._reader = threading.Thread(target=self._read_output, daemon=True)
        self._reader.start()
        if not self._listens.wait(START_TIMEOUT_S) or self.port is None:
            Server.stop(self)
            raise RuntimeError(f"{command[0]} did not say where it listens")

    def _read_output(self):
        """Takes everything that the server prints, so that it never waits for a reader."""
        for line in self._process.stdout:
            address = ADDRESS.search(line)
            if address and self.port is None:
                self.port = int(address.group(1))
                self._listens.set()
        self._listens.set()

    def proxy(self):
        return xmlrpc.client.ServerProxy(f"http://127.0.0.1:{self.port}/RPC2")

    def stop(self):
        self._process.terminate()
        try:
            self._process.wait(STOP_TIMEOUT_S)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._reader.join()
        self._process.stdout.close()


class Unit(Server):
    """The example unit with its two channels, at a port of its own."""

    def __init__(self, programs, duration_s):
        self._folder = tempfile.TemporaryDirectory(prefix="opc-benchmark-")
        examples = pathlib.Path(self._folder.name) / "examples"
        shutil.copytree(ROOT / "examples", examples)
        unit_file = examples / "unit.toml"
        text, count = re.subn(r"(?m)^port = \d+", "port = 0", unit_file.read_text(encoding="utf-8"))
        if count != 1:
            raise RuntimeError("examples/unit.toml has no port to replace")
        unit_file.write_text(text, encoding="utf-8")
        super().__init__([programs / "opc", "run", unit_file, "--duration", str(duration_s)])

    def record_samples(self):
        """Records 200 samples, stops the recording so that each Read gives the same, and returns them."""
        method = getattr(self.proxy(), METHOD)
        method({"RequestOption": "Enable"})
        deadline = time.monotonic() + START_TIMEOUT_S
        samples = []
        while len(samples) < SAMPLES:
            if time.monotonic() > deadline:
                raise RuntimeError(f"the log holds {len(samples)} samples instead of {SAMPLES}; are the steps late?")
            time.sleep(SAMPLES * INTERVAL_S / 2)
            samples = method({"RequestOption": "Read"})["OPCLog"]
        method({"RequestOption": "Disable"})
        return [[sample[member] for member in MEMBERS] for sample in samples]

    def status(self):
        """Returns the unit's status, after a check that its channels are on."""
        status = self.proxy().Unit.Status({})
        states = [channel["State"] for channel in status["Channels"]]
        if states != ["TX_ON", "TX_ON"]:
            raise RuntimeError(f"the two channels are not on but {states}")
        return status

    def stop(self):
        super().stop()
        self._folder.cleanup()


def peers(programs, samples_file):
    """Returns the start of each server that answers with the same value, by name."""
    return {
        "abyss": lambda: Server([programs / "abyss_peer", samples_file]),
        "python": lambda: Server([sys.executable, HERE / "peers" / "python_peer.py", samples_file]),
    }
