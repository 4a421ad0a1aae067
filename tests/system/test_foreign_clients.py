"""Clients that nobody here wrote drive the whole life of both logs; what they read is what the unit recorded."""

import csv
import time
import unittest

from live_unit import CLIENTS, CurlClient, LiveUnit, PythonClient, Refused, wait_for_samples
from unit_runner import UnitTestCase

SAMPLES = 200
SAMPLE_MEMBERS = ["TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain"]
OBJECTS = ["TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain", "TxRfGainInitial",
           *(f"GainReductionAmplifier{number}" for number in range(1, 7))]
OK = {"StandardResponse": "OK"}


def centi(text):
    return round(float(text) * 100)


def rows_of(file, channel):
    """Returns what the logs get of each recorded step of a channel, and its time in s. Powers are in hundredths of a
    decibel; what the logs call the power setting is the target, and the other way round."""
    with open(file, newline="", encoding="utf-8") as lines:
        return [(*(centi(row[name]) for name in ("ptarget_dBm", "pctrl_dBm", "pmeasured_dBm")), float(row["time_s"]))
                for row in csv.DictReader(lines) if int(row["channel"]) == channel]


def expected_samples(steps):
    """Returns what a full log holds of consecutive steps: each sample ends up with the detected power that the next one
    came with, but for the last two, which keep their own."""
    expected = [list(step[:3]) for step in steps]
    for number in range(len(expected) - 2):
        expected[number][2] = steps[number + 1][2]
    return expected


class ForeignClients(UnitTestCase):
    def assert_refused(self, call, code, text):
        with self.assertRaises(Refused) as refused:
            call()
        self.assertEqual(refused.exception.code, code)
        self.assertEqual(refused.exception.text, text)

    def drive_transient_log(self, client):
        self.assert_refused(lambda: client.transient(RequestOption="Read", RadioChannelID=1), 4,
                            "eTI_E_FAILED, TI.ManageOPCTransientLog can not read empty log")
        self.assertEqual(client.transient(RequestOption="Enable"), OK)
        self.assertLess(len(wait_for_samples(client, 1)), SAMPLES)
        wait_for_samples(client, SAMPLES)
        self.assertEqual(client.transient(RequestOption="Disable"), OK)
        answer = client.transient(RequestOption="Read", RadioChannelID=0)
        self.assertEqual(list(answer), ["RadioChannelID", "OPCLog"])
        self.assertEqual(answer["RadioChannelID"], 0)
        for sample in answer["OPCLog"]:
            self.assertEqual(list(sample), SAMPLE_MEMBERS)
        self.assertEqual(client.transient(RequestOption="SaveToSysLog"), OK)
        for option in ("Start", "Stop", "ReadAndReset", "enable", ""):
            self.assert_refused(lambda: client.transient(RequestOption=option), 4,
                                "eTI_E_FAILED, TI.ManageOPCTransientLog invalid request option")
        self.assert_refused(lambda: client.transient(RequestOption="Read", RadioChannelID=9), 4,
                            "eTI_E_FAILED, TI.ManageOPCTransientLog unknown radio channel 9; RadioChannelID can be 0, 1")
        return answer["OPCLog"]

    def drive_opc_log(self, client, unit):
        """Returns the statistics and the times that starting and stopping lie between."""
        name = "Channel.0.TxOutputPowerControlLog"

        def log(option):
            return client.log(RequestOption=option, RadioChannelID=0)

        def read(option):
            answer = log(option)
            self.assertEqual(list(answer), [name])
            self.assertEqual([entry["ObjectName"] for entry in answer[name]], OBJECTS)
            return {entry["ObjectName"]: (entry["MinValue"], entry["ActualValue"], entry["MaxValue"])
                    for entry in answer[name]}

        self.assertEqual(set(read("Read").values()), {(0, 0, 0)})
        times = [unit.uptime()]
        self.assertEqual(log("Start"), OK)
        times.append(unit.uptime())
        time.sleep(0.5)
        for minimum, actual, maximum in read("Read").values():
            self.assertLessEqual(minimum, actual)
            self.assertLessEqual(actual, maximum)
        times.append(unit.uptime())
        self.assertEqual(log("Stop"), OK)
        times.append(unit.uptime())
        stopped = read("Read")
        self.assertEqual(log("SaveToSysLog"), OK)
        self.assertEqual(read("ReadAndReset"), stopped)
        self.assertEqual(set(read("Read").values()), {(0, 0, 0)})
        for option in ("Enable", "Disable", "read", ""):
            self.assert_refused(lambda: log(option), 4, "eTI_E_FAILED, TI.ManageLogs OpcLog invalid request option")
        self.assert_refused(lambda: client.log(RequestOption="Read", RadioChannelID=9), 4,
                            "eTI_E_FAILED, TI.ManageLogs unknown radio channel 9; RadioChannelID can be 0, 1")
        return stopped, times

    def test_each_reads_what_the_unit_recorded(self):
        for client_class in CLIENTS:
            with self.subTest(client_class.__name__):
                file = self.folder / f"{client_class.__name__}.csv"
                unit = LiveUnit(self, self.command("run", self.unit_file, "--csv", file, "--speed", 30))
                unit.wait_until_on(2)
                client = client_class(unit.url)
                samples = self.drive_transient_log(client)
                statistics, times = self.drive_opc_log(client, unit)
                unit.stop()
                rows = rows_of(file, 0)
                self.assert_samples_were_recorded(samples, rows)
                self.assert_statistics_were_recorded(statistics, times, rows)

    def assert_samples_were_recorded(self, samples, rows):
        self.assertEqual(len(samples), SAMPLES)
        found = [[sample[name] for name in SAMPLE_MEMBERS[:3]] for sample in samples]
        set_and_target = [(sample[0], sample[1]) for sample in found]
        recorded = [row[:2] for row in rows]
        starts = [start for start in range(len(rows) - SAMPLES + 1)
                  if recorded[start:start + SAMPLES] == set_and_target]
        self.assertEqual(len(starts), 1, "the samples are not the steps of one place in the recording")
        self.assertEqual(found, expected_samples(rows[starts[0]:starts[0] + SAMPLES]))

    def assert_statistics_were_recorded(self, statistics, times, rows):
        """Looks for the steps that the log was started before and stopped after."""
        found = [statistics[name] for name in SAMPLE_MEMBERS[:3]]
        first, last = ([number for number, row in enumerate(rows) if begin - 0.02 <= row[3] <= end + 0.02]
                       for begin, end in (times[:2], times[2:]))
        for start in first:
            for stop in last:
                columns = list(zip(*(row[:3] for row in rows[start:stop + 1])))
                if found == [(min(column), column[-1], max(column)) for column in columns]:
                    return
        self.fail(f"{found} are not the statistics of the steps recorded between {times}")

    def test_faults_of_calls_with_structs(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        missing = "eTI_E_REQUIRED_INPUT_MISSING, {} failed due to missing tag {}"
        for client_class in (PythonClient, CurlClient):
            client = client_class(unit.url)
            self.assert_refused(client.transient, 2, missing.format("TI.ManageOPCTransientLog", "RequestOption"))
            self.assert_refused(lambda: client.transient(RequestOption=1), 2,
                                missing.format("TI.ManageOPCTransientLog", "RequestOption"))
            self.assert_refused(lambda: client.log(RequestOption="Read"), 2, missing.format("TI.ManageLogs", "LogName"))
            self.assert_refused(lambda: client.log(RadioChannelID=1), 2,
                                missing.format("TI.ManageLogs", "RequestOption"))
            for name in ("Channel.7.TxOutputPowerControlLog", "IOutputPowerController", "OutputPowerController", ""):
                self.assert_refused(lambda: client.log(LogName=name, RequestOption="Read"), 4,
                                    f"eTI_E_FAILED, TI.ManageLogs unknown log {name}; LogName can be "
                                    "Channel.0.TxOutputPowerControlLog, Channel.1.TxOutputPowerControlLog")
            answer = client.log(LogName="Channel.1.TxOutputPowerControlLog", RequestOption="Read")
            self.assertEqual(list(answer), ["Channel.1.TxOutputPowerControlLog"])
        unit.stop()

    def test_a_channel_number_of_two_digits_cuts_the_array_name_only(self):
        self.edit("[[channel]]\nnumber = 1\n", "[[channel]]\nnumber = 12\n")
        unit = LiveUnit(self, self.command("run", self.unit_file))
        for client_class in (PythonClient, CurlClient):
            client = client_class(unit.url)
            for which in ({"LogName": "Channel.12.TxOutputPowerControlLog"}, {"RadioChannelID": 12}):
                answer = client.log(RequestOption="Read", **which)
                self.assertEqual(list(answer), ["Channel.12.TxOutputPowerControlLo"])
                self.assertEqual(len(answer["Channel.12.TxOutputPowerControlLo"]), len(OBJECTS))
            self.assert_refused(lambda: client.log(LogName="Channel.12.TxOutputPowerControlLo", RequestOption="Read"), 4,
                                "eTI_E_FAILED, TI.ManageLogs unknown log Channel.12.TxOutputPowerControlLo; LogName can "
                                "be Channel.0.TxOutputPowerControlLog, Channel.12.TxOutputPowerControlLog")
            self.assertEqual(client.transient(RequestOption="Enable", RadioChannelID=12), OK)
            self.assertEqual(client.transient(RequestOption="Disable", RadioChannelID=12), OK)
        unit.stop()


if __name__ == "__main__":
    unittest.main()
