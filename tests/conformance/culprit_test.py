# SPDX-License-Identifier: MIT
"""Adapters that break one rule each: the kit finds that rule, and no other.

    culprit_test.py BUILD ADAPTERS_FROM_PROGRAM CULPRIT...
"""

import sys
import unittest
from concurrent.futures import ThreadPoolExecutor

ALL = sys.argv[3:]
del sys.argv[3:]

from kit_case import ADAPTERS, ConformanceTest, rule_of  # pylint: disable=wrong-import-position

AT_A_TIME = 3  # each waits for most of its time
ON_A_FULL_PORT = ("R3a", "R10b", "R10c")  # these take theirs also where everything is in order


class Culprits(ConformanceTest):
    def verdicts_on(self, culprit):
        device = self.new_device(culprit)
        stalled = ["--stalled", "anchor-full"] if rule_of(culprit) in ON_A_FULL_PORT else []
        return self.verdicts(
            ADAPTERS / "culprits" / culprit, "--port", "anchor-0", "--port", "probe-0", *stalled,
            *self.commands(device), "--write-bound", "0.3", "--timeout", "12",
            env={**self.environment, "CONFORMANCE_DEVICES": str(device.parent)})

    def test_each_is_found_by_its_rule_alone(self):
        with ThreadPoolExecutor(AT_A_TIME) as pool:
            answers = {culprit: pool.submit(self.verdicts_on, culprit) for culprit in ALL}
        for culprit, answer in answers.items():
            with self.subTest(culprit=culprit):
                self.expect_broken([rule_of(culprit)], answer.result())


if __name__ == "__main__":
    unittest.main()
