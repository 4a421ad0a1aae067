"""The module's binary interface as two texts: the symbols it shares with its process, and the public types' layouts."""

import pathlib
import re
import subprocess
import xml.etree.ElementTree

import check_includes
import elf_file

PROBE = pathlib.Path(__file__).parent / "probe"
LAYOUT_FILE = "interfaces.abi"
SYMBOL_FILE = "symbols.txt"

ABIDW_OPTIONS = (
    "--exported-interfaces-only",
    "--no-comp-dir-path",
    "--no-corpus-path",
    "--no-elf-needed",
    "--no-parameter-names",
    "--no-show-locs",
    "--type-id-style",
    "hash",
)

# Types that the public headers define; a semicolon right after the name is only a declaration.
TYPE = re.compile(
    r"^(?:template <.*> )?(?:typedef )?(class|struct|enum)\s+(?:EAF_PUBLIC\s+)?(\w+)\s*(?:: [\w:<>, ]+?)?\s*"
    r"(?:\n#ifdef __cplusplus\n.*\n#endif)?\n\{",
    re.MULTILINE,
)
# Standard runtimes' symbols are named with their version.
RUNTIME = re.compile(r"(GLIBC|GLIBCXX|CXXABI|CXXABI_ARM|GCC)_([\d.]+)")


REPORTED_ELSEWHERE = re.compile(r"as (being reported|reported earlier)$")


class InterfaceError(Exception):
    """The comparison cannot be made; the text says why and what to do."""


def public_headers(root):
    """Returns the headers that integrators include, as the include directions name them."""
    patterns = (check_includes.MODULE_PLATFORM, check_includes.CONTROL_INTERFACES, check_includes.OWN_MODULE_PUBLIC)
    paths = (path for folder in ("Control", "Platform") for path in (root / folder).rglob("*.h"))
    headers = (path.relative_to(root).as_posix() for path in paths)
    return sorted(name for name in headers if "/private/" not in name and check_includes.matches(patterns, name))


def public_types(root):
    """Returns the types that the public headers define."""
    return sorted({name for header in public_headers(root) for _, name in TYPE.findall((root / header).read_text())})


def layouts(library, abidw="abidw"):
    """Returns the description of the types that a probe reaches. Without debug information there would be none."""
    if not elf_file.ElfFile(library).has_debug_information():
        raise InterfaceError(
            f"{library}: no debug information, so that nothing could be compared; build with -g and do not strip it"
        )
    command = (abidw, *ABIDW_OPTIONS, "--suppressions", str(PROBE / "ForeignTypes.txt"), str(library))
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode != 0 or "<class-decl" not in result.stdout:
        raise InterfaceError(f"{library}: {abidw} found no classes: {result.stderr.strip()}")
    return result.stdout


def described_types(text):
    """Returns the names of the types that a description defines rather than declares."""
    root = xml.etree.ElementTree.fromstring(text)
    nodes = [node for kind in ("class-decl", "enum-decl") for node in root.iter(kind)]
    return {node.get("name").partition("<")[0] for node in nodes if node.get("is-declaration-only") != "yes"}


def missing_types(root, text):
    """Returns the public types that a description lacks: changes of these would go unseen."""
    return sorted(set(public_types(root)) - described_types(text))


def condensed(report):
    """Returns a report without what only points at changes that it tells elsewhere, and headings left without a text."""
    kept = []
    for line in reversed(report.splitlines()):
        indent = len(line) - len(line.lstrip())
        is_heading = line.rstrip().endswith(":") or line.rstrip().endswith("changes")
        is_childless = not kept or not kept[0].strip() or len(kept[0]) - len(kept[0].lstrip()) <= indent
        is_gap = not line.strip() and (not kept or not kept[0].strip())
        if is_gap or REPORTED_ELSEWHERE.search(line) or (indent and is_heading and is_childless):
            continue
        kept.insert(0, line)
    return "\n".join(kept).strip()


def layout_changes(old, new, abidiff="abidiff"):
    """Compares two description files. Returns (report, certainly incompatible)."""
    # Not --leaf-changes-only, which is shorter: it passes over virtual operations in another order or of another type.
    command = (abidiff, "--no-show-locs", "--harmless", str(old), str(new))
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    # The exit code consists of bits: 1 and 2 errors, 4 a change, 8 one that breaks for certain.
    if result.returncode & 3:
        raise InterfaceError(f"{abidiff} cannot compare {old} with {new}: {result.stderr.strip()}")
    if result.returncode == 0:
        return "", False
    return condensed(result.stdout) or result.stdout, bool(result.returncode & 8)


def version_key(version):
    return tuple(int(part) if part.isdigit() else part for part in re.split(r"[._]", version))


def symbols(library):
    """Returns one line for each thing that the library shows to, takes from and expects of its process."""
    elf = elf_file.ElfFile(library)
    found = elf.dynamic_symbols()
    lines = [f"export {symbol.name}" for symbol in found if symbol.defined]
    imports = [symbol for symbol in found if not symbol.defined]
    lines += [f"import {symbol.name}" for symbol in imports if not symbol.version and symbol.binding != "WEAK"]
    lines += [f"need {name}" for name in elf.needed()]
    versions = {}
    for name, version in (RUNTIME.fullmatch(symbol.version).groups() for symbol in imports if symbol.version):
        versions[name] = max(version, versions.get(name, "0"), key=version_key)
    lines += [f"runtime {name} {version}" for name, version in versions.items()]
    lines.append(f"soname {elf.soname()}")
    return sorted(lines)


def symbol_changes(old, new):
    """Compares two lists of lines. Returns (report lines, incompatible)."""
    gone = sorted(set(old) - set(new))
    come = sorted(set(new) - set(old))
    incompatible = any(not line.startswith("import ") for line in gone) or any(
        not line.startswith("export ") for line in come
    )
    return [f"gone: {line}" for line in gone] + [f"new:  {line}" for line in come], incompatible
