# SPDX-License-Identifier: MIT
"""Runs kovasctl in a world of its own: scratch home, scratch state, virtual devices that nobody else
sees. A test program is started with the build directory and the adapters' place as arguments."""

import json
import os
import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

BUILD, ADAPTERS_FROM_PROGRAM = Path(sys.argv.pop(1)), sys.argv.pop(1)
ROOT = Path(__file__).resolve().parents[2]
KOVASCTL = BUILD / "bin/kovasctl"
VIRTUAL_COMMAND = BUILD / "bin/kovasmgr-virtual"
VIRTUAL = BUILD / "adapters/virtual"
PATIENCE = 60  # seconds, for what takes a moment on an idle machine

DEVICES = """
[[device]]
name = "bench"
text = "Echo and a far end of our own"
[[device.port]]
name = "bench-echo"
far = "echo"
[[device.port]]
name = "bench-far"
far = "external"

[[device]]
name = "sensor"
text = "Sends readings"
[[device.port]]
name = "sensor-0"
far = "periodic"
send = "reading {n}\\r\\n"
every_ms = 20
"""

NO_DEVICE = """
[[device]]
name = "absent"
present = false
[[device.port]]
name = "absent-0"
far = "silent"
"""


def wait_until(condition, what):
    """Returns what the condition gives, once it gives anything."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.005)
    raise AssertionError(f"not seen within {PATIENCE} s: {what}")


class KovasctlTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.directory = Path(scratch.name)
        self.control = self.directory / "control"
        self.state = self.directory / "state"
        (self.directory / "devices.toml").write_text(DEVICES, encoding="utf-8")
        self.environment = {key: value for key, value in os.environ.items() if key != "NO_COLOR"}
        self.environment.update(
            HOME=str(self.directory), XDG_STATE_HOME=str(self.state), LC_ALL="C.UTF-8",
            TERM="xterm", KOVASMGR_VIRTUAL_DIR=str(self.control),
            KOVASMGR_VIRTUAL_SCENARIO=str(self.directory / "devices.toml"))

    def scenario(self, text):
        (self.directory / "devices.toml").write_text(text, encoding="utf-8")

    def run_tool(self, *arguments, adapter="virtual", program=KOVASCTL, **options):
        chosen = ["--adapter", adapter] if adapter else []
        options = {"cwd": self.directory, "env": self.environment, "text": True, "timeout": PATIENCE,
                   "capture_output": True, **options}
        return subprocess.run([str(a) for a in (program, *chosen, *arguments)], check=False, **options)

    def start(self, *arguments, adapter="virtual", **options):
        options = {"cwd": self.directory, "env": self.environment, "stdin": subprocess.DEVNULL,
                   "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "text": True, **options}
        chosen = ["--adapter", adapter] if adapter else []
        command = [str(a) for a in (KOVASCTL, *chosen, *arguments)]
        process = subprocess.Popen(command, **options)  # pylint: disable=consider-using-with
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream is not None:
                stream.close()

    def expect(self, status, result, error=""):
        """The exit status, and a part of what was written to standard error ("" for nothing)."""
        self.assertEqual(status, result.returncode, f"{result.stdout}\n{result.stderr}")
        if error:
            self.assertIn(error, result.stderr)
        else:
            self.assertFalse(result.stderr)
        return result

    def succeed(self, *arguments, **options):
        return self.expect(0, self.run_tool(*arguments, **options)).stdout

    def succeed_json(self, *arguments, **options):
        return json.loads(self.succeed(*arguments, "--json", **options))

    def devices(self, *command):
        """Plugs and pulls devices of the tool that runs; returns when it has been told."""
        wait_until(lambda: (self.control / "control").exists(), "the virtual devices")
        result = subprocess.run([str(VIRTUAL_COMMAND), "--dir", str(self.control), *command],
                                capture_output=True, text=True, timeout=PATIENCE, check=False)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return result.stdout

    def far_end(self, port):
        """Opens the far end of a port that the tool has opened or is about to open."""
        wait_until(lambda: re.search(f'"{port}" at .* open', self.devices("list")), f"{port} open")
        descriptor = os.open(self.control / "ports" / port, os.O_RDWR | os.O_NOCTTY)
        self.addCleanup(os.close, descriptor)
        return descriptor

    def kept_logs(self):
        return list(self.state.glob("kovasctl/*/KOVASMgr.log"))
