#!/usr/bin/env python3
"""Builds the module with other compiler and linker options than ours, and prints what each costs or saves.

On this machine's own architecture valgrind counts what a step executes in the module: exact, whatever else runs.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "abi"))
import module_size  # noqa: E402

EXPORTS = ROOT / "Control" / "OutputPowerController" / "private" / "exports.map"
OURS = "as it is built"
SECTIONS = "-ffunction-sections -fdata-sections"
GC = "-Wl,--gc-sections"
WHOLE = "-flto=auto -fno-fat-lto-objects"
OUR_LINK = f"{GC} -O2 -flto=auto"
ONE_BY_ONE = "ours, each file by itself"
# Name, compiler options in the place of ours (None: ours), linker options, whether the version script is used.
VARIANTS = (
    (OURS, None, OUR_LINK, True),
    (ONE_BY_ONE, ONE_BY_ONE, GC, True),
    ("`-O2` everywhere", f"-O2 {SECTIONS}", GC, True),
    ("`-O2`, no section garbage collection", "-O2", "", True),
    ("the same, no version script", "-O2", "", False),
    ("the same, no hidden visibility either", "-O2 -fvisibility=default", "", False),
    ("`-Os` everywhere", f"-Os {SECTIONS}", GC, True),
    ("`-Oz` everywhere", f"-Oz {SECTIONS}", GC, True),
    ("`-O3` everywhere", f"-O3 {SECTIONS}", GC, True),
    ("`-O2`, link-time optimisation", f"-O2 {SECTIONS} -flto", f"{GC} -O2 -flto=auto", True),
    ("`-Os`, link-time optimisation", f"-Os {SECTIONS} -flto", f"{GC} -Os -flto=auto", True),
    ("`-O2`, no exceptions (for comparison)", f"-O2 {SECTIONS} -fno-exceptions", GC, True),
    ("ours, linker `-O1`", None, f"{OUR_LINK} -Wl,-O1", True),
    ("ours, `-z noseparate-code`", None, f"{OUR_LINK} -Wl,-z,noseparate-code", True),
    ("ours, `-z norelro`", None, f"{OUR_LINK} -Wl,-z,norelro", True),
    ("ours, the linker's own page size", None, OUR_LINK, True),
)
STEPS = 10000
STEP_TESTS = {
    "without logs": "AllocatesLocksAndThrowsNothingWithoutLogs",
    "with both logs": "AllocatesLocksAndThrowsNothingInTenThousandStepsWithBothLogs",
}
REPLACED = re.compile(r"-O[0-3sz]|-f(function|data)-sections|-fvisibility=hidden")


class Build:
    """One build's module sources, compiled once for each set of options."""

    def __init__(self, folder, scratch):
        commands = json.loads((folder / "compile_commands.json").read_text(encoding="utf-8"))
        self._commands = [entry for entry in commands if "/OutputPowerControllerObjects.dir/" in entry["command"]]
        if not self._commands:
            sys.exit(f"variants.py: {folder} has no module; build it with script/build")
        self._scratch = scratch
        self._objects = {}
        words = shlex.split(self._commands[0]["command"])
        self._compiler = next(word for word in words if not word.endswith("ccache"))
        self._target = [word for word in words if word.startswith("--sysroot=")]
        cache = (folder / "CMakeCache.txt").read_text(encoding="utf-8")
        self.strip = re.search(r"^CMAKE_STRIP:\w+=(.*)$", cache, re.MULTILINE)[1]
        page = re.search(r"^OPC_PAGE_SIZE:\w+=(\d+)$", cache, re.MULTILINE)
        self._page = [f"-Wl,-z,max-page-size={page[1]}"] if page else []

    def _compile(self, entry, options, output):
        words = shlex.split(entry["command"])
        words[words.index("-o") + 1] = str(output)
        # The objects, compiled one by one, are what there is a command for.
        if options is None:
            words += shlex.split(WHOLE)
        elif options != ONE_BY_ONE:
            keep_visibility = "-fvisibility=" not in options
            words = [w for w in words if not REPLACED.fullmatch(w) or (keep_visibility and w == "-fvisibility=hidden")]
            words += shlex.split(options)
        subprocess.run(words, check=True, cwd=entry["directory"])

    def _compiled(self, options):
        if options not in self._objects:
            folder = self._scratch / f"objects{len(self._objects)}"
            folder.mkdir()
            outputs = [folder / f"{number}.o" for number in range(len(self._commands))]
            with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
                list(pool.map(self._compile, self._commands, [options] * len(outputs), outputs))
            self._objects[options] = outputs
        return self._objects[options]

    def library(self, name, options, link, with_map):
        output = self._scratch / "libOutputPowerController.so"
        page = [] if "page size" in name else self._page
        version_script = [f"-Wl,--version-script={EXPORTS}"] if with_map else []
        subprocess.run(
            (self._compiler, *self._target, "-shared", "-Wl,--as-needed", "-Wl,-soname,libOutputPowerController.so.0",
             *self._compiled(options), *version_script, *page, *shlex.split(link), "-lxmlrpc-epi", "-o", output),
            check=True,
        )
        return output


def step_instructions(program, module, library, test):
    """Returns what the module itself executes in a step: of all that callgrind counts what lies in its file."""
    kept = module.read_bytes()
    with tempfile.TemporaryDirectory() as folder:
        output = pathlib.Path(folder) / "callgrind.out"
        shutil.copyfile(library, module)
        try:
            subprocess.run(
                ("valgrind", "--tool=callgrind", "--toggle-collect=IOutputPowerController::staticRegulate*",
                 f"--callgrind-out-file={output}", program, f"--gtest_filter=*.{test}"),
                check=True, capture_output=True,
            )
        finally:
            module.write_bytes(kept)
        return own_cost(output.read_text(encoding="utf-8"), str(module.name)) / STEPS


def own_cost(text, file_name):
    """Adds up the lines of cost that callgrind gives to one file, without what it called."""
    names, current, total, is_call = {}, "", 0, False
    for line in text.splitlines():
        if found := re.match(r"(c?)ob=\((\d+)\)(?: (.*))?", line):
            names.setdefault(found[2], found[3])
            current = current if found[1] else names[found[2]]
        elif line.startswith("calls="):
            is_call = True
        elif re.match(r"[+\-*\d]", line):
            if not is_call and current.rpartition("/")[2].startswith(file_name):
                total += int(line.split()[1])
            is_call = False
    return total


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="a folder that the module was built in, such as build/armhf")
    parser.add_argument("--steps", type=pathlib.Path, metavar="PROGRAM", help="regulation_path_tests of that build")
    arguments = parser.parse_args()
    header = ["variant", "file", "text", "data", "relocations"] + (list(STEP_TESTS) if arguments.steps else [])
    print("| " + " | ".join(header) + " |\n|---|" + "---:|" * (len(header) - 1))
    module = (arguments.build / "lib" / "libOutputPowerController.so").resolve()
    with tempfile.TemporaryDirectory() as folder:
        build = Build(arguments.build.resolve(), pathlib.Path(folder))
        for name, options, link, with_map in VARIANTS:
            print(f"{name} ...", file=sys.stderr)
            library = build.library(name, options, link, with_map)
            size = module_size.ModuleSize(library, build.strip)
            row = [f"{size.figures[figure]:,}" for figure in header[1:5]]
            if arguments.steps:
                row += [f"{step_instructions(arguments.steps, module, library, test):.0f}" for test in STEP_TESTS.values()]
            print(f"| {name} | " + " | ".join(row) + " |", flush=True)


if __name__ == "__main__":
    main()
