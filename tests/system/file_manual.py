"""Holds a man page of a configuration file against the program that reads such files."""

import os
import re
import subprocess

import manual
from unit_runner import TIMEOUT_S

TYPES = ("integer", "number", "text", "boolean", "table", "list")


class Key:
    """A key as a page describes it."""

    def __init__(self, table, entry):
        self.table = table
        form = r"(\w+) \((.*); (needed|no default|default .*)\)"
        self.name, text, self.otherwise = re.fullmatch(form, entry).groups()
        self.type = text.split()[0].rstrip(",")
        self.range = re.search(r"from (-?[\d.]+) to (-?[\d.]+)|above (0), at most (\d+)", text)
        self.words = re.findall(r'"([^"]+)"', text)
        self.is_list = text.endswith("or a list of three")

    @property
    def default(self):
        return self.otherwise.removeprefix("default ") if self.otherwise.startswith("default ") else None

    def wrong_value(self):
        """Returns a value of a type that the key does not take, so that the reader says which it does."""
        return "1" if self.type == "table" else "{}"

    def expected_refusal(self):
        """Returns what the end of the reader's message on such a value looks like."""
        if self.type == "list":
            return "a list.*"
        if self.type in ("integer", "number"):
            taken = re.escape(self.range.group(0)) if self.range else r"from \S+ to \S+"
            return f" must be {'a whole number' if self.type == 'integer' else 'a number'} {taken}"
        return " must be " + {"text": "a text in quotes", "boolean": "true or false",
                              "table": re.escape(f"a table, written [{self.name}]")}[self.type]

    def other_values(self):
        """Returns values that the key may take, which are not those that hold without it."""
        if self.range:
            lists = ["[1, 2, 3]"] if self.is_list else []
            bounds = [bound for bound in self.range.groups() if bound and bound != self.default]
            return list(reversed(bounds)) + lists
        others = {"boolean": ["true", "false"], "table": ["{ rapp_p = 9 }"],
                  "text": [f'"{word}"' for word in self.words or ["other"]]}
        return [value for value in others[self.type] if value != self.default]


def without_brackets(heading):
    return re.sub(r"[\[\]]", "", heading)


def described_tables(page):
    """Returns the texts of a page on each table, by the table's name."""
    tables = manual.sections(manual.sections(manual.source(page))["TABLES"], "##")
    return {without_brackets(heading): text for heading, text in tables.items()}


class FileManual:
    """
    The tests of a page, for a UnitTestCase that has PAGE, KIND of the file and run_file(), and says what differs from
    what follows. "" stands for the table of the keys before all tables.
    """

    REPEATED = ()  # tables that may come more than once
    NEEDED = {}  # by table: keys that have to be there, with values
    MORE = {}  # by table: further ones that the smallest file has, because something has to stand there
    OTHER = {}  # by table and key: values where the bounds are not taken
    SURROUNDINGS = {}  # by table and key: how the smallest file changes for a key to be looked at
    FREE_TABLES = ()  # tables whose keys are not all known

    def setUp(self):
        super().setUp()
        self.keys = {table: [Key(table, entry) for entry in manual.entries(text)]
                     for table, text in self.tables().items()}
        self.all_keys = [key for keys in self.keys.values() for key in keys]
        self.file = self.folder / f"{self.KIND}.toml"

    def tables(self):
        """Returns the texts on the tables whose keys are described with types."""
        return described_tables(self.PAGE)

    def text_of(self, tables):
        lines = []
        for table, keys in sorted(tables.items(), key=lambda item: item[0] != ""):
            if table:
                lines.append(f"[[{table}]]" if table in self.REPEATED else f"[{table}]")
            lines += [f"{key} = {value}" for key, value in keys.items()]
        return "\n".join(lines) + "\n"

    def write(self, changes=None, left_out=None):
        """Writes the smallest file that has every table, with changes, of which None takes a key out, or a key less."""
        tables = {table: dict(self.NEEDED.get(table, {})) | self.MORE.get(table, {}) for table in self.keys}
        for (table, key), value in (changes or {}).items():
            tables.setdefault(table, {})[key] = value
        tables = {table: {key: value for key, value in keys.items() if value is not None}
                  for table, keys in tables.items()}
        if left_out:
            del tables[left_out[0]][left_out[1]]
        self.file.write_text(self.text_of(tables))

    def refusal(self, **what):
        """Returns why the program refuses such a file."""
        self.write(**what)
        result = self.run_file()
        self.assertEqual(result.returncode, 2, result.stdout + result.stderr)
        return result.stderr.strip()

    def values(self, changes=None):
        """Returns what such a file leads to; None when it is refused."""
        self.write(changes)
        return self.values_of_file()

    def values_of_file(self):
        program = os.environ[f"OPC_{self.KIND.upper()}_FILE_VALUES"]
        result = subprocess.run([program, self.file], capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        return result.stdout if result.returncode == 0 else None

    def with_key(self, key, value):
        """Returns the changes that give a key this value; None leaves it out."""
        return {**self.SURROUNDINGS.get((key.table, key.name), {}), (key.table, key.name): value}

    def known(self, table):
        """Returns the keys that the reader names when it meets one that it does not know."""
        message = self.refusal(changes={(table, "no_such_key"): "1"})
        self.assertIn("known keys: ", message)
        return sorted(message.partition("known keys: ")[2].split(", "))

    def test_each_table_has_the_keys_that_the_reader_knows(self):
        for table, keys in self.keys.items():
            if table not in ("", *self.FREE_TABLES):
                with self.subTest(table):
                    self.assertEqual(sorted(key.name for key in keys), self.known(table))

    def test_types_and_ranges_are_those_that_the_reader_takes(self):
        for key in self.all_keys:
            with self.subTest(f"{key.table}.{key.name}"):
                self.assertIn(key.type, TYPES)
                message = self.refusal(changes=self.with_key(key, key.wrong_value()))
                self.assertRegex(message, key.expected_refusal() + "$")

    def test_words_are_those_that_the_reader_takes(self):
        for key in self.all_keys:
            if key.words:
                with self.subTest(f"{key.table}.{key.name}"):
                    message = self.refusal(changes=self.with_key(key, '"?"')).partition("must be ")[2]
                    taken = re.findall(r'"([^"]+)"', message) or message.removeprefix("one of ").split(", ")
                    self.assertEqual(key.words, taken)

    def test_what_is_needed_is_missed(self):
        needed = [(table, key) for table, keys in self.NEEDED.items() for key in keys]
        for table, key in needed:
            with self.subTest(f"{table}.{key}"):
                self.assertIn(f"has no key {key}; add it", self.refusal(left_out=(table, key)))
        self.assertIsNotNone(self.values(), "more is needed")
        self.assertEqual({(key.table, key.name) for key in self.all_keys if key.otherwise == "needed"}, set(needed))

    def test_defaults_are_what_holds_without_the_key(self):
        for key in self.all_keys:
            if key.otherwise == "needed" or key.name in self.MORE.get(key.table, {}):
                continue
            with self.subTest(f"{key.table}.{key.name}"):
                otherwise = self.values(self.with_key(key, None))
                if key.default is not None:
                    self.assertIsNotNone(otherwise)
                    self.assertEqual(self.values(self.with_key(key, key.default)), otherwise)
                others = self.OTHER.get((key.table, key.name)) or key.other_values()
                taken = list(filter(None, (self.values(self.with_key(key, value)) for value in others)))
                self.assertTrue(taken, "the reader takes none of the values described")
                self.assertNotIn(otherwise, taken, "another value makes no difference")
