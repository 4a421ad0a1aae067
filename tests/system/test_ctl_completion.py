"""bash completes the command line with the script that the program prints."""

import pathlib
import subprocess
import tempfile
import unittest

from unit_runner import PROGRAM, TIMEOUT_S

ASK = """
source <("$1" completion bash) || exit 1
shift
COMP_WORDS=(opc "$@")
COMP_CWORD=$#
_opc_complete
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    def complete(self, *words, folder="/"):
        """Returns what the last word may become."""
        result = subprocess.run(["bash", "--norc", "--noprofile", "-c", ASK, "ask", PROGRAM, *words], cwd=folder,
                                capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return sorted(filter(None, result.stdout.splitlines()))

    def test_commands(self):
        self.assertEqual(self.complete(""), ["completion", "ctl", "export", "fit-amplifier", "replay", "run", "simulate",
                                             "sweep", "sweep-merge", "sweep-report"])
        self.assertEqual(self.complete("c"), ["completion", "ctl"])
        self.assertEqual(self.complete("completion", ""), ["bash"])
        self.assertEqual(self.complete("ctl", "t"), ["temperature", "trace", "tx"])
        self.assertEqual(self.complete("ctl", "log", ""), ["opc", "transient"])
        self.assertEqual(self.complete("ctl", "log", "opc", "read"), ["read", "read-and-reset"])
        self.assertEqual(self.complete("ctl", "log", "opc", "read", ""), [])

    def test_words(self):
        self.assertEqual(self.complete("ctl", "tx", ""), ["off", "on"])
        self.assertEqual(self.complete("ctl", "tx", "on", ""), [])
        self.assertEqual(self.complete("ctl", "power", "u"), ["unit-file"])
        self.assertEqual(self.complete("ctl", "fault", "set", "getP"), ["getPctrlLimits", "getPmeasured"])
        self.assertEqual(self.complete("ctl", "fault", "set", "getPmeasured", "f"), ["fail", "fail-times"])
        self.assertEqual(self.complete("ctl", "fault", "set", "--times", "5", "getPmeasured", "sl"), ["slow"])
        self.assertEqual(self.complete("ctl", "gain", "--detector-state", ""), ["0", "1", "2"])
        self.assertEqual(self.complete("ctl", "production-test", "on", "--loop-mode", "1"), ["1"])

    def test_options(self):
        self.assertEqual(self.complete("ctl", "--t"), ["--timeout", "--token-file"])
        self.assertEqual(self.complete("ctl", "log", "transient", "read", "--p"), ["--plot"])
        self.assertEqual(self.complete("ctl", "log", "transient", "read", "--u"), ["--unit"])
        self.assertEqual(self.complete("ctl", "tx", "--p"), ["--power-mode"])
        self.assertEqual(self.complete("run", "--dur"), ["--duration"])
        self.assertEqual(self.complete("fit-amplifier", "--"),
                         ["--csv", "--frequency", "--help", "--json", "--max-power", "--supply"])
        self.assertEqual(self.complete("sweep", "--"), ["--help", "--jobs", "--results", "--retry-failed", "--shard"])
        self.assertEqual(self.complete("sweep-report", "--"),
                         ["--best", "--by", "--csv", "--help", "--html", "--json", "--measure", "--plot", "--where",
                          "--worst"])
        self.assertEqual(self.complete("export", "--"),
                         ["--channel", "--events", "--format", "--from", "--help", "--output", "--resolution", "--run",
                          "--to"])
        self.assertEqual(self.complete("export", "--resolution", "s"), ["seconds", "steps"])
        self.assertEqual(self.complete("run", "--unit"), [])

    def test_values_of_options_are_no_arguments(self):
        self.assertEqual(self.complete("ctl", "--unit", "tx", ""), self.complete("ctl", ""))
        self.assertEqual(self.complete("ctl", "--channel", "3", "tx", "o"), ["off", "on"])
        self.assertEqual(self.complete("ctl", "tx", "--channel", "3", ""), ["off", "on"])
        self.assertEqual(self.complete("ctl", "--watch", "tx", "o"), ["off", "on"])
        self.assertEqual(self.complete("ctl", "--watch", "0.5", "sta"), ["status"])
        self.assertEqual(self.complete("ctl", "--channel", ""), [])
        self.assertEqual(self.complete("ctl", "--json", "sta"), ["status"])

    def test_words_that_bash_takes_apart(self):
        self.assertEqual(self.complete("ctl", "tx", "--unit", "http", ":", "//unit", ":", "8080", "o"), ["off", "on"])
        self.assertEqual(self.complete("ctl", "tx", "--channel", "=", "3", "o"), ["off", "on"])
        self.assertEqual(self.complete("ctl", "gain", "--detector-state", "="), ["0", "1", "2"])
        self.assertEqual(self.complete("ctl", "gain", "--detector-state", "=", "2"), ["2"])

    def test_files(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "unit one.toml").touch()
            (pathlib.Path(folder) / "token").touch()
            for words in (("run", ""), ("ctl", "--csv", ""), ("ctl", "status", "--csv", ""),
                          ("ctl", "log", "transient", "read", "--plot", ""), ("run", "x.toml", "--csv", "")):
                with self.subTest(words):
                    self.assertEqual(self.complete(*words, folder=folder), ["token", "unit one.toml"])
            self.assertEqual(self.complete("ctl", "status", "--token-file", "tok", folder=folder), ["token"])

    def test_wrong_shells(self):
        for arguments in (("completion",), ("completion", "fish")):
            result = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=TIMEOUT_S,
                                    check=False)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn("opc completion --help", result.stderr)


if __name__ == "__main__":
    unittest.main()
