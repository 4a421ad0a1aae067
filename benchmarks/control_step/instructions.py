#!/usr/bin/env python3
"""Counts the instructions of a control step with valgrind and holds them against their budgets.

Prints the counts. Ends with 1 when one is more than 2 % above its budget, naming the functions that grew; with 77
where there is no valgrind.
"""

import argparse
import json
import pathlib
import platform
import shutil
import subprocess
import sys
import tomllib

import callgrind

BUDGETS = pathlib.Path(__file__).resolve().parent / "instruction_budgets.toml"
ARCHITECTURES = {"x86_64": "amd64", "aarch64": "arm64"}
TOLERANCE = 0.02
FLOORS = {", floor": "floor", ", storing floor": "storing_floor"}
SKIPPED = 77
HEAD = """\
# What a control step executes, in instructions, counted by valgrind: in all, and in each function without what it
# calls. A case that must grow gets a new budget by `script/benchmark control-step --update-budgets`; the commit says why.
# "floor" is what the bare calls execute, "storing_floor" with what the logs must store; they are no budgets.
"""


def without_floors(cases):
    """Returns the cases that have budgets, and the floors of each."""
    floors = {}
    for name, case in cases.items():
        for suffix, floor in FLOORS.items():
            if name.endswith(suffix):
                floors.setdefault(name.removesuffix(suffix), {})[floor] = case.total
    own = {name: case for name, case in cases.items() if not name.endswith(tuple(FLOORS))}
    return own, floors


def grown(case, budget):
    """Returns the functions that execute more than they did, those that grew most first."""
    known = budget.get("functions", {})
    growth = {name: cost - known.get(name, 0) for name, cost in case.functions.items()}
    names = sorted((name for name, more in growth.items() if more > 0), key=lambda name: -growth[name])
    return [f"{name}: {case.functions[name]:g}, {growth[name]:g} more" for name in names]


def compare(cases, budgets):
    """Returns what is over its budget and what is far below it, as texts."""
    above, below = [], []
    for name, case in cases.items():
        budget = budgets.get(name)
        if budget is None:
            above.append(f"{name}: {case.total:g} instructions and no budget")
        elif case.total > budget["count"] * (1 + TOLERANCE):
            head = (f"{name}: {case.total:g} instructions, {percent(case.total, budget)} above its budget of "
                    f"{budget['count']:g}")
            above.append("\n    ".join([head, *grown(case, budget)]))
        elif case.total < budget["count"] * (1 - TOLERANCE):
            below.append(f"{name}: {case.total:g} instructions, {percent(case.total, budget)} below its budget of "
                         f"{budget['count']:g}; the budget can be lowered")
    above += [f"{name}: has a budget and is not counted any more" for name in budgets if name not in cases]
    return above, below


def percent(count, budget):
    return f"{abs(count / budget['count'] - 1) * 100:.1f} %"


def as_toml(architecture, compiler, cases, floors, reasons):
    """Returns the budgets' file."""
    lines = [HEAD, f"[{architecture}]", f"compiler = {json.dumps(compiler)}"]
    for name, case in cases.items():
        lines += ["", f"[{architecture}.cases.{json.dumps(name)}]",
                  f"why = {json.dumps(reasons.get(name, 'as it was first counted'))}", f"count = {case.total:g}"]
        lines += [f"{floor} = {count:g}" for floor, count in floors.get(name, {}).items()]
        lines += [f"[{architecture}.cases.{json.dumps(name)}.functions]"]
        lines += [f"{json.dumps(function)} = {cost:g}" for function, cost in
                  sorted(case.functions.items(), key=lambda item: (-item[1], item[0]))]
    return "\n".join(lines) + "\n"


def update(path, old, architecture, compiler, cases, floors):
    """Writes the budgets anew; what is known of other architectures cannot be counted here."""
    others = [known for known in old if known != architecture]
    if others:
        raise callgrind.CountError(f"{path}: holds {', '.join(others)} too, which this machine cannot count")
    reasons = {name: budget["why"] for name, budget in old.get(architecture, {}).get("cases", {}).items()}
    beside = path.with_suffix(".new")
    beside.write_text(as_toml(architecture, compiler, cases, floors, reasons), encoding="utf-8")
    beside.replace(path)


def compiler_version(compiler):
    run = subprocess.run((compiler, "--version"), stdout=subprocess.PIPE, text=True, check=True)
    return run.stdout.partition("\n")[0]


def print_counts(cases, floors):
    for name, case in cases.items():
        texts = [f"{case.total / count:.2f} x its {floor.replace('_', ' ')} of {count:g}"
                 for floor, count in floors.get(name, {}).items()]
        print("; ".join([f"{name}: {case.total:g}", *texts]))


def write_json(path, architecture, compiler, cases, floors):
    counted = {name: {"count": case.total, **floors.get(name, {}), "functions": case.functions}
               for name, case in cases.items()}
    text = json.dumps({"architecture": architecture, "compiler": compiler, "cases": counted}, indent=1)
    path.write_text(text + "\n", encoding="utf-8")


def judge(budgets, compiler, cases):
    """Prints what is off. @return the exit code"""
    above, below = compare(cases, budgets.get("cases", {}))
    for text in below + above:
        print(text)
    if not above:
        return 0
    if compiler != budgets.get("compiler"):
        print(f"The budgets were counted with {budgets.get('compiler', 'no compiler yet')}; this is {compiler}.")
    print("Make it smaller, or run script/benchmark control-step --update-budgets and say in the commit why.")
    return 1


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=pathlib.Path, help="step_instructions of an optimised build")
    parser.add_argument("--compiler", default="c++", help="what it was built with; c++ when left out")
    parser.add_argument("--budgets", type=pathlib.Path, default=BUDGETS, metavar="FILE")
    parser.add_argument("--update-budgets", action="store_true", help="make the counts the budgets")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE", help="write everything counted there")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    if shutil.which("valgrind") is None:
        print("instructions.py: skipped, there is no valgrind; script/bootstrap installs it", file=sys.stderr)
        return SKIPPED
    architecture = ARCHITECTURES.get(platform.machine(), platform.machine())
    compiler = compiler_version(arguments.compiler)
    budgets = {}
    if arguments.budgets.exists():
        budgets = tomllib.loads(arguments.budgets.read_text(encoding="utf-8"))
    if architecture not in budgets and not arguments.update_budgets:
        print(f"instructions.py: skipped, {arguments.budgets.name} has no budgets for {architecture}", file=sys.stderr)
        return SKIPPED
    cases, floors = without_floors(callgrind.count(arguments.program))
    print_counts(cases, floors)
    if arguments.json:
        write_json(arguments.json, architecture, compiler, cases, floors)
    if arguments.update_budgets:
        update(arguments.budgets, budgets, architecture, compiler, cases, floors)
        return 0
    return judge(budgets[architecture], compiler, cases)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, callgrind.CountError, subprocess.CalledProcessError, tomllib.TOMLDecodeError) as error:
        print(f"instructions.py: {error}", file=sys.stderr)
        sys.exit(2)
