"""`opc fit-amplifier` finds the amplifier behind a measured sweep, and says what it cannot use."""

import csv
import io
import json
import math
import re
import tomllib
import unittest

from unit_runner import UnitTestCase

# Gain in dB, saturated power in dBm and smoothness, by frequency in MHz and supply in V.
AMPLIFIERS = {(2000, 12): (33.0, 34.5, 3.5), (2000, 15): (32.8, 35.5, 4.0),
              (3000, 12): (32.6, 34.0, 2.5), (4000, 12): (32.2, 33.0, 1.8)}


def output_dbm(input_dbm, gain_db, saturated_dbm, p):
    linear = input_dbm + gain_db
    return linear - 10 / p * math.log10(1 + 10 ** ((linear - saturated_dbm) * p / 10))


def sweep_of(amplifiers, columns=("frequency_MHz", "supply_V", "pin_dBm", "pout_dBm"), inputs=range(-30, 9)):
    """Returns sweeps as CSV, a column of each of these names."""
    lines = [",".join(columns)]
    for (frequency, supply), amplifier in amplifiers.items():
        for input_dbm in inputs:
            values = {"frequency_MHz": frequency, "supply_V": supply, "pin_dBm": input_dbm,
                      "pout_dBm": f"{output_dbm(input_dbm, *amplifier):.6f}", "supply_A": 1.5}
            lines.append(",".join(str(values[column]) for column in columns))
    return "\n".join(lines) + "\n"


class FitTestCase(UnitTestCase):
    def write(self, text):
        path = self.folder / "sweep.csv"
        path.write_text(text, encoding="utf-8")
        return path

    def fit(self, text, *arguments):
        return self.run_program("fit-amplifier", self.write(text), *arguments)

    def fitted(self, text, *arguments):
        result = self.fit(text, "--json", *arguments)
        self.assert_well(result)
        return json.loads(result.stdout)["fits"]

    def assert_is(self, fit, amplifier, places=3):
        for key, value in zip(("gain_db", "psat_dbm", "rapp_p"), amplifier):
            self.assertAlmostEqual(fit[key], value, places, key)


class Fits(FitTestCase):
    def test_each_frequency_and_supply_has_its_amplifier(self):
        fits = self.fitted(sweep_of(AMPLIFIERS))
        self.assertEqual([(fit["frequency_mhz"], fit["supply_v"]) for fit in fits], sorted(AMPLIFIERS))
        for fit in fits:
            amplifier = AMPLIFIERS[fit["frequency_mhz"], fit["supply_v"]]
            self.assert_is(fit, amplifier)
            self.assertEqual(fit["points"], 39)
            self.assertLess(fit["rms_db"], 1e-5)
            self.assertLess(fit["max_db"], 1e-5)
            compressed = fit["p1db_dbm"]
            self.assertAlmostEqual(output_dbm(compressed + 1, 0, *amplifier[1:]), compressed, 3)

    def test_rows_and_columns_may_stand_in_any_order(self):
        columns = ("supply_A", "pout_dBm", "supply_V", "pin_dBm", "frequency_MHz")
        header, *rows = sweep_of(AMPLIFIERS, columns).splitlines()
        fits = self.fitted("# measured by hand\n" + "\n".join([header, *rows[1::2], "", *rows[0::2]]))
        self.assertEqual([fit["points"] for fit in fits], [39] * 4)
        for fit in fits:
            self.assert_is(fit, AMPLIFIERS[fit["frequency_mhz"], fit["supply_v"]])

    def test_frequency_and_supply_may_be_missing(self):
        amplifier = AMPLIFIERS[2000, 12]
        for columns, there in ((("pin_dBm", "pout_dBm"), []),
                               (("frequency_MHz", "pin_dBm", "pout_dBm"), ["frequency_mhz"]),
                               (("pin_dBm", "pout_dBm", "supply_V"), ["supply_v"])):
            with self.subTest(columns):
                fits = self.fitted(sweep_of({(2000, 12): amplifier}, columns))
                self.assertEqual(len(fits), 1)
                self.assertEqual([key for key in fits[0] if key in ("frequency_mhz", "supply_v")], there)
                self.assert_is(fits[0], amplifier)

    def test_a_frequency_and_a_supply_can_be_chosen(self):
        text = sweep_of(AMPLIFIERS)
        self.assertEqual([fit["supply_v"] for fit in self.fitted(text, "--frequency", "2000")], [12, 15])
        self.assertEqual([fit["frequency_mhz"] for fit in self.fitted(text, "--supply", "12")], [2000, 3000, 4000])
        self.assert_is(self.fitted(text, "--frequency", "2000", "--supply", "15")[0], AMPLIFIERS[2000, 15])

    def test_what_is_not_chosen_need_not_be_fit_to_use(self):
        text = sweep_of(AMPLIFIERS) + "5000,12,-10,20\n"
        self.assertEqual(self.fit(text).returncode, 2)
        self.assertEqual(len(self.fitted(text, "--frequency", "3000")), 1)


class Output(FitTestCase):
    HEADINGS = ["frequency_mhz", "supply_v", "points", "gain_db", "psat_dbm", "rapp_p", "p1db_dbm", "rms_db", "max_db"]

    def test_table(self):
        result = self.fit(sweep_of(AMPLIFIERS))
        self.assert_well(result)
        lines = [line.split() for line in result.stdout.splitlines()]
        self.assertEqual(lines[0], self.HEADINGS)
        self.assertEqual(lines[1][:6], ["2000", "12", "39", "33.00", "34.50", "3.50"])
        self.assertEqual(lines[4][:6], ["4000", "12", "39", "32.20", "33.00", "1.80"])
        self.assertEqual(len(lines), 5)

    def test_csv_has_what_the_table_has(self):
        table = self.fit(sweep_of(AMPLIFIERS)).stdout
        result = self.fit(sweep_of(AMPLIFIERS), "--csv")
        self.assert_well(result)
        self.assertEqual(list(csv.reader(io.StringIO(result.stdout))), [line.split() for line in table.splitlines()])

    def settings(self, text):
        """Returns the settings for each sweep, read as TOML."""
        return [tomllib.loads("[transmitter]" + part)["transmitter"] for part in text.split("[transmitter]")[1:]]

    def test_settings_make_the_amplifier(self):
        result = self.fit(sweep_of(AMPLIFIERS), "--frequency", "2000", "--supply", "12", "--max-power", "31")
        self.assert_well(result)
        self.assertEqual(self.settings(result.stdout),
                         [{"max_power_dbm": 31.0, "chain_gain_db": 33.0, "psat_above_max_db": 3.5, "rapp_p": 3.5,
                           "reference_frequency_mhz": 2000.0}])

    def test_settings_over_frequency_have_the_slope_of_their_supply(self):
        result = self.fit(sweep_of(AMPLIFIERS), "--max-power", "30")
        settings = self.settings(result.stdout)
        self.assertEqual([one.get("gain_per_ghz_db") for one in settings], [-0.4, None, -0.4, -0.4])
        self.assertEqual([one["reference_frequency_mhz"] for one in settings], [2000, 2000, 3000, 4000])
        self.assertIn("a line through 3 frequencies, off by up to 0.00 dB", result.stdout)
        fits = self.fitted(sweep_of(AMPLIFIERS), "--max-power", "30")
        self.assertEqual([{key: round(value, 2) for key, value in fit["transmitter"].items()} for fit in fits],
                         settings)

    def test_the_unit_takes_the_settings(self):
        result = self.fit(sweep_of(AMPLIFIERS), "--supply", "12", "--frequency", "3000", "--max-power", "30")
        text = self.unit_file.read_text()
        for key, value in self.settings(result.stdout)[0].items():
            text, count = re.subn(rf"^{key} = [\d.-]+", f"{key} = {value}", text, flags=re.MULTILINE)
            self.assertEqual(count, 1, key)
        self.unit_file.write_text(text)
        self.assert_well(self.run_unit("--duration", "0.1", "--channels", "1"))


class Refusals(FitTestCase):
    GOOD = sweep_of({(2000, 12): AMPLIFIERS[2000, 12]})

    def assert_refused(self, result, *parts):
        self.assertEqual(result.returncode, 2, result.stderr + result.stdout)
        self.assertEqual(result.stdout, "")
        self.assertRegex(result.stderr, r"\Aopc: [^\n]*\n\Z")
        for part in parts:
            self.assertIn(part, result.stderr)

    def with_field(self, value, line=5):
        lines = self.GOOD.splitlines()
        lines[line - 1] = f"2000,12,-27,{value}"
        return "\n".join(lines)

    def test_values(self):
        for value, *parts in (("loud", ":5: column 4: 'loud' is not a number", "(pout_dBm)"),
                              ("nan", ":5: column 4: 'nan' is not a number"),
                              ("inf", ":5: column 4: 'inf' is not a number"),
                              ("1e400", ":5: column 4: '1e400' is too large"),
                              ("", ":5: column 4: '' is not a number"),
                              ("100.5", ":5: column 4: '100.5' (pout_dBm) can be -200 to 100"),
                              ("-201", "can be -200 to 100")):
            with self.subTest(value):
                self.assert_refused(self.fit(self.with_field(value)), "sweep.csv", *parts)
        self.assert_refused(self.fit(self.GOOD + "2000,12,3\n"), ":41: column 4: is missing")
        self.assert_refused(self.fit(self.GOOD + "-1,12,3,30\n"),
                            ":41: column 1: '-1' (frequency_MHz) can be 0 to 300000")
        self.assert_refused(self.fit(self.GOOD + "2000,1e5,3,30\n"), ":41: column 2: '1e5' (supply_V) can be")

    def test_headers(self):
        for text, *parts in (("", "sweep.csv: the file is empty", "pin_dBm", "pout_dBm"),
                             ("\n-30,3\n", ":2: the header row has no column pin_dBm, it begins '-30'"),
                             ("pin_dBm,Pout\n1,2\n", ":1: the header row has no column pout_dBm"),
                             ("pin_dBm,pout_dBm\n", ":1: there is no row after the header row; add at least 4"),
                             ("pin_dBm,pout_dBm,pin_dBm\n1,2,3\n", ":1: column pin_dBm is there twice"),
                             ("pin_dBm,pout_dBm,supply_V,supply_V\n1,2,3,4\n", ":1: column supply_V is there twice")):
            with self.subTest(text):
                self.assert_refused(self.fit(text), *parts)

    def test_sweeps(self):
        few = self.GOOD + "3000,12,0,30\n3000,12,1,31\n"
        self.assert_refused(self.fit(few),
                            ":41: the sweep at 3000 MHz and 12 V, which begins here, has 2 points; at least 4")
        weak = sweep_of({(2000, 12): AMPLIFIERS[2000, 12]}, ("pin_dBm", "pout_dBm"), range(-40, -5))
        self.assert_refused(self.fit(weak), ":2: the sweep in the file, which begins here, compresses by 0.0",
                            "saturated power open", "measure on")
        self.assert_refused(self.fit("pin_dBm,pout_dBm\n" + "0,30\n" * 10), "saturated power open")

    def test_arguments(self):
        file = self.write(self.GOOD)
        for arguments, *parts in (((), "SWEEP.csv is required"),
                                  (("missing.csv",), "missing.csv", "No such file"),
                                  ((self.folder,), "Is a directory"),
                                  ((file, "--frequency", "2500"), '"2500" is not in', "choose one of 2000"),
                                  ((file, "--frequency", "high"), "--frequency", '"high" is not a number'),
                                  ((file, "--supply", "nan"), "--supply", '"nan" is not a number'),
                                  ((file, "--max-power", "61"), "--max-power", "-30", "60"),
                                  ((file, "--csv", "--json"), "--csv", "--json"),
                                  ((file, "--csv", "--max-power", "30"), "--csv", "--max-power")):
            with self.subTest(arguments):
                self.assert_refused(self.run_program("fit-amplifier", *arguments), *parts)
        self.assert_refused(self.fit(sweep_of(AMPLIFIERS, ("pin_dBm", "pout_dBm")), "--supply", "12"),
                            "--supply: ", "has no column to choose by")

    def test_limits_that_no_transmitter_can_have(self):
        for arguments in ((), ("--json",)):
            self.assert_refused(self.fit(self.GOOD, "--max-power", "50", *arguments), "at 2000 MHz and 12 V",
                                "psat_above_max_db would be -15.50, and can be -10 to 30", "34.50 dBm")


if __name__ == "__main__":
    unittest.main()
