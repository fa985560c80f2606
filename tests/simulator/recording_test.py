# SPDX-License-Identifier: MIT
"""What the spy has recorded is played: a host sees the same bytes in the same order.

    recording_test.py BUILD_DIRECTORY
"""

import base64
import subprocess
import unittest

from kit import BUILD, KOVASCTL, PATIENCE, Simulation

DEMO = BUILD / "bin/live_session"
COMMAND = BUILD / "bin/kovasmgr-virtual"


def printed(data):
    """As the host prints it."""
    return "".join(chr(byte) if 0x20 <= byte < 0x7f and byte != 0x5c else f"\\x{byte:02x}"
                   for byte in data)


class Recording(Simulation):
    def delivered(self, recording, port):
        """What the recorded reads of a port gave."""
        calls = self.events(recording)[1:]
        return b"".join(base64.b64decode(call["data"]) for call in calls
                        if call["call"] == "read" and call.get("port") == port and "data" in call)

    def check(self, recording):
        subprocess.run([KOVASCTL, "sim", "--check", recording], check=True, capture_output=True,
                       env=self.environment)

    def record_demo(self):
        """The demo's session on the built-in devices."""
        recording = self.directory / "demo.jsonl"
        (self.directory / "libOSAdapt.so").symlink_to(BUILD / "adapters/spy/libOSAdapt.so")
        environment = {**self.environment, "KOVASMGR_SPY_ADAPTER": str(BUILD / "adapters/virtual"),
                       "KOVASMGR_SPY_RECORD": str(recording)}
        result = subprocess.run([DEMO, COMMAND], cwd=self.directory, env=environment, text=True,
                                capture_output=True, timeout=PATIENCE, check=False)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return recording

    def test_the_demos_session_is_played(self):
        recording = self.record_demo()
        self.check(recording)
        expected = self.delivered(recording, "virtual-modem-0")
        self.assertEqual(3, expected.count(b"OK\r\n"))
        received = self.run_plan(recording, plan=[
            "open virtual-modem-0", r"ask virtual-modem-0 AT\r OK",
            r"ask virtual-modem-0 AT+CSQ\r +CSQ:", "open virtual-sensor-0",
            "receive virtual-sensor-0 20", r"ask virtual-modem-0 AT\r OK",
            f"receive virtual-modem-0 {len(expected)}"])
        self.assertEqual(printed(expected), received["virtual-modem-0"])
        sensor = printed(self.delivered(recording, "virtual-sensor-0"))
        self.assertTrue(sensor.startswith(received["virtual-sensor-0"][:20]), sensor)

    def test_a_session_with_a_restart_is_recorded_and_played(self):
        recording = self.directory / "modem.jsonl"
        plan = ["open modem-at", r"ask modem-at ATI\r Revision", "until 7", "gone modem-at",
                "open modem-at", r"ask modem-at AT+CSQ\r OK", "until 13"]
        first = self.run_plan("modem", "--speed", "2", "--recording", recording, plan=plan)
        self.check(recording)
        expected = self.delivered(recording, "modem-at")
        self.assertEqual(printed(expected), first["modem-at"])
        self.assertIn(b"RING", expected)
        again = self.run_plan(recording, "--speed", "2", plan=[
            step for step in plan if not step.startswith("until")] +
            [f"receive modem-at {len(expected)}"])
        self.assertEqual(first["modem-at"], again["modem-at"])

    def test_a_host_that_says_something_else_is_told_of(self):
        recording, log = self.record_demo(), self.directory / "events.jsonl"
        self.run_plan(recording, "--events", log,
                      plan=["open virtual-modem-0", "send virtual-modem-0 3"])
        said = [event["event"] for event in self.events(log)
                if event["track"] == "virtual-modem-0"]
        self.assertTrue(any("differs at byte" in event for event in said), said)


if __name__ == "__main__":
    unittest.main()
