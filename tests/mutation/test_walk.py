"""Which changes are found in a file."""

import pathlib
import tempfile
import unittest

import walk
from mutants import name_changes


def changes(source):
    """(operator, before, after) of all changes of a source."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "F.cpp"
        path.write_text(source)
        found = walk.find_changes(path, source.encode(), ["-std=c++20"])
    return [(mutant.operator, " ".join(mutant.before.split()), " ".join(mutant.after.split()))
            for mutant in name_changes("F.cpp", source.encode(), found)]


def of(operator, source):
    """(before, after) of the changes by one operator."""
    return [(before, after) for kind, before, after in changes(source) if kind == operator]


class Expressions(unittest.TestCase):
    def test_a_comparison(self):
        self.assertEqual(of("relational", "bool f(int a) { return a < 3; }"), [("<", "<="), ("<", ">")])

    def test_what_says_the_same_of_a_number_without_sign_is_left_out(self):
        self.assertEqual(of("relational", "bool f(unsigned a) { return a != 0; }"), [("!=", "<"), ("!=", "==")])

    def test_a_template_bracket_is_no_comparison(self):
        self.assertEqual(of("relational", "template <class T> T g(); int f() { return g<int>(); }"), [])

    def test_a_dereference_is_no_product(self):
        self.assertEqual(of("arithmetic", "int f(int* p) { return *p; }"), [])

    def test_a_compound_assignment(self):
        self.assertEqual(of("arithmetic", "void f(int& a) { a += 2; }"), [("+=", "-=")])

    def test_prefix_and_suffix_increments(self):
        self.assertEqual(of("increment", "void f(int& a) { ++a; a--; }"), [("++", "--"), ("--", "++")])

    def test_a_stream_operand_and_not_a_shift(self):
        source = "struct S { S& operator<<(int); }; void f(S& s, int a) { s << a << 2; }"
        self.assertEqual(of("operand", source), [("<< a", ""), ("<< 2", "")])
        self.assertEqual(of("bits", source), [])

    def test_a_shift_and_not_a_stream_operand(self):
        source = "int f(int a) { return a << 2; }"
        self.assertEqual(of("operand", source), [])
        self.assertEqual(of("bits", source), [("<<", ">>")])

    def test_a_cast(self):
        self.assertEqual(of("cast", "int f(long a) { return static_cast<int>(a); }"), [("static_cast<int>(a)", "(a)")])

    def test_an_enumerator_keeps_its_scope(self):
        source = "struct S { enum E { A, B, C }; }; int f() { return S::B; }"
        self.assertEqual(of("enumerator", source), [("S::B", "S::A"), ("S::B", "S::C")])

    def test_a_named_result_but_not_its_definition(self):
        source = "#define EAF_OK 0\n#define EAF_FAILED 1\nint f() { return EAF_OK; }\n"
        self.assertEqual(of("constant", source), [("EAF_OK", "EAF_FAILED")])

    def test_strings_in_a_row_are_one(self):
        self.assertEqual(of("text", 'const char* s = "a" "b";'), [('"a" "b"', '""'), ('"a" "b"', '"?a" "b"')])


class Conditions(unittest.TestCase):
    def test_an_if_is_negated(self):
        self.assertEqual(of("condition", "bool g(); void f() { if (g()) { } }"), [("g()", "!(g())")])

    def test_an_equality_is_negated_once(self):
        source = "void f(int a) { if (a == 1) { } }"
        self.assertEqual(of("condition", source), [])
        self.assertIn(("==", "!="), of("relational", source))

    def test_a_choice_is_negated(self):
        self.assertEqual(of("condition", "int f(bool b) { return b ? 1 : 2; }"), [("b", "!(b)")])

    def test_a_returned_truth_value_is_negated(self):
        self.assertEqual(of("condition", "bool f(bool b) { return b; }"), [("b", "!(b)")])

    def test_an_else_branch_is_left_out(self):
        self.assertEqual(of("else", "void g(); void f(bool b) { if (b) { g(); } else { g(); } }"),
                         [("else { g(); }", "")])


class Statements(unittest.TestCase):
    def test_calls_and_assignments_are_left_out(self):
        source = "void g(); void f(int& a) { g(); a = 1; }"
        self.assertEqual(of("statement", source), [("g()", "(void)0"), ("a = 1", "(void)0")])

    def test_a_loop_is_left_out(self):
        self.assertEqual(of("statement", "void f(int a) { for (; a < 3; ++a) { } }"),
                         [("for (; a < 3; ++a) { }", "{}")])

    def test_a_break_and_a_label_are_left_out(self):
        source = "void g(); void f(int a) { switch (a) { case 1: g(); break; default: break; } }"
        self.assertEqual(of("statement", source), [("g()", "(void)0"), ("break", "(void)0"), ("break", "(void)0")])
        self.assertEqual(of("case", source), [("case 1:", "")])

    def test_a_declaration_stays(self):
        self.assertEqual(of("statement", "void f() { int a = 1; (void)a; }"), [])

    def test_a_returned_value_becomes_empty(self):
        self.assertEqual(of("return", "int g(); int f() { return g(); }"), [("g()", "{}")])

    def test_a_first_value_becomes_empty(self):
        self.assertEqual(of("initial", "int g(); void f() { int a = g(); (void)a; }"), [("g()", "{}")])
        self.assertEqual(of("initial", "struct S { int m; S(int a) : m(a) {} };"), [("a", "")])


class Arguments(unittest.TestCase):
    def test_neighbours_change_places(self):
        self.assertEqual(of("arguments", "void g(int, int, int); void f(int a, int b) { g(a, b, 1); }"),
                         [("a, b", "b, a"), ("b, 1", "1, b")])

    def test_equal_arguments_do_not(self):
        self.assertEqual(of("arguments", "void g(int, int); void f(int a) { g(a, a); }"), [])

    def test_arguments_that_are_not_written_do_not(self):
        self.assertEqual(of("arguments", "void g(int, int = __builtin_LINE()); void f(int a) { g(a); }"), [])

    def test_members_keep_their_names(self):
        source = "struct S { int m, n; }; S f(int a, int b) { return {.m = a, .n = b}; }"
        self.assertEqual(of("arguments", source), [("a, .n = b", "b, .n = a")])


class Files(unittest.TestCase):
    def test_what_is_included_stays(self):
        self.assertEqual(changes("#include <cstdint>\n"), [])

    def test_a_file_that_cannot_be_read_is_an_error(self):
        with self.assertRaisesRegex(RuntimeError, "F.cpp cannot be read: .*unknown type"):
            changes("Unknown f();\n")


if __name__ == "__main__":
    unittest.main()
