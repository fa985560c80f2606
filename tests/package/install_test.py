# SPDX-License-Identifier: MIT
"""A host that is built against the installed headers and library, in C and in C++.

    install_test.py CMAKE BUILD_DIRECTORY CC CXX ADAPTER
"""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CMAKE, BUILD, CC, CXX, ADAPTER = (sys.argv.pop(1) for _ in range(5))

OWN_LOG = """
#include <KOVASMgrWriteLog.h>
int main() {
    CWRITE_LOG log;
    return log.init("own.log", true) && log.PrintLog(LOG_LEVEL_INFO, "hello") == 1 ? 0 : 1;
}
"""


class InstalledTree(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.directory = Path(scratch.name)
        self.run_program(CMAKE, "--install", BUILD, "--prefix", self.directory / "prefix")
        libraries = list((self.directory / "prefix").glob("lib*/**/libKOVASMgr.so"))
        self.assertEqual(1, len(libraries))
        self.library = libraries[0].parent
        self.headers = self.directory / "prefix/include/kovasmgr"

    def run_program(self, *arguments):
        environment = dict(os.environ, LD_LIBRARY_PATH=str(getattr(self, "library", "")))
        result = subprocess.run([str(a) for a in arguments], cwd=self.directory, text=True,
                                capture_output=True, timeout=120, check=False, env=environment)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return result.stdout

    def build(self, compiler, standard, source):
        self.run_program(compiler, standard, "-Wall", "-Wextra", "-Werror", "-I", self.headers,
                         source, "-L", self.library, "-lKOVASMgr", "-o", "host")
        return self.directory / "host"

    def test_builds_the_quick_start_in_c_and_runs_it(self):
        (self.directory / "libOSAdapt.so").symlink_to(ADAPTER)
        host = self.build(CC, "-std=gnu11", ROOT / "examples/quick_start.c")
        self.assertIn("Virtual modem", self.run_program(host))

    def test_builds_a_log_writer_in_cpp_and_runs_it(self):
        (self.directory / "own_log.cpp").write_text(OWN_LOG, encoding="utf-8")
        self.run_program(self.build(CXX, "-std=c++17", "own_log.cpp"))
        line = (self.directory / "own.log").read_text(encoding="utf-8")
        self.assertRegex(line, r"^\[[-0-9 :]{23}\] INFO:hello\n$")

    def test_holds_no_header_that_is_not_for_hosts(self):
        found = {str(p.relative_to(self.headers)) for p in self.headers.rglob("*") if p.is_file()}
        self.assertEqual({p.name for p in (ROOT / "include").iterdir()}
                         | {"common/jmutex.h", "common/thread_annotations.h"}, found)


if __name__ == "__main__":
    unittest.main()
