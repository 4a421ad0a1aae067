"""The installation has the files of installed_files.txt, each in its component; nothing of it points to the build."""

import os
import pathlib
import unittest

from installation import BUILD, CONFIGURATION, LIBDIR, SOURCE, VERSION, InstallationTestCase, install, run

COMPONENTS = ("Library", "Development", "Program")


def expected_files():
    """Returns the listed files by component, as "path" or "path -> target of the link"."""
    files = {component: set() for component in COMPONENTS}
    text = (pathlib.Path(__file__).parent / "installed_files.txt").read_text()
    for name, value in (("LIBDIR", LIBDIR), ("CONFIGURATION", CONFIGURATION), ("VERSION", VERSION),
                        ("BUILD_TYPE", os.environ["OPC_BUILD_TYPE"])):
        text = text.replace(f"<{name}>", value)
    for line in text.splitlines():
        if line and not line.startswith("#"):
            component, file = line.split(maxsplit=1)
            files[component].add(file)
    return files


def files_below(folder):
    files = set()
    for path in folder.rglob("*"):
        name = str(path.relative_to(folder))
        if path.is_symlink():
            files.add(f"{name} -> {os.readlink(path)}")
        elif not path.is_dir():
            files.add(name)
    return files


class InstalledFiles(InstallationTestCase):
    def test_are_the_listed_ones_in_each_component(self):
        for component, files in expected_files().items():
            with self.subTest(component):
                self.assertEqual(files_below(self.install_below(component, "--component", component)), files)

    def test_all_together_are_the_components(self):
        self.assertEqual(files_below(self.install_below("all")), set().union(*expected_files().values()))

    def test_below_destdir_stand_in_the_configured_prefix(self):
        install(DESTDIR=str(self.folder))
        prefix = os.environ["OPC_PREFIX"].strip("/")
        files = {file if file.startswith("/") else f"/{prefix}/{file}"
                 for file in set().union(*expected_files().values())}
        self.assertEqual({f"/{file}" for file in files_below(self.folder)}, files)

    def test_look_for_libraries_only_beside_themselves(self):
        prefix = self.install_below("all")
        paths = {}
        for path in prefix.rglob("*"):
            if path.is_file() and not path.is_symlink() and path.read_bytes()[:4] == b"\x7fELF":
                dynamic = run([os.environ["OPC_READELF"], "--dynamic", "--wide", path]).stdout
                self.assertIn("(NEEDED)", dynamic)
                found = [line.split("[")[1].rstrip("]") for line in dynamic.splitlines() if "RPATH)" in line
                         or "RUNPATH)" in line]
                if found:
                    paths[str(path.relative_to(prefix))] = found
        self.assertEqual(paths, {"bin/opc": [f"$ORIGIN/../{LIBDIR}/opc"]})

    def test_of_text_name_no_folder_of_the_build(self):
        prefix = self.install_below("all")
        for path in prefix.rglob("*"):
            if path.is_file() and path.suffix in (".cmake", ".pc", ".h", ".toml", ".service", ""):
                content = path.read_bytes()
                if content[:4] != b"\x7fELF":
                    for folder in (BUILD, SOURCE, prefix):
                        self.assertNotIn(str(folder).encode(), content, path)


if __name__ == "__main__":
    unittest.main()
