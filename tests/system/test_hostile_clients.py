"""Malformed and hostile requests, and clients that are slow or silent, beside two channels that regulate."""

import http.client
import os
import pathlib
import re
import socket
import threading
import time
import unittest
import unittest.mock
import xml.etree.ElementTree
import xmlrpc.client

from hostile_bodies import hostile_requests
from live_unit import LiveUnit
from unit_runner import UnitTestCase

BODIES = int(os.environ.get("OPC_HOSTILE_BODIES", "10000"))
SLOW_CLIENTS = 200
SENDERS = 4
# One heap that gives large blocks back at once: many heaps grow and shrink by more than what is looked for.
STEADY_HEAP = {"MALLOC_ARENA_MAX": "1", "MALLOC_MMAP_THRESHOLD_": "65536", "MALLOC_TRIM_THRESHOLD_": "65536"}
# The heap grows by up to 8 MiB when large requests happen to meet. Sanitizers keep something for every thread, also for
# those that have ended, until they have enough; what leaks, the address sanitizer says exactly in the end.
MAX_GROWTH_KIB = (64 if os.environ.get("OPC_SANITIZER") else 16) * 1024


def memory_kib(process):
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(re.search(r"VmRSS:\s+(\d+)", status).group(1))


class Sender(threading.Thread):
    """Sends its part of the requests and notes what came back."""

    def __init__(self, port, requests):
        super().__init__()
        self._port = port
        self._requests = requests
        self.answers = {}
        self.wrong = []

    def run(self):
        connection = None
        for request in self._requests:
            connection = connection or http.client.HTTPConnection("127.0.0.1", self._port, timeout=30)
            try:
                status, body, closes = self._send(connection, *request)
            except (http.client.HTTPException, ConnectionError, TimeoutError) as error:
                status, body, closes = type(error).__name__, b"", True
            self.answers[status] = self.answers.get(status, 0) + 1
            if status == 200:
                self._look_at(body, request)
            if closes:
                connection.close()
                connection = None
        if connection:
            connection.close()

    def _send(self, connection, verb, path, headers, body):
        connection.putrequest(verb, path, skip_host="Host" in headers)
        if "Content-Length" not in headers and "Transfer-Encoding" not in headers:
            connection.putheader("Content-Length", str(len(body)))
        for name, value in headers.items():
            connection.putheader(name, value)
        connection.endheaders()
        try:
            connection.send(body)
        except ConnectionError:
            pass  # refused before the body had gone; the answer may be there all the same
        response = connection.getresponse()
        return response.status, response.read(), response.will_close

    def _look_at(self, body, request):
        """An answer is a response or a fault, whatever was asked."""
        try:
            xmlrpc.client.loads(body)
        except xmlrpc.client.Fault:
            pass
        except (xml.parsers.expat.ExpatError, xmlrpc.client.Error, ValueError) as error:
            self.wrong.append((request, body, error))


class SlowClients:
    """Connections that say nothing, half of a request, or a byte now and then."""

    def __init__(self, port, count):
        self._sockets = []
        for number in range(count):
            connection = socket.create_connection(("127.0.0.1", port), timeout=30)
            self._sockets.append(connection)
            try:
                if number % 3 == 1:
                    connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: ")
                if number % 3 == 2:
                    connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: 127.0.0.1:%d\r\nContent-Type: text/xml\r\n"
                                       b"Content-Length: 1000\r\n\r\n<?xml" % port)
            except ConnectionError:
                pass  # one too many
        self._end = threading.Event()
        self._thread = threading.Thread(target=self._trickle)
        self._thread.start()

    def _trickle(self):
        while not self._end.wait(0.5):
            for connection in self._sockets[2::3]:
                try:
                    connection.send(b" ")
                except OSError:
                    pass

    def close(self):
        self._end.set()
        self._thread.join()
        for connection in self._sockets:
            connection.close()


class HostileClients(UnitTestCase):
    def setUp(self):
        super().setUp()
        # Memory that the address sanitizer keeps back would look like a leak.
        options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
        environment = unittest.mock.patch.dict(os.environ, {"ASAN_OPTIONS": options, **STEADY_HEAP})
        environment.start()
        self.addCleanup(environment.stop)

    def send_all(self, port, seed, count):
        requests = list(hostile_requests(seed, count))
        senders = [Sender(port, requests[number::SENDERS]) for number in range(SENDERS)]
        for sender in senders:
            sender.start()
        answers = {}
        for sender in senders:
            sender.join()
            self.assertEqual(sender.wrong, [])
            for status, number in sender.answers.items():
                answers[status] = answers.get(status, 0) + number
        return answers

    def assert_regulating(self, unit, before):
        after = unit.status()
        for old, new in zip(before["Channels"], after["Channels"]):
            self.assertEqual(new["State"], "TX_ON")
            self.assertGreater(new["Steps"], old["Steps"])
            self.assertEqual(new["FailedSteps"], 0)
        return after

    def test_ten_thousand_bodies_do_no_harm(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        unit.wait_until_on(2)
        before = unit.status()
        self.send_all(unit.port, 1, BODIES // 4)  # so that everything has its size
        memory = memory_kib(unit.process)
        answers = self.send_all(unit.port, 2, BODIES)
        growth = memory_kib(unit.process) - memory
        after = self.assert_regulating(unit, before)
        self.assertEqual(sum(answers.values()), BODIES)
        self.assertGreater(answers[200], BODIES // 2)
        self.assertLess(growth, MAX_GROWTH_KIB)
        print(f"\n{BODIES} requests: answers {answers}, memory {memory} + {growth} KiB, overruns "
              f"{after['Overruns'] - before['Overruns']:.0f} in {after['UptimeS'] - before['UptimeS']:.1f} s, longest "
              f"command {after['LongestCommandUs']:.0f} us, greatest lateness {after['LatenessMaxUs']:.0f} us")
        _, errors = unit.stop()
        self.assertIn("UNIT.TI", errors)
        self.assertNotIn("Sanitizer", errors)
        self.assertLess(errors.count("\n"), 20 * (after["UptimeS"] + 2))  # the trace is not flooded

    def test_slow_and_silent_clients_starve_nobody(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        unit.wait_until_on(2)
        before = unit.status()
        warming = SlowClients(unit.port, SLOW_CLIENTS)  # so that every connection has had its thread
        time.sleep(1)
        warming.close()
        memory = memory_kib(unit.process)
        slow = SlowClients(unit.port, SLOW_CLIENTS)
        self.addCleanup(slow.close)
        answers = 0
        end = time.monotonic() + 15  # longer than a silent connection is kept
        while time.monotonic() < end:
            try:
                unit.status()
                answers += 1
            except (ConnectionError, http.client.HTTPException):
                pass  # no connection to be had for the moment
            time.sleep(0.05)
        growth = memory_kib(unit.process) - memory
        after = self.assert_regulating(unit, before)
        self.assertGreater(answers, 10)
        self.assertLess(growth, MAX_GROWTH_KIB)
        print(f"\n{SLOW_CLIENTS} slow clients: {answers} other calls answered, memory {memory} + {growth} KiB, overruns "
              f"{after['Overruns'] - before['Overruns']:.0f} in {after['UptimeS'] - before['UptimeS']:.1f} s")
        _, errors = unit.stop()
        self.assertNotIn("Sanitizer", errors)


if __name__ == "__main__":
    unittest.main()
