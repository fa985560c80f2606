# SPDX-License-Identifier: MIT
"""A project that uses add_subdirectory gets the library, and nothing that it did not ask for.

    subproject_test.py CMAKE
"""

import sys
import tempfile
import unittest
from pathlib import Path

from installed_tree import ROOT, run

CMAKE = sys.argv.pop(1)
PROJECT = f"""
cmake_minimum_required(VERSION 3.25)
project(outer LANGUAGES C CXX)
add_subdirectory("{ROOT}" kovasmgr)
add_executable(host "{ROOT}/examples/quick_start.c")
target_link_libraries(host PRIVATE KOVASMgr::KOVASMgr)
get_property(targets DIRECTORY "{ROOT}" PROPERTY BUILDSYSTEM_TARGETS)
file(WRITE "${{CMAKE_BINARY_DIR}}/targets" "${{targets}}")
get_property(tests DIRECTORY "{ROOT}" PROPERTY TESTS)
file(WRITE "${{CMAKE_BINARY_DIR}}/tests" "${{tests}}")
get_property(rooms DIRECTORY "{ROOT}" PROPERTY SUBDIRECTORIES)
file(WRITE "${{CMAKE_BINARY_DIR}}/rooms" "${{rooms}}")
"""


class Subproject(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.directory = Path(scratch.name)
        (self.directory / "CMakeLists.txt").write_text(PROJECT, encoding="utf-8")
        run(CMAKE, "-B", "build", "-G", "Ninja", directory=self.directory)

    def told(self, name):
        return (self.directory / "build" / name).read_text(encoding="utf-8")

    def test_has_the_library_alone(self):
        self.assertEqual(["Common", "KOVASMgr", "kovasmgr_build_settings", "kovasmgr_coverage",
                          "kovasmgr_link_time", "kovasmgr_link_time_objects", "kovasmgr_objects"],
                         sorted(self.told("targets").split(";")))
        self.assertEqual(("", ""), (self.told("tests"), self.told("rooms")))

    def test_installs_nothing(self):
        script = (self.directory / "build/kovasmgr/cmake_install.cmake").read_text(encoding="utf-8")
        self.assertNotIn("KOVASMgr.h", script)
        self.assertNotIn("libKOVASMgr", script)


if __name__ == "__main__":
    unittest.main()
