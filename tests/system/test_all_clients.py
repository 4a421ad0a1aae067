"""Every client of a recording unit at once: each is answered well, and nothing is lost, raced for or broken.

OPC_ALL_CLIENTS_S says for how many seconds; the thread sanitizer wants minutes.
"""

import os
import unittest

import unit_clients
from recorded_unit import RecordedUnit
from unit_runner import PROGRAM, UnitTestCase, summary_of

SECONDS = float(os.environ.get("OPC_ALL_CLIENTS_S", "20"))
STREAMS = 3


class AllClients(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"

    def clients_of(self, url):
        kinds = [unit_clients.StreamReader] * STREAMS + [unit_clients.PageReader, unit_clients.HistoryReader,
                                                         unit_clients.MetricsReader, unit_clients.MetricsReader,
                                                         unit_clients.LogReader, unit_clients.LogReader,
                                                         unit_clients.Commander, unit_clients.Commander]
        clients = [kind(url, seed) for seed, kind in enumerate(kinds)] + [
            unit_clients.CtlUser(url, 100, PROGRAM), unit_clients.Exporter(url, 101, PROGRAM, self.file)]
        if os.environ.get("OPC_SANITIZER"):
            for client in clients:
                client.reach_us = 100_000_000  # all steps of minutes would take longer than the server lets answers take
        return clients

    def test_are_all_answered_and_disturb_nothing(self):
        unit = RecordedUnit(self, self.file, "--csv", self.folder.parent / "run.csv")
        unit.wait_until_on(2)
        clients = self.clients_of(unit.url)
        troubles = unit_clients.run_clients(clients, SECONDS)
        errors = "".join(unit.errors())
        self.assertEqual(troubles, [], errors)
        output, errors = unit.stop()
        self.assertNotIn("Sanitizer", errors)
        self.assertNotIn("thread rule broken", errors)
        for client in clients:
            self.assertGreater(client.turns + getattr(client, "samples", 0), 0, client.name)
        summary = summary_of(output)
        self.assertEqual(summary[None]["ended by"], "SIGTERM")
        self.assertEqual(summary[None]["dropped samples"], "0")
        self.assertNotIn("lost", summary[None]["recording"])
        check = self.run_program("replay", self.file, "--check")
        self.assertEqual(check.returncode, 0, check.stdout + check.stderr)
        print(f"\n{SECONDS:.0f} s: " + ", ".join(f"{client.name} {client.turns}" for client in clients)
              + f"; overruns {summary[None]['overruns']}, commands {summary[None]['commands']}")


if __name__ == "__main__":
    unittest.main()
