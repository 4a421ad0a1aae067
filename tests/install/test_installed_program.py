"""The program runs from an installation that was moved, on its own modules and unit file."""

import unittest

from installation import EMULATOR, VERSION, InstallationTestCase, run


class InstalledProgram(InstallationTestCase):
    def setUp(self):
        super().setUp()
        self.prefix = self.moved_installation()
        self.elsewhere = self.folder / "elsewhere"
        self.elsewhere.mkdir()

    def opc(self, *arguments):
        return run([*EMULATOR, self.prefix / "bin" / "opc", *arguments], cwd=self.elsewhere)

    def test_says_its_version(self):
        self.assertEqual(self.opc("--version").stdout, f"opc {VERSION}\n")

    def test_runs_the_installed_unit_where_there_is_no_other(self):
        result = self.opc("run", "--duration", "1", "--port", "0")
        self.assert_well(result)
        self.assertEqual(result.stdout.count("reached TX_ON         yes"), 2, result.stdout)

    def test_runs_the_unit_of_its_folder_first(self):
        (self.elsewhere / "unit.toml").write_text("[unit]\ninterval_ms = 0\n")
        result = self.opc("run", "--duration", "1")
        self.assertEqual(result.returncode, 2)
        self.assertIn("opc: unit.toml:2:15: ", result.stdout)

    def test_names_the_installed_unit_when_it_is_missing(self):
        unit_file = self.prefix / "etc" / "opc" / "unit.toml"
        unit_file.unlink()
        result = self.opc("run")
        self.assertEqual(result.returncode, 2)
        self.assertIn(f"neither unit.toml in this folder nor {unit_file}", result.stdout)

    def test_runs_an_installed_scenario_with_its_drive(self):
        examples = self.prefix / "share" / "doc" / "opc" / "examples"
        self.assert_well(self.opc("simulate", examples / "scenarios" / "recorded-drive.toml"))

    def test_has_the_completion_that_it_prints(self):
        completion = self.prefix / "share" / "bash-completion" / "completions" / "opc"
        self.assertEqual(completion.read_text(), self.opc("completion", "bash").stdout)
        self.assert_well(run(["bash", "-n", completion]))


if __name__ == "__main__":
    unittest.main()
