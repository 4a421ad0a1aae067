"""Keeps verdicts, so that a run can be resumed, and makes the tables of them."""

import collections
import json
import pathlib

KILLED, SURVIVED, INVALID, SAME, EQUIVALENT = "killed", "survived", "invalid", "same", "equivalent"
VERDICTS = (KILLED, SURVIVED, EQUIVALENT, SAME, INVALID)
REQUIRED_PERCENT = 95.0


class Results:
    """The verdicts of a run, each appended to a file as soon as it is known."""

    def __init__(self, path, resume):
        self.path = pathlib.Path(path)
        self.records = {}
        if resume and self.path.is_file():
            for line in self.path.read_text().splitlines():
                try:
                    record = json.loads(line)
                except ValueError:
                    continue  # a run was killed while it wrote
                self.records[record["id"]] = record
        elif self.path.is_file():
            self.path.unlink()

    def known(self, mutant, source_hash, tests_hash):
        """
        The verdict that still holds for a mutant, or None. What is killed stays so while its file is the same: tests
        are added. A survivor gets another chance when the tests are others.
        """
        record = self.records.get(mutant.id)
        if record is None or record["source"] != source_hash:
            return None
        if record["verdict"] == SURVIVED and record["tests"] != tests_hash:
            return None
        return record["verdict"]

    def add(self, mutant, verdict, source_hash, tests_hash, by="", seconds=0.0):
        """Keeps a verdict."""
        record = {"id": mutant.id, "file": mutant.file, "line": mutant.line, "operator": mutant.operator,
                  "change": mutant.change, "verdict": verdict, "by": by, "seconds": round(seconds, 3),
                  "source": source_hash, "tests": tests_hash}
        self.records[mutant.id] = record
        with self.path.open("a", encoding="utf-8") as stream:
            stream.write(json.dumps(record) + "\n")


def score(counts):
    """Percentage of the mutants that count which were killed; None when none counts."""
    judged = counts[KILLED] + counts[SURVIVED]
    return 100.0 * counts[KILLED] / judged if judged else None


def table(title, groups):
    """Lines of a table: a row for each group's counts of verdicts, and their sum."""
    rows = sorted(groups.items())
    total = collections.Counter()
    for _, counts in rows:
        total.update(counts)
    width = max([len(title), *(len(name) for name, _ in rows)])
    lines = [f"{title:{width}} {'mutants':>8} {'killed':>7} {'survived':>9} {'listed':>7} {'same':>6} {'invalid':>8} "
             f"{'score':>7}"]
    for name, counts in [*rows, ("all", total)]:
        percent = score(counts)
        lines.append(f"{name:{width}} {sum(counts.values()):8} {counts[KILLED]:7} {counts[SURVIVED]:9} "
                     f"{counts[EQUIVALENT]:7} {counts[SAME]:6} {counts[INVALID]:8} "
                     + (f"{percent:5.1f} %" if percent is not None else f"{'-':>7}"))
    return lines


def report(mutants, verdicts):
    """The tables per file and per operator, and the survivors."""
    files, kinds = collections.defaultdict(collections.Counter), collections.defaultdict(collections.Counter)
    for mutant in mutants:
        if mutant.id in verdicts:
            files[mutant.file.rsplit("/", 1)[-1]][verdicts[mutant.id]] += 1
            kinds[mutant.operator][verdicts[mutant.id]] += 1
    lines = [*table("file", files), "", *table("operator", kinds)]
    survivors = [mutant for mutant in mutants if verdicts.get(mutant.id) == SURVIVED]
    if survivors:
        lines += ["", "Survivors:"]
        lines += [f"{mutant.id} {mutant.file.rsplit('/', 1)[-1]}:{mutant.line} {mutant.operator}: {mutant.change}"
                  for mutant in survivors]
    return lines
