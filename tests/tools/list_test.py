# SPDX-License-Identifier: MIT
"""kovasctl list."""

import json
import os
import pty
import shutil
import subprocess
import unittest

from kit import BUILD, KOVASCTL, NO_DEVICE, KovasctlTest, wait_until

RECORDING = BUILD / "tests/tools/adapters/recording"


class List(KovasctlTest):
    def screen(self, **variables):
        """What a person at a terminal sees."""
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        try:
            self.expect(0, self.run_tool("list", capture_output=False, stdout=slave,
                                         stderr=subprocess.PIPE,
                                         env={**self.environment, **variables}))
        finally:
            os.close(slave)
        seen = []

        def all_seen():
            try:
                seen.append(os.read(master, 65536))
                return not seen[-1]
            except OSError:  # a terminal that nobody has open any more
                return True

        wait_until(all_seen, "the end of the screen")
        return b"".join(seen).decode()

    def test_shows_devices_and_ports_as_a_tree_in_columns(self):
        self.assertEqual("bench   Echo and a far end of our own\n"
                         "├─ 1  bench-echo\n"
                         "└─ 2  bench-far\n"
                         "sensor  Sends readings\n"
                         "└─ 3  sensor-0\n", self.succeed("list"))

    def test_draws_with_plain_characters_where_there_are_no_others(self):
        self.environment["LC_ALL"] = "C"
        self.assertIn("|- 1  bench-echo\n`- 2  bench-far\n", self.succeed("list"))

    def test_has_colours_on_a_terminal_only(self):
        self.assertIn("\x1b[", self.screen())
        self.assertNotIn("\x1b", self.succeed("list"))

    def test_has_no_colours_with_no_color_or_on_a_dumb_terminal(self):
        self.assertNotIn("\x1b", self.screen(NO_COLOR="1"))
        self.assertNotIn("\x1b", self.screen(TERM="dumb"))

    def test_an_empty_no_color_is_none(self):
        self.assertIn("\x1b[", self.screen(NO_COLOR=""))

    def test_gives_the_documented_json(self):
        self.assertEqual(
            {"schema": 1,
             "devices": [
                 {"name": "bench", "text": "Echo and a far end of our own",
                  "ports": [{"id": 1, "name": "bench-echo", "type": 20100},
                            {"id": 2, "name": "bench-far", "type": 20100}]},
                 {"name": "sensor", "text": "Sends readings",
                  "ports": [{"id": 3, "name": "sensor-0", "type": 20100}]}]},
            self.succeed_json("list"))

    @unittest.skipUnless(shutil.which("jq"), "jq is not installed")
    def test_feeds_jq(self):
        command = f"'{KOVASCTL}' --adapter virtual list --json | jq -r '.devices[].ports[].name'"
        result = subprocess.run(["bash", "-o", "pipefail", "-c", command], env=self.environment,
                                capture_output=True, text=True, timeout=60, check=False)
        self.expect(0, result)
        self.assertEqual("bench-echo\nbench-far\nsensor-0\n", result.stdout)

    def test_gives_names_alone(self):
        self.assertEqual("bench-echo\nbench-far\nsensor-0\n", self.succeed("list", "--names"))
        self.expect(2, self.run_tool("list", "--names", "--json"), "exclude each other")

    def test_without_a_device_fails_with_a_hint(self):
        self.scenario(NO_DEVICE)
        result = self.expect(1, self.run_tool("list"), "kovasctl: no device is there; attach one")
        self.assertEqual("", result.stdout)
        self.assertEqual(1, result.stderr.count("\n"), "a hint, without a log that says nothing")
        self.assertEqual([], self.kept_logs())

    def test_without_a_device_still_gives_json(self):
        self.scenario(NO_DEVICE)
        result = self.expect(1, self.run_tool("list", "--json"), "no device is there")
        self.assertEqual({"schema": 1, "devices": []}, json.loads(result.stdout))

    def test_says_why_the_adapter_has_no_devices(self):
        self.scenario("[[device]]\nnonsense = 1\n")
        result = self.expect(1, self.run_tool("list"), "\n  reason: no devices, the scenario has a mistake")
        self.assertIn("KOVASMgr.log", result.stderr)

    def test_lets_no_device_steer_the_terminal(self):
        self.assertEqual("recorder?[31m?\n└─ 1  recorder-0\n", self.succeed("list", adapter=RECORDING))

    def test_replaces_in_json_what_is_no_text(self):
        names = [device["name"] for device in self.succeed_json("list", adapter=RECORDING)["devices"]]
        self.assertEqual(["recorder\x1b[31m\ufffd"], names)


if __name__ == "__main__":
    unittest.main()
