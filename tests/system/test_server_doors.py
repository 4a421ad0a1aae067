"""What docs/security.md says of the server's doors, each by somebody who tries it."""

import http.client
import json
import os
import pathlib
import socket
import subprocess
import time
import unittest
import urllib.error
import urllib.request

from live_unit import LiveUnit
from recorded_unit import RecordedUnit
from test_hostile_clients import MAX_GROWTH_KIB, STEADY_HEAP, memory_kib
from unit_runner import UnitTestCase

PRIVATE_PATHS = ("/assets/../unit.toml", "/assets/../../../../../../../etc/passwd", "/assets/%2e%2e/%2e%2e/etc/passwd",
                 "/assets/..%2f..%2f..%2fetc%2fpasswd", "/assets/..%5c..%5cetc%5cpasswd", "//etc/passwd", "/etc/passwd",
                 "/assets//etc/passwd", "/assets/%2fetc%2fpasswd", "/assets/page.js%00.html", "/%00", "/assets/",
                 "/assets/assets.txt", "/assets/link", "/api/../etc/passwd", "/api/", "/assets/" + "a/" * 3000,
                 "/assets/%c0%ae%c0%ae/etc/passwd", "/assets/%252e%252e/etc/passwd", "/..")
STRANGE_NUMBERS = ("", "x", "-1", "+1", " 1", "1 ", "0x10", "1e3", "1.5", "nan", "inf", "99999999999999999999", "-9223372036854775809",
                   "1%00", "%31%00", "١")


def get(port, path, headers=None, method="GET", timeout=30):
    """Returns status, headers and body."""
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=timeout)
    try:
        connection.putrequest(method, path, skip_host=bool(headers and "Host" in headers))
        for name, value in (headers or {}).items():
            connection.putheader(name, value)
        connection.endheaders()
        answer = connection.getresponse()
        return answer.status, {name.lower(): value for name, value in answer.getheaders()}, answer.read()
    finally:
        connection.close()


class ServerDoors(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.file = self.folder.parent / "unit.db"

    def unit(self, *arguments):
        unit = LiveUnit(self, self.command("run", self.unit_file, *arguments))
        unit.wait_until_on(2)
        return unit

    def assert_regulates(self, unit):
        before = unit.status()
        time.sleep(0.3)
        after = unit.status()
        for old, new in zip(before["Channels"], after["Channels"]):
            self.assertGreater(new["Steps"], old["Steps"])
            self.assertEqual(new["State"], "TX_ON")

    def end(self, unit):
        self.assert_regulates(unit)
        _, errors = unit.stop()
        self.assertNotIn("Sanitizer", errors)
        return errors

    def test_nobody_else_on_the_network_is_answered(self):
        unit = self.unit()
        addresses = subprocess.run(["hostname", "-I"], capture_output=True, text=True, check=False).stdout.split()
        for address in addresses:
            with self.subTest(address), self.assertRaises(OSError):
                socket.create_connection((address, unit.port), timeout=2).close()
        self.end(unit)

    def test_no_path_leads_out_of_the_page(self):
        root = self.folder.parent / "page"
        root.mkdir()
        (root / "index.html").write_text("<html>mine</html>")
        (root / "assets.txt").write_text("/ index.html\n/assets/page.js index.html\n")
        (root / "secret.txt").write_text("root: secret")
        (root / "link").symlink_to("/etc/passwd")
        for arguments in ((), ("--web-root", root)):
            unit = self.unit(*arguments)
            for path in PRIVATE_PATHS + ("/secret.txt", "/assets/secret.txt", "/link"):
                status, _, body = get(unit.port, path)
                self.assertIn(status, (400, 404, 414), path)
                self.assertNotIn(b"root:", body, path)
            self.assertEqual(get(unit.port, "/")[0], 200)
            self.end(unit)

    def test_no_number_and_no_range_is_too_large(self):
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        for name in ("channel", "points", "from_us", "to_us", "limit", "after"):
            for text in STRANGE_NUMBERS:
                path = "/api/events" if name == "limit" else "/api/stream" if name == "after" else "/api/history"
                if path == "/api/stream" and text == "":
                    continue  # refused like the others, below
                status, _, body = get(unit.port, f"{path}?{name}={urllib.request.quote(text, safe='%')}")
                if not (name.endswith("_us") and text == "-1"):  # a time before the run's begin is one
                    self.assertEqual(status, 400, (name, text, body[:100]))
                self.assertNotIn(b"/unit.db", body)
        for query in ("from_us=-9223372036854775808&to_us=4611686018427387904&points=18446744073709551615",
                      "from_us=4611686018427387903&to_us=4611686018427387904", "from_us=-2&to_us=-1",
                      "channel=18446744073709551615", "points=0", "limit=18446744073709551615", "&&&=&=&x",
                      "&".join(f"a{number}=1" for number in range(100))):
            for path in ("/api/history", "/api/events"):
                status, _, body = get(unit.port, f"{path}?{query}")
                self.assertEqual(status, 200, (path, query, body[:100]))
                json.loads(body)
        for query in ("from_us=5&to_us=5", "to_us=4611686018427387905", "from_us=9&to_us=1"):
            self.assertEqual(get(unit.port, f"/api/history?{query}")[0], 400)
        self.end(unit)

    def test_heads_are_bounded(self):
        unit = self.unit()
        self.assertIn(get(unit.port, "/?" + "a" * 20000)[0], (400, 413, 414, 431))
        try:
            self.assertIn(get(unit.port, "/?" + "&".join(f"a{number}=1" for number in range(1000)))[0], (400, 413, 414, 431))
        except http.client.RemoteDisconnected:
            pass  # the library ends a connection that has no room for so many
        self.assertIn(get(unit.port, "/", {"X": "y" * 20000})[0], (400, 413, 431))
        self.assertIn(get(unit.port, "/", {f"X-{number}": "y" * 20 for number in range(2000)})[0], (400, 413, 431))
        self.end(unit)

    def test_foreign_pages_get_nothing(self):
        unit = self.unit()
        foreign = ({"Host": "evil.example"}, {"Host": f"evil.example:{unit.port}"}, {"Origin": "http://evil.example"},
                   {"Origin": "null"}, {"Sec-Fetch-Site": "cross-site"}, {"Sec-Fetch-Site": "same-site"})
        for headers in foreign:
            for path in ("/api/unit", "/api/history", "/api/events", "/api/stream", "/metrics"):
                self.assertEqual(get(unit.port, path, headers)[0], 403, (path, headers))
        status, headers, _ = get(unit.port, "/", {"Sec-Fetch-Site": "cross-site"})  # a link may lead to the page
        self.assertEqual(status, 200)
        self.assertIn("frame-ancestors 'none'", headers["content-security-policy"])
        for path in ("/api/unit", "/metrics", "/nothing"):
            _, headers, _ = get(unit.port, path)
            self.assertEqual(headers["x-content-type-options"], "nosniff")
            self.assertEqual(headers["cross-origin-resource-policy"], "same-origin")
            self.assertEqual(headers["content-security-policy"], "default-src 'none'; frame-ancestors 'none'")
            self.assertEqual(headers["cache-control"], "no-store")
            self.assertNotIn("access-control-allow-origin", headers)
        self.end(unit)

    def test_the_token_is_demanded_wherever_the_unit_is_read_or_changed(self):
        token = "0123456789abcdef"
        (self.folder / "unit.token").write_text(token + "\n")
        (self.folder / "unit.token").chmod(0o600)
        self.edit('# token_file = "unit.token"', 'token_file = "unit.token"')
        unit = LiveUnit(self, self.command("run", self.unit_file))
        wrong = ({}, {"Authorization": "Bearer 0123456789abcdee"}, {"Authorization": f"Bearer {token}0"},
                 {"Authorization": f"Bearer {token[:-1]}"}, {"Authorization": "Bearer "}, {"Authorization": "Bearer"},
                 {"Authorization": f"Basic {token}"}, {"X-Authorization": f"Bearer {token}"})
        for path in ("/api/unit", "/api/history", "/api/events", "/api/stream", "/metrics"):
            for headers in wrong:
                self.assertEqual(get(unit.port, path, headers)[0], 401, (path, headers))
            self.assertEqual(get(unit.port, f"{path}?token={token}")[0], 401)
        for path in ("/api/unit", "/api/history", "/api/events", "/metrics"):
            self.assertEqual(get(unit.port, path, {"Authorization": f"Bearer {token}"})[0], 200, path)
        self.assertEqual(get(unit.port, "/")[0], 200)
        _, errors = unit.stop()
        self.assertNotIn(token, errors)

    def test_streams_leave_room_for_others(self):
        unit = self.unit()
        streams = []
        refused = 0
        for _ in range(40):
            stream = socket.create_connection(("127.0.0.1", unit.port), timeout=10)
            stream.sendall(b"GET /api/stream HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n" % unit.port)
            status = stream.recv(12)
            refused += status == b"HTTP/1.1 503"
            self.assertIn(status, (b"HTTP/1.1 200", b"HTTP/1.1 503"))
            streams.append(stream)
        self.addCleanup(lambda: [stream.close() for stream in streams])
        self.assertEqual(refused, 16)  # beyond the 24 of an address
        self.end(unit)

    def test_a_stream_without_a_body_ends(self):
        unit = self.unit()
        begin = time.monotonic()
        status, headers, body = get(unit.port, "/api/stream", method="HEAD")
        self.assertEqual((status, headers["content-type"], body), (200, "text/event-stream", b""))
        self.assertLess(time.monotonic() - begin, 10)
        self.end(unit)

    def test_large_answers_to_slow_readers_stay_bounded(self):
        os.environ.update(STEADY_HEAP)
        self.edit("interval_ms = 6 ", "interval_ms = 1 ")
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        time.sleep(10)  # until an answer has some size

        def ask():
            reader = socket.socket()
            reader.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            reader.settimeout(60)
            reader.connect(("127.0.0.1", unit.port))
            reader.sendall(b"GET /api/history?from_us=0&points=100000 HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n" % unit.port)
            return reader

        size = len(get(unit.port, "/api/history?from_us=0&points=100000")[2])
        for _ in range(2):  # the first time its threads get their memory
            memory = memory_kib(unit.process)
            readers = [ask() for _ in range(30)]
            answers = [reader.recv(12) for reader in readers]  # and no more than that
            growth = memory_kib(unit.process) - memory
            for reader in readers:
                reader.close()
            time.sleep(2)
        # Where buffers take answers as fast as they are made, nobody has to be refused.
        self.assertLessEqual(set(answers), {b"HTTP/1.1 200", b"HTTP/1.1 503"})
        self.assertGreaterEqual(answers.count(b"HTTP/1.1 200"), 8)
        print(f"\nan answer of {size // 1024} KiB; 30 readers: {answers.count(b'HTTP/1.1 200')} answered, memory grew by "
              f"{growth} KiB")
        self.assertLess(growth, 8 * 4 * size // 1024 + MAX_GROWTH_KIB)  # an answer takes several times its size
        self.end(unit)

    def test_what_clients_send_reaches_no_terminal(self):
        unit = self.unit()
        for path in ("/%0a2026-01-01%20forged%20line", "/%1b[2J%1b]0;title%07", "/%c2%9b31m", "/%ff%9b", "/" + "x" * 5000,
                     "/%0d%0aX-Forged:%201"):
            status, headers, body = get(unit.port, path)
            self.assertEqual(status, 404)
            self.assertNotIn("x-forged", headers)
            self.assertNotIn(b"\x1b", body)
        errors = self.end(unit)
        self.assertIn("UNIT.TI", errors)
        for line in errors.splitlines():
            self.assertTrue(line.isascii() and line.isprintable(), repr(line))
            self.assertLess(len(line), 600)
            self.assertFalse(line.startswith("2026-01-01 forged"))

    def test_members_that_nobody_asks_for_change_nothing(self):
        unit = self.unit()
        member = ("<member><name>{}</name><value>{}</value></member>")
        for name, value in (("LogName", "<int>5</int>"), ("LogName", "<string>x</string>"),
                            ("Other", "<string>" + "y" * 200_000 + "</string>"), ("Another", "<array><data/></array>")):
            body = ("<?xml version='1.0'?><methodCall><methodName>TI.ManageOPCTransientLog</methodName><params><param><value>"
                    "<struct>" + member.format("RequestOption", "Enable") + member.format("RadioChannelID", "<int>1</int>")
                    + member.format(name, value) + "</struct></value></param></params></methodCall>")
            request = urllib.request.Request(unit.url + "/RPC2", body.encode(), {"Content-Type": "text/xml"})
            with urllib.request.urlopen(request, timeout=30) as answer:
                self.assertNotIn(b"fault", answer.read())
        events = json.loads(get(unit.port, "/api/events")[2])["events"]
        commands = [event for event in events if event["kind"] == "command"]
        self.assertEqual(len(commands), 4)
        self.assertEqual([event["channel"] for event in commands], [1] * 4)
        self.assertLess(max(len(event["text"]) for event in commands), 250)
        self.end(unit)

    def test_errors_tell_nothing_of_the_inside(self):
        unit = RecordedUnit(self, self.file)
        unit.wait_until_on(2)
        time.sleep(2)
        hidden = pathlib.Path(str(self.file) + ".away")
        self.file.rename(hidden)
        for path in ("/api/history?from_us=0", "/api/unit", "/api/events?from_us=0"):
            _, _, body = get(unit.port, path)
            self.assertNotIn(str(self.folder.parent).encode(), body, path)
        hidden.rename(self.file)
        _, errors = unit.stop()
        self.assertNotIn("Sanitizer", errors)

    def test_files_are_made_with_the_mask_of_the_user(self):
        before = os.umask(0o077)
        self.addCleanup(os.umask, before)
        csv = self.folder.parent / "run.csv"
        self.assert_well(self.run_unit("--duration", 1, "--record", self.file, "--csv", csv))
        for file in (self.file, csv):
            self.assertEqual(file.stat().st_mode & 0o777, 0o600, file)


class ReplayDoors(UnitTestCase):
    def test_a_recordings_page_takes_no_nonsense(self):
        file = self.folder.parent / "unit.db"
        self.assert_well(self.run_unit("--duration", 2, "--record", file))
        page = LiveUnit(self, self.command("replay", file, "--port", 0), says=r"live page: (http://\S+)/")
        for body in (b"[" * 100_000, b'{"speed":' * 20_000, b"\xff\xfe", b"", b"null", b'{"position_us":1e400}',
                     b'{"speed":' + b"9" * 100_000 + b"}", b'{"\\u0000":1}', b'{"paused":"' + b"x" * 200_000 + b'"}'):
            request = urllib.request.Request(page.url + "/api/replay", body, {"Content-Type": "application/json"})
            with self.assertRaises(urllib.error.HTTPError) as refused:
                urllib.request.urlopen(request, timeout=30)
            self.assertEqual(refused.exception.code, 400, body[:40])
            self.assertLess(len(refused.exception.read()), 300)
        for headers in ({"Content-Type": "text/plain"}, {"Content-Type": "application/json", "Origin": "http://evil.example"},
                        {"Content-Type": "application/json", "Sec-Fetch-Site": "cross-site"}):
            request = urllib.request.Request(page.url + "/api/replay", b'{"paused":true}', headers)
            with self.assertRaises(urllib.error.HTTPError) as refused:
                urllib.request.urlopen(request, timeout=30)
            self.assertIn(refused.exception.code, (403, 415))
        self.assertEqual(get(page.port, "/RPC2")[0], 404)
        self.assertEqual(get(page.port, "/metrics")[0], 404)
        page.stop()


if __name__ == "__main__":
    unittest.main()
