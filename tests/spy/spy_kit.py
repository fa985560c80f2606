# SPDX-License-Identifier: MIT
"""A host program with the spy in front of the virtual adapter, in a world of its own."""

import json
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tools"))

# pylint: disable=wrong-import-position
from kit import BUILD, PATIENCE, KovasctlTest, wait_until  # noqa: E402

SPY = BUILD / "adapters/spy/libOSAdapt.so"
HOST = BUILD / "bin/spy_host"

OK, OSADAPT = "20000", "20002"


class Host:
    """The program; each method is a command, and returns its answer."""

    def __init__(self, directory, environment):
        self.log_directory = directory
        self.process = subprocess.Popen(  # pylint: disable=consider-using-with
            [HOST], cwd=directory, env=environment, stdin=subprocess.PIPE,
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)

    def __getattr__(self, command):
        return lambda *words: self.ask(command, *words)

    def ask(self, *words):
        self.process.stdin.write(" ".join(str(word) for word in words) + "\n")
        self.process.stdin.flush()
        return self.process.stderr.readline().strip()

    def init(self):
        return self.ask("init", self.log_directory)

    def end(self):
        """Lets it end by itself, and returns what it has still said: a sanitizer's report."""
        errors = self.process.communicate(timeout=PATIENCE)[1]
        return self.process.returncode, errors


class SpyTest(KovasctlTest):
    def setUp(self):
        super().setUp()
        (self.directory / "libOSAdapt.so").symlink_to(SPY)
        self.record = self.directory / "recording.jsonl"
        self.capture = self.directory / "capture.pcapng"
        self.runtime = self.directory / "run"
        self.runtime.mkdir(mode=0o700)
        self.environment.update(KOVASMGR_SPY_ADAPTER="virtual", XDG_RUNTIME_DIR=str(self.runtime))
        for name in ("RECORD", "PCAP", "FAULTS", "STATS", "IDLE_READS"):
            self.environment.pop(f"KOVASMGR_SPY_{name}", None)

    def host(self, **variables):
        """A host with these variables: RECORD for KOVASMGR_SPY_RECORD."""
        own = {f"KOVASMGR_SPY_{name}": str(value) for name, value in variables.items()}
        host = Host(self.directory, {**self.environment, **own})
        self.addCleanup(self.end, host.process)
        return host

    def running_host(self, **variables):
        host = self.host(**variables)
        self.assertEqual(OK, host.init())
        return host

    def finish(self, host):
        self.assertEqual(OK, host.release())
        self.assertEqual((0, ""), host.end())

    def lines(self):
        """The recording's lines as objects, without the first."""
        text = self.record.read_text(encoding="utf-8")
        self.assertTrue(text.endswith("\n"))
        return [json.loads(line) for line in text.splitlines()][1:]

    def calls(self, kind):
        return [line for line in self.lines() if line["call"] == kind]

    def log(self):
        path = self.directory / "KOVASMgr.log"
        return path.read_text(encoding="utf-8", errors="replace") if path.exists() else ""


__all__ = ["OK", "OSADAPT", "PATIENCE", "SPY", "SpyTest", "wait_until"]
