#!/usr/bin/env python3
"""Measures the stripped module: prints a table of libraries, or holds one against its budget."""

import argparse
import pathlib
import subprocess
import sys
import tempfile
import tomllib

import elf_file

BUDGETS = pathlib.Path(__file__).resolve().parent / "size_budgets.toml"
# What text consists of.
PARTS = ("code", "constants", "unwinding", "linking")
FIGURES = ("file", "text", *PARTS, "data", "bss", "relocations", "exports", "imports")
UNWINDING = (".eh_frame", ".gcc_except_table", ".ARM.ex")
LINKING = (".dyn", ".gnu.hash", ".gnu.version", ".hash", ".note", ".rel")


def group(section):
    """Returns which figure a section counts in, or None when it is not loaded."""
    if "A" not in section.flags or (section.kind == "NOBITS" and "T" in section.flags):
        return None
    if "W" in section.flags:
        return "bss" if section.kind == "NOBITS" else "data"
    if "X" in section.flags:
        return "code"
    if section.name.startswith(UNWINDING):
        return "unwinding"
    return "linking" if section.name.startswith(LINKING) else "constants"


class ModuleSize:
    """The figures of a library once it is stripped."""

    def __init__(self, library, strip):
        with tempfile.TemporaryDirectory() as folder:
            stripped = pathlib.Path(folder) / "module.so"
            subprocess.run((strip, "--strip-unneeded", "-o", stripped, library), check=True)
            elf = elf_file.ElfFile(stripped)
            self.architecture = elf.architecture
            self.sections = [(section, group(section)) for section in elf.sections()]
            self.figures = {name: self._sum(name) for name in (*PARTS, "data", "bss")}
            self.figures["text"] = sum(self.figures[part] for part in PARTS)
            self.figures["file"] = stripped.stat().st_size
            self.figures["relocations"] = elf.relocation_count()
            symbols = elf.dynamic_symbols()
            self.figures["exports"] = sum(symbol.defined for symbol in symbols)
            self.figures["imports"] = sum(not symbol.defined for symbol in symbols)
            self.needed = elf.needed()

    def _sum(self, figure):
        return sum(section.size for section, name in self.sections if name == figure)

    def consists_of(self, figure):
        """Returns the sections of a figure with their sizes, the largest first."""
        wanted = PARTS if figure == "text" else (figure,)
        sections = sorted((section for section, name in self.sections if name in wanted), key=lambda one: -one.size)
        return ", ".join(f"{section.name} {section.size}" for section in sections)


def over_budget(size, budgets):
    """Returns a text for each figure that is over its budget or has none."""
    found = []
    for figure in FIGURES:
        actual = size.figures[figure]
        limit = budgets.get(figure, {}).get(size.architecture)
        if limit is None:
            found.append(f"{size.architecture}: {figure} is {actual} and has no budget")
        elif actual > limit:
            sections = size.consists_of(figure)
            found.append(
                f"{size.architecture}: {figure} is {actual}, {actual - limit} over its budget of {limit}"
                + (f" ({sections})" if sections else "")
            )
    return found


def check(size):
    budgets = tomllib.loads(BUDGETS.read_text(encoding="utf-8"))
    found = over_budget(size, budgets)
    for text in found:
        print(text)
    if found:
        print(f"Make it smaller, or raise the budget in {BUDGETS.name} and say there why.")
        return 1
    print(", ".join(f"{figure} {size.figures[figure]} of {budgets[figure][size.architecture]}" for figure in FIGURES))
    return 0


def table(sizes):
    """Returns the figures as Markdown, an architecture a column."""
    lines = ["| bytes | " + " | ".join(size.architecture for size in sizes) + " |", "|---|" + "---:|" * len(sizes)]
    for figure in FIGURES:
        label = f"- {figure}" if figure in PARTS else figure
        if figure == "relocations":
            lines.append("| **numbers** |" + " |" * len(sizes))
        lines.append(f"| {label} | " + " | ".join(f"{size.figures[figure]:,}" for size in sizes) + " |")
    needed = ["<br>".join(size.needed) for size in sizes]
    return "\n".join([*lines, "| needed libraries | " + " | ".join(needed) + " |"])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--check", action="store_true", help="hold each library against its architecture's budget")
    parser.add_argument("libraries", nargs="+", metavar="STRIP=LIBRARY", help="a library, and the strip program for it")
    arguments = parser.parse_args()
    try:
        pairs = (pair.partition("=") for pair in arguments.libraries)
        sizes = [ModuleSize(library, strip) for strip, _, library in pairs]
    except (elf_file.ElfError, OSError, subprocess.CalledProcessError) as error:
        print(f"module_size.py: {error}", file=sys.stderr)
        return 2
    if arguments.check:
        return max(check(size) for size in sizes)
    print(table(sizes))
    return 0


if __name__ == "__main__":
    sys.exit(main())
