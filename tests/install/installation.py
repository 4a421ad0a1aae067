"""Installs the build into a temporary folder, for tests that look at what came there."""

import os
import pathlib
import shlex
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["OPC_BUILD"])
SOURCE = pathlib.Path(os.environ["OPC_SOURCE"])
LIBDIR = os.environ["OPC_LIBDIR"]
CONFIGURATION = os.environ["OPC_CONFIGURATION"]
VERSION = os.environ["OPC_VERSION"]
CMAKE = os.environ["OPC_CMAKE"]
TOOLCHAIN = os.environ["OPC_TOOLCHAIN"]
EMULATOR = shlex.split(os.environ["OPC_EMULATOR"])
TIMEOUT_S = 120


def run(command, **options):
    """Runs a command and returns its result; output is text, both streams in one."""
    return subprocess.run([str(part) for part in command], timeout=TIMEOUT_S, stdin=subprocess.DEVNULL, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)


def install(*options, **environment):
    """Runs `cmake --install` on the build."""
    result = run([CMAKE, "--install", BUILD, *options], env={**os.environ, **environment})
    if result.returncode != 0:
        raise RuntimeError(f"cmake --install failed:\n{result.stdout}")


class InstallationTestCase(unittest.TestCase):
    """Gives each test an empty folder."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="opc-install-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def install_below(self, name, *options):
        """Returns the prefix, a folder of this name with an installation in it."""
        if pathlib.Path(CONFIGURATION).is_absolute():
            self.skipTest("this build's configuration belongs into /etc: no prefix of its own")
        prefix = self.folder / name
        install("--prefix", prefix, *options)
        return prefix

    def moved_installation(self):
        """Returns the prefix of an installation that does not stand where it was installed."""
        prefix = self.folder / "moved here"
        self.install_below("first").rename(prefix)
        return prefix

    def assert_well(self, result):
        self.assertEqual(result.returncode, 0, result.stdout)
