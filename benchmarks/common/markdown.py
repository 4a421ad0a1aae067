"""Tables, and the parts of documents that hold what was measured."""


def table(head, rows, numbers_from=1):
    """Returns a table whose columns from the one named are numbers, set to the right."""
    rule = ["---" if column < numbers_from else "---:" for column in range(len(head))]
    return "\n".join("| " + " | ".join(map(str, row)) + " |" for row in (head, rule, *rows))


def replace_in(file, benchmark, text):
    """Replaces what a document holds between the two marks of a benchmark."""
    first = f"<!-- measured by script/benchmark {benchmark} --into docs/performance.md: begin -->"
    last = "<!-- measured: end -->"
    before, begin, rest = file.read_text(encoding="utf-8").partition(first)
    _, end, after = rest.partition(last)
    if not begin or not end:
        raise SystemExit(f"{file}: does not hold the two marks {first} and {last}")
    file.write_text(f"{before}{first}\n\n{text}\n\n{last}{after}", encoding="utf-8")
