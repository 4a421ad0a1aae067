"""Verdicts: how long they hold, and what is said of them."""

import pathlib
import tempfile
import unittest
from collections import Counter

import results
from mutants import Change, name_changes


def mutant():
    return name_changes("folder/F.cpp", b"a = 1;\n", [Change(4, 5, "7", "constant")])[0]


class Resume(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = pathlib.Path(folder.name) / "results.jsonl"

    def known(self, verdict, source="s", tests="t", resume=True):
        results.Results(self.path, resume=False).add(mutant(), verdict, "s", "t")
        return results.Results(self.path, resume).known(mutant(), source, tests)

    def test_a_verdict_holds(self):
        self.assertEqual(self.known(results.KILLED), results.KILLED)
        self.assertEqual(self.known(results.SURVIVED), results.SURVIVED)

    def test_a_changed_file_is_judged_again(self):
        self.assertIsNone(self.known(results.KILLED, source="other"))

    def test_changed_tests_judge_survivors_again(self):
        self.assertIsNone(self.known(results.SURVIVED, tests="other"))
        self.assertEqual(self.known(results.KILLED, tests="other"), results.KILLED)

    def test_without_resuming_nothing_holds(self):
        self.assertIsNone(self.known(results.KILLED, resume=False))

    def test_a_line_that_was_cut_is_left_out(self):
        results.Results(self.path, resume=False).add(mutant(), results.KILLED, "s", "t")
        with self.path.open("a", encoding="utf-8") as stream:
            stream.write('{"id": "12')
        self.assertEqual(results.Results(self.path, True).known(mutant(), "s", "t"), results.KILLED)


class Report(unittest.TestCase):
    def test_only_killed_and_survived_count(self):
        counts = Counter({results.KILLED: 3, results.SURVIVED: 1, results.SAME: 5, results.INVALID: 7,
                          results.EQUIVALENT: 9})
        self.assertEqual(results.score(counts), 75.0)

    def test_nothing_has_no_score(self):
        self.assertIsNone(results.score(Counter({results.INVALID: 1})))

    def test_survivors_are_named(self):
        text = "\n".join(results.report([mutant()], {mutant().id: results.SURVIVED}))
        self.assertIn(f"{mutant().id} F.cpp:1 constant: 1 -> 7", text)
        self.assertIn("0.0 %", text)


if __name__ == "__main__":
    unittest.main()
