"""Runs test programs with limits, and says which test failed."""

import os
import re
import resource
import subprocess
import tempfile

FAILED = re.compile(rb"\[  FAILED  \] ([\w/]+[.][\w/]+)")
RUNNING = re.compile(rb"\[ RUN      \] ([\w/]+[.][\w/]+)")

#: A mutant may loop, wait, allocate and write without end. Processor time, not time on the wall, so that a machine
#: with other work to do judges alike.
WALL_SECONDS = 300
MEMORY_BYTES = 4 << 30
OUTPUT_BYTES = 16 << 20


def limit(processor_seconds, memory):
    """Makes a function that a child process calls before it becomes the program."""
    def apply():
        resource.setrlimit(resource.RLIMIT_CPU, (processor_seconds, processor_seconds + 1))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_FSIZE, (OUTPUT_BYTES, OUTPUT_BYTES))
        if memory:
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
    return apply


def run(program, folder, tests=None, processor_seconds=10, environment=None):
    """
    Runs a test program in a folder until its first failure.
    @param tests names of the tests to run; all if not given
    @return what killed: a test's name, or the reason why there is none; None when all tests passed
    """
    environment = environment or {}
    command = [str(program), "--gtest_fail_fast", "--gtest_color=no"]
    if tests:
        command.append("--gtest_filter=" + ":".join(tests))
    memory = 0 if "LD_PRELOAD" in environment else MEMORY_BYTES  # the address sanitizer reserves terabytes
    with tempfile.TemporaryFile(dir=folder) as output:
        try:
            done = subprocess.run(
                command, cwd=folder, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, check=False,
                timeout=WALL_SECONDS, preexec_fn=limit(processor_seconds, memory),
                env={**os.environ, "LD_LIBRARY_PATH": str(folder), **environment})
            code = done.returncode
        except subprocess.TimeoutExpired:
            code = None
        if code == 0:
            return None
        output.seek(0)
        text = output.read()
    names = FAILED.findall(text) or RUNNING.findall(text)[-1:]
    name = names[0].decode() if names else "start"
    if code is None:
        return f"{name} (no end)"
    return name if code == 1 else f"{name} ({'signal' if code < 0 else 'exit'} {abs(code)})"
