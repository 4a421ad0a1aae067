"""Says whether the list of equivalent mutants fits the module as it is."""

import pathlib
import sys

import equivalents
import programs
import walk
from mutants import name_changes

OPTIONS = ("-std=c++20", "-D_DEFAULT_SOURCE", "-D_POSIX_C_SOURCE=200809L")


def main(root):
    """Checks the list against the sources below a folder."""
    path = pathlib.Path(__file__).resolve().parent / "equivalent.toml"
    mutants = []
    try:
        entries = equivalents.read(path)
        for file in sorted({entry["file"] for entry in entries}):
            source = (root / file).read_bytes()
            changes = walk.find_changes(root / file, source, [f"-I{root}", *OPTIONS])
            mutants += name_changes(file, source, changes)
        reasons = equivalents.match(path, entries, mutants)
    except (equivalents.ListError, OSError, RuntimeError) as error:
        print(error, file=sys.stderr)
        return 1
    print(f"{len(entries)} entries fit {len(reasons)} mutants in {programs.MODULE_FOLDER}")
    return 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
