"""docs/test-interface.md names every method, and shows answers with the members that a unit's answers have."""

import http.client
import pathlib
import re
import time
import unittest
import xmlrpc.client

from live_unit import LiveUnit
from unit_runner import TIMEOUT_S, UnitTestCase

DOCUMENT = pathlib.Path(__file__).resolve().parents[2] / "docs" / "test-interface.md"


def sections(text):
    """Returns what stands under each heading that has a method's name."""
    parts = re.split(r"^#+ (.*)\n", text, flags=re.MULTILINE)
    return {heading: content for heading, content in zip(parts[1::2], parts[2::2])
            if re.fullmatch(r"\w+\.\w+", heading)}


def messages(text):
    return re.findall(r"^```xml\n(.*?)^```$", text, flags=re.MULTILINE | re.DOTALL)


def examples(text):
    """Returns each whole call that is shown and the message shown after it, None at the end."""
    shown = messages(text)
    return [(call, answer) for call, answer in zip(shown, [*shown[1:], None]) if "</methodCall>" in call]


def shape(value):
    """Returns the names and types in a value; of a list, which may be cut in the document, the kinds of elements."""
    if isinstance(value, dict):
        return tuple((name, shape(member)) for name, member in value.items())
    if isinstance(value, list):
        return frozenset(shape(element) for element in value)
    return type(value).__name__


def content(message):
    """Returns the shape of a response; of a fault all of it."""
    try:
        return shape(xmlrpc.client.loads(message)[0][0])
    except xmlrpc.client.Fault as fault:
        return fault.faultCode, fault.faultString


class InterfaceDocs(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.text = DOCUMENT.read_text(encoding="utf-8")
        self.unit = LiveUnit(self, self.command("run", self.unit_file))
        self.unit.wait_until_on(2)

    def send(self, call):
        connection = http.client.HTTPConnection("127.0.0.1", self.unit.port, timeout=TIMEOUT_S)
        try:
            connection.request("POST", "/RPC2", call, {"Content-Type": "text/xml"})
            response = connection.getresponse()
            self.assertEqual(response.status, 200)
            return response.read().decode()
        finally:
            connection.close()

    def answer(self, call):
        """Returns the content of a call's answer, from a log once it has a sample."""
        end = time.monotonic() + TIMEOUT_S
        while "can not read empty log" in str(result := content(self.send(call))) and time.monotonic() < end:
            time.sleep(0.05)
        return result

    def test_every_method_has_a_section_with_an_example(self):
        with xmlrpc.client.ServerProxy(self.unit.url + "/RPC2") as proxy:
            methods = proxy.system.listMethods()
        documented = sections(self.text)
        self.assertEqual(sorted(documented), sorted(methods))
        for method, section in documented.items():
            called = {xmlrpc.client.loads(call)[1] for call, _ in examples(section)}
            self.assertEqual(called, {method}, f"the examples under {method}")
        self.unit.stop()

    def test_the_calls_shown_get_the_answers_shown(self):
        for call, answer in examples(self.text):
            with self.subTest(call):
                self.assertIn("</methodResponse>", answer or "", "no response follows")
                self.assertEqual(self.answer(call), content(answer))
        self.unit.stop()


if __name__ == "__main__":
    unittest.main()
