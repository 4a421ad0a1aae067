"""scenario.toml(5) describes every key that the reader knows, as the reader takes it, and nothing else.

What the reader knows comes from its own error messages; what a file leads to, from the program scenario_file_values.
"""

import re
import unittest

import file_manual
import manual
from unit_runner import UnitTestCase


class ScenarioFileManual(file_manual.FileManual, UnitTestCase):
    PAGE = "scenario.toml.5"
    KIND = "scenario"
    REPEATED = ("event", "fault")
    # As long as any time may be, so that the ends of their ranges are within the run.
    NEEDED = {"": {"duration_s": "1000000000"}, "drive": {"file": '"drive.csv"'}, "event": {"at_s": "0"},
              "fault": {"operation": '"getPmeasured"', "kind": '"fail"'}}
    MORE = {"event": {"requested_power_dbm": "3"}}  # something has to happen
    OTHER = {("unit", "file"): ['"unit.toml"'], ("fault", "at_s"): ["1"]}  # one that is there; before the end

    def setUp(self):
        super().setUp()
        (self.folder / "drive.csv").write_text("time_s,requested_power_dBm\n0,10\n1000000000,11\n")

    def tables(self):
        tables = file_manual.described_tables(self.PAGE)
        del tables["expect"]
        tables[""] = tables.pop("At the top")
        return tables

    def run_file(self):
        return self.run_program("simulate", self.file)

    def test_it_has_the_tables_that_the_reader_knows(self):
        keys = [key.name for key in self.keys[""]]
        self.assertEqual(sorted([*keys, *filter(None, self.keys), "expect"]), self.known(""))

    def test_it_names_the_measures_and_tells_what_they_are(self):
        described = manual.entries(file_manual.described_tables(self.PAGE)["expect"])
        self.assertEqual(sorted(described), self.known("expect"))
        self.file.write_text("duration_s = 1\n")
        summary = self.run_file().stdout.partition("\nsteps\n")[2]
        shown = re.findall(r"^  (\w+) +\S+(?: (?:dB|ms|s|%))?  (.*)$", summary, re.MULTILINE)
        self.assertEqual({name: f"{text[0].upper()}{text[1:]}." for name, text in shown}, described)

    def test_values_of_each_kind_are_expected(self):
        text = manual.plain(file_manual.described_tables(self.PAGE)["expect"])
        values = re.findall(r"\[60, 150\]|\{ m.. = \d+ \}|\"none\"(?=:)", text)
        self.assertEqual(len(values), 4)
        for value in [*values, "3"]:
            with self.subTest(value):
                self.assertIsNotNone(self.values({("expect", "jumps"): value}))
        self.assertIsNone(self.values({("expect", "jumps"): '"some"'}))

    def example(self):
        """Returns the scenario that the page shows."""
        return re.search(r"^```\n(title = .*?)^```$", manual.source(self.PAGE), re.MULTILINE | re.DOTALL).group(1)

    def test_the_example_of_the_page_goes_as_it_expects(self):
        self.file.write_text(self.example())
        self.assert_well(self.run_file())

    def test_the_overrides_of_the_page_are_taken(self):
        self.file.write_text(self.example().partition("[expect]")[0])
        text = manual.sections(manual.source(self.PAGE))["OVERRIDES"]
        overrides = re.findall(r"--set '?([^'\n]*)('\[.*?\])?'?$", text, re.MULTILINE)
        self.assertEqual(len(overrides), 4)
        for override, value in overrides:
            with self.subTest(override):
                self.assert_well(self.run_program("simulate", self.file, "--set", override + value.replace("'", "")))

    def test_the_wrong_value_of_the_page_is_refused_like_that(self):
        self.file.write_text(self.example().replace("actuator_step_db = 0.25", "actuator_step_db = 25"))
        refused = re.search(r"^opc: (scenario.toml:.*)$", manual.source(self.PAGE), re.MULTILINE).group(1)
        self.assertIn(refused, self.run_file().stderr)


if __name__ == "__main__":
    unittest.main()
