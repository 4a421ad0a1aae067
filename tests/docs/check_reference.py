#!/usr/bin/env python3
"""Finds what Doxygen's own warnings pass over: enumerators, parameters of members that are pointers to functions, and
headers that are installed and not in the reference, or the other way round.

usage: check_reference.py XML_FOLDER INSTALLED_FILES

Reads the XML that script/docs has Doxygen write. Prints what is missing, and fails if anything is.
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


def header_differences(compounds, installed_files):
    """Yields each header that only one of the reference and the installation has."""
    text = pathlib.Path(installed_files).read_text(encoding="utf-8")
    installed = set(re.findall(r" include/OutputPowerController/(\S+\.h)$", text, flags=re.MULTILINE))
    described = {compound.find("location").get("file") for compound in compounds if compound.get("kind") == "file"
                 and compound.findtext("compoundname").endswith(".h")}
    yield from (f"{header}: installed, and not in the reference; see EXCLUDE in docs/Doxyfile"
                for header in sorted(installed - described))
    yield from (f"{header}: in the reference, and not installed; add it to EXCLUDE in docs/Doxyfile"
                for header in sorted(described - installed))


def main():
    if len(sys.argv) != 3 or sys.argv[1] in ("-h", "--help"):
        print(__doc__.strip())
        return 0 if len(sys.argv) == 2 else 2
    files = [path for path in sorted(pathlib.Path(sys.argv[1]).glob("*.xml")) if path.name != "index.xml"]
    if not files:
        print(f"{sys.argv[1]}: there is no XML of Doxygen; run script/docs", file=sys.stderr)
        return 2
    compounds = [compound for path in files for compound in ElementTree.parse(path).iter("compounddef")]
    found = [f"{text}: no description; add one to its declaration"
             for compound in compounds for text in findings(compound)]
    found += header_differences(compounds, sys.argv[2])
    for text in found:
        print(text, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
