#!/usr/bin/env python3
"""Finds what Doxygen's own warnings pass over: enumerators, and parameters of members that are pointers to functions.

usage: check_reference.py XML_FOLDER

Reads the XML that script/docs has Doxygen write. Prints what has no description, and fails if there is any.
"""

import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree


def described(element):
    return any("".join(part.itertext()).strip()
               for part in (element.find("briefdescription"), element.find("detaileddescription")) if part is not None)


def undescribed_parameters(member):
    """Returns the parameters of a pointer to a function that have no description."""
    arguments = member.findtext("argsstring") or ""
    if member.get("kind") != "variable" or "(" not in arguments:
        return []
    names = re.findall(r"(\w+)\s*[,)]", arguments[arguments.index("("):])
    known = {name.text for name in member.iter("parametername")}
    return [name for name in names if name != "void" and name not in known]


def findings(compound):
    name = compound.findtext("compoundname")
    if compound.get("kind") in ("class", "struct", "file") and not name.endswith(".md") and not described(compound):
        yield name
    for member in compound.iter("memberdef"):
        full_name = f"{name}: {member.findtext('name')}"
        if member.get("prot") == "private" or member.findtext("name").startswith(("~", "_xmlrpc")):
            continue
        if not described(member):
            yield full_name
        yield from (f"{full_name}, parameter {parameter}" for parameter in undescribed_parameters(member))
        yield from (f"{full_name}::{value.findtext('name')}" for value in member.iter("enumvalue")
                    if not described(value))


def main():
    if len(sys.argv) != 2 or sys.argv[1] in ("-h", "--help"):
        print(__doc__.strip())
        return 0 if len(sys.argv) == 2 else 2
    files = [path for path in sorted(pathlib.Path(sys.argv[1]).glob("*.xml")) if path.name != "index.xml"]
    if not files:
        print(f"{sys.argv[1]}: there is no XML of Doxygen; run script/docs", file=sys.stderr)
        return 2
    compounds = [compound for path in files for compound in ElementTree.parse(path).iter("compounddef")]
    found = [text for compound in compounds for text in findings(compound)]
    for text in found:
        print(f"{text}: no description; add one to its declaration", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
