"""`opc ctl` against a running unit: each command has its effect."""

import json
import subprocess
import time
import unittest

from live_unit import LiveUnit
from unit_runner import TIMEOUT_S, UnitTestCase, line_with


class CtlUnit(UnitTestCase):
    def setUp(self):
        super().setUp()
        self.unit = LiveUnit(self, self.command("run", self.unit_file))
        self.unit.wait_until_on(2)

    def ctl(self, *arguments, code=0):
        result = subprocess.run(self.command("ctl", "--unit", self.unit.url, *arguments), stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, timeout=TIMEOUT_S, check=False)
        self.assertEqual(result.returncode, code, f"{arguments}: {result.stderr}{result.stdout}")
        return result.stderr if code else result.stdout

    def channel(self, number=0):
        status = json.loads(self.ctl("status", "--json"))
        return next(channel for channel in status["Channels"] if channel["RadioChannelID"] == number)

    def test_transmitters_go_off_and_on_each_by_itself(self):
        self.ctl("tx", "off", "--channel", 1)
        self.wait_for(lambda: self.channel(1)["State"] == "TX_OFF")
        self.assertEqual(self.channel(0)["State"], "TX_ON")
        self.assertNotIn("ControlPowerDbm", self.channel(1))
        self.ctl("tx", "on", "--channel", 1)
        self.ctl("tx", "off", "--channel", 1)  # while it switches on: carried out afterwards
        self.wait_for(lambda: self.channel(1)["State"] == "TX_OFF")
        self.ctl("tx", "on", "--channel", 1)
        self.wait_for(lambda: self.channel(1)["State"] == "TX_ON")

    def test_inputs_are_set_and_released(self):
        self.ctl("power", "15.5")
        self.ctl("frequency", "5100")
        self.ctl("temperature", "40")
        self.wait_for(lambda: abs(self.channel().get("MeasuredPowerDbm", 0) - 15.5) < 1)
        channel = self.channel()
        self.assertEqual((channel["RequestedPowerDbm"], channel["RequestedPowerSource"]), (15.5, "set"))
        self.assertEqual((channel["FrequencyMhz"], channel["FrequencySource"]), (5100, "set"))
        self.assertEqual(self.unit.status()["TemperatureC"], 40)
        for what in ("power", "frequency", "temperature"):
            self.ctl(what, "unit-file")
        self.wait_for(lambda: self.channel()["RequestedPowerSource"] == "profile")
        self.assertEqual(self.unit.status()["TemperatureSource"], "profile")

    def test_settings_reach_the_controller(self):
        self.ctl("mode", "0")
        self.ctl("limits", "-5", "20")
        self.ctl("production-test", "on", "--loop-mode", "1")
        self.ctl("gain", "on", "35", "--detector-state", "1")
        self.ctl("interval", "10")
        channel = self.channel()
        self.assertEqual((channel["PowerMode"], channel["TxPminDbm"], channel["TxPmaxDbm"]), (0, -5, 20))
        self.assertEqual((channel["ProductionTest"], channel["LoopMode"]), (True, 1))
        self.assertEqual(json.loads(self.ctl("gain", "--json"))["On"][1], 35)
        self.assertEqual(self.unit.status()["IntervalMs"], 10)
        before = self.unit.status()
        time.sleep(0.5)
        after = self.unit.status()
        steps = after["Channels"][0]["Steps"] - before["Channels"][0]["Steps"] + after["Overruns"] - before["Overruns"]
        self.assertAlmostEqual(steps * 0.010, after["UptimeS"] - before["UptimeS"], delta=0.011)

    def test_logs_are_read_saved_and_plotted(self):
        self.ctl("log", "transient", "enable")
        self.ctl("log", "opc", "start")
        time.sleep(0.3)
        self.ctl("log", "transient", "disable")
        samples = json.loads(self.ctl("log", "transient", "read", "--json"))["OPCLog"]
        table = self.folder / "samples.csv"
        self.ctl("log", "transient", "read", "--csv", table)
        self.assertEqual(len(table.read_text().splitlines()), len(samples) + 1)
        plot = self.folder / "samples.svg"
        self.ctl("log", "transient", "read", "--plot", plot)
        self.assertIn("</svg>", plot.read_text())
        self.assertIn("TxRfPowerSet", self.ctl("log", "opc", "read"))
        for command in (("transient", "save"), ("opc", "save"), ("opc", "read-and-reset"), ("opc", "stop")):
            self.ctl("log", *command)

    def test_faults_and_trace_levels(self):
        self.ctl("fault", "set", "getPmeasured", "fail")
        self.assertIn("getPmeasured", self.ctl("fault", "list"))
        self.wait_for(lambda: self.channel()["FailedSteps"] > 5)
        self.ctl("fault", "clear", "getPmeasured")
        self.assertEqual(json.loads(self.ctl("fault", "list", "--json"))["Faults"], [])
        self.ctl("trace", "level", "RQX.OPC", "5")
        levels = json.loads(self.ctl("trace", "level", "--json"))["Groups"]
        self.assertIn({"Group": "RQX.OPC", "Level": 5}, levels)

    def test_what_the_unit_refuses_is_said(self):
        self.assertIn("unknown radio channel 9; RadioChannelID can be 0, 1", self.ctl("tx", "off", "--channel", 9, code=1))
        self.assertIn("PowerDbm is 200; it can be -98 to 100", self.ctl("power", "200", code=1))
        self.assertIn("can not read empty log", self.ctl("log", "transient", "read", "--channel", 1, code=1))

    def test_a_token_is_demanded_and_sent(self):
        token = self.folder / "unit.token"
        token.write_text("0123456789abcdef0123\n")
        self.edit('# token_file = "unit.token"', 'token_file = "unit.token"')
        self.unit.stop()
        process = subprocess.Popen(self.command("run", self.unit_file), stdout=subprocess.PIPE, text=True,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stdout.close)
        self.unit.url = line_with(process, "test interface: ").split("test interface: ")[1].removesuffix("/RPC2\n")
        self.assertIn("401", self.ctl("status", code=1))
        self.ctl("--token-file", token, "status")
        token.write_text("0123456789abcdef0124\n")
        self.assertIn("401", self.ctl("--token-file", token, "status", code=1))


if __name__ == "__main__":
    unittest.main()
