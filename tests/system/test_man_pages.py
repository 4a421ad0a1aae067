"""The man pages are made as readers of man pages want them."""

import os
import pathlib
import re
import subprocess
import unittest

from unit_runner import TIMEOUT_S

PAGES = sorted(pathlib.Path(os.environ["OPC_MAN_PAGES"]).glob("*.[15]"))

# scdoc begins a paragraph after each heading and around each indent. mandoc leaves it out and says so.
HARMLESS = "skipping paragraph macro: PP "


def output_of(*command):
    result = subprocess.run(command, capture_output=True, text=True, timeout=TIMEOUT_S, check=False,
                            stdin=subprocess.DEVNULL, env={**os.environ, "LC_ALL": "C.UTF-8", "MANPAGER": "cat",
                                                           "MANWIDTH": "100"})
    return result.stdout, result.stderr


class ManPages(unittest.TestCase):
    def test_all_are_made(self):
        self.assertEqual([page.name for page in PAGES], ["opc.1", "scenario.toml.5", "sweep.toml.5", "unit.toml.5"])

    def test_mandoc_warns_of_nothing(self):
        for page in PAGES:
            with self.subTest(page.name):
                findings = output_of("mandoc", "-Tlint", "-Wwarning", str(page))[0].splitlines()
                self.assertTrue(findings, "mandoc does not even find what it always does")
                self.assertEqual([line for line in findings if HARMLESS not in line], [])

    def test_man_warns_of_nothing_and_shows_them(self):
        for page in PAGES:
            with self.subTest(page.name):
                text, errors = output_of("man", "--warnings", "--local-file", str(page))
                self.assertEqual(errors, "")
                for heading in ("NAME", "DESCRIPTION", "FILES", "EXAMPLES", "SEE ALSO"):
                    self.assertRegex(text, rf"(?m)^{heading}$")

    def test_they_name_each_other_and_carry_a_fixed_date(self):
        for page in PAGES:
            related = output_of("man", "--local-file", str(page))[0].rpartition("SEE ALSO")[2]
            for other in PAGES:
                if other != page:
                    self.assertIn(f"{other.stem}({other.suffix[1:]})", related)
            made = page.read_text(encoding="utf-8")
            dates = re.findall(r"^\.TH .*(\d{4}-\d{2}-\d{2})", made, flags=re.MULTILINE)
            rules = (pathlib.Path(__file__).resolve().parents[2] / "docs" / "man" / "CMakeLists.txt").read_text()
            self.assertEqual(dates, re.findall(r"man_page_date \d+\) # (\S+)", rules))


if __name__ == "__main__":
    unittest.main()
