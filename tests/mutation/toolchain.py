"""
Compiles and links without CMake, for speed: one changed file, with the headers precompiled and without optimisation, and
a small library of the module's objects that the test programs take in place of their own.
"""

import json
import os
import pathlib
import re
import shlex
import subprocess

import programs

DROPPED = re.compile(r"-(O.|g.?|W.*|DNDEBUG|fvisibility.*|ffile-prefix-map.*|f(function|data)-sections|flto.*)")
SANITIZER = "-fsanitize=address,undefined"


class CompileError(Exception):
    """The compiler or linker refused; str() has what it said."""


def call(command, **options):
    """Runs a compiler or linker."""
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    if done.returncode != 0:
        raise CompileError(f"{shlex.join(command)}\n{done.stderr or done.stdout}")


class Toolchain:
    """Knows the commands of a configured build folder, and where the mutants' own objects lie."""

    def __init__(self, root, build, folder):
        self.root = pathlib.Path(root)
        self.build = pathlib.Path(build)
        self.folder = pathlib.Path(folder)
        self.source = self.folder / "source"
        self.tests = {program.name: [] for program in programs.PROGRAMS}
        self.platform = []
        self.commands = {}
        self._read_commands()
        self.module_sources = sorted(
            str(path.relative_to(self.root)) for path in (self.root / programs.MODULE_FOLDER).glob("*.cpp"))
        self.includes = {path: self._included(path) for path in self.module_sources}

    # --- what CMake knows ----------------------------------------------------------------------------------------

    def _read_commands(self):
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            path = pathlib.Path(entry["file"])
            if not path.is_relative_to(self.root):
                continue
            file = str(path.relative_to(self.root))
            if "OutputPowerControllerObjects.dir" in output:
                self.commands[file] = words
            if "/RecordingPlatform.dir/" in output:
                self.platform.append(output)
            for program in programs.PROGRAMS:
                if output.startswith(f"{program.folder}/CMakeFiles/{program.name}.dir/"):
                    self.tests[program.name].append(output)
                    self.commands[file] = words

    def test_objects(self):
        """The objects that the build folder has to have."""
        objects = list(self.platform)
        for program in programs.PROGRAMS:
            if not program.loads and program is not programs.STEP:
                objects += self.tests[program.name]
        return objects

    def _included(self, path, known=None):
        """The repository's files that a file includes, directly or not."""
        known = set() if known is None else known
        for name in re.findall(r'^#include "(.*)"', (self.root / path).read_text(), re.MULTILINE):
            if name not in known and (self.root / name).is_file():
                known.add(name)
                self._included(name, known)
        return known

    def dependants(self, file):
        """The module's sources that have to be compiled when a file changes."""
        return [file] if file in self.module_sources else [
            source for source in self.module_sources if file in self.includes[source]]

    # --- commands ------------------------------------------------------------------------------------------------

    def options(self, file, first_include=None):
        """A file's compiler and options, for objects without optimisation, warnings and debug information."""
        words = [word for word in self.commands[file] if not DROPPED.fullmatch(word)]
        words = words[:words.index("-o")]
        if "ccache" in os.path.basename(words[0]):
            words = words[1:]  # which would keep thousands of objects that nobody asks for again
        root = f"-I{self.root}"
        words = [f"-I{self.source}" if word == root else word for word in words]
        if first_include is not None:
            words.insert(1, f"-I{first_include}")
        return [*words, "-w", "-O0"]

    def compile(self, file, output, path=None, extra=(), first_include=None):
        """
        Compiles a file of the repository.
        @param path where its text is; the copy's if not given
        @param first_include a folder with headers that come before the copy's
        """
        output.parent.mkdir(parents=True, exist_ok=True)
        call([*self.options(file, first_include), *extra, "-o", str(output), "-c", str(path or self.source / file)],
             cwd=self.source)

    def precompile(self, name, headers, model, extra, done):
        """
        Makes a header of headers, compiled beforehand.
        @param model a file whose options it is compiled with, and extra ones
        @param done whether it is there already
        @return the options that include it
        """
        header = self.folder / "headers" / name
        if done:
            return ["-include", str(header)]
        header.parent.mkdir(parents=True, exist_ok=True)
        header.write_text("".join(f"#include {header}\n" for header in headers))
        call([*self.options(model), *extra, "-x", "c++-header", "-o", f"{header}.gch", str(header)], cwd=self.source)
        return ["-include", str(header)]

    def link_library(self, objects, output, extra=()):
        """Links what the test programs take for the module."""
        call(["g++", "-shared", "-fuse-ld=lld", f"-Wl,-soname,{output.name}", "-o", str(output), *map(str, objects), *extra])

    def link_module(self, objects, output):
        """Links the module as it is loaded: it shows its interface only."""
        exports = self.source / programs.MODULE_FOLDER / "exports.map"
        call(["g++", "-shared", "-fuse-ld=lld", f"-Wl,--version-script={exports}", "-o", str(output),
              *map(str, objects), "-lxmlrpc-epi"])

    def link_program(self, program, objects, output, library=None):
        """
        Links a test program.
        @param library what to take for the module; none for a program that loads it, or has it among the objects
        """
        platform = [str(self.build / name) for name in self.platform] if program.platform else []
        module = [str(library)] if library else []
        wrap = [f"-Wl,--wrap={program.wrap}"] if program.wrap else []
        call(["g++", "-rdynamic", "-fuse-ld=lld", "-o", str(output), *map(str, objects), *platform, *module, *wrap,
              "-lxmlrpc-epi", *program.libraries, *programs.TEST_LIBRARIES])
