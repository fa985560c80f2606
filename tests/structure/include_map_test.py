# SPDX-License-Identifier: MIT
"""The rooms include each other along the map only."""

import sys
import tempfile
import unittest
from pathlib import Path

import include_map
from tree import write

ROOT = Path(__file__).resolve().parents[2]

HEADERS = {path: "" for path in (
    "include/KOVASMgr.h", "include/KOVASMgrLog.h", "include/KOVASMgrWriteLog.h", "include/OSAdapt.h",
    "common/jdir.h", "common/jmutex.h", "devices/records.h", "manager/port_manager.h",
    "log/process_log.h", "api/state.h", "adapters/shared/table.h", "adapters/linux/node.h",
    "tests/fakes/fake_adapter.h")}


class IncludeMap(unittest.TestCase):
    def violations(self, path, include):
        with tempfile.TemporaryDirectory() as folder:
            root = write(folder, {**HEADERS, path: f"// why\n#include {include}\n"})
            return include_map.violations(root)

    def test_the_tree_keeps_to_the_map(self):
        self.assertEqual([], include_map.violations(ROOT))

    def test_no_header_includes_itself_by_way_of_others(self):
        self.assertEqual([], include_map.cycles(ROOT))

    def test_a_forbidden_include_is_found(self):
        for path, include in (
                ("include/KOVASMgr.h", "<vector>"),
                ("include/KOVASMgr.h", "<pthread.h>"),
                ("include/KOVASMgr.h", '"common/jmutex.h"'),
                ("include/KOVASMgrLog.h", '"KOVASMgrWriteLog.h"'),
                ("include/KOVASMgrWriteLog.h", '"common/jdir.h"'),
                ("common/jdir.cpp", '"KOVASMgr.h"'),
                ("common/jdir.cpp", "<libusb.h>"),
                ("support/search.cpp", '"log/process_log.h"'),
                ("log/process_log.h", '"manager/port_manager.h"'),
                ("devices/records.h", '"manager/port_manager.h"'),
                ("devices/records.h", '"common/jmutex.h"'),
                ("devices/port_book.cpp", '"KOVASMgrLog.h"'),
                ("devices/arrival.cpp", '"log/process_log.h"'),
                ("devices/arrival.cpp", '"api/state.h"'),
                ("manager/port_manager.h", '"api/state.h"'),
                ("manager/lifecycle.cpp", '"KOVASMgrWriteLog.h"'),
                ("manager/lifecycle.cpp", '"../log/process_log.h"'),
                ("api/ports.cpp", '"devices/records.h"'),
                ("api/ports.cpp", '"common/jmutex.h"'),
                ("adapters/linux/a.cpp", '"KOVASMgr.h"'),
                ("adapters/linux/a.cpp", '"common/jmutex.h"'),
                ("adapters/virtual/a.cpp", '"adapters/linux/node.h"'),
                ("adapters/shared/a.cpp", '"adapters/linux/node.h"'),
                ("tools/kovasctl/main.cpp", '"manager/port_manager.h"'),
                ("examples/a.c", '"common/jdir.h"'),
                ("tests/api/a.cpp", '"api/state.h"'),
                ("tests/system/a.cpp", '"manager/port_manager.h"')):
            with self.subTest(path=path, include=include):
                self.assertEqual(1, len(self.violations(path, include)))

    def test_an_allowed_include_is_not_found(self):
        for path, include in (
                ("include/KOVASMgr.h", "<stdint.h>"),
                ("include/KOVASMgrWriteLog.h", '"common/jmutex.h"'),
                ("common/jdir.cpp", "<dlfcn.h>"),
                ("devices/arrival.cpp", '"manager/port_manager.h"'),
                ("manager/lifecycle.cpp", '"KOVASMgrLog.h"'),
                ("api/lifecycle.cpp", '"common/jdir.h"'),
                ("adapters/linux/a.cpp", '"adapters/shared/table.h"'),
                ("adapters/linux/a.cpp", "<libusb.h>"),
                ("tests/api/a.cpp", '"tests/fakes/fake_adapter.h"')):
            with self.subTest(path=path, include=include):
                self.assertEqual([], self.violations(path, include))

    def test_a_cycle_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            root = write(folder, {"common/a.h": '#include "common/b.h"', "common/b.h": '#include "a.h"'})
            self.assertEqual(2, len(include_map.cycles(root)))


if __name__ == "__main__":
    sys.exit(unittest.main())
