# SPDX-License-Identifier: MIT
"""Runs hosts in simulations, each in a world of its own. A test program is started with the build
directory as its argument."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BUILD = Path(sys.argv.pop(1))
ROOT = Path(__file__).resolve().parents[2]
KOVASCTL = BUILD / "bin/kovasctl"
PLAN_HOST = BUILD / "bin/plan_host"
SCENARIOS = ROOT / "adapters/virtual/scenarios"
PATIENCE = 150  # seconds


class Simulation(unittest.TestCase):
    def setUp(self):
        # Short, for the sake of the sockets' names.
        scratch = tempfile.TemporaryDirectory(prefix="kova-", dir="/tmp")
        self.addCleanup(scratch.cleanup)
        self.directory = Path(scratch.name)
        self.environment = {key: value for key, value in os.environ.items()
                            if not key.startswith(("KOVASMGR_VIRTUAL", "KOVASMGR_SPY"))}
        self.environment.update(HOME=scratch.name, XDG_STATE_HOME=scratch.name,
                                XDG_RUNTIME_DIR=scratch.name)

    def start(self, scenario, *options, host=(), **environment):
        command = [KOVASCTL, "sim", scenario, *options]
        command += ["--", *host] if host else []
        process = subprocess.Popen(  # pylint: disable=consider-using-with
            [str(word) for word in command], cwd=self.directory, text=True,
            env={**self.environment, **environment}, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def finish(self, process):
        """What it has written to standard output; it must have succeeded."""
        output, errors = process.communicate(timeout=PATIENCE)
        self.assertEqual((0, ""), (process.returncode, errors), output)
        return output

    def run_plan(self, scenario, *options, plan, **environment):
        """What each port has received, by its name."""
        process = self.start(scenario, *options, host=[PLAN_HOST, *plan], **environment)
        return self.received(self.finish(process))

    @staticmethod
    def received(output):
        """The host's lines; the library has written trace lines among them."""
        lines = [line.split(": ", 1) for line in output.splitlines() if ": " in line]
        return {line[0]: line[1] for line in lines}

    @staticmethod
    def events(path):
        return [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
