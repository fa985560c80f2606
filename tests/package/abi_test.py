# SPDX-License-Identifier: MIT
"""What a build exports is compatible with what was promised: functions, types and layouts.

    abi_test.py ABIDIFF LIBRARY ADAPTER
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BASELINES = Path(__file__).resolve().parents[2] / "packaging/abi"
ABIDIFF, LIBRARY, ADAPTER = (sys.argv.pop(1) for _ in range(3))
ADVICE = """
Hosts or adapters that were built before would not work with this. If nothing was released yet, or
the major version is raised: packaging/renew-abi BUILD_DIRECTORY, and commit packaging/abi."""


def difference(baseline, binary):
    """Empty when they are compatible; what was only added is compatible."""
    result = subprocess.run(
        [ABIDIFF, "--no-added-syms", "--suppressions", BASELINES / "suppressions.ini",
         BASELINES / baseline, binary],
        capture_output=True, text=True, timeout=60, check=False)
    return result.stdout + result.stderr if result.returncode != 0 else ""


class Abi(unittest.TestCase):
    def test_the_library_is_compatible_with_its_baseline(self):
        self.assertEqual("", difference("libKOVASMgr.abi", LIBRARY), ADVICE)

    def test_an_adapter_is_compatible_with_its_baseline(self):
        self.assertEqual("", difference("libOSAdapt.abi", ADAPTER), ADVICE)

    def test_a_field_at_another_place_is_noticed(self):
        text = (BASELINES / "libKOVASMgr.abi").read_text(encoding="utf-8")
        with tempfile.TemporaryDirectory() as directory:
            other = Path(directory) / "other.abi"
            other.write_text(text.replace("layout-offset-in-bits='34848'", "layout-offset-in-bits='34856'"),
                             encoding="utf-8")
            self.assertIn("szDeviceText", difference(other, LIBRARY))

    def test_what_is_missing_is_noticed(self):
        self.assertIn("KOVAMGR_Init", difference("libKOVASMgr.abi", ADAPTER))


if __name__ == "__main__":
    unittest.main()
