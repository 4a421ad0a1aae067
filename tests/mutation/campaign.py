"""Judges mutants one after the other, in several workers."""

import concurrent.futures
import hashlib
import os
import pathlib
import shutil
import subprocess
import threading
import time

import judge
import programs
import results
from toolchain import SANITIZER, CompileError

LIBRARY = "libmodule.so"
MODULE = "./libOutputPowerController.so"
#: Killers of neighbouring lines that are tried before a whole program.
FIRST_TESTS = 12


#: Further options of the module's objects: those that are judged first, the same without headers that may change, and
#: those that survivors are compared and run with.
KINDS = {
    "plain": (),
    "header": (),
    "optimised": ("-O2",),
    "sanitized": (SANITIZER, "-fno-sanitize-recover=all", "-g1"),
}


class SetUpError(Exception):
    """The unchanged module does not build or pass; str() says what to do."""


class Campaign:
    """What all workers share: the objects of the unchanged module, and the test programs."""

    def __init__(self, toolchain, sources):
        self.toolchain = toolchain
        self.sources = sources  # the mutated files' bytes
        self.folder = toolchain.folder
        self.headers = {}  # options that include the precompiled headers, for sources and for headers
        self.killers = {}  # file -> (line, test) of each mutant that was killed
        self.lock = threading.Lock()

    # --- once ----------------------------------------------------------------------------------------------------

    def prepare(self, say):
        """Compiles the unchanged module and links the test programs; all tests have to pass then."""
        self._compile_unchanged(say)
        self._link_programs()
        say("Trying the unchanged module")
        worker = Worker(self, 0)
        worker.reset()
        killer = worker.link_and_judge({}, None) or worker.judge_loaded({}, None) or worker.judge_sanitized(None)
        if killer:
            raise SetUpError(f"the unchanged module fails {killer}: build/mutate needs a module that passes its tests "
                             "(script/test release tests/module tests/abi)")
        self.say = say

    def _compile_unchanged(self, say):
        """Copies and compiles, unless that was done before with the same sources and by the same tool."""
        copied = ("Control", "Platform", "tests/abi", "tests/module", "tests/support")
        files = [path for name in copied for path in (self.toolchain.root / name).rglob("*") if path.is_file()]
        made_from = fingerprint([*files, *pathlib.Path(__file__).parent.glob("*.py")])
        stamp = self.folder / "compiled"
        done = stamp.is_file() and stamp.read_text() == made_from
        if not done:
            stamp.unlink(missing_ok=True)
            shutil.rmtree(self.toolchain.source, ignore_errors=True)
            for name in copied:
                shutil.copytree(self.toolchain.root / name, self.toolchain.source / name)
            say("Compiling the unchanged module")
        self._precompile_headers(done)
        if not done:
            for kind in KINDS:
                for source in self.toolchain.module_sources:
                    self._compile(source, self.original(kind, source), kind)
            self._compile_loading_programs()
            stamp.write_text(made_from)

    def _precompile_headers(self, done):
        includes = self.toolchain.includes
        used = {name for names in includes.values() for name in names}
        mutated = {f"{programs.MODULE_FOLDER}/{name}" for name in programs.HEADERS}
        clean = {name for name in used if name not in mutated and not mutated & self.toolchain._included(name)}
        library = sorted({line.split()[1] for path in [*used, *includes]
                          for line in (self.toolchain.root / path).read_text().splitlines()
                          if line.startswith("#include <")})
        model = self.toolchain.module_sources[0]
        quoted = [f'"{name}"' for name in sorted(clean)]
        for kind in ("header", "optimised", "sanitized"):
            self.headers[kind] = self.toolchain.precompile(f"{kind}.h", library + quoted, model, KINDS[kind], done)
        quoted += [f'"{name}"' for name in sorted(used - clean)]
        self.headers["plain"] = self.toolchain.precompile("plain.h", library + quoted, model, KINDS["plain"], done)
        tests = ["<gtest/gtest.h>", "<gmock/gmock.h>", "<rapidcheck.h>"]
        self.headers["step"] = self.toolchain.precompile("step.h", tests, self.step_sources()[0], (), done)

    def step_sources(self):
        return sorted(file for file in self.toolchain.commands if file.startswith("tests/module/step/"))

    def original(self, kind, source):
        return self.folder / "objects" / kind / f"{pathlib.Path(source).stem}.o"

    def _compile(self, source, output, kind, path=None, first_include=None):
        self.toolchain.compile(source, output, path, [*self.headers[kind], *KINDS.get(kind, ())], first_include)

    def _link_programs(self):
        toolchain = self.toolchain
        folder = self.folder / "programs"
        folder.mkdir(parents=True, exist_ok=True)
        objects = [self.original("plain", source) for source in toolchain.module_sources]
        toolchain.link_library(objects, folder / LIBRARY)
        for program in programs.PROGRAMS:
            if program.loads:
                tests = sorted((self.folder / "objects" / program.name).glob("*.o"))
                toolchain.link_program(program, tests, folder / program.name)
            elif program in (programs.CONTROLLER, programs.LOG):
                tests = [toolchain.build / name for name in toolchain.tests[program.name]]
                toolchain.link_program(program, tests, folder / program.name, folder / LIBRARY)

    def _compile_loading_programs(self):
        """Programs that load the module look for it where they run, so that each worker has its own."""
        for program in programs.PROGRAMS:
            if not program.loads:
                continue
            folder = self.folder / "objects" / program.name
            shutil.rmtree(folder, ignore_errors=True)
            names = {pathlib.Path(name).name for name in self.toolchain.tests[program.name]}
            for file in sorted(self.toolchain.commands):
                path = pathlib.Path(file)
                if f"{path.name}.o" in names and path.parent == pathlib.Path(program.folder):
                    self.toolchain.compile(file, folder / f"{path.stem}.o", self.toolchain.root / file,
                                           [f"-U{program.loads}", f'-D{program.loads}="{MODULE}"'])

    # --- while it runs -------------------------------------------------------------------------------------------

    def likely_tests(self, mutant):
        """Tests that killed mutants of neighbouring lines, the nearest first."""
        with self.lock:
            near = sorted(self.killers.get(mutant.file, ()), key=lambda pair: abs(pair[0] - mutant.line))
        return list(dict.fromkeys(test for _, test in near))[:FIRST_TESTS]

    def remember(self, mutant, killer):
        name = killer.split()[0]
        if "." in name:
            with self.lock:
                self.killers.setdefault(mutant.file, []).append((mutant.line, name))

    def run(self, mutants, jobs, take):
        """Judges mutants; take(mutant, verdict, by, seconds) gets each as soon as it is judged."""
        workers = [Worker(self, number) for number in range(jobs)]
        idle = list(workers)

        def one(mutant):
            with self.lock:
                worker = idle.pop()
            begin = time.monotonic()
            try:
                verdict, by = worker.judge(mutant)
            finally:
                with self.lock:
                    idle.append(worker)
            return mutant, verdict, by, time.monotonic() - begin

        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            futures = [pool.submit(one, mutant) for mutant in mutants]
            try:
                for future in concurrent.futures.as_completed(futures):
                    take(*future.result())
            except BaseException:
                for future in futures:
                    future.cancel()
                raise


class Worker:
    """Judges one mutant at a time in a folder of its own."""

    def __init__(self, campaign, number):
        self.campaign = campaign
        self.toolchain = campaign.toolchain
        self.folder = campaign.folder / f"worker{number}"

    def reset(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)

    def judge(self, mutant):
        """@return the verdict and what killed, if something did"""
        self.reset()
        text = mutant.apply(self.campaign.sources[mutant.file])
        path = self.folder / "changed" / mutant.file
        path.parent.mkdir(parents=True)
        path.write_bytes(text)
        kind = "header" if mutant.file.endswith(".h") else "plain"
        try:
            changed = self.compile(mutant, kind)
        except CompileError:
            return results.INVALID, ""
        if not changed:
            return results.SAME, "no difference"
        try:
            killer = self.link_and_judge(changed, mutant)
            if not killer and not self.compile(mutant, "optimised"):
                return results.SAME, "no difference when optimised"
            killer = killer or self.judge_steps(mutant) or self.judge_loaded(changed, mutant)
            killer = killer or self.judge_sanitized(mutant)
        except CompileError as error:
            return results.INVALID, str(error).splitlines()[-1]
        if not killer:
            return results.SURVIVED, ""
        self.campaign.remember(mutant, killer)
        return results.KILLED, killer

    def compile(self, mutant, kind):
        """Compiles what a mutant changes. @return the objects that differ from the unchanged module's, by source"""
        changed = {}
        for source in self.toolchain.dependants(mutant.file):
            output = self.folder / kind / f"{pathlib.Path(source).stem}.o"
            folder = self.folder / "changed"
            path = folder / source if source == mutant.file else None
            self.campaign._compile(source, output, kind, path, folder)
            if output.read_bytes() != self.campaign.original(kind, source).read_bytes():
                changed[source] = output
        return changed

    def objects(self, changed, kind="plain"):
        return [changed.get(source, self.campaign.original(kind, source)) for source in self.toolchain.module_sources]

    def link_and_judge(self, changed, mutant):
        """Runs the two programs that see the module's insides, the likeliest killers first."""
        self.toolchain.link_library(self.objects(changed), self.folder / LIBRARY)
        order = programs.likeliest(mutant.file if mutant else "")
        first = self.campaign.likely_tests(mutant) if mutant else []
        folder = self.campaign.folder / "programs"
        if first:
            for program in order:
                killer = judge.run(folder / program.name, self.folder, first)
                if killer:
                    return killer
        for program in order:
            killer = judge.run(folder / program.name, self.folder)
            if killer:
                return killer
        return None

    def judge_steps(self, mutant):
        """The tests of the arithmetic have it compiled in."""
        if not mutant.file.endswith("RegulatorStep.h"):
            return None
        objects = []
        for source in self.campaign.step_sources():
            output = self.folder / "step" / f"{pathlib.Path(source).stem}.o"
            self.campaign._compile(source, output, "step", None, self.folder / "changed")
            objects.append(output)
        self.toolchain.link_program(programs.STEP, objects, self.folder / "step_tests")
        return judge.run(self.folder / "step_tests", self.folder, processor_seconds=120)

    def judge_loaded(self, changed, mutant):
        """The programs that load the module, and the one with a disturbed table look-up."""
        table = self.folder / programs.FAILING_TABLE.name
        tests = [self.toolchain.build / name for name in self.toolchain.tests[programs.FAILING_TABLE.name]]
        self.toolchain.link_program(programs.FAILING_TABLE, tests + self.objects(changed), table)
        killer = judge.run(table, self.folder)
        if killer:
            return killer
        self.toolchain.link_module(self.objects(changed), self.folder / MODULE)
        for program in (programs.PATH, programs.ABI):
            killer = judge.run(self.campaign.folder / "programs" / program.name, self.folder, processor_seconds=30)
            if killer:
                return killer
        return None

    def judge_sanitized(self, mutant):
        """Runs the first programs again with the sanitizers that the module is tested with."""
        objects = self.compile(mutant, "sanitized") if mutant else {}
        folder = self.folder / "sanitized-library"
        folder.mkdir(exist_ok=True)
        self.toolchain.link_library(self.objects(objects, "sanitized"), folder / LIBRARY, [SANITIZER])
        environment = {"LD_PRELOAD": sanitizer_library(), "ASAN_OPTIONS": "exitcode=1"}
        for program in programs.likeliest(mutant.file if mutant else ""):
            killer = judge.run(self.campaign.folder / "programs" / program.name, folder, processor_seconds=60,
                               environment=environment)
            if killer:
                return f"{killer.split()[0]} (sanitizers)"
        return None


def sanitizer_library():
    """Path of the address sanitizer's library, which has to come before all others."""
    return subprocess.run(["g++", "-print-file-name=libasan.so"], capture_output=True, text=True,
                          check=True).stdout.strip()


def fingerprint(paths):
    """A hash of files' contents."""
    digest = hashlib.sha256()
    for path in sorted(paths, key=os.fspath):
        digest.update(pathlib.Path(path).read_bytes())
    return digest.hexdigest()[:16]
