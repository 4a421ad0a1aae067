"""A signal in the midst of requests: each gets its answer or a closed connection, and the unit ends well."""

import http.client
import signal
import threading
import time
import unittest
import xmlrpc.client

from hostile_bodies import call, struct
from live_unit import LiveUnit, PythonClient, wait_for_samples
from unit_runner import TIMEOUT_S, UnitTestCase

CLIENTS = 8
REQUESTS_BEFORE = 1000
READ = call("TI.ManageOPCTransientLog", struct(RequestOption="Read"))


class Asker(threading.Thread):
    """Asks as fast as it can until the connection is closed and no other is to be had."""

    def __init__(self, port):
        super().__init__()
        self._port = port
        self.whole = 0
        self.closed = 0
        self.wrong = []

    def run(self):
        while True:
            connection = http.client.HTTPConnection("127.0.0.1", self._port, timeout=TIMEOUT_S)
            try:
                connection.connect()
            except ConnectionError:
                return
            try:
                while True:
                    self._ask(connection)
            except (http.client.HTTPException, ConnectionError):
                self.closed += 1
            finally:
                connection.close()

    def _ask(self, connection):
        connection.request("POST", "/RPC2", READ, {"Content-Type": "text/xml"})
        response = connection.getresponse()
        body = response.read()
        if response.status != 200:
            self.wrong.append((response.status, body))
            return
        try:
            xmlrpc.client.loads(body)
        except xmlrpc.client.Fault as fault:
            if "the unit is stopping" not in fault.faultString:
                self.wrong.append(fault)
        self.whole += 1


class StoppingServed(UnitTestCase):
    def test_every_request_is_answered_or_its_connection_closed(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        unit.wait_until_on(2)
        client = PythonClient(unit.url)
        client.transient(RequestOption="Enable")
        wait_for_samples(client, 200)
        askers = [Asker(unit.port) for _ in range(CLIENTS)]
        for asker in askers:
            asker.start()
        while sum(asker.whole for asker in askers) < REQUESTS_BEFORE:
            time.sleep(0.01)
        begin = time.monotonic()
        unit.process.send_signal(signal.SIGTERM)
        unit.process.wait(timeout=TIMEOUT_S)
        took = time.monotonic() - begin
        output, errors = unit.stop()
        for asker in askers:
            asker.join()
            self.assertEqual(asker.wrong, [])
        self.assertEqual(output.count("last state            TX_OFF"), 2)
        self.assertNotIn("Sanitizer", errors)
        print(f"\n{sum(asker.whole for asker in askers)} requests answered, {sum(asker.closed for asker in askers)} "
              f"connections closed; the unit ended {took:.3f} s after the signal")


if __name__ == "__main__":
    unittest.main()
