"""Runs step_instructions under valgrind and reads what callgrind counted."""

import collections
import os
import pathlib
import re
import subprocess
import tempfile

TRIGGER = re.compile(r"desc: Trigger: Client Request: (.*)\|(\d+)$", re.MULTILINE)


class CountError(Exception):
    """Counting failed, and no budget was to blame."""


class Case:
    """What one step executes: in all, and in each function without what it calls."""

    def __init__(self, total, functions):
        self.total = total
        self.functions = functions


def count(program):
    """Returns the cases of the program by name, in its order."""
    with tempfile.TemporaryDirectory(prefix="opc-instructions-") as folder:
        output = pathlib.Path(folder) / "callgrind.out"
        # Functions are looked up before a step is counted, not in it.
        environment = {**os.environ, "LD_BIND_NOW": "1"}
        command = ("valgrind", "--tool=callgrind", "--collect-atstart=no", f"--callgrind-out-file={output}", program)
        run = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
        if run.returncode != 0:
            raise CountError(f"{program} under valgrind ended with {run.returncode}:\n{run.stderr}")
        dumps = sorted(pathlib.Path(folder).glob("callgrind.out.*"), key=lambda path: int(path.suffix[1:]))
        return cases([path.read_text(encoding="utf-8") for path in dumps])


def cases(texts):
    """Returns the cases that dumps hold: of each the difference between many steps and fewer, for one step."""
    dumps = collections.defaultdict(list)
    for text in texts:
        if found := TRIGGER.search(text):
            dumps[found[1]].append((int(found[2]), self_costs(text)))
    return {name: _difference(name, dumped) for name, dumped in dumps.items()}


def self_costs(text):
    """Returns what each function executed itself."""
    names, costs, function, is_call = {}, collections.Counter(), "", False
    for line in text.splitlines():
        if found := re.match(r"(c?)fn=\((\d+)\)(?: (.*))?", line):
            if found[3]:
                names[found[2]] = found[3]
            function = function if found[1] else names[found[2]]
        elif line.startswith("calls="):
            is_call = True
        elif re.match(r"[+\-*\d]", line):
            if not is_call:
                costs[readable(function)] += int(line.split()[1])
            is_call = False
    return costs


def readable(function):
    """Returns a function's name without what tells nothing, such as a recursion's number."""
    return re.sub(r"'\d+$", "", function.replace("(anonymous namespace)::", "")).replace("std::__cxx11::", "std::")


def _difference(name, dumped):
    if len(dumped) != 2:
        raise CountError(f"{name}: {len(dumped)} dumps instead of 2")
    (few, less), (many, more) = dumped
    functions = {function: (cost - less[function]) / (many - few) for function, cost in more.items()}
    functions = {function: round(cost, 2) for function, cost in functions.items() if round(cost, 2) > 0}
    return Case(round(sum((more - less).values()) / (many - few), 2), functions)
