"""Mutation testing of the module; script/mutate starts it."""

import argparse
import collections
import os
import pathlib
import signal
import subprocess
import sys
import time

import equivalents
import operators
import programs
import results
import walk
from campaign import Campaign, SetUpError, fingerprint
from mutants import name_changes
from toolchain import CompileError, Toolchain

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "release"
FOLDER = ROOT / "build" / "mutate"
LIST = pathlib.Path(__file__).resolve().parent / "equivalent.toml"


def parse_arguments():
    """The command line."""
    kinds = "\n".join(f"  {name:12} {what}" for name, what in operators.OPERATORS.items())
    parser = argparse.ArgumentParser(
        prog="script/mutate", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Changes the module in one place at a time and says which changes no test notices.\n"
                    "Verdicts are kept in build/mutate/results.jsonl, the tables in build/mutate/results.txt.",
        epilog=f"operators:\n{kinds}\n\nThe exit code is 0 when at least {results.REQUIRED_PERCENT:g} % of the mutants "
               "that count are killed, 1 when fewer are, 2 on errors.")
    parser.add_argument("--file", action="append", metavar="NAME", help="only this file of the module; may be repeated")
    parser.add_argument("--operator", action="append", choices=operators.OPERATORS, metavar="NAME",
                        help="only this operator; may be repeated")
    parser.add_argument("--id", action="append", help="only this mutant; shows its change; may be repeated")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, help="workers (default: processors)")
    parser.add_argument("--list", action="store_true", help="only list the mutants")
    parser.add_argument("--resume", action="store_true",
                        help="keep the verdicts of the last run; survivors are judged again when tests have changed")
    arguments = parser.parse_args()
    if arguments.jobs < 1:
        parser.error("--jobs has to be at least 1")
    return arguments


def configure():
    """Configures the build folder that the tests' objects and the compiler's options come from."""
    subprocess.run(["cmake", "--preset", "release"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    return Toolchain(ROOT, BUILD, FOLDER)


def find_mutants(toolchain, names):
    """All mutants of the files with these names, or of all files, with the files' texts."""
    files = [*toolchain.module_sources, *(f"{programs.MODULE_FOLDER}/{name}" for name in programs.HEADERS)]
    unknown = [name for name in names or () if not any(file.endswith(f"/{name}") for file in files)]
    if unknown:
        raise SetUpError(f"no file {unknown[0]!r} is mutated; there are "
                         + ", ".join(file.rsplit("/", 1)[-1] for file in files))
    texts, mutants = {}, []
    options = [word for word in toolchain.commands[toolchain.module_sources[0]] if word.startswith(("-I", "-D", "-std"))]
    for file in files:
        if names and file.rsplit("/", 1)[-1] not in names:
            continue
        texts[file] = (ROOT / file).read_bytes()
        mutants += name_changes(file, texts[file], walk.find_changes(ROOT / file, texts[file], options))
    return texts, mutants


class Progress:
    """Says how far a run is."""

    def __init__(self, total):
        self.total = total
        self.counts = collections.Counter()
        self.begin = time.monotonic()
        self.said = 0.0

    def add(self, verdict):
        self.counts[verdict] += 1
        now = time.monotonic()
        done = sum(self.counts.values())
        pause = 0.2 if sys.stderr.isatty() else 30.0
        if now - self.said < pause and done < self.total:
            return
        self.said = now
        left = (now - self.begin) / done * (self.total - done)
        text = (f"{done}/{self.total} judged, {self.counts[results.KILLED]} killed, "
                f"{self.counts[results.SURVIVED]} survived, {int(left // 60)} min {int(left % 60):02} s left")
        print(f"\r{text} " if sys.stderr.isatty() else text, end="" if sys.stderr.isatty() and done < self.total
              else "\n", file=sys.stderr, flush=True)


def judge(toolchain, texts, mutants, listed, arguments):
    """Judges what has no verdict yet. @return verdicts by id"""
    subprocess.run(["ninja", "-C", str(BUILD), *toolchain.test_objects()], check=True, stdout=subprocess.DEVNULL)
    FOLDER.mkdir(parents=True, exist_ok=True)
    tests = fingerprint([*(BUILD / name for name in toolchain.test_objects()),
                         *(ROOT / "tests/module/step").iterdir(), *(ROOT / "tests/abi").glob("*.cpp")])
    sources = {file: fingerprint([ROOT / file]) for file in texts}
    partial = bool(arguments.file or arguments.operator or arguments.id)
    store = results.Results(FOLDER / "results.jsonl", arguments.resume or partial)
    campaign = Campaign(toolchain, texts)
    todo = []
    for mutant in mutants:
        known = store.known(mutant, sources[mutant.file], tests) if arguments.resume else None
        if known is None:
            todo.append(mutant)
        elif known == results.KILLED:
            campaign.remember(mutant, store.records[mutant.id]["by"])
    todo.sort(key=lambda mutant: mutant.id)  # as good as drawn: a run that is not finished is a fair sample
    progress = Progress(len(todo))

    def take(mutant, verdict, by, seconds):
        store.add(mutant, verdict, sources[mutant.file], tests, by, seconds)
        progress.add(verdict)
        if arguments.id:
            print(f"{mutant.id} {verdict} {by}")

    if todo:
        print(f"{len(mutants)} mutants, {len(todo)} to judge", file=sys.stderr)
        campaign.prepare(lambda text: print(text, file=sys.stderr, flush=True))
        campaign.run(todo, arguments.jobs, take)
    verdicts = {mutant.id: store.records[mutant.id]["verdict"] for mutant in mutants if mutant.id in store.records}
    for mutant in mutants:
        if mutant.id not in listed or mutant.id not in verdicts:
            continue
        if verdicts[mutant.id] == results.KILLED:
            raise SetUpError(f"{LIST} calls {mutant.file}:{mutant.line} {mutant.operator}: {mutant.change} equivalent, "
                             f"but {store.records[mutant.id]['by']} kills it; remove the entry")
        if verdicts[mutant.id] == results.SURVIVED:
            verdicts[mutant.id] = results.EQUIVALENT
    return verdicts


def main():
    """Runs the command."""
    arguments = parse_arguments()
    toolchain = configure()
    texts, everything = find_mutants(toolchain, arguments.file)
    entries = [entry for entry in equivalents.read(LIST) if entry["file"] in texts or not arguments.file]
    listed = equivalents.match(LIST, entries, everything)
    mutants = [mutant for mutant in everything
               if (not arguments.operator or mutant.operator in arguments.operator)
               and (not arguments.id or mutant.id in arguments.id)]
    if not mutants:
        raise SetUpError("there are no such mutants; script/mutate --list shows what there is")
    if arguments.list or arguments.id:
        for mutant in mutants:
            print(f"{mutant.id} {mutant.file}:{mutant.line} {mutant.operator}: {mutant.change}"
                  + (f"\n         listed: {listed[mutant.id]}" if mutant.id in listed else ""))
    if arguments.list:
        return 0
    verdicts = judge(toolchain, texts, mutants, listed, arguments)
    lines = results.report(mutants, verdicts)
    print("\n".join(lines))
    if len(mutants) == len(everything) and not arguments.file:
        (FOLDER / "results.txt").write_text("\n".join(lines) + "\n")
    percent = results.score(collections.Counter(verdicts.values()))
    return 0 if percent is None or percent >= results.REQUIRED_PERCENT else 1


def interrupt(*_):
    """Ends a run as Ctrl-C does."""
    raise KeyboardInterrupt


if __name__ == "__main__":
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)  # also where the shell has it ignored, as in the background
    try:
        sys.exit(main())
    except (SetUpError, CompileError, equivalents.ListError, RuntimeError, OSError,
            subprocess.CalledProcessError) as problem:
        print(f"script/mutate: {problem}", file=sys.stderr)
        sys.exit(2)
    except KeyboardInterrupt:
        print("\nscript/mutate: interrupted; --resume goes on", file=sys.stderr)
        sys.exit(130)
