# SPDX-License-Identifier: MIT
"""What "cmake --install" puts down, and hosts that are built against it in C and in C++.

    install_test.py CMAKE BUILD_DIRECTORY CC CXX
"""

import json
import re
import sys
import tempfile
import unittest
from pathlib import Path

from installed_tree import ROOT, InstalledTree, run

CMAKE, BUILD, CC, CXX = (sys.argv.pop(1) for _ in range(4))

OWN_LOG = """
#include <KOVASMgrWriteLog.h>
int main() {
    CWRITE_LOG log;
    return log.init("own.log", true) && log.PrintLog(LOG_LEVEL_INFO, "hello") == 1 ? 0 : 1;
}
"""
CPP_HOST = """
#include <KOVASMgr.hpp>
#include <cstdio>
int main() {
    kovasmgr::Library library(".");
    for (const auto& device : library.List().devices) std::puts(device.name.c_str());
}
"""


def install(prefix, *options):
    run(CMAKE, "--install", BUILD, "--prefix", prefix, *options, directory=ROOT)


class Installed(unittest.TestCase):
    """Everything is tried in a tree that was moved after it was installed."""

    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.directory.cleanup)
        install(Path(cls.directory.name) / "first")
        cls.prefix = (Path(cls.directory.name) / "first").rename(Path(cls.directory.name) / "moved")

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.tree = InstalledTree(self.prefix, self.scratch, CMAKE, {"C": CC, "CXX": CXX})
        self.virtual = self.tree.adapters / "virtual/libOSAdapt.so"

    def write(self, name, text):
        (self.scratch / name).write_text(text, encoding="utf-8")
        return self.scratch / name

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

    def test_find_package_builds_an_adapter(self):
        build = self.tree.build_by_find_package("C")
        adapter = build / "adapters/loopback/libOSAdapt.so"
        self.assertIn("Loopback", self.tree.run_host(build / "quick_start", adapter))

    def test_builds_a_host_of_the_cpp_header_and_runs_it(self):
        program = self.tree.build_by_pkg_config("CXX", self.write("cpp_host.cpp", CPP_HOST))
        self.assertIn("virtual-sensor\n", self.tree.run_host(program, self.virtual))

    def test_builds_a_log_writer_in_cpp_and_runs_it(self):
        program = self.tree.build_by_pkg_config("CXX", self.write("own_log.cpp", OWN_LOG))
        run(program, directory=self.scratch, LD_LIBRARY_PATH=self.tree.libraries)
        line = (self.scratch / "own.log").read_text(encoding="utf-8")
        self.assertRegex(line, r"^\[[-0-9 :]{23}\] INFO:hello\n$")

    def test_pkg_config_tells_where_adapters_are(self):
        told = Path(self.tree.pkg_config("--variable=adapterdir")[0])
        self.assertEqual(self.tree.adapters.resolve(), told.resolve())

    def test_the_default_adapter_is_a_link_to_the_platforms(self):
        link = self.tree.adapters / "libOSAdapt.so"
        self.assertEqual(Path("linux/libOSAdapt.so"), link.readlink())
        self.assertTrue(link.is_file())

    def test_holds_all_public_headers_and_no_other(self):
        found = {str(p.relative_to(self.tree.headers)) for p in self.tree.headers.rglob("*.h*")}
        public = {str(p.relative_to(room)) for room in (ROOT / "include", ROOT / "bindings/cpp")
                  for p in room.rglob("*.h*")}
        self.assertEqual(public | {"common/jmutex.h", "common/thread_annotations.h"}, found)

    def test_no_file_names_a_path_of_the_build(self):
        for path in self.prefix.rglob("*"):
            if path.suffix in (".cmake", ".pc"):
                with self.subTest(file=path.name):
                    text = path.read_text(encoding="utf-8")
                    self.assertNotIn(str(ROOT), text)
                    self.assertNotIn("/first", text)

    def test_only_programs_look_for_the_library_by_their_own_place(self):
        for path in [*self.tree.libraries.rglob("*.so*"), *(self.prefix / "bin").iterdir()]:
            with self.subTest(file=path.name):
                places = re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]",
                                    run("readelf", "-dW", path, directory=ROOT))
                self.assertIn(places, [[], ["$ORIGIN/../lib"]] if path.parent.name == "bin" else [[]])

    def test_kovasctl_runs_and_finds_its_adapters(self):
        if not (self.prefix / "bin/kovasctl").exists():
            self.skipTest("built without kovasctl")
        text = run(self.prefix / "bin/kovasctl", "--adapter", "virtual", "list", "--json",
                   directory=self.scratch, XDG_STATE_HOME=self.scratch)
        self.assertIn('"virtual-sensor"', text)

    def test_kovasctl_finds_the_ready_scenarios_and_no_samples(self):
        if not (self.prefix / "bin/kovasctl").exists():
            self.skipTest("built without kovasctl")
        text = run(self.prefix / "bin/kovasctl", "sim", "--list", "--json", directory=self.scratch)
        found = [Path(scenario["file"]) for scenario in json.loads(text)["scenarios"]]
        self.assertEqual(10, len(found))
        self.assertEqual(sorted(found), sorted(self.prefix.glob("share/kovasmgr/scenarios/*")))
        run(self.prefix / "bin/kovasctl", "sim", "--check", *(path.stem for path in found),
            directory=self.scratch)

    def test_the_udev_rule_comes_before_those_that_act_on_it(self):
        rules = list(self.prefix.glob("share/doc/*/examples/*.rules"))
        self.assertEqual(1, len(rules))
        self.assertLess(int(rules[0].name[:2]), 73)
        self.assertIn('TAG+="uaccess"', rules[0].read_text(encoding="utf-8"))

    def test_a_component_can_be_installed_alone(self):
        install(self.scratch / "runtime", "--component", "Runtime")
        found = {p.name for p in (self.scratch / "runtime").rglob("*") if not p.is_dir()}
        self.assertEqual({"libKOVASMgr.so.1", "libKOVASMgr.so.1.0.0", "libOSAdapt.so"}, found)


if __name__ == "__main__":
    unittest.main()
