"""Prometheus' own tool finds nothing to say about what a unit serves, nor about the files of examples/fleet."""

import shutil
import subprocess
import unittest

from live_unit import LiveUnit
from metrics_text import scrape
from unit_runner import TIMEOUT_S, UnitTestCase

PROMTOOL = shutil.which("promtool")


@unittest.skipUnless(PROMTOOL, "promtool is not installed; Debian has it in the package prometheus")
class Promtool(UnitTestCase):
    def check(self, *arguments, **options):
        result = subprocess.run([PROMTOOL, *arguments], cwd=self.folder / "fleet", timeout=TIMEOUT_S, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def test_the_metrics_are_well_formed(self):
        unit = LiveUnit(self, self.command("run", self.unit_file))
        unit.wait_until_on(2)
        self.assertEqual(self.check("check", "metrics", input=scrape(unit.url)), "")

    def test_the_configuration_is_valid(self):
        self.assertIn("SUCCESS", self.check("check", "config", "prometheus.yml"))

    def test_the_alerts_come_and_go_as_they_should(self):
        self.assertIn("SUCCESS", self.check("test", "rules", "opc-rules-test.yml"))

    def test_each_alert_is_tested(self):
        fleet = self.folder / "fleet"
        alerts = {line.split()[-1] for line in (fleet / "opc-rules.yml").read_text().splitlines() if "- alert:" in line}
        tested = {line.split()[-1] for line in (fleet / "opc-rules-test.yml").read_text().splitlines()
                  if "- alertname:" in line}
        self.assertEqual(alerts, tested)


if __name__ == "__main__":
    unittest.main()
