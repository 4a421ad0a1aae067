#!/usr/bin/env python3
"""Plants differences between two folders and expects each to be named. OPC_MODULE is a library to spoil."""

import os
import pathlib
import tempfile
import unittest

import compare_trees
import elf_file


class CompareTreesTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.one = pathlib.Path(temporary.name) / "one"
        self.other = pathlib.Path(temporary.name) / "other"
        for folder in (self.one, self.other):
            (folder / "lib").mkdir(parents=True)
            (folder / "lib" / "text").write_bytes(b"x" * 70000)
            (folder / "lib" / "link").symlink_to("text")

    def found(self):
        return compare_trees.differences(self.one, self.other)

    def test_the_same_is_the_same(self):
        self.assertEqual(self.found(), [])

    def test_a_byte(self):
        (self.other / "lib" / "text").write_bytes(b"x" * 69000 + b"y" + b"x" * 999)
        self.assertEqual(len(self.found()), 1)
        self.assertIn("lib/text: 70000 and 70000 bytes, differ from byte 69000\n", self.found()[0])

    def test_a_shorter_file(self):
        (self.other / "lib" / "text").write_bytes(b"x" * 65536)
        self.assertIn("70000 and 65536 bytes, differ from byte 65536\n", self.found()[0])

    def test_a_section(self):
        data = pathlib.Path(os.environ["OPC_MODULE"]).read_bytes()
        sections = elf_file.ElfFile(os.environ["OPC_MODULE"]).sections()
        section = next(one for one in sections if one.name == ".rodata")
        (self.one / "lib" / "module.so").write_bytes(data)
        (self.other / "lib" / "module.so").write_bytes(
            data[: section.offset] + bytes([data[section.offset] ^ 1]) + data[section.offset + 1 :]
        )
        self.assertIn("differ from byte 0 of section .rodata; sections that differ: .rodata\n", self.found()[0])

    def test_a_file_more_on_either_side(self):
        (self.one / "more").touch()
        (self.other / "other").touch()
        self.assertEqual(self.found(), [f"more: only in {self.one}", f"other: only in {self.other}"])

    def test_a_link_and_a_mode(self):
        (self.other / "lib" / "link").unlink()
        (self.other / "lib" / "link").symlink_to("nowhere")
        (self.other / "lib" / "text").chmod(0o600)
        self.assertIn("lib/link: links to text and nowhere", self.found())
        self.assertTrue(any("lib/text: modes" in text for text in self.found()))

    def test_nothing_is_not_enough(self):
        with tempfile.TemporaryDirectory() as empty:
            folder = pathlib.Path(empty)
            self.assertTrue(compare_trees.differences(folder, folder)[0].startswith("nothing in"))


if __name__ == "__main__":
    unittest.main()
