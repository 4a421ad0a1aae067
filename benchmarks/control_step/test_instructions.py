#!/usr/bin/env python3
"""Plants growth and expects it to be found.

Reads from the environment: OPC_STEP_INSTRUCTIONS, the built program; OPC_CXX, its compiler.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import tomllib
import unittest

import callgrind
import instructions

SCRIPT = pathlib.Path(instructions.__file__)
CASE = "closed loop, no log"
FUNCTION = "OutputPowerController::regulate(int)"


def dump(name, steps, functions):
    """Returns what callgrind would write: each function executes itself, then calls one that costs much."""
    lines = [f"desc: Trigger: Client Request: {name}|{steps}", "events: Ir", "fl=(1) file.cpp"]
    for number, (function, cost) in enumerate(functions.items(), 10):
        lines += [f"fn=({number}) {function}", f"12 {cost}", "cfn=(99) called", "calls=1 1", "* 100000"]
    return "\n".join(lines) + "\n"


def counted(**functions):
    return callgrind.cases([dump("a", 10, {name: 10 * cost + 7 for name, cost in functions.items()}),
                            dump("a", 20, {name: 20 * cost + 7 for name, cost in functions.items()})])


def budgets(**functions):
    return {"a": {"count": sum(functions.values()), "functions": functions}}


class CompareTest(unittest.TestCase):
    def test_what_comes_before_and_after_the_steps_is_not_counted(self):
        cases = counted(f=30, g=70)
        self.assertEqual(cases["a"].total, 100)
        self.assertEqual(cases["a"].functions, {"f": 30, "g": 70})

    def test_two_per_cent_more_or_less_pass(self):
        for cost in (68, 70, 72):
            self.assertEqual(instructions.compare(counted(f=30, g=cost), budgets(f=30, g=70)), ([], []))

    def test_growth_names_the_functions_that_grew_the_largest_first(self):
        above, below = instructions.compare(counted(f=32, g=65, h=9), budgets(f=30, g=70))
        self.assertEqual(below, [])
        self.assertEqual(above, ["a: 106 instructions, 6.0 % above its budget of 100\n    h: 9, 9 more\n    f: 32, 2 more"])

    def test_a_budget_that_can_be_lowered_is_said_and_no_failure(self):
        above, below = instructions.compare(counted(f=30, g=60), budgets(f=30, g=70))
        self.assertEqual(above, [])
        self.assertEqual(below, ["a: 90 instructions, 10.0 % below its budget of 100; the budget can be lowered"])

    def test_a_case_without_a_budget_and_a_budget_without_a_case_fail(self):
        self.assertEqual(instructions.compare(counted(f=1), {})[0], ["a: 1 instructions and no budget"])
        self.assertEqual(instructions.compare({}, budgets(f=1))[0], ["a: has a budget and is not counted any more"])


@unittest.skipUnless(shutil.which("valgrind"), "there is no valgrind")
class ProgramTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.budgets = pathlib.Path(cls.folder.name) / "budgets.toml"
        cls.run_script("--update-budgets")
        cls.text = cls.budgets.read_text(encoding="utf-8")

    @classmethod
    def run_script(cls, *options):
        command = (sys.executable, "-B", SCRIPT, os.environ["OPC_STEP_INSTRUCTIONS"], "--budgets", cls.budgets,
                   "--compiler", os.environ["OPC_CXX"], *options)
        return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False)

    def plant(self, difference):
        """Lets a function of one case have executed more or less when the budgets were made."""
        (known,) = tomllib.loads(self.text).values()
        case = known["cases"][CASE]
        cost = case["functions"][FUNCTION]
        head, mark, rest = self.text.partition(f'."{CASE}"]\n')
        rest = rest.replace(f"count = {case['count']}\n", f"count = {case['count'] + difference}\n", 1)
        rest = rest.replace(f'"{FUNCTION}" = {cost}\n', f'"{FUNCTION}" = {cost + difference}\n', 1)
        self.budgets.write_text(head + mark + rest, encoding="utf-8")

    def test_the_same_program_executes_the_same(self):
        self.plant(0)
        run = self.run_script()
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertNotIn("budget", run.stdout)

    def test_growth_fails_with_the_case_and_the_function(self):
        self.plant(-20)
        run = self.run_script()
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertRegex(run.stdout, rf"{CASE}: \d+ instructions, [\d.]+ % above its budget of \d+\n"
                                     rf"    OutputPowerController::regulate\(int\): \d+, 20 more\nMake it")

    def test_less_passes_and_is_said(self):
        self.plant(20)
        run = self.run_script()
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertIn("the budget can be lowered", run.stdout)

    def test_another_compiler_is_named_in_the_failure(self):
        self.plant(-20)
        text = self.budgets.read_text(encoding="utf-8")
        self.budgets.write_text(text.replace("compiler = \"", "compiler = \"older "), encoding="utf-8")
        run = self.run_script()
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stdout, r"The budgets were counted with older .*; this is ")


if __name__ == "__main__":
    unittest.main()
