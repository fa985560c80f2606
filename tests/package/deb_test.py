# SPDX-License-Identifier: MIT
"""The Debian packages: clean, and of use when they are unpacked.

    deb_test.py DIRECTORY_OF_PACKAGES CMAKE CC CXX
"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from installed_tree import ROOT, InstalledTree, run

PACKAGES = Path(sys.argv.pop(1)).resolve()
CMAKE, CC, CXX = (sys.argv.pop(1) for _ in range(3))
NAMES = {"kovasmgr-tools", "libkovasmgr-dev", "libkovasmgr1", "python3-kovasmgr"}
EXCEPTIONS = ROOT / "packaging/lintian-exceptions"


class Debian(unittest.TestCase):
    """The packages, unpacked into a root of their own."""

    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.root = Path(directory.name)
        cls.packages = {p.name.split("_")[0]: p for p in PACKAGES.glob("*.deb")
                        if "-dbgsym" not in p.name}
        for package in cls.packages.values():
            run("dpkg", "-x", package, cls.root, directory=cls.root)
        (triplet,) = run("dpkg-architecture", "-qDEB_HOST_MULTIARCH", directory="/").split()
        cls.libraries = Path("/usr/lib", triplet)

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.tree = InstalledTree(self.root / "usr", self.scratch, CMAKE, {"C": CC, "CXX": CXX})
        self.virtual = self.tree.adapters / "virtual/libOSAdapt.so"

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.packages[package], name, directory="/").strip()

    def test_there_are_four(self):
        self.assertEqual(NAMES, set(self.packages))

    def test_lintian_finds_nothing_but_the_listed_exceptions(self):
        (changes,) = PACKAGES.glob("*.changes")
        result = subprocess.run(
            ["lintian", "--no-cfg", "--allow-root", "--suppress-tags-from-file", EXCEPTIONS, changes],
            capture_output=True, text=True, timeout=100, check=False)
        self.assertEqual(("", 0), (result.stdout, result.returncode), result.stderr)

    def test_every_exception_has_a_reason(self):
        lines = EXCEPTIONS.read_text(encoding="utf-8").splitlines()
        for before, line in zip(lines, lines[1:]):
            if line and not line.startswith("#"):
                self.assertTrue(before.startswith("# "), f"no reason above '{line}'")

    def test_pkg_config_builds_the_quick_start_in_c_and_cpp(self):
        for language in ("C", "CXX"):
            with self.subTest(language=language):
                program = self.tree.build_by_pkg_config(language)
                self.assertIn("Virtual modem", self.tree.run_host(program, self.virtual))

    def test_find_package_builds_the_quick_start_in_c_and_cpp(self):
        for language in ("C", "CXX"):
            with self.subTest(language=language):
                build = self.tree.build_by_find_package(language)
                self.assertIn("Virtual modem",
                              self.tree.run_host(build / "quick_start", self.virtual))

    def test_the_library_looks_for_adapters_where_they_are(self):
        cache = (PACKAGES / "objects/CMakeCache.txt").read_text(encoding="utf-8")
        (place,) = re.findall(r"^KOVASMGR_ADAPTER_DIR:\w+=(.*)$", cache, re.MULTILINE)
        self.assertEqual(str(self.libraries / "kovasmgr"), place)
        self.assertEqual(Path("linux/libOSAdapt.so"),
                         (self.root / place[1:] / "libOSAdapt.so").readlink())

    def test_no_file_has_a_library_path_of_its_own(self):
        for path in [*self.tree.libraries.rglob("*.so*"), *(self.root / "usr/bin").iterdir()]:
            with self.subTest(file=path.name):
                self.assertNotRegex(run("readelf", "-dW", path, directory="/"), r"\((RPATH|RUNPATH)\)")

    def test_the_library_package_has_the_adapters_and_no_files_for_development(self):
        listing = run("dpkg-deb", "-c", self.packages["libkovasmgr1"], directory="/")
        self.assertEqual({"libOSAdapt.so", "linux/libOSAdapt.so", "spy/libOSAdapt.so",
                          "virtual/libOSAdapt.so"},
                         set(re.findall(r"kovasmgr/(\S*libOSAdapt\.so)", listing)))
        self.assertNotRegex(listing, r"include|libKOVASMgr\.so(?: ->|\n)")

    def test_they_depend_on_each_other_and_on_what_they_are_linked_to(self):
        self.assertRegex(self.field("libkovasmgr1", "Depends"), "libudev1")
        self.assertRegex(self.field("libkovasmgr-dev", "Depends"), r"libkovasmgr1 \(= 1\.0\.0-1\)")
        self.assertRegex(self.field("kovasmgr-tools", "Depends"), r"libkovasmgr1 \(>= 1\.0\.0\)")
        self.assertRegex(self.field("python3-kovasmgr", "Depends"), "libkovasmgr1.*python3")

    def test_the_tools_run_and_have_manual_pages_and_completions(self):
        text = run(self.root / "usr/bin/kovasctl", "--adapter", self.virtual.parent, "list",
                   directory=self.scratch, LD_LIBRARY_PATH=self.tree.libraries,
                   XDG_STATE_HOME=self.scratch)
        self.assertIn("virtual-sensor", text)
        for file in ("man/man1/kovasctl.1.gz", "man/man1/kovasmgr-virtual.1.gz",
                     "man/man3/kovasmgr.3.gz", "bash-completion/completions/kovasctl",
                     "zsh/vendor-completions/_kovasctl",
                     "doc/kovasmgr-tools/examples/70-kovasmgr.rules",
                     "kovasmgr/scenarios/modem.toml"):
            self.assertTrue((self.root / "usr/share" / file).is_file(), file)

    def test_the_python_module_lists_virtual_devices(self):
        (self.scratch / "libOSAdapt.so").symlink_to(self.virtual)
        text = run("/usr/bin/python3", "-B", "-c",
                   "import kovasmgr\nwith kovasmgr.Library('.') as l: print(l.snapshot())",
                   directory=self.scratch, LD_LIBRARY_PATH=self.tree.libraries,
                   PYTHONPATH=self.root / "usr/lib/python3/dist-packages")
        self.assertIn("virtual-sensor", text)


if __name__ == "__main__":
    unittest.main()
