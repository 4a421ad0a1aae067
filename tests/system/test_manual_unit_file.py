"""unit.toml(5) describes every key that the reader knows, as the reader takes it, and nothing else.

What the reader knows comes from its own error messages; what a file leads to, from the program unit_file_values.
"""

import os
import re
import subprocess
import tomllib
import unittest

import manual
from unit_runner import TIMEOUT_S, UnitTestCase

REPEATED = ("module", "calibration", "channel", "fault")
TYPES = ("integer", "number", "text", "boolean", "table")


class Key:
    """A key as the page describes it."""

    def __init__(self, table, entry):
        self.table = table
        self.name, text, self.otherwise = re.fullmatch(r"(\w+) \((.*); (needed|no default|default .*)\)", entry).groups()
        self.type = text.split()[0].rstrip(",")
        self.bounds = re.search(r"from (-?[\d.]+) to (-?[\d.]+)", text)
        self.words = re.findall(r'"([^"]+)"', text)
        self.is_list = text.endswith("or a list of three")

    @property
    def default(self):
        return self.otherwise.removeprefix("default ") if self.otherwise.startswith("default ") else None

    def wrong_value(self):
        """Returns a value of a type that the key does not take, so that the reader says which it does."""
        return "1" if self.type == "table" else "{}"

    def expected_refusal(self):
        """Returns what the reader says of such a value."""
        if self.type in ("integer", "number"):
            whole = "a whole number" if self.type == "integer" else "a number"
            return f"{whole} from {self.bounds.group(1)} to {self.bounds.group(2)}"
        return {"text": "a text in quotes", "boolean": "true or false", "table": f"a table, written [{self.name}]"}[
            self.type]

    def other_values(self):
        """Returns values that the key takes, which are not those that hold without it."""
        if self.bounds:
            lists = ["[1, 2, 3]"] if self.is_list else []
            return [bound for bound in (self.bounds.group(2), self.bounds.group(1)) if bound != self.default] + lists
        others = {"boolean": ["true", "false"], "table": ["{ seed = 9 }"],
                  "text": [f'"{word}"' for word in self.words or ["other"]]}
        return [value for value in others[self.type] if value != self.default]


def described_keys():
    """Returns the keys of each table of the page, by the table's name."""
    tables = manual.sections(manual.sections(manual.source("unit.toml.5"))["TABLES"], "##")
    return {re.sub(r"[\[\]]", "", heading): [Key(re.sub(r"[\[\]]", "", heading), entry)
                                             for entry in manual.entries(text)] for heading, text in tables.items()}


def smallest(tables):
    """Returns a file with every table, in which only the keys stand that have to be there."""
    needed = {"module": {"name": '"M"', "library": '"m.so"'}, "calibration": {"name": '"C"', "file": '"c.csv"'},
              "storage": {"file": '"s.toml"'}, "profile": {"file": '"p.csv"'}, "channel": {"number": "0"},
              "fault": {"channel": "0", "operation": '"getPmeasured"', "kind": '"fail"'}}
    return {table: dict(needed.get(table, {})) for table in tables}


def text_of(tables):
    lines = []
    for table, keys in tables.items():
        lines.append(f"[[{table}]]" if table in REPEATED else f"[{table}]")
        lines += [f"{key} = {value}" for key, value in keys.items()]
    return "\n".join(lines) + "\n"


class UnitFileManual(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.keys = described_keys()
        self.all_keys = [key for keys in self.keys.values() for key in keys]

    def write(self, changes=None, left_out=None):
        """Writes the smallest file with a key more, or one less."""
        tables = smallest(self.keys)
        for (table, key), value in (changes or {}).items():
            tables.setdefault(table, {})[key] = value
        if left_out:
            del tables[left_out[0]][left_out[1]]
        self.unit_file.write_text(text_of(tables))

    def refusal(self, **what):
        """Returns why the program refuses such a file."""
        self.write(**what)
        result = self.run_unit()
        self.assertEqual(result.returncode, 2, result.stdout + result.stderr)
        return result.stderr.strip()

    def values(self, changes=None):
        """Returns what such a file leads to; None when it is refused."""
        self.write(changes)
        result = subprocess.run([os.environ["OPC_UNIT_FILE_VALUES"], self.unit_file], capture_output=True, text=True,
                                timeout=TIMEOUT_S, check=False)
        return result.stdout if result.returncode == 0 else None

    def known(self, table):
        """Returns the keys that the reader names when it meets one that it does not know."""
        message = self.refusal(changes={(table, "no_such_key"): "1"})
        self.assertIn("known keys: ", message)
        return sorted(message.partition("known keys: ")[2].split(", "))

    def test_it_has_the_tables_that_the_reader_knows(self):
        self.assertEqual(sorted(self.keys), self.known("no_such_table"))

    def test_each_table_has_the_keys_that_the_reader_knows(self):
        for table, keys in self.keys.items():
            if table != "trace":
                with self.subTest(table):
                    self.assertEqual(sorted(key.name for key in keys), self.known(table))

    def test_the_trace_table_has_the_keys_of_the_example(self):
        # Any other key names a group, so the reader refuses none.
        example = tomllib.loads(self.unit_file.read_text())["trace"]
        self.assertEqual(sorted(key.name for key in self.keys["trace"]), sorted(set(example) - {"RQX.OPC"}))

    def test_types_and_ranges_are_those_that_the_reader_takes(self):
        for key in self.all_keys:
            with self.subTest(f"{key.table}.{key.name}"):
                self.assertIn(key.type, TYPES)
                message = self.refusal(changes={(key.table, key.name): key.wrong_value()})
                self.assertEqual(message.partition(" must be ")[2], key.expected_refusal(), message)

    def test_words_are_those_that_the_reader_takes(self):
        for key in self.all_keys:
            if key.words:
                with self.subTest(f"{key.table}.{key.name}"):
                    message = self.refusal(changes={(key.table, key.name): '"?"'}).partition("must be ")[2]
                    taken = re.findall(r'"([^"]+)"', message) or message.removeprefix("one of ").split(", ")
                    self.assertEqual(key.words, taken)

    def test_what_is_needed_is_missed(self):
        needed = [(table, key) for table, keys in smallest(self.keys).items() for key in keys]
        for table, key in needed:
            with self.subTest(f"{table}.{key}"):
                self.assertIn(f"has no key {key}; add it", self.refusal(left_out=(table, key)))
        self.assertIsNotNone(self.values(), "more is needed")
        self.assertEqual({(key.table, key.name) for key in self.all_keys if key.otherwise == "needed"}, set(needed))

    def test_defaults_are_what_holds_without_the_key(self):
        otherwise = self.values()
        for key in self.all_keys:
            if key.otherwise == "needed":
                continue
            with self.subTest(f"{key.table}.{key.name}"):
                if key.default is not None:
                    self.assertEqual(self.values({(key.table, key.name): key.default}), otherwise)
                others = [self.values({(key.table, key.name): value}) for value in key.other_values()]
                taken = [other for other in others if other is not None]
                self.assertTrue(taken, "the reader takes none of the values described")
                self.assertNotIn(otherwise, taken, "another value makes no difference")

    def test_the_smallest_unit_of_the_page_runs(self):
        shown = re.search(r"^```\n(\[\[module\]\]\n.*?)^```$", manual.source("unit.toml.5"), re.MULTILINE | re.DOTALL)
        self.unit_file.write_text(shown.group(1))
        self.assert_well(self.run_unit("--duration", "0.3", "--port", "0"))


if __name__ == "__main__":
    unittest.main()
