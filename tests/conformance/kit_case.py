# SPDX-License-Identifier: MIT
"""What the tests of the conformance kit have in common."""

import json
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tools"))

from kit import BUILD, KovasctlTest  # pylint: disable=wrong-import-position

ADAPTERS = BUILD / "tests/conformance"
CULPRITS = Path(__file__).resolve().parent / "culprits"


def rule_of(culprit):
    """R9b_count_not_set breaks R9b."""
    return culprit.split("_", 1)[0]


class ConformanceTest(KovasctlTest):
    def setUp(self):
        super().setUp()
        self.device = self.new_device("devices")
        self.environment["CONFORMANCE_DEVICES"] = str(self.device.parent)

    def new_device(self, name):
        """The probe of the adapter in memory, in a directory of its own."""
        device = self.directory / name / "probe"
        device.parent.mkdir()
        device.touch()
        return device

    def run_kit(self, *arguments, **options):
        return self.run_tool("check-adapter", *arguments, adapter=None,
                             **{"timeout": 280, **options})

    def check(self, *arguments, status=0, error=""):
        """The tool's standard output."""
        return self.expect(status, self.run_kit(*arguments), error).stdout

    def verdicts(self, *arguments, **options):
        """Rules by their numbers."""
        result = self.run_kit(*arguments, "--json", **options)
        self.assertFalse(result.stderr)
        rules = {rule["rule"]: rule for rule in json.loads(result.stdout)["rules"]}
        failed = self.failed(rules)
        self.assertEqual(1 if failed else 0, result.returncode, failed)
        return rules

    @staticmethod
    def failed(verdicts):
        """What was seen of those that fail."""
        return {number: rule["seen"] for number, rule in verdicts.items()
                if rule.get("verdict") == "fail"}

    def commands(self, device=None):
        """That pull the probe out and plug it in."""
        device = device or self.device
        return ("--unplug", f"rm '{device}'", "--plug", f"touch '{device}'")

    def rules(self):
        return list(self.verdicts("--list"))

    def expect_broken(self, broken, verdicts):
        """Exactly these rules fail; the message has what was seen."""
        failed = self.failed(verdicts)
        self.assertEqual(set(broken), set(failed), json.dumps(failed, indent=1))
