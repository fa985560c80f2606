# SPDX-License-Identifier: MIT
"""Each public header compiles alone, as C11 and as C++17, without a warning.

usage: headers_test.py <gcc|clang family compiler for C> <the same for C++> [unittest arguments]
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CC = sys.argv.pop(1)
CXX = sys.argv.pop(1)
ROOT = Path(__file__).resolve().parents[2]
HEADERS = sorted((ROOT / "include").glob("*.h"))
CPP_ONLY = {"KOVASMgrWriteLog.h"}
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]


def complaints(compiler, standard, suffix, text):
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / f"user{suffix}"
        source.write_text(text, encoding="utf-8")
        result = subprocess.run(
            [compiler, f"-std={standard}", *WARNINGS, "-fsyntax-only", f"-I{ROOT}/include",
             f"-I{ROOT}", source], capture_output=True, text=True, check=False)
    return result.stderr if result.returncode != 0 else ""


class Headers(unittest.TestCase):
    def test_each_compiles_alone_as_c11_but_the_cpp_class(self):
        self.assertNotEqual([], HEADERS)
        for header in HEADERS:
            if header.name not in CPP_ONLY:
                with self.subTest(header=header.name):
                    text = f"#include <{header.name}>\n#include <{header.name}>\nint user;\n"
                    self.assertEqual("", complaints(CC, "c11", ".c", text))

    def test_each_compiles_alone_as_cpp17(self):
        for header in HEADERS:
            with self.subTest(header=header.name):
                text = f"#include <{header.name}>\n#include <{header.name}>\nint user;\n"
                self.assertEqual("", complaints(CXX, "c++17", ".cpp", text))

    def test_all_compile_together(self):
        names = [header.name for header in HEADERS]
        text = "".join(f"#include <{name}>\n" for name in names if name not in CPP_ONLY)
        self.assertEqual("", complaints(CC, "c11", ".c", text + "int user;\n"))
        text = "".join(f"#include <{name}>\n" for name in reversed(names))
        self.assertEqual("", complaints(CXX, "c++17", ".cpp", text + "int user;\n"))

    def test_an_argument_that_does_not_fit_its_format_is_noticed(self):
        text = '#include <KOVASMgrLog.h>\nint user(void);\nint user(void) { return INFO_LOG("%s", 1); }\n'
        self.assertIn("format", complaints(CC, "c11", ".c", text))

    def test_any_status_passes_through_the_enumerations_in_cpp(self):
        text = ("#include <KOVASMgr.h>\n#include <OSAdapt.h>\n"
                "constexpr auto kState = static_cast<_KOVAMGR_DEV_STATE_TYPE_>(-20205);\n"
                "constexpr auto kStatus = static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(5);\n"
                "static_assert(kState == -20205 && kStatus == 5);\n")
        self.assertEqual("", complaints(CXX, "c++17", ".cpp", text))


if __name__ == "__main__":
    sys.exit(unittest.main())
