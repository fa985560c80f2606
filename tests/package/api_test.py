# SPDX-License-Identifier: MIT
"""The reference of the public headers: made without a warning, and nothing is left out.

    api_test.py DOXYGEN DOXYFILE OUTPUT_DIRECTORY
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]
DOXYGEN, DOXYFILE, OUTPUT = (sys.argv.pop(1) for _ in range(3))
DESCRIPTIONS = ("briefdescription", "detaileddescription")
NOT_SHOWN = {"KOVASMgrExport.h"}


def text_of(node):
    return "".join("".join(part.itertext()) for kind in DESCRIPTIONS for part in node.findall(kind))


def is_for_readers(node):
    deleted = "=delete" in node.findtext("argsstring", "").replace(" ", "")
    return node.get("prot") != "private" and not deleted


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        result = subprocess.run([DOXYGEN, DOXYFILE], cwd=ROOT, capture_output=True, text=True,
                                timeout=100, check=False)
        cls.result = result
        cls.pages = [ElementTree.parse(page) for page in (Path(OUTPUT) / "xml").glob("*.xml")]

    def members(self):
        """Compounds and members of the headers in include/."""
        for page in self.pages:
            for node in page.iter():
                place = node.find("location")
                if node.tag in ("compounddef", "memberdef") and place is not None \
                        and (ROOT / "include" / place.get("file", "")).is_file():
                    yield node

    def test_is_made_without_a_warning(self):
        self.assertEqual((0, ""), (self.result.returncode, self.result.stderr))

    def test_describes_everything_in_the_headers(self):
        bare = [node.findtext("name") or node.findtext("compoundname") for node in self.members()
                if not text_of(node).strip() and is_for_readers(node)]
        self.assertEqual([], bare)

    def test_shows_every_function_that_is_exported(self):
        text = "".join(path.read_text(encoding="utf-8") for path in (ROOT / "include").glob("*.h")
                       if path.name not in NOT_SHOWN)
        declared = set(re.findall(r"^KOVASMGR_API [^;]*?(\w+)\(", text, re.MULTILINE))
        shown = {node.findtext("name") for node in self.members()}
        self.assertGreater(len(declared), 25)
        self.assertEqual(set(), declared - shown)

    def test_tells_results_one_by_one(self):
        write = next(node for node in self.members() if node.findtext("name") == "KOVAMGR_Write")
        self.assertEqual(7, len(write.findall(".//simplesect[@kind='return']//listitem")))
        self.assertEqual(5, len(write.findall(".//parameteritem")))


if __name__ == "__main__":
    unittest.main()
