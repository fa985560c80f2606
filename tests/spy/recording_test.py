# SPDX-License-Identifier: MIT
"""What a recording holds."""

import base64
import json
import os
import stat
import unittest

from spy_kit import OK, SpyTest, wait_until


class Recording(SpyTest):
    def session(self, **variables):
        """An answer of a device, and its device that goes and comes."""
        host = self.running_host(RECORD=self.record, **variables)
        self.assertEqual(OK, host.open("bench-echo"))
        self.assertEqual(OK, host.listen("bench-echo"))
        self.assertEqual("5 0", host.write("bench-echo", "hello"))
        self.assertEqual("yes", host.received("hello"))
        self.devices("replug", "sensor")
        host.notices(2)
        self.assertEqual(OK, host.close("bench-echo"))
        self.finish(host)

    def test_begins_with_a_line_of_its_own(self):
        self.session()
        first = json.loads(self.record.read_text(encoding="utf-8").splitlines()[0])
        self.assertEqual(1, first["kovasmgr_recording"])
        self.assertTrue(first["adapter"].endswith("/virtual/libOSAdapt.so"))

    def test_has_a_line_for_every_call_in_order(self):
        self.session()
        lines = self.lines()
        self.assertEqual(list(range(1, len(lines) + 1)), [line["n"] for line in lines])
        kinds = [line["call"] for line in lines if line["call"] != "read"]
        self.assertEqual("enumerate", kinds[0])
        self.assertEqual("unregister", kinds[-1])
        for kind, count in (("register", 1), ("unregister", 1), ("open", 1), ("write", 1),
                            ("close", 1), ("notice", 2)):
            self.assertEqual(count, kinds.count(kind), kind)
        self.assertIn("read", [line["call"] for line in lines])

    def test_says_what_was_called_and_what_came_of_it(self):
        self.session()
        (opening,), (write,), (closing,) = (self.calls(k) for k in ("open", "write", "close"))
        self.assertEqual(("bench-echo", 30000), (opening["port"], opening["result"]))
        self.assertEqual((opening["handle"], "bench-echo", 5, 30000, 5),
                         (write["handle"], write["port"], write["length"], write["result"],
                          write["count"]))
        self.assertEqual(b"hello", base64.b64decode(write["data"]))
        self.assertEqual((opening["handle"], "bench-echo", 30000),
                         (closing["handle"], closing["port"], closing["result"]))
        read = b"".join(base64.b64decode(line["data"]) for line in self.calls("read"))
        self.assertEqual(b"hello", read)
        self.assertEqual(["pullout", "insert"], [line["status"] for line in self.calls("notice")])

    def test_lists_what_was_enumerated(self):
        self.session()
        first = self.calls("enumerate")[0]
        self.assertEqual((4, 30000), (first["which"], first["result"]))
        self.assertEqual([
            {"name": "bench", "text": "Echo and a far end of our own",
             "ports": [{"name": "bench-echo", "id": 0}, {"name": "bench-far", "id": 0}]},
            {"name": "sensor", "text": "Sends readings",
             "ports": [{"name": "sensor-0", "id": 0}]}], first["devices"])

    def test_tells_threads_and_times(self):
        self.session()
        lines = self.lines()
        threads = list(dict.fromkeys(line["thread"] for line in lines))
        self.assertEqual(list(range(1, len(threads) + 1)), threads)
        self.assertGreaterEqual(len(threads), 3)  # the host's, the reading and the noticing one
        for line in lines:
            self.assertGreaterEqual(line["t_us"], 0)
            self.assertGreaterEqual(line["took_us"], 0)
        # A notice lasts at least as long as the enumeration inside it.
        notice = self.calls("notice")[0]
        inside = [line for line in self.calls("enumerate")
                  if notice["t_us"] <= line["t_us"] <= notice["t_us"] + notice["took_us"]]
        self.assertNotEqual([], inside)

    def test_can_leave_out_reads_that_gave_nothing(self):
        self.session(IDLE_READS="off")
        counts = [line["count"] for line in self.calls("read")]
        self.assertEqual(5, sum(counts))
        self.assertNotIn(0, counts)
        lines = self.lines()
        self.assertEqual(list(range(1, len(lines) + 1)), [line["n"] for line in lines])

    def test_keeps_names_of_ports_and_makes_texts_utf_8(self):
        (self.directory / "devices.toml").write_text(
            '[[device]]\nname = "d"\ntext = "Gerät \\"1\\""\n[[device.port]]\nname = "Anschluß/1"\n',
            encoding="utf-8")
        host = self.running_host(RECORD=self.record)
        self.assertEqual(OK, host.open("Anschluß/1"))
        self.finish(host)
        self.assertEqual("Anschluß/1", self.calls("open")[0]["port"])
        self.assertEqual('Gerät "1"', self.calls("enumerate")[0]["devices"][0]["text"])

    def test_lines_of_many_threads_are_whole(self):
        host = self.running_host(RECORD=self.record)
        host.open("bench-echo")
        self.assertEqual("done", host.storm("bench-echo", 8, 100))
        self.devices("replug", "sensor")
        self.finish(host)
        lines = self.lines()
        self.assertEqual(list(range(1, len(lines) + 1)), [line["n"] for line in lines])
        self.assertEqual(800, len(self.calls("write")))
        self.assertGreaterEqual(len({line["thread"] for line in self.calls("write")}), 8)

    def test_goes_on_when_the_host_begins_again(self):
        host = self.running_host(RECORD=self.record)
        self.assertEqual(OK, host.release())
        before = len(self.lines())
        self.assertEqual(OK, host.init())
        self.finish(host)
        lines = self.lines()
        self.assertEqual(list(range(1, len(lines) + 1)), [line["n"] for line in lines])
        self.assertEqual(2, len(self.calls("register")))
        self.assertGreaterEqual(lines[before]["t_us"], lines[before - 1]["t_us"])

    def test_another_host_begins_anew(self):
        self.record.write_text("something else\n" * 1000, encoding="utf-8")
        self.finish(self.running_host(RECORD=self.record))
        self.finish(self.running_host(RECORD=self.record))
        self.assertEqual(1, len(self.calls("register")))

    def test_two_hosts_do_not_write_to_one_file(self):
        first = self.running_host(RECORD=self.record)
        second = self.host(RECORD=self.record)
        second.process.stdin.write(f"init {self.state.parent}\n")
        second.process.stdin.flush()
        self.assertEqual(OK, second.process.stderr.readline().strip())
        self.finish(second)
        self.assertEqual(1, self.log().count("another host writes to it"))
        self.finish(first)
        self.assertEqual(1, len(self.calls("register")))

    def test_is_for_its_owner_alone(self):
        self.finish(self.running_host(RECORD=self.record))
        self.assertEqual(0o600, stat.S_IMODE(os.stat(self.record).st_mode))

    def test_that_cannot_be_written_is_one_line_in_the_log(self):
        for path, reason in (("/dev/full", "No space left on device"),
                             (self.directory / "none/file", "No such file or directory"),
                             (self.directory, "Is a directory"),
                             ("recording.jsonl", "must be an absolute path")):
            with self.subTest(path=path):
                before = self.log().count(reason)
                host = self.running_host(RECORD=path)
                self.assertEqual(OK, host.open("bench-echo"))
                self.assertEqual("5 0", host.write("bench-echo", "hello"))
                self.finish(host)
                self.assertEqual(1, self.log().count(reason) - before)

    def test_into_a_fifo_that_nobody_reads_does_not_hang_the_host(self):
        fifo = self.directory / "fifo"
        os.mkfifo(fifo)
        self.finish(self.running_host(RECORD=fifo))
        self.assertIn("it is not a regular file", self.log())

    def test_a_host_may_end_while_its_threads_are_inside(self):
        # A leak checker stumbles over threads at work.
        self.environment["LSAN_OPTIONS"] = "detect_leaks=0"
        for _ in range(5):
            host = self.running_host(RECORD=self.record)
            self.assertEqual(OK, host.open("bench-echo"))
            self.assertEqual("busy", host.busy("bench-echo"))
            wait_until(lambda: self.record.stat().st_size > 20000, "some lines")
            self.assertEqual((0, ""), host.end())
            lines = self.lines()
            self.assertEqual(list(range(1, len(lines) + 1)), [line["n"] for line in lines])
            self.assertEqual([], list((self.runtime / "kovasmgr-spy").iterdir()))

    def test_is_whole_at_every_moment(self):
        host = self.running_host(RECORD=self.record)
        host.open("sensor-0")
        self.assertEqual(OK, host.listen("sensor-0"))
        self.assertEqual("yes", host.received("reading"))
        wait_until(lambda: self.record.stat().st_size > 10000, "some lines")
        host.process.kill()
        host.process.wait()
        self.assertGreater(len(self.lines()), 20)


if __name__ == "__main__":
    unittest.main()
