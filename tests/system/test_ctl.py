"""Each subcommand of `opc ctl` sends the method and members that the unit expects."""

import json
import os
import unittest
import xmlrpc.client

from fake_unit import STATUS, ControlTestCase, FakeUnit, closed_port

OPERATIONS = ("setOutputPower", "setTxState", "setProductionTestSettings", "getReducedGainFromAmplifier",
              "getTxPowerReadings", "calculateDetectorUsage", "getPmeasured", "setZembraMlmTrafTx", "getPctrlLimits")

SETTERS = (
    ("tx on", "Unit.SetTxPower", {"RadioChannelID": 0, "State": "on"}),
    ("tx off --channel 3", "Unit.SetTxPower", {"RadioChannelID": 3, "State": "off"}),
    ("tx on --power-mode 1", "Unit.SetTxPower", {"RadioChannelID": 0, "State": "on", "PowerMode": 1}),
    ("power 37", "Unit.SetRequestedPower", {"RadioChannelID": 0, "PowerDbm": 37.0}),
    ("power -5.25", "Unit.SetRequestedPower", {"RadioChannelID": 0, "PowerDbm": -5.25}),
    ("power -0.5", "Unit.SetRequestedPower", {"RadioChannelID": 0, "PowerDbm": -0.5}),
    ("power +3", "Unit.SetRequestedPower", {"RadioChannelID": 0, "PowerDbm": 3.0}),
    ("power unit-file", "Unit.SetRequestedPower", {"RadioChannelID": 0, "Source": "unit-file"}),
    ("--channel 2 frequency 28100.5", "Unit.SetFrequency", {"RadioChannelID": 2, "FrequencyMhz": 28100.5}),
    ("frequency unit-file", "Unit.SetFrequency", {"RadioChannelID": 0, "Source": "unit-file"}),
    ("temperature -40", "Unit.SetTemperature", {"TemperatureC": -40.0}),
    ("temperature unit-file", "Unit.SetTemperature", {"Source": "unit-file"}),
    ("mode 08", "Unit.SetPowerMode", {"RadioChannelID": 0, "PowerMode": 8}),
    ("mode -1", "Unit.SetPowerMode", {"RadioChannelID": 0, "PowerMode": -1}),
    ("gain on 60", "Unit.SetGain", {"RadioChannelID": 0, "State": "on", "GainPercent": 60}),
    ("gain ramping 0 --detector-state 2", "Unit.SetGain",
     {"RadioChannelID": 0, "State": "ramping", "DetectorState": 2, "GainPercent": 0}),
    ("limits -5 47.5", "Unit.SetLimits", {"RadioChannelID": 0, "TxPminDbm": -5.0, "TxPmaxDbm": 47.5}),
    ("production-test on --loop-mode 2", "Unit.SetProductionTest",
     {"RadioChannelID": 0, "ProductionTest": True, "LoopMode": 2}),
    ("production-test off", "Unit.SetProductionTest", {"RadioChannelID": 0, "ProductionTest": False}),
    ("interval 12", "Unit.SetInterval", {"IntervalMs": 12}),
    ("log transient enable", "TI.ManageOPCTransientLog", {"RadioChannelID": 0, "RequestOption": "Enable"}),
    ("log transient disable --channel 1", "TI.ManageOPCTransientLog",
     {"RadioChannelID": 1, "RequestOption": "Disable"}),
    ("log transient save", "TI.ManageOPCTransientLog", {"RadioChannelID": 0, "RequestOption": "SaveToSysLog"}),
    ("log opc start", "TI.ManageLogs", {"RadioChannelID": 0, "RequestOption": "Start"}),
    ("log opc stop", "TI.ManageLogs", {"RadioChannelID": 0, "RequestOption": "Stop"}),
    ("log opc save", "TI.ManageLogs", {"RadioChannelID": 0, "RequestOption": "SaveToSysLog"}),
    ("trace level 0", "Unit.SetTraceLevel", {"Level": 0}),
    ("trace level RQX.OPCL 9", "Unit.SetTraceLevel", {"Group": "RQX.OPCL", "Level": 9}),
    ("fault set getPmeasured fail-times --times 5", "Unit.SetFault",
     {"RadioChannelID": 0, "Operation": "getPmeasured", "Kind": "fail-times", "Times": 5}),
    ("fault set setOutputPower slow --delay-us 500 --value -3 --channel 1", "Unit.SetFault",
     {"RadioChannelID": 1, "Operation": "setOutputPower", "Kind": "slow", "Value": -3, "DelayUs": 500}),
    ("fault set getPmeasured intermittent --probability 0.25", "Unit.SetFault",
     {"RadioChannelID": 0, "Operation": "getPmeasured", "Kind": "intermittent", "Probability": 0.25}),
    ("fault clear getPmeasured", "Unit.SetFault",
     {"RadioChannelID": 0, "Operation": "getPmeasured", "Kind": "none"}),
)

READERS = (
    ("status", "Unit.Status", None),
    ("status --channel 0", "Unit.Status", {"RadioChannelID": 0}),
    ("gain", "Unit.Gains", {"RadioChannelID": 0}),
    ("log transient read", "TI.ManageOPCTransientLog", {"RadioChannelID": 0, "RequestOption": "Read"}),
    ("log opc read --channel 12", "TI.ManageLogs", {"RadioChannelID": 12, "RequestOption": "Read"}),
    ("log opc read-and-reset", "TI.ManageLogs", {"RadioChannelID": 0, "RequestOption": "ReadAndReset"}),
    ("trace level", "Unit.TraceLevels", None),
    ("fault list", "Unit.Faults", {"RadioChannelID": 0}),
)


class Calls(ControlTestCase):
    def setUp(self):
        super().setUp()
        self.unit = self.serve(FakeUnit())

    def assert_asked(self, method, members):
        self.assertEqual(self.unit.calls, [(method,) if members is None else (method, members)])
        for name, value in (members or {}).items():  # 1 == 1.0 == True in Python
            self.assertIs(type(self.unit.calls[0][1][name]), type(value), name)
        self.unit.calls.clear()

    def test_setters(self):
        for arguments, method, members in SETTERS:
            with self.subTest(arguments):
                self.assert_well(self.ask(self.unit, *arguments.split()), "OK\n")
                self.assert_asked(method, members)

    def test_readers(self):
        for arguments, method, members in READERS:
            with self.subTest(arguments):
                result = self.ask(self.unit, *arguments.split())
                self.assert_well(result)
                self.assertGreater(len(result.stdout.splitlines()), 1)
                self.assert_asked(method, members)

    def test_clearing_all_faults(self):
        self.assert_well(self.ask(self.unit, "fault", "clear", "--channel", 1), "OK\n")
        self.assertEqual(self.unit.calls, [
            ("Unit.SetFault", {"RadioChannelID": 1, "Operation": operation, "Kind": "none"})
            for operation in OPERATIONS])

    def test_options_after_the_subcommand(self):
        self.assert_well(self.control("tx", "on", "--unit", self.unit.url, "--channel", 4), "OK\n")
        self.assert_well(self.control("log", "--unit", self.unit.url, "transient", "enable", "--channel=4"), "OK\n")
        self.assertEqual([call[1]["RadioChannelID"] for call in self.unit.calls], [4, 4])

    def test_the_address_from_the_environment(self):
        environment = {**os.environ, "OPC_UNIT": self.unit.url}
        self.assert_well(self.control("tx", "on", environment=environment), "OK\n")
        result = self.control("tx", "on", "--unit", closed_port(), environment=environment)
        self.assertEqual(result.returncode, 3)
        self.assertEqual(len(self.unit.calls), 1)

    def test_addresses(self):
        port = self.unit.server_address[1]
        for address in (f"127.0.0.1:{port}", f"http://localhost:{port}/", f"http://127.0.0.1:{port}/RPC2"):
            with self.subTest(address):
                self.assert_well(self.control("tx", "on", "--unit", address), "OK\n")

    def test_a_proxy_is_not_asked(self):
        environment = {**os.environ, "http_proxy": closed_port(), "ALL_PROXY": closed_port()}
        self.assert_well(self.control("tx", "on", "--unit", self.unit.url, environment=environment), "OK\n")

    def test_a_token(self):
        token = self.folder / "token"
        token.write_text("secret-1-of-many\nnot this\n")
        self.assert_well(self.ask(self.unit, "tx", "on", "--token-file", token), "OK\n")
        self.assert_well(self.ask(self.unit, "tx", "on"), "OK\n")
        self.assertEqual([headers.get("Authorization") for headers in self.unit.headers], ["Bearer secret-1-of-many", None])
        self.assertEqual(self.unit.headers[0]["Content-Type"], "text/xml")
        for contents in ("", "\n", "one\ntwo\n", "x" * 5000, "0123456789abcdef \n", "tab\tbed-0123456789"):
            with self.subTest(contents):
                token.write_text(contents)
                self.assert_fails(self.ask(self.unit, "tx", "on", "--token-file", token), 2, str(token))
        self.assert_fails(self.ask(self.unit, "tx", "on", "--token-file", self.folder), 2, "Is a directory")
        self.assert_fails(self.ask(self.unit, "tx", "on", "--token-file", "nowhere"), 2, "No such file")

    def test_json(self):
        result = self.ask(self.unit, "status", "--json")
        self.assert_well(result)
        self.assertEqual(json.loads(result.stdout), STATUS)
        self.assertIn('\n  "UptimeS": 12.34,\n', result.stdout)
        self.assert_well(self.ask(self.unit, "--json", "tx", "on"), '{\n  "StandardResponse": "OK"\n}\n')

    def test_json_of_each_kind_of_value(self):
        answer = {"Int": -5, "Double": 5.0, "Small": 1e-7, "Yes": True, "Text": "grün <&> \"quoted\"\n", "Empty": "",
                  "Date": xmlrpc.client.DateTime("20260102T03:04:05"), "Nothing": {}, "None": [],
                  "Deep": [[1, {"A": [2.5, False]}], []], "Bytes": xmlrpc.client.Binary(b"\x00\xff")}
        self.unit.answers["Unit.Status"] = answer
        result = self.ask(self.unit, "status", "--json")
        self.assert_well(result)
        expected = {**answer, "Date": "20260102T03:04:05", "Bytes": {"bytes": [0, 255], "subtype": None}}
        self.assertEqual(json.loads(result.stdout), expected)
        self.assertEqual(list(json.loads(result.stdout)), list(answer))
        for value in (7, "text", [1, 2], True, 0.5):
            with self.subTest(value):
                self.unit.answers["Unit.Status"] = value
                self.assertEqual(json.loads(self.ask(self.unit, "status", "--json").stdout), value)


if __name__ == "__main__":
    unittest.main()
