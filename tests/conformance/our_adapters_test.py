# SPDX-License-Identifier: MIT
"""The adapters of this project keep every rule that can be tried on them here."""

import unittest

from kit_case import BUILD, ConformanceTest
from kit import ROOT, VIRTUAL, VIRTUAL_COMMAND

MINIMAL = BUILD / "adapters/minimal"
SPY = BUILD / "adapters/spy"


class OurAdapters(ConformanceTest):
    def expect_kept(self, verdicts, untried=()):
        """All pass, save those that need what is not given, and these."""
        others = {number: rule["seen"] for number, rule in verdicts.items()
                  if rule["verdict"] != "pass" and not rule["seen"].startswith("it needs ")}
        self.assertEqual(set(untried), set(others), others)

    def expect_every_rule_kept(self, adapter):
        """By an adapter with the ports of the virtual one."""
        command = f"'{VIRTUAL_COMMAND}' --pid $KOVASMGR_HOST_PID"
        del self.environment["KOVASMGR_VIRTUAL_DIR"]
        self.environment["XDG_RUNTIME_DIR"] = str(self.directory)
        verdicts = self.verdicts(adapter, "--port", "bench-echo", "--port", "sensor-0",
                                 "--stalled", "bench-far", "--unplug", f"{command} pull bench",
                                 "--plug", f"{command} plug bench", "--timeout", "60")
        others = {number: rule["seen"] for number, rule in verdicts.items()
                  if rule["verdict"] != "pass"}
        self.assertEqual({}, others)

    def test_virtual_keeps_every_rule(self):
        self.expect_every_rule_kept("virtual")

    @unittest.skipUnless(SPY.exists(), "the spy is not built")
    def test_the_spy_keeps_every_rule(self):
        self.environment["KOVASMGR_SPY_ADAPTER"] = str(VIRTUAL)
        self.expect_every_rule_kept(SPY)

    def test_virtual_keeps_what_can_be_tried_without_leave(self):
        self.expect_kept(self.verdicts("virtual", "--timeout", "60"))

    def test_linux_keeps_what_can_be_tried_without_leave(self):
        known = f"suppressions={ROOT}/tests/sanitizers/tsan.supp"
        self.environment["TSAN_OPTIONS"] = f"{self.environment.get('TSAN_OPTIONS', '')}:{known}"
        self.expect_kept(self.verdicts("linux", "--timeout", "60"))

    @unittest.skipUnless(MINIMAL.exists(), "the examples are not built")
    def test_the_minimal_adapter_keeps_every_rule(self):
        verdicts = self.verdicts(MINIMAL, "--port", "loopback", "--stalled", "loopback")
        self.expect_kept(verdicts, untried=["R3a"])  # its writes never wait


if __name__ == "__main__":
    unittest.main()
