"""What a mutant is, and how it is told from others."""

import collections
import dataclasses
import hashlib


@dataclasses.dataclass(frozen=True)
class Change:
    """A piece of a file's bytes and what comes in its place."""

    start: int
    end: int
    text: str
    operator: str


@dataclasses.dataclass(frozen=True)
class Mutant:
    """A change of a file, with what people need to find and name it."""

    id: str
    file: str  # relative to the repository
    line: int
    line_text: str  # without the blanks around it
    previous: str  # the text of the line above, likewise
    operator: str
    before: str
    after: str
    start: int
    end: int

    @property
    def change(self):
        """What becomes of what, on one line."""
        return f"{short(self.before)} -> {short(self.after) or '(nothing)'}"

    def apply(self, source):
        """The file's bytes with this change, with as many lines as before: traces carry line numbers."""
        replaced = source[self.start:self.end]
        lost = replaced.count(b"\n") - self.after.encode().count(b"\n")
        return source[:self.start] + self.after.encode() + b"\n" * max(lost, 0) + source[self.end:]


def short(text):
    """A piece of source on one line, with its middle left out where it is long."""
    text = " ".join(text.split())
    return text if len(text) <= 60 else f"{text[:38]} ... {text[-17:]}"


def name_changes(file, source, changes):
    """
    Makes mutants of changes. Their ids depend on the text of their lines and not on where those stand, so that they
    outlive edits elsewhere in the file.
    """
    lines = source.split(b"\n")
    starts = [0]
    for line in lines:
        starts.append(starts[-1] + len(line) + 1)
    seen = collections.Counter()
    mutants = []
    for change in sorted(set(changes), key=lambda c: (c.start, c.end, c.operator, c.text)):
        number = source.count(b"\n", 0, change.start)
        text = lines[number].decode().strip()
        before = source[change.start:change.end].decode()
        if before.split() == change.text.split():
            continue
        column = change.start - starts[number] - (len(lines[number]) - len(lines[number].lstrip()))
        key = (file, text, column, change.operator, before, change.text)
        seen[key] += 1
        digest = hashlib.sha1(repr((*key, seen[key])).encode(), usedforsecurity=False).hexdigest()
        previous = lines[number - 1].decode().strip() if number > 0 else ""
        mutants.append(Mutant(digest[:8], file, number + 1, text, previous, change.operator, before, change.text,
                              change.start, change.end))
    return mutants
