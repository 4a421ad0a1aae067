"""Mutants: what they do to a file, and how they are named."""

import unittest

from mutants import Change, name_changes, short

SOURCE = b"int f()\n{\n    return g(1,\n             2);\n}\n"


def changed(source, before, after, operator="constant"):
    start = source.index(before)
    return name_changes("F.cpp", source, [Change(start, start + len(before), after, operator)])[0]


class Apply(unittest.TestCase):
    def test_replaces_the_piece(self):
        self.assertEqual(changed(SOURCE, b"1", "7").apply(SOURCE), SOURCE.replace(b"1", b"7"))

    def test_keeps_the_number_of_lines(self):
        mutant = changed(SOURCE, b"g(1,\n             2)", "{}", "return")
        self.assertEqual(mutant.apply(SOURCE), b"int f()\n{\n    return {}\n;\n}\n")


class Name(unittest.TestCase):
    def test_outlives_lines_before_it(self):
        moved = b"// more\n\n" + SOURCE
        self.assertEqual(changed(SOURCE, b"1", "7").id, changed(moved, b"1", "7").id)
        self.assertEqual(changed(moved, b"1", "7").line, 5)

    def test_outlives_indentation(self):
        self.assertEqual(changed(b"  a = 1;\n", b"1", "7").id, changed(b"a = 1;\n", b"1", "7").id)

    def test_tells_equal_lines_apart(self):
        source = b"a = 1;\na = 1;\n"
        mutants = name_changes("F.cpp", source, [Change(4, 5, "7", "constant"), Change(11, 12, "7", "constant")])
        self.assertEqual([mutant.line for mutant in mutants], [1, 2])
        self.assertNotEqual(mutants[0].id, mutants[1].id)

    def test_tells_places_in_a_line_apart(self):
        source = b"a = 1 + 1;\n"
        mutants = name_changes("F.cpp", source, [Change(4, 5, "7", "constant"), Change(8, 9, "7", "constant")])
        self.assertNotEqual(mutants[0].id, mutants[1].id)

    def test_equal_changes_are_one_mutant(self):
        change = Change(4, 5, "7", "constant")
        self.assertEqual(len(name_changes("F.cpp", b"a = 1;\n", [change, change])), 1)

    def test_what_changes_nothing_is_no_mutant(self):
        self.assertEqual(name_changes("F.cpp", b"a = 1;\n", [Change(4, 5, "1", "constant")]), [])


class Short(unittest.TestCase):
    def test_is_one_line(self):
        self.assertEqual(short("g(1,\n   2)"), "g(1, 2)")

    def test_leaves_out_the_middle_of_what_is_long(self):
        self.assertEqual(len(short("x" * 200)), 60)


if __name__ == "__main__":
    unittest.main()
