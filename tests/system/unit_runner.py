"""Starts the program for the system tests, in a folder of its own with a copy of the examples."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ["OPC_PROGRAM"]
EXAMPLES = pathlib.Path(os.environ["OPC_EXAMPLES"])
TIMEOUT_S = 60


class UnitTestCase(unittest.TestCase):
    """Gives each test a folder with the examples in it."""

    def setUp(self):
        self._temporary = tempfile.TemporaryDirectory(prefix="opc-test-")
        self.addCleanup(self._temporary.cleanup)
        self.folder = pathlib.Path(self._temporary.name) / "examples"
        shutil.copytree(EXAMPLES, self.folder)
        self.unit_file = self.folder / "unit.toml"
        self.edit("port = 8080 ", "port = 0 ")  # units of several tests run at once

    def edit(self, old, new):
        """Replaces a text, which must be there, in the unit file."""
        text = self.unit_file.read_text()
        self.assertIn(old, text)
        self.unit_file.write_text(text.replace(old, new))

    def append(self, text):
        """Adds a text to the unit file and returns the number of its first line."""
        before = self.unit_file.read_text()
        self.unit_file.write_text(before + text)
        return before.count("\n") + 1

    def line_of(self, text):
        """Returns the number of the unit file's first line that has a text."""
        lines = self.unit_file.read_text().splitlines()
        return next(number for number, line in enumerate(lines, 1) if text in line)

    def command(self, *arguments):
        return [PROGRAM, *map(str, arguments)]

    def run_program(self, *arguments):
        return subprocess.run(self.command(*arguments), cwd=self.folder.parent, timeout=TIMEOUT_S,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)

    def run_unit(self, *arguments):
        return self.run_program("run", self.unit_file, *arguments)

    def wait_for(self, condition):
        end = time.monotonic() + TIMEOUT_S
        while not condition():
            self.assertLess(time.monotonic(), end, "waited in vain")
            time.sleep(0.02)

    def assert_well(self, result):
        self.assertEqual(result.returncode, 0, result.stderr + result.stdout)


def line_with(process, text):
    """The next line of a process's output that has a text."""
    for line in process.stdout:
        if text in line:
            return line
    raise AssertionError(f"the process ended without a line with {text!r}")


def errors_of(errors):
    """Returns what standard error has besides the one line that says that the machine has no system logger."""
    lines = errors.splitlines(keepends=True)
    notices = [line for line in lines if " SystemLog 1 " in line and "no system logger at " in line]
    return "".join(line for line in lines if line not in notices[:1])


def summary_of(output):
    """Returns the summary's values by label: the unit's under None, a channel's under its number."""
    values = {None: {}}
    where = None
    lines = output.splitlines()
    for line in lines[lines.index("Summary") + 1:]:
        if line.startswith("channel "):
            where = int(line.split()[1])
            values[where] = {}
        else:
            values[where][line[2:24].strip()] = line[24:].strip()
    return values
