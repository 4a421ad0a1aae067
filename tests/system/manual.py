"""Reads the sources of the man pages."""

import pathlib
import re

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "docs" / "man"


def source(page):
    return (FOLDER / f"{page}.scd").read_text(encoding="utf-8")


def plain(text):
    """Returns a text without the marks for bold and underlined, which stand at the ends of words."""
    return re.sub(r"(?<!\w)[*_]|[*_](?!\w)", "", text).replace("\\", "")


def sections(text, level="#"):
    """Returns the headings of a level in their order, each with the text below it."""
    parts = re.split(rf"^{level} (.*)\n", text, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def entries(text):
    """Returns what is described in a section: the bold beginning of each paragraph that has an indented text, and it."""
    found = re.findall(r"^([*_]\S(?:.*\n)(?:(?!\t)\S.*\n)*)((?:\t.*\n|\n(?=\t))+)", text, flags=re.MULTILINE)
    return {plain(" ".join(head.split())): plain(" ".join(body.split())) for head, body in found}
