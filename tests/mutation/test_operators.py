"""What may come in the place of a construct."""

import unittest

import operators


class Binary(unittest.TestCase):
    def test_a_comparison_becomes_its_neighbours(self):
        self.assertEqual(operators.binary("<"), [("relational", "<="), ("relational", ">")])
        self.assertEqual(operators.binary("=="), [("relational", "!="), ("relational", "<="), ("relational", ">=")])

    def test_arithmetic_keeps_the_assignment(self):
        self.assertEqual(operators.binary("-"), [("arithmetic", "+")])
        self.assertEqual(operators.binary("+="), [("arithmetic", "-=")])

    def test_logical_operators_become_each_other(self):
        self.assertEqual(operators.binary("&&"), [("logical", "||")])
        self.assertEqual(operators.binary("||"), [("logical", "&&")])

    def test_shifts_and_bits_change(self):
        self.assertEqual(operators.binary("<<="), [("bits", ">>=")])
        self.assertEqual(operators.binary("|"), [("bits", "&")])

    def test_an_assignment_stays(self):
        self.assertEqual(operators.binary("="), [])

    def test_no_operator_becomes_itself(self):
        for operator in [*operators.RELATIONAL, *operators.ARITHMETIC, *operators.LOGICAL, *operators.BITS]:
            with self.subTest(operator):
                self.assertNotIn(operator, [other for _, other in operators.binary(operator)])

    def test_each_mutation_operator_is_explained(self):
        for operator in [*operators.RELATIONAL, *operators.ARITHMETIC, *operators.LOGICAL, *operators.BITS]:
            for name, _ in operators.binary(operator):
                self.assertIn(name, operators.OPERATORS)


class Unary(unittest.TestCase):
    def test_increments_become_each_other(self):
        self.assertEqual(operators.unary("++"), [("increment", "--")])

    def test_a_sign_and_a_negation_are_left_out(self):
        self.assertEqual(operators.unary("-"), [("sign", "")])
        self.assertEqual(operators.unary("!"), [("logical", "")])

    def test_a_dereference_stays(self):
        self.assertEqual(operators.unary("*"), [])


class Integer(unittest.TestCase):
    def test_one_more_one_less_zero_and_negative(self):
        self.assertEqual(operators.integer("100"), ["101", "99", "0", "(-100)"])

    def test_zero_has_two_neighbours(self):
        self.assertEqual(operators.integer("0"), ["1", "(-1)"])

    def test_without_sign_there_is_nothing_negative(self):
        self.assertEqual(operators.integer("24U"), ["25U", "23U", "0U"])
        self.assertEqual(operators.integer("0U"), ["1U"])

    def test_digits_may_be_grouped_hexadecimal_or_octal(self):
        self.assertEqual(operators.integer("1'000")[0], "1001")
        self.assertEqual(operators.integer("0x10")[0], "17")
        self.assertEqual(operators.integer("010")[0], "9")

    def test_a_name_is_no_number(self):
        self.assertEqual(operators.integer("EAF_OK"), [])
        self.assertEqual(operators.integer("1.5"), [])


class Text(unittest.TestCase):
    def test_a_string_becomes_another_and_an_empty_one(self):
        self.assertEqual(operators.string('"TX_ON"'), ['"?TX_ON"', '""'])

    def test_an_empty_string_becomes_another(self):
        self.assertEqual(operators.string('""'), ['"?"'])

    def test_a_name_is_no_string(self):
        self.assertEqual(operators.string("__func__"), [])

    def test_a_character_becomes_another(self):
        self.assertEqual(operators.character("'_'"), ["'?'"])
        self.assertEqual(operators.character("'?'"), ["'!'"])


class Enumerator(unittest.TestCase):
    NAMES = ["first", "second", "third"]

    def test_inside_there_are_two_neighbours(self):
        self.assertEqual(operators.neighbours(self.NAMES, "second"), ["first", "third"])

    def test_at_an_end_there_is_one(self):
        self.assertEqual(operators.neighbours(self.NAMES, "first"), ["second"])
        self.assertEqual(operators.neighbours(self.NAMES, "third"), ["second"])


if __name__ == "__main__":
    unittest.main()
