# SPDX-License-Identifier: MIT
"""The library built alone for a prefix of its own: a host finds the adapter there from anywhere.

    prefix_test.py CMAKE CC CXX ADAPTER
"""

import shutil
import sys
import tempfile
import unittest
from pathlib import Path

from installed_tree import ROOT, InstalledTree, run

CMAKE, CC, CXX, ADAPTER = (sys.argv.pop(1) for _ in range(4))
NOT_BUILT = [f"-DKOVASMGR_BUILD_{part}=OFF"
             for part in ("ADAPTERS", "TOOLS", "EXAMPLES", "TESTS", "BENCH")]


class Prefix(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.prefix = self.scratch / "odd place"
        run(CMAKE, "-S", ROOT, "-B", "build", "-G", "Ninja", f"-DCMAKE_INSTALL_PREFIX={self.prefix}",
            f"-DCMAKE_C_COMPILER={CC}", f"-DCMAKE_CXX_COMPILER={CXX}", *NOT_BUILT,
            directory=self.scratch)
        run(CMAKE, "--build", "build", directory=self.scratch, timeout=240)
        run(CMAKE, "--install", "build", directory=self.scratch)

    def test_a_host_finds_the_adapter_of_its_library(self):
        tree = InstalledTree(self.prefix, self.scratch, CMAKE, {"C": CC, "CXX": CXX})
        self.assertFalse(tree.adapters.exists())
        tree.adapters.mkdir()
        shutil.copy(ADAPTER, tree.adapters)
        program = tree.build_by_find_package("C") / "quick_start"
        self.assertIn("Virtual modem", tree.run_host(program, None))


if __name__ == "__main__":
    unittest.main()
