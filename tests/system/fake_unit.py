"""A unit's test interface made with Python's own XML-RPC server, and servers that misbehave."""

import contextlib
import pathlib
import socket
import socketserver
import subprocess
import tempfile
import threading
import unittest
import xmlrpc.server
from http.server import BaseHTTPRequestHandler, HTTPServer

from unit_runner import PROGRAM, TIMEOUT_S

OK = {"StandardResponse": "OK"}

CHANNELS = [
    {"RadioChannelID": 0, "State": "TX_ON", "TxPower": "on", "PowerMode": 1, "RequestedPowerDbm": 40.0,
     "RequestedPowerSource": "profile", "TargetPowerDbm": 40.25, "ControlPowerDbm": 39.5, "MeasuredPowerDbm": 40.125,
     "PredictedPowerDbm": 40.2, "PowerErrorDb": -0.001, "DetectorState": 2, "TxPminDbm": 10.0, "TxPmaxDbm": 47.0,
     "FrequencyMhz": 28100.5, "FrequencySource": "set", "ProductionTest": True, "LoopMode": 1, "Steps": 5e9,
     "FailedSteps": 3.0, "RefusedCalls": 2.0},
    {"RadioChannelID": 12, "State": "TX_OFF", "TxPower": "off", "PowerMode": 0, "RequestedPowerDbm": 30.0,
     "RequestedPowerSource": "constant", "DetectorState": 3, "TxPminDbm": 10.0, "TxPmaxDbm": 47.0,
     "FrequencyMhz": 28000.0, "FrequencySource": "profile", "ProductionTest": False, "LoopMode": 0, "Steps": 10.0,
     "FailedSteps": 0.0},
]
STATUS = {"IntervalMs": 6, "UptimeS": 12.34, "TemperatureC": 25.0, "TemperatureSource": "constant", "Overruns": 1.0,
          "LatenessMeanUs": 12.4, "LatenessMaxUs": 150.0, "DroppedSamples": 0.0, "Commands": 7.0,
          "LongestCommandUs": 33.0, "Channels": CHANNELS}
GAINS = {"Ramping": [10, 20, 30], "On": [40, 50, 60]}
TRANSIENT = {"RadioChannelID": 1, "OPCLog": [
    {"TxRfPowerSet": -9900, "TxRfPowerTarget": 1000, "TxRfDetectedPower": -10000, "TxIfPower": -1234, "TxRfGain": 0},
    {"TxRfPowerSet": 3995, "TxRfPowerTarget": 4000, "TxRfDetectedPower": 3991, "TxIfPower": -1005, "TxRfGain": 5005}]}
OPC_LOG = {"Channel.12.TxOutputPowerControlLo": [
    {"ObjectName": "TxRfPowerSet", "ActualValue": 3995, "MinValue": -5, "MaxValue": 4000},
    {"ObjectName": "TxRfGainInitial", "ActualValue": -9900, "MinValue": -9900, "MaxValue": -9900}]}
TRACE_LEVELS = {"Groups": [{"Group": "RQX.OPC", "Level": 1}, {"Group": "RQX.OPCL", "Level": 4}]}
FAULTS = {"Faults": [{"Operation": "getPmeasured", "Kind": "slow", "Times": 1, "Value": 0, "DelayUs": 500,
                      "Probability": 0.5}]}

ANSWERS = {"Unit.Status": STATUS, "Unit.Gains": GAINS, "Unit.TraceLevels": TRACE_LEVELS, "Unit.Faults": FAULTS}
LOG_READS = {"TI.ManageOPCTransientLog": TRANSIENT, "TI.ManageLogs": OPC_LOG}


class _Handler(xmlrpc.server.SimpleXMLRPCRequestHandler):
    rpc_paths = ("/RPC2",)

    def do_POST(self):
        self.server.headers.append(dict(self.headers))
        super().do_POST()

    def log_message(self, *arguments):
        pass


class FakeUnit(xmlrpc.server.SimpleXMLRPCServer):
    """Answers as a unit does and remembers what it was asked."""

    allow_reuse_address = True

    def __init__(self, answers=None):
        super().__init__(("127.0.0.1", 0), requestHandler=_Handler, logRequests=False)
        self.calls = []
        self.headers = []
        self.answers = answers or {}

    def _dispatch(self, method, parameters):
        self.calls.append((method, *parameters))
        answer = self.answers.get(method, ANSWERS.get(method, OK))
        if method in LOG_READS and method not in self.answers and parameters[0]["RequestOption"].startswith("Read"):
            answer = LOG_READS[method]
        if isinstance(answer, Exception):
            raise answer
        return answer() if callable(answer) else answer

    @property
    def url(self):
        return f"http://127.0.0.1:{self.server_address[1]}"


class RawServer(socketserver.ThreadingTCPServer):
    """Reads a request and sends these bytes; None stays silent."""

    allow_reuse_address = True
    daemon_threads = True

    def __init__(self, reply):
        self.ended = threading.Event()
        server = self

        class Handler(socketserver.BaseRequestHandler):
            def handle(self):
                if reply != b"":
                    self.request.recv(65536)
                if reply is None:
                    server.ended.wait(TIMEOUT_S)
                elif reply:
                    with contextlib.suppress(OSError):
                        self.request.sendall(reply)

        super().__init__(("127.0.0.1", 0), Handler)

    def shutdown(self):
        self.ended.set()
        super().shutdown()

    @property
    def url(self):
        return f"http://127.0.0.1:{self.server_address[1]}"


def http_status(status, text):
    """Returns a server that answers each POST with a status and a text."""

    class Handler(BaseHTTPRequestHandler):
        def do_POST(self):
            self.rfile.read(int(self.headers["Content-Length"]))
            self.send_response(status)
            self.send_header("Content-Length", str(len(text.encode())))
            self.end_headers()
            self.wfile.write(text.encode())

        def log_message(self, *arguments):
            pass

    server = HTTPServer(("127.0.0.1", 0), Handler)
    server.url = f"http://127.0.0.1:{server.server_address[1]}"
    return server


def closed_port():
    """Returns a URL at which nobody listens."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return f"http://127.0.0.1:{probe.getsockname()[1]}"


class ControlTestCase(unittest.TestCase):
    """Runs `opc ctl` against servers that last as long as the test."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="opc-test-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def serve(self, server):
        thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.01}, daemon=True)
        thread.start()
        self.addCleanup(server.server_close)
        self.addCleanup(thread.join)
        self.addCleanup(server.shutdown)
        return server

    def control(self, *arguments, environment=None):
        return subprocess.run([PROGRAM, "ctl", *map(str, arguments)], cwd=self.folder, timeout=TIMEOUT_S,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, env=environment)

    def ask(self, server, *arguments):
        return self.control("--unit", server.url, *arguments)

    def assert_well(self, result, output=None):
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        if output is not None:
            self.assertEqual(result.stdout, output)

    def assert_fails(self, result, code, *parts):
        self.assertEqual((result.returncode, result.stdout), (code, ""), result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertTrue(result.stderr.startswith("opc"), result.stderr)
        for part in parts:
            self.assertIn(part, result.stderr)
