"""The example of a module in C, loaded by the unit beside the others."""

import os

from unit_runner import UnitTestCase

CLIENT = os.environ["OPC_CLIENT"]


class ClientModule(UnitTestCase):
    def test_is_told_by_the_controllers_of_both_channels(self):
        self.edit("# The variables of the module storage.",
                  f'[[module]]\nname = "Client"\nlibrary = "{CLIENT}"\n\n# The variables of the module storage.')
        result = self.run_unit("--speed", "20", "--duration", "3")
        self.assert_well(result)
        for channel in (0, 1):
            self.assertRegex(result.stdout, rf"Client: channel {channel} was told [1-9]\d+ times")
        self.assertEqual(result.stdout.count("Client:   power mode 0\nClient:   power mode 1\n"), 2, result.stdout)
        self.assertNotIn("still published", result.stderr + result.stdout)

    def test_cannot_stand_before_its_controller(self):
        self.edit('[[module]]\nname = "OutputPowerController"',
                  f'[[module]]\nname = "Client"\nlibrary = "{CLIENT}"\n\n[[module]]\nname = "OutputPowerController"')
        result = self.run_unit("--duration", "1")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn('module "Client" of channel 0 failed to initialise', result.stderr)
