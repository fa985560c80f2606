# SPDX-License-Identifier: MIT
"""The ready scenarios: what they are, and that two runs of one with one seed are the same.

    scenarios_test.py BUILD_DIRECTORY
"""

import subprocess
import unittest

from kit import KOVASCTL, PLAN_HOST, SCENARIOS, Simulation

# What the host does, and how much faster than real time the scenario may go for it. A device that
# goes is spoken to when it is there for seconds of real time, or after the end, so that nothing
# depends on how fast the host is.
PLANS = {
    "modem": (2, [
        "open modem-at", r"ask modem-at ATI\r Revision", r"ask modem-at AT+CSQ\r OK",
        "open modem-gps", "gone modem-at", "open modem-at", r"ask modem-at ATI\r Revision",
        r"ask modem-at AT+COPS=?\r Testnet", r"ask modem-at NONSENSE\r ERROR", "end"]),
    "two-identical-devices": (1, [
        "open scanner@1-1-0", r"ask scanner@1-1-0 ID?\r 4711", "open scanner@1-2-0",
        r"ask scanner@1-2-0 ID?\r 4712", "gone scanner@1-1-0", "gone scanner@1-2-0",
        "open scanner@1-2-0", r"ask scanner@1-2-0 ID?\r 4712", "open scanner@1-1-0",
        r"ask scanner@1-1-0 ID?\r 4711", "end"]),
    "flaky-cable": (2, [
        "open display-0", r"ask display-0 price\r price", "until 6", r"ask display-0 sum\r sum",
        "end", "open scales-1", r"ask scales-1 W?\r 12.345"]),
    "slow-writer": (4, [
        "open printer-0", "open display-0", "send printer-0 2000", r"ask printer-0 STATUS\r READY",
        r"ask display-0 done\r done", "end"]),
    "port-storm": (1, [
        "open sensor-0", r"ask sensor-0 READ\r 21.5", "until 3", r"ask sensor-0 READ\r 21.5",
        "end", "open stormy-0", r"ask stormy-0 PING\r PONG"]),
    "firmware-update": (1, [
        "open radio-0", r"ask radio-0 VERSION\r 1.0", "gone radio-0", "open radio-loader-0",
        r"ask radio-loader-0 BLOCK\r .", r"ask radio-loader-0 END\r DONE", "gone radio-loader-0",
        "open radio-1", r"ask radio-1 VERSION\r 2.0", "end"]),
    "64x16": (1, [
        "listed 64 1024", "open rack-1-1", r"ask rack-1-1 first\r first", "end",
        "listed 64 1024", "open rack-64-16", r"ask rack-64-16 last\r last"]),
    "garbage": (2, ["open cell-0", "receive cell-0 200", "end"]),
    "dead-port": (1, [
        "open gateway-0", r"ask gateway-0 PING\r PONG", "open gateway-1",
        r"ask gateway-1 PING\r PONG", "open gateway-2", "until 5", r"refused gateway-1 PING\r",
        r"ask gateway-0 PING\r PONG", "close gateway-1", "until 8.5", "open gateway-1",
        r"ask gateway-1 PING\r PONG", "end"]),
    "late-permissions": (1, [
        "open reader-0", r"ask reader-0 CARD?\r 04A2B3C4", "gone reader-0", "open reader-0",
        r"ask reader-0 CARD?\r 04A2B3C4", "end"]),
}
HAS_RANDOM_BYTES = {"garbage"}


class Ready(Simulation):
    def list_by_name(self):
        text = subprocess.run([KOVASCTL, "sim", "--list"], check=True, text=True,
                              capture_output=True, env=self.environment).stdout
        return dict(line.split(None, 1) for line in text.splitlines())

    def test_there_are_ten_each_with_a_description(self):
        listed = self.list_by_name()
        self.assertEqual(set(PLANS), set(listed))
        for name, description in listed.items():
            self.assertRegex(description, r"^\w.{20,80}$", name)

    def test_each_is_checked_ends_and_tells_what_a_good_host_does(self):
        for name in PLANS:
            with self.subTest(scenario=name):
                result = subprocess.run([KOVASCTL, "sim", "--check", name], check=False, text=True,
                                        capture_output=True, env=self.environment)
                self.assertEqual((0, ""), (result.returncode, result.stderr))
                text = (SCENARIOS / f"{name}.toml").read_text(encoding="utf-8")
                self.assertRegex(text, r'(?m)^end = "\d+s"$')
                self.assertIn("\n# What hosts meet: ", text)
                self.assertIn("\n# What a good host does: ", text)


class Runs(Simulation):
    """Two runs with one seed, and one with another."""

    def logs(self, name):
        speed, plan = PLANS[name]
        # Two thousand terminals at a time, not three.
        seeds = (1, 1) if name == "64x16" else (1, 1, 2)
        files = [self.directory / f"{i}.jsonl" for i in range(len(seeds))]
        runs = [self.start(name, "--speed", speed, "--seed", seed, "--events", file,
                           host=[PLAN_HOST, *plan]) for file, seed in zip(files, seeds)]
        for run in runs:
            self.finish(run)
        return [file.read_bytes() for file in files]

    def compare(self, name):
        first, again, *others = self.logs(name)
        self.assertEqual(first.splitlines(), again.splitlines())
        self.assertEqual(first, again)
        self.assertIn(b'"event":"open"', first)
        for other in others:
            self.assertEqual(name in HAS_RANDOM_BYTES, other != first)


def add_test(name):
    setattr(Runs, "test_" + name.replace("-", "_"), lambda self: self.compare(name))


for scenario in PLANS:
    add_test(scenario)

if __name__ == "__main__":
    unittest.main()
