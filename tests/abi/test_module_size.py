#!/usr/bin/env python3
"""Plants growth and expects it to be found.

Reads from the environment: OPC_MODULE, the built module; OPC_STRIP; OPC_CXX, a compiler for the same architecture.
"""

import os
import pathlib
import subprocess
import tempfile
import unittest

import elf_file
import module_size

# Adds a kilobyte and more to one figure of a library of its own.
GROWTH = {
    "code": 'int f(int n) { asm volatile(".rept 400\\n nop\\n .endr"); return n; }',
    "constants": "extern const char text[2000]; const char text[2000] = {1};",
    "data": "char text[2000] = {1};",
    "bss": "char text[2000];",
    "exports": "int a, b, c;",
    "imports": "extern int a, b; int f() { return a + b; }",
    "relocations": "extern int a; int* p = &a; int* q = &a;",
}


class ModuleSizeTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def build(self, source):
        path = self.folder / "library.cpp"
        path.write_text(source, encoding="utf-8")
        library = self.folder / "library.so"
        command = (os.environ["OPC_CXX"], "-g", "-O1", "-shared", "-fPIC", "-nostdlib", path, "-o", library)
        subprocess.run(command, check=True)
        return module_size.ModuleSize(library, os.environ["OPC_STRIP"])

    def budgets(self, size):
        return {figure: {size.architecture: value} for figure, value in size.figures.items()}

    def test_each_figure_s_growth_is_named(self):
        small = self.build("int g() { return 1; }")
        budgets = self.budgets(small)
        self.assertEqual(module_size.over_budget(small, budgets), [])
        for figure, source in GROWTH.items():
            with self.subTest(figure):
                large = self.build("int g() { return 1; }" + source)
                growth = large.figures[figure] - small.figures[figure]
                self.assertGreater(growth, 0)
                found = module_size.over_budget(large, budgets)
                text = f"{figure} is {large.figures[figure]}, {growth} over its budget of {small.figures[figure]}"
                self.assertTrue(any(text in one for one in found), found)

    def test_the_sections_at_fault_are_named(self):
        small = self.build("int g() { return 1; }")
        found = module_size.over_budget(self.build(GROWTH["data"]), self.budgets(small))
        self.assertTrue(any(".data 2000" in one for one in found), found)

    def test_a_figure_without_a_budget_is_an_error(self):
        size = self.build("int g() { return 1; }")
        self.assertEqual(len(module_size.over_budget(size, {})), len(module_size.FIGURES))

    def test_the_module_s_parts_are_its_whole(self):
        size = module_size.ModuleSize(os.environ["OPC_MODULE"], os.environ["OPC_STRIP"])
        loaded = sum(section.size for section, figure in size.sections if figure)
        self.assertEqual(loaded, sum(size.figures[name] for name in ("text", "data", "bss")))
        self.assertGreater(size.figures["relocations"], 100)
        self.assertIn("libc.so.6", size.needed)
        self.assertFalse(any(section.name.startswith(".debug") for section, _ in size.sections))
        self.assertTrue(elf_file.ElfFile(os.environ["OPC_MODULE"]).has_debug_information())


if __name__ == "__main__":
    unittest.main()
