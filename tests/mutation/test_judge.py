"""Running a test program that may do anything."""

import pathlib
import tempfile
import unittest

import judge


class Run(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_program(self, text, **options):
        program = self.folder / "program"
        program.write_text(f"#!/bin/bash\n{text}\n")
        program.chmod(0o755)
        return judge.run(program, self.folder, **options)

    def test_passing_tests_kill_nothing(self):
        self.assertIsNone(self.run_program("exit 0"))

    def test_the_failed_test_is_named(self):
        self.assertEqual(self.run_program('echo "[  FAILED  ] RampStep.Ends (0 ms)"; exit 1'), "RampStep.Ends")

    def test_a_crash_names_the_test_that_ran(self):
        self.assertEqual(self.run_program('echo "[ RUN      ] RampStep.Ends"; kill -SEGV $$'),
                         "RampStep.Ends (signal 11)")

    def test_a_program_that_fails_before_its_tests_is_named_so(self):
        self.assertEqual(self.run_program("exit 127"), "start (exit 127)")

    def test_a_loop_without_end_is_ended(self):
        self.assertRegex(self.run_program('echo "[ RUN      ] A.B"; while :; do :; done', processor_seconds=1),
                         r"A\.B \(signal (9|24)\)")

    def test_output_without_end_is_ended(self):
        self.assertEqual(self.run_program('echo "[ RUN      ] A.B"; exec yes'), "A.B (signal 25)")

    def test_only_the_given_tests_run(self):
        self.assertEqual(self.run_program('[[ "$*" == *--gtest_filter=A.B:C.D* ]]', tests=["A.B", "C.D"]), None)


if __name__ == "__main__":
    unittest.main()
