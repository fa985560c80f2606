# SPDX-License-Identifier: MIT
"""kovasctl watch."""

import json
import re
import subprocess
import unittest

from kit import KovasctlTest

STAMP = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}"

SWITCHED = """
[[device]]
name = "modem"
mode = "normal"
[[device.port]]
name = "modem-at"
far = "at"
[[device.port]]
name = "modem-update"
mode = "update"
far = "silent"
"""


class Watch(KovasctlTest):
    def watch(self, *arguments):
        """A watch that has told what is there, which says that it watches."""
        process = self.start("watch", "--initial", *arguments)
        present = [process.stdout.readline()]
        return process, present

    def lines_after(self, *commands, options=(), present=2):
        process, seen = self.watch(*options)
        seen += [process.stdout.readline() for _ in range(present - 1)]
        for command in commands:
            self.devices(*command)
        return process, [process.stdout.readline() for _ in commands]

    def test_tells_what_is_there_when_asked(self):
        lines = self.succeed("watch", "--initial", "--count", "2").splitlines()
        self.assertRegex(lines[0], rf"^{STAMP}  = present       bench  \(1 bench-echo, 2 bench-far\)$")
        self.assertRegex(lines[1], rf"^{STAMP}  = present       sensor  \(3 sensor-0\)$")

    def test_tells_what_goes_and_what_comes(self):
        _, lines = self.lines_after(("pull", "sensor"), ("plug", "sensor"))
        self.assertRegex(lines[0], rf"^{STAMP}  - removed       sensor  \(3 sensor-0\)\n$")
        self.assertRegex(lines[1], rf"^{STAMP}  \+ added         sensor  \(\d+ sensor-0\)\n$")

    def test_tells_of_one_port_of_a_device(self):
        _, lines = self.lines_after(("unplug-port", "bench-far"), ("plug-port", "bench-far"))
        self.assertRegex(lines[0], r"- port removed  bench  \(2 bench-far\)\n$")
        self.assertRegex(lines[1], r"\+ port added    bench  \(\d+ bench-far\)\n$")

    def test_tells_both_halves_of_a_replug(self):
        process, first = self.lines_after(("replug", "sensor"))
        self.assertIn("- removed       sensor", first[0])
        self.assertIn("+ added         sensor", process.stdout.readline())

    def test_tells_of_a_mode_switch(self):
        self.scenario(SWITCHED)
        _, lines = self.lines_after(("switch", "modem", "update"), present=1)
        self.assertRegex(lines[0], r"\+ port added    modem  \(\d+ modem-update\)\n$")

    def test_gives_one_json_object_a_line_and_no_trace_lines_of_the_library(self):
        process, lines = self.lines_after(("pull", "sensor"), ("plug", "sensor"), ("pull", "bench"),
                                          options=["--json", "--count", "5"])
        rest, errors = process.communicate(timeout=60)
        self.assertEqual(("", "", 0), (rest, errors, process.returncode))
        events = [json.loads(line) for line in lines]
        self.assertEqual(["device-removed", "device-added", "device-removed"],
                         [event["event"] for event in events])
        self.assertEqual({"schema", "time", "event", "device"}, set(events[0]))
        self.assertEqual({"name": "sensor", "text": "Sends readings",
                          "ports": [{"id": 3, "name": "sensor-0", "type": 20100}]},
                         events[0]["device"])
        self.assertTrue(re.fullmatch(r"[-\d]{10}T[:\d]{8}\.\d{3}[+-]\d\d:\d\d", events[0]["time"]))

    def test_ends_after_the_count(self):
        process, _ = self.lines_after(("pull", "sensor"), options=["--count", "3"])
        self.assertEqual(0, process.wait(60))

    def test_ends_after_the_timeout(self):
        self.assertEqual("", self.succeed("watch", "--timeout", "0.05"))

    def test_a_timeout_before_the_count_is_a_failure(self):
        self.expect(1, self.run_tool("watch", "--timeout", "0.05", "--count", "1"),
                    "the time is over")

    def test_refuses_counts_and_times_that_are_none(self):
        for option, value in (("--count", "0"), ("--count", "-1"), ("--count", "x"),
                              ("--count", "99999999999999999999"), ("--timeout", "-1"),
                              ("--timeout", "nan"), ("--timeout", "soon")):
            with self.subTest(option=option, value=value):
                self.expect(2, self.run_tool("watch", f"{option}={value}"), option)

    def test_ends_when_nobody_reads_any_more(self):
        process, _ = self.watch()
        process.stdout.close()
        process.stdout = None
        self.assertEqual(128 + 13, process.wait(60))  # without waiting for a device
        self.assertEqual("", process.stderr.read())

    def test_works_in_a_pipeline(self):
        process = self.start("watch", "--initial")
        with subprocess.Popen(["head", "-n", "1"], stdin=process.stdout, stdout=subprocess.PIPE,
                              text=True) as head:
            process.stdout.close()
            process.stdout = None
            self.assertIn("bench", head.communicate(timeout=60)[0])
        self.assertEqual(128 + 13, process.wait(60))


if __name__ == "__main__":
    unittest.main()
