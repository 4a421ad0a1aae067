#!/usr/bin/env python3
"""Compares the module's binary interface with the baseline of its architecture, or writes a new baseline."""

import argparse
import pathlib
import sys
import tempfile

import binary_interface
import elf_file

ROOT = pathlib.Path(__file__).resolve().parents[2]
BASELINES = pathlib.Path(__file__).resolve().parent / "baselines"

ADVICE = """\
When this is not what you meant, undo it. When it is:
  1. script/abi --update {architecture}, and the same for the other architectures;
  2. a line in CHANGELOG.md, in the same commit;
  3. {third}.
docs/binary-interface.md says what is promised."""
THIRD = {
    True: "a new SONAME, because programs built for the old interface break",
    False: "a new SONAME, unless docs/binary-interface.md lists the change as one that programs survive",
}


def current(arguments):
    """Returns (architecture, symbol lines, description of the types)."""
    architecture = elf_file.ElfFile(arguments.module).architecture
    text = binary_interface.layouts(arguments.probe, arguments.abidw)
    missing = binary_interface.missing_types(ROOT, text)
    if missing:
        raise binary_interface.InterfaceError(
            f"the probe does not show {', '.join(missing)}; add them to tests/abi/probe/InterfaceProbe.cpp"
        )
    return architecture, binary_interface.symbols(arguments.module), text


def update(architecture, symbols, text):
    folder = BASELINES / architecture
    folder.mkdir(parents=True, exist_ok=True)
    (folder / binary_interface.SYMBOL_FILE).write_text("\n".join(symbols) + "\n", encoding="utf-8")
    (folder / binary_interface.LAYOUT_FILE).write_text(text, encoding="utf-8")
    print(f"{architecture}: new baseline in {folder.relative_to(ROOT)}; CHANGELOG.md needs a line")
    return 0


def compare(architecture, symbols, text, abidiff):
    folder = BASELINES / architecture
    if not folder.is_dir():
        raise binary_interface.InterfaceError(
            f"{architecture}: no baseline in {folder}; write one with script/abi --update {architecture}"
        )
    old = (folder / binary_interface.SYMBOL_FILE).read_text(encoding="utf-8").splitlines()
    report, incompatible = binary_interface.symbol_changes(old, symbols)
    with tempfile.TemporaryDirectory() as temporary:
        new = pathlib.Path(temporary) / binary_interface.LAYOUT_FILE
        new.write_text(text, encoding="utf-8")
        changes, breaking = binary_interface.layout_changes(folder / binary_interface.LAYOUT_FILE, new, abidiff)
    report += [changes] if changes else []
    if report:
        third = THIRD[incompatible or breaking]
        print(f"{architecture}: the binary interface changed", *report, sep="\n")
        print(ADVICE.format(architecture=architecture, third=third))
        return 1
    exports = sum(line.startswith("export ") for line in symbols)
    imports = sum(line.startswith("import ") for line in symbols)
    types = len(binary_interface.public_types(ROOT))
    print(f"{architecture}: unchanged: {exports} exported and {imports} imported symbols, {types} public types")
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--module", required=True, help="the built module")
    parser.add_argument("--probe", required=True, help="the built library of the public types, with debug information")
    parser.add_argument("--update", action="store_true", help="write the baseline instead of comparing")
    parser.add_argument("--abidw", default="abidw")
    parser.add_argument("--abidiff", default="abidiff")
    arguments = parser.parse_args()
    try:
        found = current(arguments)
        return update(*found) if arguments.update else compare(*found, arguments.abidiff)
    except (binary_interface.InterfaceError, elf_file.ElfError) as error:
        print(f"check_abi.py: {error}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
