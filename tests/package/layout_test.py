# SPDX-License-Identifier: MIT
"""The layouts and numbers that a C host sees are those that are promised.

usage: layout_test.py <program that prints them> [unittest arguments]
"""

import subprocess
import sys
import unittest
from pathlib import Path

PROGRAM = sys.argv.pop(1)
PROMISED = Path(__file__).with_name("layout.txt")


class Layout(unittest.TestCase):
    maxDiff = None

    def test_sizes_offsets_and_numbers_are_as_promised(self):
        result = subprocess.run([PROGRAM], check=True, capture_output=True, text=True)
        self.assertEqual(PROMISED.read_text(encoding="utf-8"), result.stdout)


if __name__ == "__main__":
    sys.exit(unittest.main())
