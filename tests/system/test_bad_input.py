"""Wrong arguments and files are refused with one clear line, exit code 2 and nothing left behind."""

import socket
import unittest

from unit_runner import UnitTestCase


class BadInput(UnitTestCase):
    def assert_refused(self, result, *parts):
        self.assertEqual(result.returncode, 2, result.stderr + result.stdout)
        errors = result.stderr.splitlines()
        self.assertEqual(len(errors), 1, result.stderr)
        self.assertTrue(errors[0].startswith("opc: "), errors[0])
        for part in parts:
            self.assertIn(str(part), errors[0])
        self.assertEqual(result.stdout, "")

    def assert_unit_refused(self, *parts, arguments=()):
        recording = self.folder / "run.csv"
        result = self.run_unit("--duration", 1, "--csv", recording, *arguments)
        self.assert_refused(result, *parts)
        self.assertFalse(recording.exists())

    def test_arguments(self):
        for arguments, part in (
                ((), "opc run"),
                (("walk",), "walk"),
                (("run", "--duration"), "--duration"),
                (("run", "--duration", "0"), "--duration"),
                (("run", "--duration", "nan"), "--duration"),
                (("run", "--duration", "soon"), "soon"),
                (("run", "--speed", "-1"), "--speed"),
                (("run", "--start", "-1"), "--start"),
                (("run", "--channels", "-1"), "--channels"),
                (("run", "--channels", "x"), "--channels"),
                (("run", "--fast"), "--fast"),
                (("run", "--port", "65536"), "--port"),
                (("run", "--port", "-1"), "--port"),
                (("run", "--port", "http"), "--port"),
                (("run", "a.toml", "b.toml"), "b.toml"),
                (("run",), "examples/unit.toml")):
            with self.subTest(arguments):
                self.assert_refused(self.run_program(*arguments), part)

    def test_no_unit_file_names_both_places(self):
        self.assert_refused(self.run_program("run"), "unit.toml in this folder", "/etc/opc/unit.toml")

    def test_unit_files_that_cannot_be_read(self):
        self.assert_refused(self.run_program("run", "missing.toml"), "missing.toml", "No such file or directory")
        self.assert_refused(self.run_program("run", self.folder), "Is a directory")
        self.unit_file.write_text("[unit]\ninterval_ms = \n")
        self.assert_refused(self.run_unit(), f"{self.unit_file}:2", "not valid TOML")
        self.unit_file.write_bytes(b"[unit]\n\xff\xfe\n")
        self.assert_refused(self.run_unit(), f"{self.unit_file}: ", "utf-8")

    def test_an_unknown_key(self):
        self.edit("interval_ms = 6", "intervall_ms = 6")
        self.assert_unit_refused(f"{self.unit_file}:{self.line_of('intervall_ms')}", "intervall_ms", "interval_ms, ")

    def test_a_value_out_of_range(self):
        self.edit("interval_ms = 6", "interval_ms = 25")
        self.assert_unit_refused(f"{self.unit_file}:{self.line_of('interval_ms')}", "interval_ms", "1 to 24")

    def test_channel_counts(self):
        self.assert_unit_refused(self.unit_file, "2 channels", "--channels 1 to 2", arguments=("--channels", 0))
        self.assert_unit_refused(self.unit_file, "2 channels", "--channels 1 to 2", arguments=("--channels", 3))

    def test_channels_that_would_meet_the_same_handler(self):
        line = self.append("\n[[channel]]\nnumber = 12\n") + 1
        self.assert_unit_refused(f"{self.unit_file}:{line}", "channels 1 and 12", "IOutputPowerHandler.1")

    def test_profiles(self):
        profile = self.folder / "profiles" / "fade.csv"
        profile.write_text("time_s,requested_power_dBm\n0,10\n1,ten\n")
        self.assert_unit_refused(f"{profile}:3:3: column requested_power_dBm: 'ten' is not a number")
        profile.write_bytes(b"time_s,requested_power_dBm\n0,10\r\n")
        self.assert_unit_refused(f"{profile}:2:5: the line ends by CRLF, those before by LF")
        profile.unlink()
        self.assert_unit_refused(profile)

    def test_calibration_tables(self):
        table = self.folder / "calibration" / "power_over_bandwidth.csv"
        table.write_text("kHz,0,1000\n28000,1,x\n")
        self.assert_unit_refused(f"{table}:2", "x")
        table.unlink()
        self.assert_unit_refused(table)

    def test_the_storage_file(self):
        storage = self.folder / "storage.toml"
        storage.write_text('[variables]\nChannelSpacing = "wide"\n')
        self.assert_unit_refused(f"{storage}:2", "ChannelSpacing")
        storage.unlink()
        self.assert_unit_refused(storage)

    def test_modules_that_cannot_be_loaded(self):
        line = self.line_of('name = "FrequencyHandler"') - 1
        self.edit("libFrequencyHandler.so", "libMissing.so")
        self.assert_unit_refused(f"{self.unit_file}:{line}", "libMissing.so", "FrequencyHandler")
        (self.folder / "libMissing.so").write_text("not a library")
        self.assert_unit_refused(f"{self.unit_file}:{line}", "FrequencyHandler", "libMissing.so")
        self.edit("libMissing.so", "./libNowhere.so")
        self.assert_unit_refused(f"{self.unit_file}:{line}", "libNowhere.so")

    def test_a_module_without_its_entry_points(self):
        line = self.line_of('name = "FrequencyHandler"') - 1
        self.edit('name = "FrequencyHandler"', 'name = "FrequenzHandler"')
        self.assert_unit_refused(f"{self.unit_file}:{line}", "FrequenzHandler_Construct")

    def leave_out_module(self, name):
        text = self.unit_file.read_text()
        name_at = text.index(f'name = "{name}"')
        begin = text.rindex("[[module]]", 0, name_at)
        end = min(text.index(mark, name_at) for mark in ("[[module]]", "[storage]") if mark in text[name_at:])
        self.unit_file.write_text(text[:begin] + text[end:])

    def test_a_controller_without_a_handler_names_what_is_missing(self):
        for name, interface in (("OutputPowerHandler", "IOutputPowerHandler.0"),
                                ("FrequencyHandler", "IFrequencyHandler_Tx"),
                                ("TemperatureHandler", "ITemperatureHandler")):
            with self.subTest(name):
                original = self.unit_file.read_text()
                self.leave_out_module(name)
                self.assert_unit_refused(self.unit_file, "OutputPowerController", "channel 0", "onModuleInit",
                                         f'"{interface}"')
                self.unit_file.write_text(original)

    def test_a_unit_without_a_controller(self):
        self.leave_out_module("OutputPowerController")
        self.assert_unit_refused(self.unit_file, '"IOutputPowerController"', "channel 0")

    def test_a_recording_that_cannot_be_written(self):
        self.assert_refused(self.run_unit("--csv", self.folder / "none" / "run.csv"), "none/run.csv",
                            "No such file or directory")

    def test_a_refused_run_leaves_an_older_recording_alone(self):
        recording = self.folder / "run.csv"
        recording.write_text("kept\n")
        self.leave_out_module("OutputPowerHandler")
        self.assert_refused(self.run_unit("--csv", recording), "IOutputPowerHandler.0")
        self.assertEqual(recording.read_text(), "kept\n")

    def test_a_port_in_use_is_named_and_starts_nothing(self):
        with socket.create_server(("127.0.0.1", 0)) as other:
            port = other.getsockname()[1]
            self.assert_unit_refused(f"127.0.0.1:{port}", "in use", arguments=("--port", port))

    def test_an_address_that_is_not_this_machines(self):
        self.edit('address = "127.0.0.1"', 'address = "192.0.2.1"')
        self.assert_unit_refused("192.0.2.1")

    def test_a_token_file_that_is_missing_or_too_short(self):
        self.edit('# token_file = "unit.token"', 'token_file = "unit.token"')
        self.assert_unit_refused(self.folder / "unit.token")
        (self.folder / "unit.token").write_text("short\n")
        self.assert_unit_refused(self.folder / "unit.token", "16 to 4096 characters")


if __name__ == "__main__":
    unittest.main()
