# SPDX-License-Identifier: MIT
"""Counters of a host, and kovasctl stats."""

import ctypes
import json
import os
import pty
import signal
import stat
import unittest

from spy_kit import OK, PATIENCE, SpyTest


class Stats(SpyTest):
    def stats(self, *arguments, **options):
        return self.run_tool("stats", *arguments, adapter=None, **options)

    def counters(self, host):
        return self.runtime / "kovasmgr-spy" / str(host.process.pid) / "counters"

    def stats_json(self, host):
        result = self.expect(0, self.stats("--once", "--json", "--pid", host.process.pid))
        return json.loads(result.stdout)

    def busy_host(self, **variables):
        host = self.running_host(**variables)
        for port in ("bench-echo", "bench-far"):
            self.assertEqual(OK, host.open(port))
            self.assertEqual(OK, host.listen(port))
        self.assertEqual("5 0", host.write("bench-echo", "hello"))
        self.assertEqual("yes", host.received("hello"))
        return host

    def test_counts_for_each_port(self):
        host = self.busy_host(FAULTS="write@bench-far:1=fail,write@bench-far:2=short:1")
        host.write("bench-far", "abc")
        host.write("bench-far", "abc")
        host.open("nobody")
        echo, far = self.stats_json(host)["ports"]
        self.assertEqual(("bench-echo", 5, 5, 0),
                         tuple(echo[k] for k in ("name", "bytes_in", "bytes_out", "short_writes")))
        self.assertEqual(("bench-far", 0, 1, 1),
                         tuple(far[k] for k in ("name", "bytes_in", "bytes_out", "short_writes")))
        self.assertEqual((2, 1), (far["write"]["calls"], far["write"]["failures"]))
        self.assertEqual((1, 0), (echo["open"]["calls"], echo["open"]["failures"]))
        self.assertGreater(echo["read"]["calls"], 0)
        for call in (echo["write"], echo["read"], echo["open"]):
            self.assertGreater(call["longest_ns"], 0)
            self.assertGreaterEqual(call["total_ns"], call["longest_ns"])
        self.finish(host)

    def test_counts_what_concerns_no_port(self):
        host = self.busy_host(FAULTS="enumerate:2=fail,enumerate:2=delay:20ms")
        self.devices("replug", "sensor")
        host.notices(2)
        adapter = self.stats_json(host)["adapter"]
        self.assertEqual((1, 0), (adapter["register"]["calls"], adapter["register"]["failures"]))
        self.assertEqual(1, adapter["enumerate"]["failures"])
        self.assertGreater(adapter["enumerate"]["longest_ns"], 20_000_000)
        self.assertEqual(2, adapter["notice"]["calls"])
        self.assertTrue(adapter["file"].endswith("/virtual/libOSAdapt.so"))
        self.finish(host)

    def test_shows_a_table(self):
        host = self.busy_host()
        text = self.expect(0, self.stats("--once")).stdout
        self.assertRegex(text, rf"^host {host.process.pid} spy_host, adapter /\S+, since 2\d\d\d-")
        self.assertRegex(text, r"\nPORT +IN +OUT +IN/s +OUT/s +OPENS +READS +WRITES +SHORT +FAILED")
        self.assertRegex(text, r"\nbench-echo +5 +5 +- +- +1 +\d+ +1 +0 +0  \w+ [\d.]+ (s|ms|us|ns)\n")
        self.assertRegex(text, r"\nbench-far +0 +0 +- +- +1 +\d+ +0 +0 +0  ")
        self.assertRegex(text, r"\nadapter: register 1 \(failed 0, longest [\d.]+ \w+\), enumerate ")
        self.finish(host)

    def test_shows_a_block_each_time_until_the_host_ends(self):
        host = self.busy_host()
        tool = self.start_stats("--interval", "0.05")
        read = []
        while sum("bench-echo" in line for line in read) < 3:
            read.append(tool.stdout.readline())
        self.assertRegex("".join(read), r"\n\nhost ")
        self.assertRegex("".join(read), r"\nbench-echo +5 +5 +\d+ +\d+ ")
        self.finish(host)
        errors = tool.communicate(timeout=PATIENCE)[1]
        self.assertEqual((0, "kovasctl: the host has let its adapter go\n"),
                         (tool.returncode, errors))

    def start_stats(self, *arguments, **options):
        return self.start("stats", *arguments, adapter=None, **options)

    def test_shows_one_object_a_line_for_programs(self):
        host = self.busy_host()
        tool = self.start_stats("--json", "--interval", "0.05")
        objects = [json.loads(tool.stdout.readline()) for _ in range(2)]
        self.assertEqual([1, 1], [found["schema"] for found in objects])
        self.assertEqual([host.process.pid] * 2, [found["pid"] for found in objects])
        tool.send_signal(signal.SIGINT)
        self.assertEqual(130, tool.wait(PATIENCE))
        self.finish(host)

    def test_refreshes_a_terminal(self):
        host = self.busy_host()
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        tool = self.start_stats("--interval", "0.05", stdout=slave)
        os.close(slave)
        seen = ""
        while seen.count("\x1b[H\x1b[2J") < 2:
            seen += os.read(master, 4096).decode()
        self.assertIn("bench-echo", seen)
        tool.send_signal(signal.SIGTERM)
        self.assertEqual(128 + 15, tool.wait(PATIENCE))
        self.finish(host)

    def test_needs_to_know_which_host(self):
        self.expect(1, self.stats("--once"), "no host of yours runs with a spy")
        first, second = self.busy_host(), self.running_host()
        result = self.expect(1, self.stats("--once"), "several hosts run with a spy: ")
        for host in (first, second):
            self.assertIn(f"{host.process.pid} spy_host", result.stderr)
        self.expect(0, self.stats("--once", "--pid", first.process.pid))
        self.expect(1, self.stats("--once", "--pid", os.getpid()), "is no host of yours")
        self.expect(2, self.stats("--once", "--interval", "1"), "excludes")
        self.expect(2, self.run_tool("stats"), "--adapter has no meaning for stats")
        self.expect(2, self.stats("--interval", "0"), "0.05 seconds at least")
        for host in (first, second):
            self.finish(host)

    def test_can_be_off(self):
        host = self.busy_host(STATS="off")
        self.assertFalse((self.runtime / "kovasmgr-spy").exists())
        self.finish(host)
        host = self.busy_host(STATS="maybe")
        self.assertTrue(self.counters(host).exists())
        self.assertIn("KOVASMGR_SPY_STATS must be on or off, not 'maybe'", self.log())
        self.finish(host)

    # The file

    def test_is_private_and_goes_at_the_end(self):
        host = self.busy_host()
        path = self.counters(host)
        self.assertEqual([0o600, 0o700, 0o700], [
            stat.S_IMODE(os.stat(each).st_mode) for each in (path, path.parent, path.parent.parent)])
        self.assertEqual(558688, path.stat().st_size)
        self.assertEqual(OK, host.release())
        self.assertFalse(path.parent.exists())
        self.assertEqual(OK, host.init())
        self.assertTrue(path.exists())
        self.assertEqual((0, ""), host.end())  # without a release
        self.assertFalse(path.parent.exists())

    def test_what_a_killed_host_left_goes_with_the_next(self):
        killed = self.busy_host()
        path = self.counters(killed)
        killed.process.kill()
        killed.process.wait()
        self.assertTrue(path.exists())
        self.expect(1, self.stats("--once"), "no host of yours runs with a spy")
        host = self.busy_host()
        self.assertFalse(path.parent.exists())
        self.finish(host)

    def test_a_directory_that_is_not_private_is_refused(self):
        base = self.runtime / "kovasmgr-spy"
        base.mkdir()
        base.chmod(0o755)
        host = self.busy_host()
        self.assertEqual([], list(base.iterdir()))
        self.finish(host)
        self.assertEqual(1, self.log().count("no counters are kept"))
        base.rmdir()
        base.symlink_to(self.directory)
        host = self.busy_host()
        self.finish(host)
        self.assertEqual(2, self.log().count("no counters are kept"))

    def test_believes_nothing_in_the_file(self):
        host = self.busy_host()
        path = self.counters(host)
        good = path.read_bytes()
        os.kill(host.process.pid, signal.SIGSTOP)
        self.addCleanup(os.kill, host.process.pid, signal.SIGCONT)
        for wrong, reason in ((b"", "holds no counters"), (good[:-1], "holds no counters"),
                              (b"x" + good[1:], "holds no counters"),
                              (self.changed(good, 8, 2), "another version"),
                              (self.changed(good, 12, 5), "another version")):
            with self.subTest(reason=reason):
                self.replace(path, wrong)
                self.expect(1, self.stats("--once"), reason)
        everywhere = good[:16] + b"\xff" * (len(good) - 16)
        self.replace(path, everywhere)
        text = self.expect(0, self.stats("--once")).stdout
        self.assertEqual(1024, text.count("\n?"))
        self.assertNotRegex(text, "[^\n -~]")
        found = self.stats_json(host)
        self.assertEqual(1024, len(found["ports"]))
        self.assertEqual(2 ** 64 - 1, found["ports"][1023]["bytes_in"])
        path.unlink()
        os.mkfifo(path, 0o600)
        self.expect(1, self.stats("--once"), "is no private file of yours")
        path.unlink()
        os.symlink("/dev/zero", path)
        self.expect(1, self.stats("--once"), "is no private file of yours")

    @staticmethod
    def changed(data, at, number):
        return data[:at] + bytes(ctypes.c_uint32(number)) + data[at + 4:]

    @staticmethod
    def replace(path, data):
        path.unlink()
        path.write_bytes(data)
        path.chmod(0o600)

    def test_ports_that_find_no_room_are_told_by_their_number(self):
        (self.directory / "devices.toml").write_text("".join(
            f'[[device]]\nname = "d{d}"\n' + "".join(
                f'[[device.port]]\nname = "d{d}-{p}"\n' for p in range(4)) for d in range(3)),
            encoding="utf-8")
        host = self.running_host()
        for d in range(3):
            for p in range(4):
                self.assertEqual(OK, host.open(f"d{d}-{p}"))
        found = self.stats_json(host)
        self.assertEqual([f"d{d}-{p}" for d in range(3) for p in range(4)],
                         [port["name"] for port in found["ports"]])
        self.finish(host)


if __name__ == "__main__":
    unittest.main()
