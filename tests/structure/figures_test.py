# SPDX-License-Identifier: MIT
"""The published figures are those of a run in which every promise was held."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCUMENTS = ["docs/reliability.md", "docs/performance.md"]

_RUN = re.compile(r"^Run of \d{4}-\d\d-\d\d: (\d+) of (\d+) promises held\.", re.MULTILINE)
_BROKEN = re.compile(r"\*\*(?:broken|missed)\*\*|\? \w|, failed \|")


def faults_of(text):
    runs = _RUN.findall(text)
    faults = [f"{len(runs)} runs are told of instead of one"] if len(runs) != 1 else []
    faults += [f"{held} of {all_} promises held" for held, all_ in runs if held != all_]
    return faults + [f"'{found}'" for found in _BROKEN.findall(text)]


class Figures(unittest.TestCase):
    def test_are_of_a_run_that_held_everything(self):
        for document in DOCUMENTS:
            with self.subTest(document=document):
                self.assertEqual([], faults_of((ROOT / document).read_text(encoding="utf-8")))


class FaultsOf(unittest.TestCase):
    GOOD = "Run of 2026-01-31: 19 of 19 promises held. A machine.\n\n| x | y | 3 tests | held |\n"

    def test_a_good_document_are_none(self):
        self.assertEqual([], faults_of(self.GOOD))

    def test_others_are_found(self):
        for bad in (self.GOOD.replace("19 of", "18 of"), self.GOOD.replace("Run of", "A run of"),
                    self.GOOD.replace("held |", "**broken**: x |"), self.GOOD.replace("held |", "**missed** |"),
                    self.GOOD.replace("3 tests", "? tests"), self.GOOD.replace("3 tests", "3, failed")):
            with self.subTest(text=bad):
                self.assertNotEqual([], faults_of(bad))


if __name__ == "__main__":
    unittest.main()
