"""Both logs' dumps arrive in the system log whole and in order, and say what a client reads."""

import signal
import threading
import unittest

from live_unit import CurlClient, LiveUnit, Refused, wait_for_samples
from rsyslog_runner import RsyslogCase

FIRST_OF_TRANSIENT = "****** START OF OPC TRANSIENT LOG ******"
LAST_OF_TRANSIENT = "****** END OF OPC TRANSIENT LOG ******"
FIRST_OF_OPC = "****** START OF OPC LOG ******"
LAST_OF_OPC = "****** END OF OPC LOG ******"
TRANSIENT_LINES = 203
OPC_LINES = 14
MEMBERS = ("TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower", "TxRfGain")


def dumps_of(lines, first, last):
    """Returns each dump as its lines without the trace group, frame lines included."""
    texts = [line.text.removeprefix(":").strip().removeprefix("RQX.OPCL: ") for line in lines]
    return [texts[begin:texts.index(last, begin) + 1] for begin, text in enumerate(texts) if text == first]


def transient_dump(samples):
    return [FIRST_OF_TRANSIENT, "SampleNumber, " + ", ".join(MEMBERS),
            *(", ".join(str(value) for value in (number, *(sample[name] for name in MEMBERS)))
              for number, sample in enumerate(samples, 1)), LAST_OF_TRANSIENT]


def opc_dump(objects):
    lines = [FIRST_OF_OPC]
    for entry in objects:
        name = entry["ObjectName"]
        lines.append(f"{name}Actual = {entry['ActualValue']}, {name}Min = {entry['MinValue']}, "
                     f"{name}Max = {entry['MaxValue']}")
    initial = 6  # of the initial gain, whose first item has no suffix
    lines[initial] = lines[initial].replace("TxRfGainInitialActual", "TxRfGainInitial")
    return [*lines, LAST_OF_OPC]


class LogDumps(RsyslogCase):
    def setUp(self):
        super().setUp()
        self.edit('system_log_facility = "user"', 'system_log_facility = "local3"')
        self.start_logger()
        self.unit = LiveUnit(self, self.command("run", self.unit_file, "--speed", 30))
        self.unit.wait_until_on(2)
        self.client = CurlClient(self.unit.url)

    def record(self, channel):
        """Fills the transient log and some of the statistics of a channel; returns what a client reads."""
        self.client.transient(RequestOption="Enable", RadioChannelID=channel)
        self.client.log(RequestOption="Start", RadioChannelID=channel)
        wait_for_samples(self.client, 200, channel)
        self.client.log(RequestOption="Stop", RadioChannelID=channel)
        samples = self.client.transient(RequestOption="Read", RadioChannelID=channel)["OPCLog"]
        objects = self.client.log(RequestOption="Read", RadioChannelID=channel)
        return samples, objects[f"Channel.{channel}.TxOutputPowerControlLog"]

    def save(self, channel):
        self.client.transient(RequestOption="SaveToSysLog", RadioChannelID=channel)
        self.client.log(RequestOption="SaveToSysLog", RadioChannelID=channel)

    def lines_with(self, count):
        """Returns the unit's lines once so many dumps of each log have ended."""
        def whole():
            texts = [line.text for line in self.log_of(self.unit.process)]
            return all(sum(last in text for text in texts) >= count for last in (LAST_OF_TRANSIENT, LAST_OF_OPC))
        self.wait_for(whole, lambda: f"{len(self.log_of(self.unit.process))} lines in the log")
        return self.log_of(self.unit.process)

    def test_a_dump_says_what_a_client_reads(self):
        samples, objects = self.record(0)
        self.save(0)
        lines = self.lines_with(1)
        self.assertEqual({(line.priority, line.identity) for line in lines}, {("local3.info", "opc")})
        self.assertEqual(dumps_of(lines, FIRST_OF_TRANSIENT, LAST_OF_TRANSIENT), [transient_dump(samples)])
        self.assertEqual(dumps_of(lines, FIRST_OF_OPC, LAST_OF_OPC), [opc_dump(objects)])
        self.unit.stop()

    def test_dumps_asked_for_at_once_stay_whole(self):
        read = {channel: self.record(channel) for channel in (0, 1)}
        rounds = 5
        savers = [threading.Thread(target=lambda channel=channel: [self.save(channel) for _ in range(rounds)])
                  for channel in (0, 0, 1, 1)]
        for saver in savers:
            saver.start()
        for saver in savers:
            saver.join()
        lines = self.lines_with(rounds * len(savers))
        transients = dumps_of(lines, FIRST_OF_TRANSIENT, LAST_OF_TRANSIENT)
        statistics = dumps_of(lines, FIRST_OF_OPC, LAST_OF_OPC)
        self.assertEqual(sorted(map(len, transients)), [TRANSIENT_LINES] * rounds * len(savers))
        self.assertEqual(sorted(map(len, statistics)), [OPC_LINES] * rounds * len(savers))
        for channel in (0, 1):
            self.assertEqual(transients.count(transient_dump(read[channel][0])), 2 * rounds)
            self.assertEqual(statistics.count(opc_dump(read[channel][1])), 2 * rounds)
        self.unit.stop()

    def test_a_logger_that_hangs_holds_up_neither_steps_nor_clients_nor_the_end(self):
        self.record(0)
        self.signal_logger(signal.SIGSTOP)
        self.addCleanup(self.signal_logger, signal.SIGCONT)
        self.client.transient(RequestOption="SaveToSysLog")  # taken: its lines wait for the logger
        before = self.unit.status()
        with self.assertRaises(Refused) as refused:
            self.client.transient(RequestOption="SaveToSysLog")
        self.assertEqual((refused.exception.code, refused.exception.text),
                         (4, "eTI_E_FAILED, TI.ManageOPCTransientLog the system log does not take its lines; try again"))
        after = self.unit.status()
        self.assertGreater(after["Channels"][0]["Steps"], before["Channels"][0]["Steps"])
        self.assertEqual(after["Channels"][0]["State"], "TX_ON")
        self.unit.stop()


if __name__ == "__main__":
    unittest.main()
