# SPDX-License-Identifier: MIT
"""Rules on the code that no compiler checks."""

import re
import sys
import tempfile
import unittest
from pathlib import Path

from tree import LIBRARY_ROOMS, SOURCE_ROOMS, find, sources, write

ROOT = Path(__file__).resolve().parents[2]

# Result codes, port kind, priority, device states: 20000 to 20299.
CODE = r"(?<![\w.])20[0-2]\d\d(?![\w.])"
ENUMERATOR = re.compile(r": *\w+ *= *20[0-2]\d\d *,?$")

# JMutex and its guard alone lock; everybody else holds a guard.
LOCKING = r"(\.|->)(Lock|Unlock|lock|unlock|try_lock)\(\)|pthread_mutex_(try|timed)?lock\b"
OTHER_LOCKS = r"\bstd::(\w*mutex|lock_guard|unique_lock|scoped_lock|shared_lock)\b"
MAY_LOCK = {Path("common/jmutex_guard.h"), Path("common/jmutex.cpp")}


def bare_codes(root):
    rooms = [room for room in SOURCE_ROOMS if room != "tests"]
    return [hit for path in sources(root, rooms) for hit in find(root, path, CODE)
            if not ENUMERATOR.search(hit)]


def unguarded_locks(root):
    return [hit for path in sources(root, LIBRARY_ROOMS) if path not in MAY_LOCK
            for hit in find(root, path, f"{LOCKING}|{OTHER_LOCKS}")]


class CodeRules(unittest.TestCase):
    def hits(self, check, text):
        with tempfile.TemporaryDirectory() as folder:
            return check(write(folder, {"api/a.cpp": text}))

    def test_result_codes_are_written_as_enumerators(self):
        self.assertEqual([], bare_codes(ROOT))

    def test_a_bare_result_code_is_found(self):
        for text in ("return 20001;", "if (r == 20000) {", "x = state + 20200;", "f(20151, 1)"):
            with self.subTest(text=text):
                self.assertEqual(1, len(self.hits(bare_codes, text)))

    def test_an_enumerator_a_comment_and_a_text_are_no_bare_result_codes(self):
        for text in ("    KOVAMGR_OK = 20000, /* success */", "// gives 20001", '"20001"', "120000",
                     "/* one\n 20001 */ int x;"):
            with self.subTest(text=text):
                self.assertEqual([], self.hits(bare_codes, text))

    def test_the_library_locks_through_guards_only(self):
        self.assertEqual([], unguarded_locks(ROOT))

    def test_a_lock_without_a_guard_is_found(self):
        for text in ("m_PortMutex.Lock();", "mutex->Unlock();", "pthread_mutex_lock(&m);",
                     "std::mutex m;", "std::lock_guard lock(m);"):
            with self.subTest(text=text):
                self.assertEqual(1, len(self.hits(unguarded_locks, text)))

    def test_a_guard_and_a_comment_are_no_lock(self):
        for text in ("JMutexGuard lock(m_PortMutex);", "// m_PortMutex.Lock() would deadlock"):
            with self.subTest(text=text):
                self.assertEqual([], self.hits(unguarded_locks, text))


if __name__ == "__main__":
    sys.exit(unittest.main())
