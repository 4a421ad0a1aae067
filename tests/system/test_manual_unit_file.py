"""unit.toml(5) describes every key that the reader knows, as the reader takes it, and nothing else.

What the reader knows comes from its own error messages; what a file leads to, from the program unit_file_values.
"""

import re
import tomllib
import unittest

import file_manual
import manual
from unit_runner import UnitTestCase


class UnitFileManual(file_manual.FileManual, UnitTestCase):
    PAGE = "unit.toml.5"
    KIND = "unit"
    REPEATED = ("module", "calibration", "channel", "fault")
    NEEDED = {"module": {"name": '"M"', "library": '"m.so"'}, "calibration": {"name": '"C"', "file": '"c.csv"'},
              "storage": {"file": '"s.toml"'}, "profile": {"file": '"p.csv"'}, "channel": {"number": "0"},
              "fault": {"channel": "0", "operation": '"getPmeasured"', "kind": '"fail"'}}
    FREE_TABLES = ("trace",)  # any other key names a group

    def run_file(self):
        return self.run_unit()

    def test_it_has_the_tables_that_the_reader_knows(self):
        self.assertEqual(sorted(self.keys), self.known("no_such_table"))

    def test_the_trace_table_has_the_keys_of_the_example(self):
        example = tomllib.loads(self.unit_file.read_text())["trace"]
        self.assertEqual(sorted(key.name for key in self.keys["trace"]), sorted(set(example) - {"RQX.OPC"}))

    def test_the_smallest_unit_of_the_page_runs(self):
        shown = re.search(r"^```\n(\[\[module\]\]\n.*?)^```$", manual.source(self.PAGE), re.MULTILINE | re.DOTALL)
        self.unit_file.write_text(shown.group(1))
        self.assert_well(self.run_unit("--duration", "0.3", "--port", "0"))


if __name__ == "__main__":
    unittest.main()
