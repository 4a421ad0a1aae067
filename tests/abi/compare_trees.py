#!/usr/bin/env python3
"""Compares two folders byte by byte, and names the first place where a file differs: in a library its section."""

import argparse
import os
import pathlib
import sys

import elf_file

AROUND = 24  # bytes shown on each side of a difference


def contents(folder):
    """Returns the files and links below a folder by their relative names."""
    paths = (path for path in folder.rglob("*") if path.is_symlink() or not path.is_dir())
    return {path.relative_to(folder).as_posix(): path for path in paths}


def first_difference(one, other):
    """Returns the offset of the first byte that differs; the shorter text's end counts."""
    for start in range(0, min(len(one), len(other)), 65536):
        if one[start : start + 65536] != other[start : start + 65536]:
            return next(
                (start + i for i, (a, b) in enumerate(zip(one[start : start + 65536], other[start:])) if a != b),
                min(len(one), len(other)),
            )
    return min(len(one), len(other))


def sections(path, data):
    """Returns the contents of a library's or program's sections by name; nothing for other files."""
    try:
        found = elf_file.ElfFile(path).sections() if data[:4] == b"\x7fELF" else []
    except elf_file.ElfError:
        return {}
    return {one.name: data[one.offset : one.offset + one.size] for one in found if one.kind != "NOBITS"}


def excerpt(data, offset):
    text = data[max(0, offset - AROUND) : offset + AROUND]
    return "".join(chr(byte) if 32 <= byte < 127 else "." for byte in text)


def difference(name, one, other):
    """Returns what tells two files of one name apart, or None."""
    if one.is_symlink() or other.is_symlink():
        targets = [os.readlink(path) if path.is_symlink() else "no link" for path in (one, other)]
        return None if targets[0] == targets[1] else f"{name}: links to {targets[0]} and {targets[1]}"
    if one.stat().st_mode != other.stat().st_mode:
        return f"{name}: modes {one.stat().st_mode:o} and {other.stat().st_mode:o}"
    data = [path.read_bytes() for path in (one, other)]
    if data[0] == data[1]:
        return None
    # In a library the headers differ as soon as anything does, and the build's number always; the sections tell more.
    parts = sections(one, data[0]), sections(other, data[1])
    names = [part for part in parts[0] if parts[0][part] != parts[1].get(part, b"")]
    names.sort(key=lambda part: part == ".note.gnu.build-id")
    contents_of = [part[names[0]] for part in parts] if names and names[0] in parts[1] else data
    where = f" of section {names[0]}; sections that differ: {', '.join(names)}" if contents_of is not data else ""
    offset = first_difference(*contents_of)
    return (
        f"{name}: {len(data[0])} and {len(data[1])} bytes, differ from byte {offset}{where}\n"
        f"  {excerpt(contents_of[0], offset)}\n  {excerpt(contents_of[1], offset)}"
    )


def differences(one, other):
    """Returns what is not the same in two folders."""
    files = contents(one), contents(other)
    found = [f"{name}: only in {one}" for name in sorted(set(files[0]) - set(files[1]))]
    found += [f"{name}: only in {other}" for name in sorted(set(files[1]) - set(files[0]))]
    both = sorted(set(files[0]) & set(files[1]))
    found += [text for text in (difference(name, files[0][name], files[1][name]) for name in both) if text]
    return found if files[0] or files[1] else [f"nothing in {one} and {other}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("one", type=pathlib.Path)
    parser.add_argument("other", type=pathlib.Path)
    arguments = parser.parse_args()
    found = differences(arguments.one, arguments.other)
    for text in found:
        print(text)
    if not found:
        files = [path for path in contents(arguments.one).values() if not path.is_symlink()]
        print(f"{len(files)} files, {sum(path.stat().st_size for path in files)} bytes: the same")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
