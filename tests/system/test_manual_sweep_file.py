"""sweep.toml(5) describes every key that the reader knows, as the reader takes it, and nothing else.

What the reader knows comes from its own error messages; what a file leads to, from the program sweep_file_values.
"""

import re
import unittest

import file_manual
import manual
from unit_runner import UnitTestCase


def parameter(**keys):
    """Returns the changes that make the smallest file's parameter one without values but with these keys."""
    return {("parameter", "values"): None} | {("parameter", name): value for name, value in keys.items()}


GRID = parameter(**{"from": "1", "to": "2", "count": "3"})
RANDOM = {("sweep", "method"): '"random"', ("sweep", "runs"): "5"}
UNIFORM = RANDOM | parameter(distribution='"uniform"', minimum="1", maximum="2")
NORMAL = RANDOM | parameter(distribution='"normal"', mean="1", deviation="1")
CHOICE = RANDOM | {("parameter", "distribution"): '"choice"'}


class SweepFileManual(file_manual.FileManual, UnitTestCase):
    PAGE = "sweep.toml.5"
    KIND = "sweep"
    REPEATED = ("parameter",)
    NEEDED = {"sweep": {"scenario": '"sweeps/step-base.toml"', "method": '"grid"'},
              "parameter": {"path": '"channel.loop_mode"'}}
    MORE = {"parameter": {"values": "[0, 1]"}}
    OTHER = {("sweep", "repeats"): ["3"], ("sweep", "measures"): ['["steps"]'],
             **{("parameter", name): ["3"] for name in ("from", "to", "maximum", "mean", "deviation")},
             ("parameter", "minimum"): ["-3"], ("parameter", "count"): ["5"]}
    # What else a file has to have for a key to be looked at.
    SURROUNDINGS = {("sweep", "runs"): UNIFORM, ("parameter", "distribution"): UNIFORM,
                    **{("parameter", name): GRID for name in ("from", "to", "count", "scale", "integer")},
                    **{("parameter", name): NORMAL for name in ("minimum", "maximum", "mean", "deviation")}}

    def run_file(self):
        return self.run_program("sweep", self.file, "--results", self.folder / "sweep.db")

    def known_of_parameters(self):
        known = set()
        for surroundings in ({}, GRID, UNIFORM, NORMAL, CHOICE):
            message = self.refusal(changes={**surroundings, ("parameter", "no_such_key"): "1"})
            known.update(message.partition("known keys: ")[2].split(", "))
        return sorted(known)

    def known(self, table):
        return self.known_of_parameters() if table == "parameter" else super().known(table)

    def test_it_has_the_tables_that_the_reader_knows(self):
        self.assertEqual(sorted(self.keys), self.known("no_such_table"))

    def test_the_examples_of_the_page_are_read(self):
        shown = re.findall(r"^```\n(\[sweep\]\n.*?)^```$", manual.source(self.PAGE), re.MULTILINE | re.DOTALL)
        self.assertEqual(len(shown), 2)
        for text, runs in zip(shown, (16, 100)):
            self.file.write_text(text)
            self.assertIn(f"sweep.runs = {runs}\n", self.values_of_file())


if __name__ == "__main__":
    unittest.main()
