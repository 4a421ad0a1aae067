"""The porting guide: that it tells of everything that the module imports, and shows what really comes out."""

import os
import pathlib
import re
import shlex
import subprocess
import unittest

EMULATOR = shlex.split(os.environ.get("OPC_EMULATOR", ""))
PLATFORM = os.environ["OPC_MINIMAL_PLATFORM"]
MODULE = os.environ["OPC_MODULE"]
CLIENT = os.environ["OPC_CLIENT"]
NM = os.environ["OPC_NM"]
GUIDE = pathlib.Path(os.environ["OPC_PORTING_GUIDE"]).read_text(encoding="utf-8")
TIMEOUT_S = 60
# What every library refers to, or has from elsewhere.
FOREIGN = re.compile(r"@|XMLRPC_|^ *w |__(ubsan|asan|gcov|tsan|llvm)|operator|std::|^ *U (_|mem|str|clock_)")


def imports():
    """Returns what the module imports from its platform, demangled and without arguments."""
    text = subprocess.run([NM, "-D", "--undefined-only", "--demangle", MODULE], capture_output=True, text=True,
                          check=True).stdout
    names = [line.strip().removeprefix("U ") for line in text.splitlines() if not FOREIGN.search(line.split("(")[0])]
    return [name.split("(")[0] for name in names]


def mentions(name):
    """Tells whether the guide has the operation, in code: CFunction, operation or Class::operation."""
    if name.startswith(("ModuleInterface::on", "typeinfo for ")):
        return f"`{name.split()[-1].split('::')[0]}`" in GUIDE
    return re.search(rf"[`:]{re.escape(name.split('::')[-1])}\b[^`]*`", GUIDE) is not None


def shown(command_end):
    """Returns the output that the guide shows for the command with this end."""
    return re.search(rf"^\$ .*{re.escape(command_end)}\n(.*?)^```$", GUIDE, re.DOTALL | re.MULTILINE)[1].splitlines()


def output(*arguments):
    return subprocess.run([*EMULATOR, PLATFORM, "--fast", *arguments], timeout=TIMEOUT_S, capture_output=True, text=True,
                          check=True)


class PortingGuide(unittest.TestCase):
    def test_tells_of_every_import(self):
        names = imports()
        self.assertIn("CStorageManager_GetVariableContentAddressByName", names)
        self.assertEqual([name for name in names if not mentions(name)], [])
        self.assertFalse(mentions("CStorageManager_GetNothing"))

    @unittest.skipIf(os.environ.get("OPC_SANITIZER") or os.environ.get("OPC_COVERAGE"), "they add imports of their own")
    def test_counts_the_imports(self):
        self.assertIn(f"\n{len(imports())} symbols,", GUIDE)

    def test_shows_the_minimal_platforms_output(self):
        lines = shown("bin/minimal-platform build/release/lib/libOutputPowerController.so")
        result = output(MODULE)
        self.assertEqual([line for line in lines if not line.startswith("RQX.")], result.stdout.splitlines())
        traced = [re.sub(r":\d+: ", ": ", line) for line in lines if line.startswith("RQX.")]
        self.assertEqual(traced, [re.sub(r":\d+: ", ": ", line) for line in result.stderr.splitlines()])

    def test_shows_the_clients_output(self):
        real = output(MODULE, CLIENT).stdout.splitlines()
        for line in shown("libOutputPowerController.so build/release/lib/libClient.so"):
            if line != "...":
                self.assertIn(line, real)


if __name__ == "__main__":
    unittest.main()
