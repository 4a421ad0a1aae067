"""What a running unit tells Prometheus is what was done with it."""

import time
import unittest
import urllib.error
import urllib.request
import xmlrpc.client

from live_unit import LiveUnit, PythonClient, Refused, wait_for_samples
from metrics_text import Metrics, scrape
from unit_runner import TIMEOUT_S, UnitTestCase

POWERS = ["target_power_dbm", "control_power_dbm", "measured_power_dbm", "predicted_power_dbm", "power_error_db"]


class UnitMetrics(UnitTestCase):
    def start(self, *arguments):
        unit = LiveUnit(self, self.command("run", self.unit_file, *arguments))
        unit.wait_until_on(2)
        return unit

    def wait_until(self, unit, holds):
        """Scrapes until a condition holds, and returns that scrape."""
        end = time.monotonic() + TIMEOUT_S
        while True:
            metrics = Metrics(unit.url)
            if holds(metrics):
                return metrics
            self.assertLess(time.monotonic(), end, "the metrics do not come to that")
            time.sleep(0.02)

    def test_calls_are_counted_by_method_and_fault(self):
        unit = self.start()
        before = Metrics(unit.url)
        self.assertEqual(before.get("opc_requests_total", method="Unit.Gains"), 0)
        client = PythonClient(unit.url)
        with xmlrpc.client.ServerProxy(unit.url + "/RPC2") as proxy:
            for _ in range(3):
                proxy.Unit.Gains()
            for _ in range(2):
                with self.assertRaises(xmlrpc.client.Fault):
                    proxy.No.Such.Method()
            calls = xmlrpc.client.MultiCall(proxy)
            calls.Unit.Gains()
            calls.Unit.SetGain({"State": "on"})
            list(zip(range(1), calls()))
        with self.assertRaises(Refused):
            client.transient(RequestOption="Read")
        with self.assertRaises(urllib.error.HTTPError):
            urllib.request.urlopen(unit.url + "/nothing", timeout=TIMEOUT_S)
        after = Metrics(unit.url)
        counts = {method: after.get("opc_requests_total", method=method)
                  for method in ("Unit.Gains", "Unit.SetGain", "system.multicall", "TI.ManageOPCTransientLog",
                                 "unknown")}
        self.assertEqual(counts, {"Unit.Gains": 4, "Unit.SetGain": 1, "system.multicall": 1,
                                  "TI.ManageOPCTransientLog": 1, "unknown": 2})
        faults = {(labels["method"], int(labels["code"])): after.get("opc_request_faults_total", **labels)
                  for labels in after.labels_of("opc_request_faults_total")}
        self.assertEqual(faults, {("unknown", -32601): 2, ("Unit.SetGain", 2): 1, ("TI.ManageOPCTransientLog", 4): 1})
        self.assertEqual(after.get("opc_http_refused_total"), before.get("opc_http_refused_total") + 1)

    def test_steps_and_their_times_are_counted(self):
        unit = self.start()
        first = Metrics(unit.url)
        steps = first.get("opc_steps_total", channel=1)
        second = self.wait_until(unit, lambda metrics: metrics.get("opc_steps_total", channel=1) >= steps + 100)
        for metrics in (first, second):
            # The times are taken a moment before the steps, and the last steps may be on their way.
            count = metrics.get("opc_step_duration_seconds_count", channel=1)
            self.assertAlmostEqual(count, metrics.get("opc_steps_total", channel=1), delta=100)
            self.assertEqual(metrics.get("opc_step_duration_seconds_bucket", channel=1, le="+Inf"), count)
        for name in ("opc_step_duration_seconds_count", "opc_notifications_total"):
            self.assertGreater(second.get(name, channel=1), first.get(name, channel=1))
        self.assertGreater(second.get("opc_lateness_seconds_count"), first.get("opc_lateness_seconds_count"))
        self.assertEqual(second.get("opc_ramps_total", channel=1), 1)
        self.assertGreater(second.get("opc_ramp_duration_seconds", channel=1), 0.02)
        self.assertAlmostEqual(second.get("opc_start_time_seconds"), time.time(), delta=TIMEOUT_S)

    def test_failing_steps_are_counted(self):
        unit = self.start()
        with xmlrpc.client.ServerProxy(unit.url + "/RPC2") as proxy:
            proxy.Unit.SetFault({"Operation": "getPmeasured", "Kind": "fail", "RadioChannelID": 1})
        metrics = self.wait_until(unit, lambda metrics: metrics.get("opc_failed_steps_total", channel=1) > 5)
        self.assertEqual(metrics.get("opc_failed_steps_total", channel=0), 0)

    def test_a_channel_that_is_off_has_no_powers(self):
        unit = self.start()
        # The latest steps may be on their way still.
        on = self.wait_until(unit, lambda metrics: metrics.get("opc_channel_state", channel=0, state="TX_ON") == 1)
        self.assertEqual(on.get("opc_tx_on", channel=0), 1)
        with xmlrpc.client.ServerProxy(unit.url + "/RPC2") as proxy:
            proxy.Unit.SetTxPower({"State": "off", "RadioChannelID": 0})
        off = self.wait_until(unit, lambda metrics: metrics.get("opc_channel_state", channel=0, state="TX_OFF") == 1)
        self.assertEqual(off.get("opc_channel_state", channel=0, state="TX_ON"), 0)
        self.assertEqual(off.get("opc_tx_on", channel=0), 0)
        for name in POWERS:
            self.assertIsNotNone(on.get("opc_" + name, channel=0), name)
            self.assertIsNone(off.get("opc_" + name, channel=0), name)
            self.assertIsNotNone(off.get("opc_" + name, channel=1), name)

    def test_the_logs_are_followed(self):
        unit = self.start()
        client = PythonClient(unit.url)
        names = ["opc_transient_log_running", "opc_transient_log_samples", "opc_statistics_log_running"]
        self.assertEqual([Metrics(unit.url).get(name, channel=0) for name in names], [0, 0, 0])
        client.transient(RequestOption="Enable")
        client.log(RequestOption="Start", LogName="Channel.0.TxOutputPowerControlLog")
        self.wait_until(unit, lambda metrics: 0 < metrics.get("opc_transient_log_samples", channel=0) <= 200)
        wait_for_samples(client, 200)
        full = Metrics(unit.url)
        self.assertEqual([full.get(name, channel=0) for name in names], [1, 200, 1])
        self.assertEqual([full.get(name, channel=1) for name in names], [0, 0, 0])
        client.transient(RequestOption="Disable")
        client.log(RequestOption="Stop", RadioChannelID=0)
        self.assertEqual([Metrics(unit.url).get(name, channel=0) for name in names], [0, 200, 0])
        unit.stop()

    def test_the_token_is_demanded(self):
        token = "0123456789abcdef"
        (self.folder / "token").write_text(token + "\n")
        self.edit('# token_file = "unit.token"', 'token_file = "token"')
        unit = LiveUnit(self, self.command("run", self.unit_file))
        with self.assertRaises(urllib.error.HTTPError) as refused:
            scrape(unit.url)
        self.assertEqual(refused.exception.code, 401)
        self.assertIn("opc_build_info", scrape(unit.url, {"Authorization": "Bearer " + token}))


if __name__ == "__main__":
    unittest.main()
