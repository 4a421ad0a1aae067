"""What the checks of a built library read from it, by readelf, which reads every architecture's files."""

import collections
import re
import subprocess

# Debian's names by class and machine of the ELF header.
ARCHITECTURES = {("ELF64", "X86-64"): "amd64", ("ELF64", "AArch64"): "arm64", ("ELF32", "ARM"): "armhf"}

Section = collections.namedtuple("Section", "name kind offset size flags")
Symbol = collections.namedtuple("Symbol", "name version binding defined")

SECTION = re.compile(
    r"\s*\[\s*\d+\]\s+(\S+)\s+(\S+)\s+[0-9a-f]+\s+([0-9a-f]+)\s+([0-9a-f]+)\s+[0-9a-f]+\s*([A-Za-z]*)\s"
)
SYMBOL = re.compile(r"\s*\d+:\s+[0-9a-f]+\s+\S+\s+\S+\s+(\S+)\s+\S+\s+(?:\[.*\]\s+)?(\S+)\s+([^\s@]+)(?:@+(\S+))?")


class ElfError(Exception):
    """A file that is not what a check needs; the text says what to do."""


class ElfFile:
    """A library as readelf shows it."""

    def __init__(self, path, readelf="readelf"):
        self.path = path
        self._readelf = readelf
        header = self._run("-h")
        fields = (re.search(rf"{field}:\s+(?:Advanced Micro Devices )?(\S+)", header) for field in ("Class", "Machine"))
        key = tuple(field[1] for field in fields)
        if key not in ARCHITECTURES:
            raise ElfError(f"{path}: no architecture that we know: {' '.join(key)}")
        self.architecture = ARCHITECTURES[key]

    def _run(self, *options):
        result = subprocess.run(
            (self._readelf, "--wide", *options, str(self.path)), capture_output=True, text=True, check=False
        )
        if result.returncode != 0 or not result.stdout:
            raise ElfError(f"{self.path}: {self._readelf} cannot read it: {result.stderr.strip()}")
        return result.stdout

    def sections(self):
        """Returns the sections in the file's order."""
        matches = (SECTION.match(line) for line in self._run("-S").splitlines())
        found = [match.groups() for match in matches if match]
        return [
            Section(name, kind, int(offset, 16), int(size, 16), flags) for name, kind, offset, size, flags in found
        ]

    def has_debug_information(self):
        return any(section.name in (".debug_info", ".zdebug_info") for section in self.sections())

    def dynamic_symbols(self):
        """Returns the symbols that the library shares with others."""
        matches = (SYMBOL.match(line) for line in self._run("--dyn-syms").splitlines())
        found = [match.groups() for match in matches if match and match[1] != "LOCAL"]
        return [Symbol(name, version or "", binding, index != "UND") for binding, index, name, version in found]

    def relocation_count(self):
        """Returns how many places the dynamic linker fills in when it loads the library."""
        counts = re.findall(r"contains (\d+) entr|^\s+(\d+) offsets", self._run("-r"), re.MULTILINE)
        return sum(int(table or relative) for table, relative in counts)

    def needed(self):
        return re.findall(r"\(NEEDED\).*\[(.*)\]", self._run("-d"))

    def soname(self):
        found = re.search(r"\(SONAME\).*\[(.*)\]", self._run("-d"))
        return found[1] if found else ""
