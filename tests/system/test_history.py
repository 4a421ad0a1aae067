"""The history that the unit serves: what it holds and what it has recorded, joined."""

import json
import os
import time
import unittest
import urllib.error
import urllib.request
import xmlrpc.client

from recorded_unit import RecordedUnit, ask
from soak_watch import usage_of
from unit_runner import UnitTestCase

# The unit holds the steps of a minute at the interval that it starts with; at the shortest it holds less than this.
HELD_S = 2.5
RUN_S = 5.0
WAIT_S = 60.0
MOST_KEPT_KIB = 3072  # a connection's own, and what is too small to go back by itself; the answers take more


class History(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"
        self.edit("interval_ms = 6 ", "interval_ms = 24 ")

    def get(self, unit, path):
        with urllib.request.urlopen(f"{unit.url}/{path}", timeout=30) as answer:
            return json.load(answer)

    def recorded(self, channel, to_us):
        return [row[0] for row in ask(self.file, "SELECT time_us FROM step WHERE channel = ? AND time_us <= ? ORDER BY 1",
                                      channel, to_us)]

    def wait_for_recording(self, to_us=0):
        """Returns right after the recorder has written, so that nothing is missing between its file and what is held."""
        newest = "SELECT max(time_us) FROM step"
        before = ask(self.file, newest)[0][0]
        deadline = time.monotonic() + WAIT_S
        while (now := ask(self.file, newest)[0][0]) == before or (now or 0) < to_us:
            self.assertLess(time.monotonic(), deadline, f"recorded up to {now} us")
            time.sleep(0.02)

    def run_beyond_what_is_held(self):
        unit = RecordedUnit(self, self.file)
        with xmlrpc.client.ServerProxy(unit.url + "/RPC2") as proxy:
            proxy.Unit.SetInterval({"IntervalMs": 1})
        self.wait_for_recording(RUN_S * 1e6)
        return unit

    def test_has_every_step_once_from_the_begin_to_now(self):
        unit = self.run_beyond_what_is_held()
        answers = []
        for channel in (0, 1):
            self.wait_for_recording()
            answers.append(self.get(unit, f"api/history?channel={channel}&from_us=0&points=100000"))
        # Asked for at once: what the unit holds moves on while the long answers are made.
        latest = self.get(unit, f"api/history?channel=0&from_us={answers[1]['channels'][0]['t_us'][-1]}&points=10")
        newest = self.get(unit, f"api/history?channel=0&from_us={latest['channels'][0]['t_us'][-1] - 1000}")
        told = self.get(unit, "api/unit")
        unit.stop()
        self.assertEqual(newest["source"], "ring")
        self.assertEqual(told["recording"]["from_us"], 0)
        for channel, answer in enumerate(answers):
            self.assertEqual(answer["source"], "steps", "the unit should not hold all of it any more")
            times = answer["channels"][0]["t_us"]
            self.assertGreater(times[-1], HELD_S * 1e6)
            self.assertEqual(times, self.recorded(channel, times[-1]))

    def test_sums_up_each_step_once(self):
        unit = self.run_beyond_what_is_held()
        parts = self.get(unit, "api/history?channel=1&from_us=0&to_us=4000000&points=37")["channels"][0]
        self.assertLessEqual(len(parts["n"]), 37)
        unit.stop()
        self.assertEqual(sum(parts["n"]), len(self.recorded(1, 4_000_000)))
        row = ask(self.file, "SELECT min(temperature_c), max(temperature_c) FROM step WHERE channel = 1 AND "
                             "time_us <= 4000000")[0]
        self.assertEqual([min(parts["temperature_cc"]["min"]), max(parts["temperature_cc"]["max"])],
                         [round(100 * value) for value in row])

    def test_events_reach_back_to_the_begin(self):
        unit = self.run_beyond_what_is_held()
        told = self.get(unit, "api/events?limit=1000")["events"]
        unit.stop()
        rows = ask(self.file, "SELECT id FROM event WHERE id <= ? ORDER BY id", told[-1]["id"])
        self.assertEqual([event["id"] for event in told], [row[0] for row in rows])
        self.assertIn("command", [event["kind"] for event in told])

    @unittest.skipIf(os.environ.get("OPC_SANITIZER"), "sanitizers keep memory that is freed")
    def test_gives_back_the_memory_of_long_answers(self):
        unit = self.run_beyond_what_is_held()
        path = "api/history?channel=1&from_us=0&points=100000"
        before_kib = usage_of(unit.process.pid)["anon_kib"]
        for _ in range(3):
            self.get(unit, path)
        self.assertLess(usage_of(unit.process.pid)["anon_kib"], before_kib + MOST_KEPT_KIB)
        unit.stop()

    def test_says_in_a_line_when_the_file_is_gone(self):
        unit = self.run_beyond_what_is_held()
        os.rename(self.file, str(self.file) + ".away")
        with self.assertRaises(urllib.error.HTTPError) as refused:
            self.get(unit, "api/history?from_us=0")
        self.assertEqual(refused.exception.code, 503)
        self.assertIn("does not exist", refused.exception.read().decode())
        self.assertEqual(self.get(unit, "api/unit")["recording"]["from_us"], None)
        os.rename(str(self.file) + ".away", self.file)
        self.assertEqual(self.get(unit, "api/history?from_us=0")["source"], "steps")
        unit.stop()


if __name__ == "__main__":
    unittest.main()
