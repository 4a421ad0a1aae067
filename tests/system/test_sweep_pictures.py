"""`opc sweep-report` draws a sweep and makes a page of it, or leaves nothing behind."""

import html.parser
import json
import subprocess
import unittest

from swept import SWEEP, SweptTestCase
from unit_runner import TIMEOUT_S


class Page(html.parser.HTMLParser):
    """Checks that elements end, and remembers addresses and the contents of commands."""

    VOID = {"meta", "path", "use", "rect", "circle"}

    def __init__(self):
        super().__init__()
        self.open = []
        self.addresses = []
        self.commands = []

    def handle_starttag(self, tag, attrs):
        if tag not in self.VOID:
            self.open.append((tag, dict(attrs).get("class")))
        self.addresses += [value for name, value in attrs if name in ("src", "href", "xlink:href")]
        if self.open and self.open[-1] == ("pre", "command"):
            self.commands.append("")

    def handle_endtag(self, tag):
        if tag not in self.VOID:
            assert self.open.pop()[0] == tag, tag

    def handle_data(self, data):
        if self.open and self.open[-1] == ("pre", "command"):
            self.commands[-1] += data


class SweepPictures(SweptTestCase):
    def test_pictures_are_drawn_of_effects_and_by_parameters(self):
        self.sweep()
        for arguments in ((), ("--by", "gain in percent,noise in dB,drive", "--where", "steady_rms_db<=0.05")):
            with self.subTest(arguments):
                self.assertEqual(self.report(*arguments, "--plot", "p.svg", "--plot", "p.png"), "")
                svg = (self.where / "p.svg").read_text(encoding="utf-8")
                for text in ("Gain, limits and drives", "gain in percent", "settling max in ms", "steady rms in dB"):
                    self.assertIn(text, svg)
                self.assertTrue((self.where / "p.png").read_bytes().startswith(b"\x89PNG"))

    def test_the_page_has_it_all_and_needs_nothing_else(self):
        self.sweep()
        self.assertEqual(self.report("--html", "p.html"), "")
        page = Page()
        page.feed((self.where / "p.html").read_text(encoding="utf-8"))
        page.close()
        self.assertEqual(page.open, [])
        self.assertEqual([address for address in page.addresses if not address.startswith("#")], [])
        text = (self.where / "p.html").read_text(encoding="utf-8")
        for part in ("<svg", "settling_max_ms", "share of variance", "[[parameter]]", "requested_power_dbm = 12.0"):
            self.assertIn(part, text)
        self.assertNotIn("<script", text)
        expected = [run["command"] for measure in self.json()["measures"] for run in measure["worst"]]
        self.assertEqual(page.commands, expected)
        self.assertEqual(json.loads(self.report("--json", "--html", "p.html"))["title"], "Gain, limits and drives")

    def test_what_cannot_be_written_leaves_nothing(self):
        self.sweep()
        (self.where / "kept.html").write_text("before")
        before = sorted(path.name for path in self.where.iterdir())
        for arguments, code, text in ((("--plot", "p.pdf"), 2, "ends neither with .svg nor with .png"),
                                      (("--plot", "absent/p.svg"), 2, "absent/p.svg"),
                                      (("--html", "absent/p.html", "--plot", "p.svg"), 2, "absent/p.html"),
                                      (("--plot", "p.svg", "--plot", "p.svg"), 2, "named for two outputs"),
                                      (("--html", "p.html", "--csv", "p.html"), 2, "named for two outputs"),
                                      (("--html", "kept.html", "--csv", "absent/a.csv"), 2, "absent/a.csv"),
                                      (("--html", "kept.html", "--by", "absent"), 2, "is no parameter"),
                                      (("--plot", "p.svg", "--html", "s.db/p.html"), 2, "s.db/p.html")):
            with self.subTest(arguments):
                result = self.run_program("sweep-report", "s.db", *arguments)
                self.assertEqual(result.returncode, code, result.stderr)
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
                self.assertIn(text, result.stderr)
                self.assertEqual(sorted(path.name for path in self.where.iterdir()), before)
                self.assertEqual((self.where / "kept.html").read_text(), "before")
        self.report("--html", "kept.html")
        self.assertTrue((self.where / "kept.html").read_text(encoding="utf-8").startswith("<!DOCTYPE html>"))

    def test_without_gnuplot_it_says_so_and_leaves_nothing(self):
        self.sweep()
        result = subprocess.run(self.command("sweep-report", "s.db", "--plot", "p.svg"), cwd=self.where,
                                env={"PATH": "/nowhere"}, capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn("gnuplot is not installed", result.stderr)
        self.assertFalse((self.where / "p.svg").exists())

    def test_too_many_lines_cannot_be_told_apart(self):
        self.sweep(SWEEP.replace("[20, 50, 90]", "[10, 20, 30, 40, 50, 60, 70, 80, 90]"))
        result = self.run_program("sweep-report", "s.db", "--by", "drive,gain in percent", "--plot", "p.svg")
        self.assertEqual(result.returncode, 2)
        self.assertIn("channel.gain_percent_on has 9 values, and a picture can have at most 8 lines", result.stderr)
        self.assertFalse((self.where / "p.svg").exists())


if __name__ == "__main__":
    unittest.main()
