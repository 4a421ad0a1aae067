"""A unit that records, and what its recording holds."""

import contextlib
import csv
import io
import os
import re
import sqlite3

from live_unit import LiveUnit

# How old what a kill loses may be beyond a second: the machine that tests run on may be busy with others.
TOLERANCE_S = 1.0 if not os.environ.get("OPC_SANITIZER") else 3.0


def eight_channels(text):
    """Returns a unit file with channels 0 to 7 in place of its own."""
    calibrations = text.index("[[calibration]]")
    trace = text.index("# Trace levels")
    channels = re.search(r"^\[\[channel\]\]", text, flags=re.MULTILINE).start()
    first = re.search(r"^\[\[channel\]\]\n(?:.+\n)*", text[channels:], flags=re.MULTILINE).group(0)
    made = "\n".join(re.sub(r"^number = \d+", f"number = {number}", first, flags=re.MULTILINE) for number in range(8))
    return text[:calibrations] + text[trace:channels] + made


class RecordedUnit(LiveUnit):
    """Runs `opc run --record FILE`."""

    def __init__(self, test, file, *arguments):
        self.file = file
        super().__init__(test, test.command("run", test.unit_file, "--record", file, *arguments))

    def kill(self):
        self.process.kill()
        self.process.wait()


def ask(file, query, *parameters):
    """Returns the rows of a query."""
    with contextlib.closing(sqlite3.connect(f"file:{file}?mode=ro", uri=True, timeout=10)) as database:
        return database.execute(query, parameters).fetchall()


def export(test, file, *arguments):
    """Returns the rows of an export as dictionaries."""
    result = test.run_program("export", file, *arguments)
    test.assertEqual(result.returncode, 0, result.stderr)
    return list(csv.DictReader(io.StringIO(result.stdout)))
