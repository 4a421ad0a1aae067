"""`opc replay` shows a recording on the live page, and says what it cannot show."""

import contextlib
import json
import socket
import sqlite3
import unittest
import urllib.error
import urllib.request

from live_unit import LiveUnit
from recorded_unit import ask
from unit_runner import UnitTestCase

LIVE_PAGE = r"live page: (http://\S+)/\n"


class Replay(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"
        self.assert_well(self.run_unit("--duration", "1.5", "--record", self.file))

    def change(self, statement):
        with contextlib.closing(sqlite3.connect(self.file)) as database, database:
            database.execute(statement)

    def refusal(self, *arguments):
        """Returns the one line that a replay ends with."""
        result = self.run_program("replay", *arguments)
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertEqual(result.stdout, "")
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        return result.stderr

    def test_plays_pauses_and_jumps(self):
        last_us = ask(self.file, "SELECT max(time_us) FROM step")[0][0]
        replay = LiveUnit(self, self.command("replay", self.file, "--paused", "--port", "0"), LIVE_PAGE)
        told = self.ask_unit(replay)
        self.assertEqual([told["from_us"], told["to_us"], told["position_us"]], [0, last_us, 0])
        self.assertTrue(told["paused"])
        changed = self.post(replay, {"position_us": 600_000, "speed": 10})
        self.assertEqual([changed["position_us"], changed["speed"], changed["paused"]], [600_000, 10, True])
        self.assertFalse(self.post(replay, {"paused": False})["paused"])
        self.wait_for(lambda: self.ask_unit(replay)["position_us"] == last_us)
        self.assertTrue(self.ask_unit(replay)["paused"], "it pauses at the end")
        replay.stop()

    def test_refuses_what_no_replay_has(self):
        replay = LiveUnit(self, self.command("replay", self.file, "--port", "0"), LIVE_PAGE)
        for change, reason in (({"speed": 7}, "speed is 7; it has to be one of 1, 10, 100"),
                               ({"position_us": -1}, "position_us is -1; it has to be whole microseconds from 0 to"),
                               ({"paused": 1}, "paused is 1; it has to be true or false"),
                               ({"pace": 1}, "is nothing that a replay has"),
                               ({}, "send a JSON object")):
            with self.subTest(change), self.assertRaises(urllib.error.HTTPError) as caught:
                self.post(replay, change)
            self.assertEqual(caught.exception.code, 400)
            self.assertIn(reason, caught.exception.read().decode())
            caught.exception.close()
        with self.assertRaises(urllib.error.HTTPError) as caught:
            urllib.request.urlopen(f"{replay.url}/RPC2", data=b"<methodCall/>", timeout=10)
        self.assertEqual(caught.exception.code, 404, "there is no unit to control")
        caught.exception.close()
        replay.stop()

    def test_says_what_it_cannot_show(self):
        other = self.folder / "other.db"
        other.write_text("no recording\n", encoding="utf-8")
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            for arguments, reason in (
                    ((self.folder / "none.db",), "none.db: does not exist; name a recording of opc run"),
                    ((other,), "other.db: is not a recording of opc run"),
                    ((self.file, "--run", "9"), '--run: "9" is no run of'),
                    ((self.file, "--from", "noon"), '--from: "noon" is no time'),
                    ((self.file, "--from", "99"), "--from: 99 s is after the last step of run 1"),
                    ((self.file, "--speed", "7"), '--speed: "7" is not one of 1, 10, 100'),
                    ((self.file, "--check", "--paused"), "--check excludes --paused"),
                    ((self.file, "--json"), "--json requires --check"),
                    ((self.file, "--port", str(taken.getsockname()[1])), "another port")):
                with self.subTest(arguments[1:] or arguments):
                    self.assertIn(reason, self.refusal(*arguments))
        self.change("DELETE FROM step")
        self.assertIn("run 1 has no steps any more", self.refusal(self.file))

    def ask_unit(self, replay):
        with urllib.request.urlopen(f"{replay.url}/api/unit", timeout=10) as answer:
            return json.load(answer)["replay"]

    def post(self, replay, change):
        request = urllib.request.Request(f"{replay.url}/api/replay", data=json.dumps(change).encode(),
                                         headers={"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=10) as answer:
            return json.load(answer)


if __name__ == "__main__":
    unittest.main()
