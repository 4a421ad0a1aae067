"""The minimal platform with the module, with the client in C, and with what is broken on purpose."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import time
import unittest

EMULATOR = shlex.split(os.environ.get("OPC_EMULATOR", ""))
PLATFORM = os.environ["OPC_MINIMAL_PLATFORM"]
MODULE = os.environ["OPC_MODULE"]
CLIENT = os.environ["OPC_CLIENT"]
TIMEOUT_S = 60
# time, state, target, control power, measured power, power on air
ROW = re.compile(r" +([\d.]+)  (\D+?) +(-?[\d.]+) +(-?[\d.]+) +(-?[\d.]+) +(-?[\d.]+)")


def run(*arguments):
    return subprocess.run([*EMULATOR, PLATFORM, *map(str, arguments)], timeout=TIMEOUT_S, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)


def rows_of(result):
    """Returns the table as tuples of time, state and four powers."""
    found = [ROW.fullmatch(line) for line in result.stdout.splitlines()]
    return [(float(row[1]), row[2], *map(float, row.groups()[2:])) for row in found if row]


class MinimalPlatform(unittest.TestCase):
    def assert_fails(self, result, reason):
        self.assertEqual(result.returncode, 1, result.stderr + result.stdout)
        self.assertIn(f"minimal-platform: {reason}", result.stderr)
        self.assertNotIn("settled,", result.stdout)

    def assert_well(self, result):
        self.assertEqual(result.returncode, 0, result.stderr + result.stdout)
        self.assertEqual(result.stdout.splitlines()[-1], "settled, switched off, taken down")

    def test_switches_on_regulates_and_switches_off(self):
        result = run("--fast", MODULE)
        self.assert_well(result)
        rows = rows_of(result)
        self.assertEqual([row[1] for row in rows if row[1] != "on"],
                         ["on waits", "ramps", "off follows", "off"], result.stdout)
        on = [row for row in rows if row[1] == "on"]
        # Requested are 10 dBm; the table adds 0.15 dB at 25 degrees and 0.02 dB more until 29 degrees.
        self.assertEqual([on[0][2], on[-1][2]], [10.15, 10.17], result.stdout)
        for row in on[1:]:
            self.assertAlmostEqual(row[5], row[2], delta=0.3)
        # The toy gives 0.8 dB more than it is set to, so the control power has to stay that much below.
        self.assertLess(on[1][3], 9.5)
        self.assertEqual(rows[-1][5], -99.0)
        self.assertIn("handleOPCStateMachine():   TX ON", result.stderr)
        self.assertNotIn("failed", result.stderr)

    def test_regulates_in_real_time(self):
        began = time.monotonic()
        self.assert_well(run("--steps", 150, MODULE))
        self.assertGreaterEqual(time.monotonic() - began, 0.9)  # 160 steps of 6 ms, of which the last ones switch off

    def test_serves_a_client_in_c(self):
        result = run("--fast", MODULE, CLIENT)
        self.assert_well(result)
        told = [line.removeprefix("Client:").strip() for line in result.stdout.splitlines()
                if line.startswith("Client:")]
        self.assertEqual(told[0], "gain of detector state 0 is 25 %")
        # Its own request for limited steps, then the platform's for free ones; the ramp tells all three lists.
        self.assertEqual(told[2:4], ["power mode 0", "power mode 1"])
        self.assertRegex("|".join(told[4:7]), r"control power (-?\d+)\|target \1\|predicted control power \1$")
        counts = [int(line.split(" times ")[0]) for line in told[-4:]]
        self.assertEqual(told[1], f"channel 0 was told {sum(counts)} times")
        self.assertEqual(counts[0], 2)
        self.assertTrue(all(counts), told)

    def test_goes_on_with_defaults_without_storage(self):
        result = run("--fast", "--break", "storage", MODULE)
        self.assert_well(result)
        self.assertIn("phase 11: OutputPowerController failed", result.stderr)
        self.assertIn("phase 20: OutputPowerController failed", result.stderr)

    def test_fails_with_a_failing_handler(self):
        result = run("--fast", "--break", "handler", MODULE)
        self.assert_fails(result, "480 steps failed")
        self.assertIn("regulate(): failed to get P measured", result.stderr)
        self.assertEqual(rows_of(result)[-1][1], "off")  # it goes off all the same

    def test_fails_without_a_frequency_handler(self):
        result = run("--fast", "--break", "frequency", MODULE)
        self.assert_fails(result, "a module misses what it cannot do without")
        self.assertIn("Failed to retrieve the FrequencyHandler interface", result.stderr)

    def test_fails_when_there_is_no_time_to_settle(self):
        self.assert_fails(run("--fast", "--steps", 40, MODULE), "the power did not settle within 0.3 dB")

    def test_fails_without_a_module_file(self):
        self.assert_fails(run("--fast", "/nowhere/libNothing.so"), "/nowhere/libNothing.so: cannot open")

    def test_fails_with_a_file_that_is_no_module(self):
        with tempfile.TemporaryDirectory() as folder:
            misnamed = pathlib.Path(folder) / "libSomething.so"
            misnamed.symlink_to(MODULE)
            self.assert_fails(run("--fast", misnamed), "no entry point Something_Construct")

    def test_fails_with_a_client_before_its_controller(self):
        result = run("--fast", CLIENT, MODULE)
        self.assert_fails(result, "Client failed to initialise")
        self.assertIn("Client: nothing is published as IOutputPowerControlLog", result.stdout)

    def test_fails_without_a_controller(self):
        self.assert_fails(run("--fast", CLIENT), "Client failed to initialise")

    def test_helps_on_standard_output(self):
        result = run("--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("usage: minimal-platform", result.stdout)

    def test_explains_a_wrong_call(self):
        for arguments in ([], ["--steps", "0", MODULE], ["--break", "everything", MODULE], ["--steps"]):
            result = run(*arguments)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertIn("usage: minimal-platform", result.stderr)


if __name__ == "__main__":
    unittest.main()
