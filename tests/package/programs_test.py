# SPDX-License-Identifier: MIT
"""The programs that a newcomer meets first, run as they are on the virtual adapter.

    programs_test.py QUICK_START LIVE_SESSION KOVASMGR_VIRTUAL ADAPTER
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
QUICK_START, LIVE_SESSION, COMMAND, ADAPTER = (Path(sys.argv.pop(1)) for _ in range(4))


class Programs(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.directory = Path(scratch.name)

    def run_program(self, *arguments):
        return subprocess.run([str(a) for a in arguments], cwd=self.directory, text=True,
                              capture_output=True, timeout=60, check=False)

    def place_adapter(self):
        (self.directory / "libOSAdapt.so").symlink_to(ADAPTER)

    def test_quick_start_lists_the_ports_and_shows_the_modems_answer(self):
        self.place_adapter()
        result = self.run_program(QUICK_START)
        self.assertEqual(0, result.returncode, result.stderr)
        self.assertIn("  1: virtual-modem-0\n", result.stdout)
        self.assertIn("Virtual modem", result.stdout)
        self.assertIn("OK", result.stdout)

    def test_quick_start_without_an_adapter_says_so(self):
        result = self.run_program(QUICK_START)
        self.assertEqual(1, result.returncode)
        self.assertEqual("quick_start: no adapter (20002), see KOVASMgr.log\n", result.stderr)

    def test_the_live_session_observes_every_step(self):
        self.place_adapter()
        result = self.run_program(LIVE_SESSION, COMMAND)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        self.assertNotIn("[FAIL]", result.stdout)
        self.assertIn("library released", result.stdout)

    def test_the_live_session_fails_when_a_step_is_not_observed(self):
        self.place_adapter()
        result = self.run_program(LIVE_SESSION, "/bin/true")  # plugs and pulls nothing
        self.assertEqual(1, result.returncode)
        self.assertIn("[FAIL] notice received", result.stdout, result.stderr)

    def test_the_readme_shows_quick_start_as_it_is(self):
        program = (ROOT / "examples/quick_start.c").read_text(encoding="utf-8")
        shown = (ROOT / "README.md").read_text(encoding="utf-8").split("```c\n")[1].split("```")[0]
        self.assertEqual(program.split("\n", 1)[1], shown)


if __name__ == "__main__":
    unittest.main()
