# SPDX-License-Identifier: MIT
"""Each deliberate oddity that docs/kept-behaviour.md lists is pinned by a test that exists."""

import re
import sys
import unittest
from pathlib import Path

from tree import sources

ROOT = Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs/kept-behaviour.md"

_TEST = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST)\(\s*(\w+)\s*,\s*(\w+)\s*\)")
_COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
_NAMED = re.compile(r"`(\w+\.\w+)`")
_FILE = re.compile(r"\.(h|c|cpp|md|log|so|dylib|txt|py|cmake)$")


def tests_in(text):
    return {f"{suite}.{name}" for suite, name in _TEST.findall(_COMMENT.sub("", text))}


def existing_tests():
    names = set()
    for path in sources(ROOT, ["tests"]):
        names |= tests_in((ROOT / path).read_text(encoding="utf-8"))
    return names


def named_tests(text):
    return {name for name in _NAMED.findall(text) if not _FILE.search(name)}


def entries(text):
    """List items with their continuation lines, and table rows without their headings."""
    found = []
    lines = text.splitlines()
    for number, line in enumerate(lines):
        follows = lines[number + 1] if number + 1 < len(lines) else ""
        if re.match(r"\s*([-*]|\d+\.) ", line):
            found.append(line)
        elif line.startswith("|") and not re.match(r"\|[\s:|-]+$", line):
            if not re.match(r"\|[\s:|-]+$", follows):
                found.append(line)
        elif found and line.startswith(" ") and line.strip():
            found[-1] += " " + line.strip()
    return found


class KeptBehaviour(unittest.TestCase):
    def test_each_named_test_exists(self):
        named = named_tests(DOCUMENT.read_text(encoding="utf-8"))
        self.assertEqual(set(), named - existing_tests())

    def test_each_entry_names_a_test(self):
        found = entries(DOCUMENT.read_text(encoding="utf-8"))
        self.assertNotEqual([], found)
        self.assertEqual([], [entry for entry in found if not named_tests(entry)])

    def test_tests_are_recognised(self):
        text = "TEST(A, b) {}\nTEST_F(C,\n       D) {}\n// TEST(E, F)\nTEST_P(G, H)"
        self.assertEqual({"A.b", "C.D", "G.H"}, tests_in(text))

    def test_entries_are_recognised(self):
        text = ("# Kept\n\nText.\n- one,\n  more `A.B`\n- two\n\n"
                "| what | test |\n|---|---|\n| three | `C.D` in `port_book.cpp` |\n")
        found = entries(text)
        self.assertEqual(3, len(found))
        self.assertEqual([{"A.B"}, set(), {"C.D"}], [named_tests(entry) for entry in found])


if __name__ == "__main__":
    sys.exit(unittest.main())
