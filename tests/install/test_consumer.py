"""A project of its own finds the package: in this build, installed, and after the installation was moved."""

import os
import shlex
import unittest

from installation import BUILD, CMAKE, EMULATOR, LIBDIR, SOURCE, TOOLCHAIN, VERSION, InstallationTestCase, run

CONSUMER = SOURCE / "tests" / "consumer"


class Consumer(InstallationTestCase):
    def configure(self, package_folder, *options):
        """Configures the consumer; a toolchain file looks for packages in its sysroot only, hence the folder."""
        toolchain = [f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}"] if TOOLCHAIN else []
        return run([CMAKE, "-S", CONSUMER, "-B", self.folder / "consumer", "-G", "Ninja", *toolchain,
                    f"-DOutputPowerController_DIR={package_folder}", *options])

    def build_and_test(self, module_folder):
        """Builds and runs the programs of the configured consumer, which have to load the module from that folder."""
        self.assert_well(run([CMAKE, "--build", self.folder / "consumer"]))
        result = run(["ctest", "--test-dir", self.folder / "consumer", "--verbose"])
        self.assert_well(result)
        for program in ("consumer_cpp", "consumer_c"):
            self.assertIn(f"{program}: {module_folder}/libOutputPowerController.so.{VERSION} works", result.stdout)

    def test_finds_the_build(self):
        self.assert_well(self.configure(BUILD))
        self.build_and_test(BUILD / "lib")

    def test_finds_an_installation(self):
        prefix = self.install_below("prefix")
        self.assert_well(self.configure(prefix / LIBDIR / "cmake" / "OutputPowerController"))
        self.build_and_test(prefix / LIBDIR)

    @unittest.skipIf(TOOLCHAIN, "a toolchain file looks for packages in its sysroot only")
    def test_finds_a_moved_installation_by_its_prefix(self):
        prefix = self.moved_installation()
        result = run([CMAKE, "-S", CONSUMER, "-B", self.folder / "consumer", "-G", "Ninja",
                      f"-DCMAKE_PREFIX_PATH={prefix}"])
        self.assert_well(result)
        self.build_and_test(prefix / LIBDIR)

    def test_is_refused_another_version(self):
        for wanted in ("1.0", "0.2"):
            with self.subTest(wanted):
                result = self.configure(BUILD, f"-DCONSUMER_WANTS={wanted}")
                self.assertNotEqual(result.returncode, 0)
                self.assertIn(f'compatible with requested version "{wanted}"', " ".join(result.stdout.split()))
                self.assertIn(f"OutputPowerControllerConfig.cmake, version: {VERSION}", result.stdout)

    @unittest.skipUnless(os.environ["OPC_PKGCONFIG"], "pkg-config is not installed")
    def test_builds_with_pkg_config_and_a_plain_compiler(self):
        prefix = self.moved_installation()
        environment = {**os.environ, "PKG_CONFIG_PATH": str(prefix / LIBDIR / "pkgconfig")}

        def ask(*options):
            result = run([os.environ["OPC_PKGCONFIG"], *options, "OutputPowerController"], env=environment)
            self.assert_well(result)
            return result.stdout.strip()

        self.assertEqual(ask("--modversion"), VERSION)
        self.assertEqual(os.path.realpath(ask("--variable=moduledir").replace("\\", "")), str(prefix / LIBDIR))
        program = self.folder / "consumer"
        sysroot = [f"--sysroot={os.environ['OPC_SYSROOT']}"] if os.environ["OPC_SYSROOT"] else []
        self.assert_well(run([os.environ["OPC_CXX"], *shlex.split(os.environ["OPC_CXX_FLAGS"]), *sysroot, "-std=c++20",
                              *shlex.split(ask("--cflags")), CONSUMER / "Consumer.cpp", CONSUMER / "BarePlatform.cpp",
                              "-rdynamic", "-ldl", "-o", program]))
        result = run([*EMULATOR, program, ask("--variable=modulefile").replace("\\", "")])
        self.assert_well(result)
        self.assertIn("libOutputPowerController.so.0 works", result.stdout)


if __name__ == "__main__":
    unittest.main()
