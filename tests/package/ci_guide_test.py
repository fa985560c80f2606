# SPDX-License-Identifier: MIT
"""docs/test-your-host.md: its shell is run as it stands, against an installed tree.

    ci_guide_test.py CMAKE BUILD_DIRECTORY
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from installed_tree import EXAMPLES, ROOT, InstalledTree, run

CMAKE, BUILD = (sys.argv.pop(1) for _ in range(2))
GUIDE = (ROOT / "docs/test-your-host.md").read_text(encoding="utf-8")
EXAMPLE = EXAMPLES / "host_in_ci"


def block(language):
    """The first one of the guide."""
    return re.search(rf"```{language}\n(.*?)```", GUIDE, re.DOTALL)[1]


class Guide(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory(prefix="kova-", dir="/tmp")
        cls.addClassCleanup(cls.directory.cleanup)
        prefix = Path(cls.directory.name) / "prefix"
        run(CMAKE, "--install", BUILD, "--prefix", prefix, directory=ROOT)
        cls.tree = InstalledTree(prefix, cls.directory.name, CMAKE, {})
        cls.environment = {
            **os.environ, "PATH": f"{prefix}/bin:{os.environ['PATH']}",
            "PKG_CONFIG_PATH": str(cls.tree.libraries / "pkgconfig"),
            "LD_LIBRARY_PATH": str(cls.tree.libraries), "XDG_RUNTIME_DIR": cls.directory.name,
            "XDG_STATE_HOME": cls.directory.name}

    def shell(self, text, name):
        place = Path(self.directory.name) / name
        shutil.copytree(EXAMPLE, place)
        return subprocess.run(["sh", "-c", text], cwd=place, env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=150,
                              check=False)

    def test_its_shell_passes(self):
        result = self.shell(block("sh"), "passing")
        self.assertEqual(0, result.returncode, result.stdout)
        self.assertEqual(2, result.stdout.count("modem found, 2 of 2"))

    def test_its_shell_fails_when_the_host_does(self):
        result = self.shell(block("sh").replace("modem_host 2", "modem_host 9"), "failing")
        self.assertNotEqual(0, result.returncode, result.stdout)

    def test_its_shell_is_the_examples(self):
        script = (EXAMPLE / "test.sh").read_text(encoding="utf-8")
        self.assertEqual(block("sh"), script[script.index("set -eu"):])

    def test_its_workflow_is_ten_lines_and_runs_that_shell(self):
        workflow = block("yaml")
        self.assertEqual(10, len(workflow.splitlines()))
        self.assertIn("- run: sh test.sh\n", workflow)

    def test_its_scenario_has_no_mistake(self):
        place = Path(self.directory.name) / "guide.toml"
        place.write_text(block("toml"), encoding="utf-8")
        run("kovasctl", "sim", "--check", place, directory=ROOT, **self.environment)

    def test_it_tells_of_every_ready_scenario(self):
        listed = run("kovasctl", "sim", "--list", directory=ROOT, **self.environment)
        names = re.findall(r"(?m)^\S+", listed)
        self.assertEqual(10, len(names))
        for name in names:
            self.assertIn(f"| `{name}` |", GUIDE)


if __name__ == "__main__":
    unittest.main()
