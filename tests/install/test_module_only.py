"""The module alone is built and installed where none of the unit's libraries are."""

import unittest

from installation import CMAKE, EMULATOR, SOURCE, TOOLCHAIN, InstallationTestCase, run

LIBRARIES_OF_THE_UNIT = ("CLI11", "CURL", "EXPAT", "fmt", "GTest", "nlohmann_json", "spdlog", "tomlplusplus")


class ModuleOnly(InstallationTestCase):
    def configure(self, *options):
        toolchain = [f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}"] if TOOLCHAIN else []
        without = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in LIBRARIES_OF_THE_UNIT]
        return run([CMAKE, "-S", SOURCE, "-B", self.folder / "build", "-G", "Ninja", *toolchain, *without, *options])

    def test_needs_no_library_of_the_unit(self):
        self.assert_well(self.configure("-DOPC_MODULE_ONLY=ON", "-DCMAKE_BUILD_TYPE=Release"))
        self.assert_well(run([CMAKE, "--build", self.folder / "build"]))
        self.assert_well(run([CMAKE, "--install", self.folder / "build", "--prefix", self.folder / "prefix"]))
        modules = list((self.folder / "prefix").rglob("libOutputPowerController.so.0"))
        self.assertEqual(len(modules), 1)
        result = run([*EMULATOR, self.folder / "build" / "bin" / "minimal-platform", "--fast", modules[0]])
        self.assert_well(result)
        self.assertIn("settled, switched off, taken down", result.stdout)
        self.assertFalse((self.folder / "prefix" / "bin").exists())

    def test_the_unit_needs_them(self):
        self.assertNotEqual(self.configure().returncode, 0)


if __name__ == "__main__":
    unittest.main()
