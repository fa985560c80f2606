# SPDX-License-Identifier: MIT
"""The examples of the bindings and the programs of docs/host-guide.md, run as they are.

    programs_test.py PROGRAM_DIRECTORY MODULE_DIRECTORY LIBRARY ADAPTER QUICK_START_CPP
"""

import os
import re
import shutil
import signal
import sys
import unittest
from pathlib import Path

from virtual_host import VirtualHost, wait_until

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS, MODULE, LIBRARY, ADAPTER, QUICK_START = (Path(sys.argv.pop(1)) for _ in range(5))
EXAMPLES = ROOT / "examples"
GUIDE = EXAMPLES / "host_guide"

VirtualHost.adapter = ADAPTER
os.environ["KOVASMGR_LIBRARY"] = str(LIBRARY)
os.environ["PYTHONPATH"] = str(MODULE)


class Programs(VirtualHost):
    def setUp(self):
        super().setUp()
        del os.environ["KOVASMGR_VIRTUAL_SCENARIO"]  # on the built-in devices

    def expect(self, output, *arguments):
        status, text = self.run_program(*arguments)
        self.assertEqual(0, status, text)
        self.assertRegex(text, output)

    def follow(self, *command):
        """Replugs the device of a program that follows it, until it ends by itself."""
        process = self.start(*command, 3)
        for expected in ("connected", "gone", "connected", "gone", "connected"):
            line = process.stdout.readline()
            while not re.match("connected|gone", line):  # trace lines of the library
                self.assertNotEqual("", line)
                line = process.stdout.readline()
            self.assertEqual(expected, line.strip())
            if expected == "connected" and process.poll() is None:
                self.replug()
        self.assertEqual(0, process.wait(30))

    def replug(self):
        try:
            self.command("replug virtual-sensor")
        except (OSError, AssertionError):
            pass  # the program has ended in the meantime


class Examples(Programs):
    def test_quick_start_in_cpp_lists_the_ports_and_shows_the_answer(self):
        self.expect(r"(?s)  1: virtual-modem-0\n.*Virtual modem.*OK", QUICK_START)

    def test_quick_start_in_python_lists_the_ports_and_shows_the_answer(self):
        if os.environ.get("KOVASMGR_SKIP_PYTHON"):
            self.skipTest(os.environ["KOVASMGR_SKIP_PYTHON"])
        self.expect(r"(?s)  1: virtual-modem-0\n.*Virtual modem.*OK",
                    sys.executable, EXAMPLES / "quick_start.py")

    def test_quick_start_without_an_adapter_says_so(self):
        (self.directory / "libOSAdapt.so").unlink()
        status, text = self.run_program(QUICK_START)
        self.assertEqual(1, status)
        self.assertRegex(text, "quick_start: .*the adapter failed, KOVASMgr.log has the reason")


class Guide(Programs):
    def test_one_thread_initialises_and_releases(self):
        self.expect("^$", PROGRAMS / "guide_init_release")

    def test_callbacks_are_registered_before_the_port_is_opened(self):
        self.expect("^$", PROGRAMS / "guide_register_first")

    def test_much_is_sent_in_parts(self):
        self.expect("^$", PROGRAMS / "guide_send_all")

    def test_lines_are_put_together(self):
        self.expect(r"^(reading \d+\n){3}$", PROGRAMS / "guide_lines")

    def test_slow_work_is_handed_over(self):
        self.expect(r"^(reading \d+\r?\n){5}", PROGRAMS / "guide_hand_over")

    def test_a_callback_answers(self):
        self.expect("^$", PROGRAMS / "guide_answer")

    def test_what_a_callback_uses_goes_after_its_unregistration(self):
        self.expect(r"^\d+ bytes at least\n$", PROGRAMS / "guide_unregister")

    def test_a_device_is_followed(self):
        self.follow(PROGRAMS / "guide_follow")

    def test_a_device_is_followed_in_cpp(self):
        self.follow(PROGRAMS / "guide_follow_cpp")

    def test_a_device_is_followed_in_python(self):
        if os.environ.get("KOVASMGR_SKIP_PYTHON"):
            self.skipTest(os.environ["KOVASMGR_SKIP_PYTHON"])
        self.follow(sys.executable, GUIDE / "follow.py")

    def test_signals_end_a_host_by_way_of_its_release(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start(PROGRAMS / "guide_shut_down")
            self.assertRegex(process.stdout.readline(), "reading")
            process.send_signal(number)
            self.assertTrue(process.communicate(timeout=30)[0].endswith("released\n"))
            self.assertEqual(0, process.returncode)
            self.assertTrue(wait_until(lambda: not (self.control / "control").exists()))

    def test_every_program_is_in_the_guide_and_tried_here(self):
        guide = (ROOT / "docs/host-guide.md").read_text(encoding="utf-8")
        here = Path(__file__).read_text(encoding="utf-8")
        for path in GUIDE.glob("*.c*"):
            if path.suffix in (".c", ".cpp"):
                self.assertIn(f"host_guide/{path.name}", guide)
                name = path.stem + ("_cpp" if path.suffix == ".cpp" else "")
                self.assertIn(f'"guide_{name}"', here)

    def test_the_programs_that_the_guide_shows_are_those_that_are_tried(self):
        # Each excerpt stands line for line in the program named above it.
        guide = (ROOT / "docs/host-guide.md").read_text(encoding="utf-8")
        shown = re.findall(r"`(?:examples/)?host_guide/([\w.]+)`[^`]*```(?:c|cpp|python)\n(.*?)```",
                           guide, re.DOTALL)
        self.assertGreaterEqual(len(shown), 5)
        for name, excerpt in shown:
            self.assertIn(excerpt, (GUIDE / name).read_text(encoding="utf-8"), name)


class AdapterGuide(Programs):
    TEXT = (ROOT / "docs/adapter-guide.md").read_text(encoding="utf-8")

    @unittest.skipIf("KOVASMGR_SKIP_PYTHON" in os.environ, "a plain compiler, a sanitized library")
    def test_its_command_builds_the_copied_adapter(self):
        command = re.search("```sh\n(.*?)```", self.TEXT, re.DOTALL)[1]
        (self.directory / "libOSAdapt.so").unlink()
        shutil.copy(EXAMPLES / "minimal_adapter/minimal_adapter.c", self.directory)
        os.environ.update(INCLUDE=str(ROOT / "include"), LIB=str(LIBRARY.parent))
        self.expect("^$", "sh", "-ec", command)
        self.expect(r"(?s)Loopback \(Sends everything back\)\n  1: loopback\n.*ATI", QUICK_START)

    def test_it_speaks_of_every_rule(self):
        contract = (ROOT / "include/OSAdapt.h").read_text(encoding="utf-8")
        rules = set(re.findall(r"^ \*  (R\d+) ", contract, re.MULTILINE))
        self.assertEqual(17, len(rules))
        self.assertEqual(rules, set(re.findall(r"^\*\*(R\d+)\*\*", self.TEXT, re.MULTILINE)))


if __name__ == "__main__":
    sys.exit(unittest.main())
