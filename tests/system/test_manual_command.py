"""opc(1) describes every command and option that the program has, and nothing else."""

import re
import unittest

import manual
from live_unit import LiveUnit
from unit_runner import UnitTestCase

# Options that a command's entry need not name: every command has it.
HELP = {"-h", "--help"}


def names(text, heading):
    """Returns the first words of the lines under a heading of a help text."""
    found = re.search(rf"^{heading}:\n((?:  .*\n)+)", text, flags=re.MULTILINE)
    return re.findall(r"^  (\S+)", found.group(1), flags=re.MULTILINE) if found else []


class Help:
    """What the program says of a command and, below it, of its subcommands."""

    def __init__(self, test, path=()):
        self.path = path
        self.text = test.run_program(*path, "--help").stdout
        self.options = {re.sub(r"\{.*", "", option) for name in names(self.text, "Options")
                        for option in name.split(",")}
        usage = re.search(r"^Usage: (.*)$", self.text, flags=re.MULTILINE).group(1)
        self.arguments = re.sub(r"\[(OPTIONS|SUBCOMMAND)\]", "", usage).split()[len(path) + 1:]
        self.below = [Help(test, (*path, name)) for name in names(self.text, "Subcommands")]

    def all(self):
        return [self, *(deeper for child in self.below for deeper in child.all())]

    def leaves(self):
        return [helped for helped in self.all() if not helped.below]


def options_in(text):
    return set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", text))


def arguments_in(text):
    """Returns the arguments of a command's line, with the brackets of those that may be left out."""
    without_options = re.sub(r"\[--[^\]]*\]|--[a-z-]+ [A-Z]+", "", text)
    return re.findall(r"\[?[A-Z]+(?:\.[a-z]+)?\]?(?:\.{3})?(?= |$)|\[unit\.toml\]", without_options)


class CommandManual(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.text = manual.source("opc.1")
        self.sections = manual.sections(self.text)
        self.help = Help(self)

    def command_entries(self):
        found = {}
        for heading, text in self.sections.items():
            if heading.startswith("OPC "):
                found |= {name: body for name, body in manual.entries(text).items() if name.startswith("opc ")}
        return found

    def documented_leaves(self):
        """Returns the line of each command that does something, by its words."""
        lines = [*self.command_entries(), self.run_line()]
        return {tuple(re.match(r"opc((?: [a-z-]+)+)", line).group(1).split()): line for line in lines}

    def run_line(self):
        return next(line for line in map(manual.plain, self.sections["SYNOPSIS"].splitlines())
                    if line.startswith("opc run"))

    def test_it_has_every_command_and_no_other(self):
        self.assertEqual(sorted(self.documented_leaves()), sorted(leaf.path for leaf in self.help.leaves()))

    def test_each_command_has_its_options_and_arguments(self):
        documented = self.documented_leaves()
        for leaf in self.help.leaves():
            with self.subTest(leaf.path):
                line = documented[leaf.path]
                self.assertEqual(options_in(line), leaf.options - HELP)
                self.assertEqual(arguments_in(line), leaf.arguments)

    def test_the_options_of_run_ctl_and_of_the_program_are_described(self):
        by_path = {helped.path: helped for helped in self.help.all()}
        for heading, path in (("DESCRIPTION", ()), ("OPC RUN", ("run",)), ("OPC CTL", ("ctl",)),
                              ("OPC FIT-AMPLIFIER", ("fit-amplifier",)), ("OPC SIMULATE", ("simulate",)),
                              ("OPC SWEEP", ("sweep",)), ("OPC SWEEP-MERGE", ("sweep-merge",)),
                              ("OPC SWEEP-REPORT", ("sweep-report",)), ("OPC EXPORT", ("export",)),
                              ("OPC REPLAY", ("replay",))):
            with self.subTest(heading):
                described = set()
                for name in manual.entries(self.sections[heading]):
                    described |= options_in(name) if not name.startswith("opc ") else set()
                own = by_path[path].options
                self.assertEqual(described, own if path == () else own - HELP)

    def test_no_other_option_is_mentioned(self):
        known = set().union(*(helped.options for helped in self.help.all()))
        mentioned = {option for option in options_in(manual.plain(self.text)) if option.startswith("--")}
        self.assertEqual(mentioned - known, set())

    def test_it_has_the_exit_codes_and_the_environment(self):
        texts = [helped.text for helped in self.help.all()]
        codes = {code for text in texts for part in re.findall(r"^Exit codes: (.*)", text, flags=re.MULTILINE)
                 for code in re.findall(r"(?:^|, )(\d) ", part)}
        self.assertEqual(set(manual.entries(self.sections["EXIT STATUS"])), codes)
        variables = {name for text in texts for name in re.findall(r"\(Env:(\w+)\)", text)}
        self.assertEqual(set(manual.entries(self.sections["ENVIRONMENT"])), variables)

    def test_the_bounds_of_options_are_those_that_are_checked(self):
        for heading, option, *arguments in (("OPC RUN", "--duration SECONDS", "run", "--duration", "0"),
                                            ("OPC RUN", "--speed N", "run", "--speed", "0"),
                                            ("OPC RUN", "--start SECONDS", "run", "--start", "-1"),
                                            ("OPC FIT-AMPLIFIER", "--frequency MHZ", "fit-amplifier", "a.csv",
                                             "--frequency", "-1"),
                                            ("OPC FIT-AMPLIFIER", "--supply V", "fit-amplifier", "a.csv",
                                             "--supply", "20000"),
                                            ("OPC FIT-AMPLIFIER", "--max-power DBM", "fit-amplifier", "a.csv",
                                             "--max-power", "70"),
                                            ("OPC CTL", "--timeout SECONDS", "ctl", "status", "--timeout", "0"),
                                            ("OPC CTL", "--watch [SECONDS]", "ctl", "status", "--watch", "0")):
            with self.subTest(option):
                result = self.run_program(*arguments)
                self.assertEqual(result.returncode, 2)
                bounds = re.findall(r"-?[\d.]+", result.stderr.partition('" is not ')[2].partition(";")[0])
                described = manual.entries(self.sections[heading])[option]
                self.assertEqual(len(bounds), 2, result.stderr)
                for bound in bounds:
                    self.assertRegex(described, rf"(?<![\d.]){re.escape(bound)}(?![\d])")

    def test_the_bounds_of_values_are_those_of_a_unit(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        unit.wait_until_on(2)
        described = {line.split()[2]: body for line, body in self.command_entries().items()
                     if line.startswith("opc ctl ")}
        for command in ("power 1e9", "frequency 1e9", "temperature 1e9", "interval 1000", "gain on 5000",
                        "limits 1000 1000"):
            with self.subTest(command):
                result = self.run_program("ctl", "--unit", unit.url, *command.split())
                self.assertEqual(result.returncode, 1, result.stderr)
                bounds = re.search(r"can be (\S+ to \S+) \(fault", result.stderr)
                self.assertIsNotNone(bounds, result.stderr)
                self.assertIn(bounds.group(1), described[command.split()[0]])
        unit.stop()


if __name__ == "__main__":
    unittest.main()
