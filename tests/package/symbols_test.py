# SPDX-License-Identifier: MIT
"""What libKOVASMgr.so shows to the dynamic linker: nothing more than is promised.

usage: symbols_test.py <libKOVASMgr.so> <sanitizers or ""> [unittest arguments]
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

LIBRARY = sys.argv.pop(1)
SANITIZERS = sys.argv.pop(1)
PROMISED = Path(__file__).with_name("exported_symbols.txt")
RUN_TIME = re.compile(r"(libstdc\+\+|libgcc_s|libc|libm|ld-linux-[\w-]+)\.so\.\d+")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def dynamic(tag):
    return re.findall(rf"\({tag}\).*\[(.+)\]", output("readelf", "-dW", LIBRARY))


class Symbols(unittest.TestCase):
    def exported(self):
        """Names with their version; the version's own absolute symbol is none."""
        rows = [line.split() for line in output("nm", "-D", "--defined-only", LIBRARY).splitlines()]
        return {row[-1] for row in rows if row[-2] != "A"}

    def test_the_exported_symbols_are_those_that_are_listed(self):
        exported = {name.split("@")[0] for name in self.exported()}
        added = {name for name in exported if re.match(r"_*(asan|tsan|ubsan|lsan|sanitizer)_", name)}
        if SANITIZERS and added:
            self.skipTest(f"the run time of -fsanitize={SANITIZERS} adds {len(added)} symbols")
        self.assertEqual(PROMISED.read_text(encoding="utf-8").split(), sorted(exported))

    def test_every_exported_symbol_carries_the_version(self):
        self.assertEqual(set(), {name for name in self.exported()
                                 if not name.endswith("@@KOVASMGR_1")})

    def test_it_needs_the_c_and_cpp_run_time_alone(self):
        self.assertEqual([], [name for name in dynamic("NEEDED") if not RUN_TIME.fullmatch(name)])

    def test_its_soname_carries_the_major_version(self):
        self.assertEqual(["libKOVASMgr.so.1"], dynamic("SONAME"))

    def test_its_own_calls_of_exported_functions_are_bound_inside(self):
        calls = re.findall(r"R_\w+_JUMP_SLOT?\w*\s+\w+\s+(\w+)", output("readelf", "-rW", LIBRARY))
        promised = PROMISED.read_text(encoding="utf-8").split()
        self.assertEqual([], sorted(set(calls) & set(promised)))


if __name__ == "__main__":
    sys.exit(unittest.main())
