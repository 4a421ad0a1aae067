"""
The list of mutants that no test can kill, because they do what the module does. An entry is found by file, the text of
the line and the operator, and where it has them by its change and the text of the line above; so it survives edits
elsewhere, and is wrong as soon as its line is another one.
"""

import tomllib

REQUIRED = ("file", "line", "operator", "reason")
ALLOWED = {*REQUIRED, "change", "previous"}


class ListError(Exception):
    """The list is wrong; str() says where and what to do."""


def read(path):
    """Reads the entries of a list."""
    try:
        with open(path, "rb") as stream:
            content = tomllib.load(stream)
    except (OSError, tomllib.TOMLDecodeError) as error:
        raise ListError(f"{path}: {error}") from error
    entries = content.pop("equivalent", [])
    if content:
        raise ListError(f"{path}: unknown key {next(iter(content))!r}; there are only [[equivalent]] entries")
    for number, entry in enumerate(entries, 1):
        where = f"{path}: entry {number} ({entry.get('line', 'no line')})"
        for key in REQUIRED:
            if not isinstance(entry.get(key), str) or not entry[key].strip():
                raise ListError(f"{where}: {key} is missing or empty; it has to be a text")
        for key in entry.keys() - ALLOWED:
            raise ListError(f"{where}: unknown key {key!r}; known are {', '.join(sorted(ALLOWED))}")
    return entries


def fits(entry, mutant):
    """Whether an entry speaks of a mutant."""
    return (entry["file"] == mutant.file and entry["line"] == mutant.line_text and entry["operator"] == mutant.operator
            and entry.get("change", mutant.change) == mutant.change
            and entry.get("previous", mutant.previous) == mutant.previous)


def match(path, entries, mutants):
    """
    Finds the listed mutants.
    @return their ids with the reason
    """
    reasons = {}
    for number, entry in enumerate(entries, 1):
        found = [mutant for mutant in mutants if fits(entry, mutant)]
        if not found:
            raise ListError(f"{path}: entry {number} fits no mutant: {entry['file']}: {entry['line']} "
                            f"[{entry['operator']} {entry.get('change', '')}]; correct it, or remove it if its line "
                            "is gone (script/mutate --list shows what there is)")
        for mutant in found:
            reasons[mutant.id] = entry["reason"]
    return reasons
