"""The list of equivalent mutants."""

import pathlib
import tempfile
import unittest

import equivalents
from mutants import Change, name_changes

ENTRY = """[[equivalent]]
file = "F.cpp"
line = "a = 1 + 2;"
operator = "constant"
change = "1 -> 7"
reason = "nobody reads a"
"""


def mutants():
    return name_changes("F.cpp", b"  a = 1 + 2;\n", [Change(6, 7, "7", "constant"), Change(6, 7, "8", "constant"),
                                                     Change(8, 9, "-", "arithmetic")])


class List(unittest.TestCase):
    def match(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "list.toml"
            path.write_text(text)
            return equivalents.match(path, equivalents.read(path), mutants())

    def refused(self, text, words):
        with self.assertRaisesRegex(equivalents.ListError, words):
            self.match(text)

    def test_an_entry_finds_its_mutant(self):
        self.assertEqual(self.match(ENTRY), {mutants()[0].id: "nobody reads a"})

    def test_without_a_change_it_finds_all_of_the_operator(self):
        self.assertEqual(len(self.match(ENTRY.replace('change = "1 -> 7"\n', ""))), 2)

    def test_a_line_above_has_to_be_there(self):
        self.refused(ENTRY + 'previous = "{"\n', "entry 1 fits no mutant")
        self.assertEqual(len(self.match(ENTRY + 'previous = ""\n')), 1)

    def test_an_empty_list_finds_none(self):
        self.assertEqual(self.match(""), {})

    def test_a_line_that_is_gone_is_an_error(self):
        self.refused(ENTRY.replace("1 + 2", "1 + 3"), "entry 1 fits no mutant")

    def test_another_operator_is_an_error(self):
        self.refused(ENTRY.replace("constant", "text"), "entry 1 fits no mutant")

    def test_an_entry_without_reason_is_an_error(self):
        self.refused(ENTRY.replace('"nobody reads a"', '" "'), "reason is missing or empty")

    def test_an_unknown_key_is_an_error(self):
        self.refused(ENTRY + 'id = "1"\n', "unknown key 'id'")
        self.refused("more = 1\n" + ENTRY, "unknown key 'more'")

    def test_what_is_no_toml_is_an_error(self):
        self.refused("[[equivalent", "list.toml")


if __name__ == "__main__":
    unittest.main()
