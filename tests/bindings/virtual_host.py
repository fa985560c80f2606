# SPDX-License-Identifier: MIT
"""What the tests of the Python binding and of the guide's programs have in common: a directory with the
virtual adapter in it, commands to it, and far ends."""

import os
import select
import socket
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

BOUND = 10.0  # seconds that anything may take

SCENARIO = """
[[device]]
name = "modem"
text = "A modem"
[[device.port]]
name = "modem-at"
far = "at"
replies = { "ATI" = "Virtual modem" }

[[device]]
name = "sensor"
[[device.port]]
name = "sensor-0"
far = "periodic"
send = "reading {n}\\r\\n"
every_ms = 20

[[device]]
name = "bench"
[[device.port]]
name = "far-0"
id = 4711
[[device.port]]
name = "far-1"
[[device.port]]
name = "echo-0"
far = "echo"
[[device.port]]
name = "silent-0"
far = "silent"
"""


def wait_until(condition, bound=BOUND):
    """Waits for a condition; False when it has not come true within the bound."""
    end = time.monotonic() + bound
    while not condition():
        if time.monotonic() >= end:
            return False
        time.sleep(0.001)
    return True


def pattern(size):
    """Bytes that show what was lost, doubled or swapped."""
    state, out = 1, bytearray()
    for _ in range(size):
        state = (state * 1664525 + 1013904223) % 2 ** 32
        out.append(state >> 24)
    return bytes(out)


class FarProgram:
    """A program that has opened the far end of a port."""

    def __init__(self, link):
        self._terminal = os.open(link, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)

    def close(self):
        os.close(self._terminal)

    def send(self, data):
        while data:
            if not select.select([], [self._terminal], [], BOUND)[1]:
                raise TimeoutError
            data = data[os.write(self._terminal, data):]

    def receive(self, count):
        data = b""
        while len(data) < count and select.select([self._terminal], [], [], BOUND)[0]:
            data += os.read(self._terminal, count - len(data))
        return data


class VirtualHost(unittest.TestCase):
    """A scratch directory that is the current one, with the adapter in it."""

    adapter = ""  # the file

    def setUp(self):
        self.use_scenario(SCENARIO, fresh=True)
        os.environ["KOVASMGR_VIRTUAL_DIR"] = str(self.control)
        before = os.getcwd()
        os.chdir(self.directory)
        self.addCleanup(os.chdir, before)
        (self.directory / "libOSAdapt.so").symlink_to(self.adapter)

    def use_scenario(self, text, fresh=False):
        if fresh:
            # Short, for the sake of the socket's name.
            scratch = tempfile.TemporaryDirectory(prefix="kova-", dir="/tmp")
            self.addCleanup(scratch.cleanup)
            self.directory = Path(scratch.name)
            self.control = self.directory / "control"
            self.control.mkdir(mode=0o700)
        path = self.directory / "scenario.toml"
        path.write_text(text, encoding="utf-8")
        os.environ["KOVASMGR_VIRTUAL_SCENARIO"] = str(path)

    def far(self, port):
        program = FarProgram(self.control / "ports" / port)
        self.addCleanup(program.close)
        return program

    def command(self, line):
        """Has a command carried out; it has been when this returns."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(2 * BOUND)
            connection.connect(str(self.control / "control"))
            connection.sendall(f"{line}\n".encode())
            reply = connection.makefile().readline()
        self.assertEqual("ok\n", reply)

    def log(self):
        return (self.directory / "KOVASMgr.log").read_text(encoding="utf-8")

    def start(self, *arguments):
        """Starts a program here; it is ended with the test."""
        process = subprocess.Popen([str(a) for a in arguments], text=True, bufsize=1,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def run_program(self, *arguments):
        """Runs a program here to its end; (status, output)."""
        result = subprocess.run([str(a) for a in arguments], text=True, timeout=60, check=False,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return result.returncode, result.stdout
