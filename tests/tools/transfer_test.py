# SPDX-License-Identifier: MIT
"""kovasctl send and receive."""

import os
import pty
import subprocess
import unittest

from kit import BUILD, KovasctlTest, wait_until

RECORDING = BUILD / "tests/tools/adapters/recording"
ALL_BYTES = bytes(range(256))


class Send(KovasctlTest):
    def setUp(self):
        super().setUp()
        self.environment["RECORDING_DIRECTORY"] = str(self.directory)

    def sent(self):
        path = self.directory / "sent"
        return path.read_bytes() if path.exists() else b""

    def send(self, *arguments, **options):
        return self.run_tool("send", "recorder-0", *arguments, adapter=RECORDING, **options)

    def test_sends_a_text_as_it_is(self):
        self.expect(0, self.send("hello \\r"))
        self.assertEqual(b"hello \\r", self.sent())

    def test_writes_nothing_to_standard_output_not_even_what_an_adapter_prints(self):
        self.assertEqual("", self.expect(0, self.send("hello")).stdout)

    def test_understands_escapes_and_line_ends_when_asked(self):
        self.expect(0, self.send("-e", r"a\x00\xff\t\\", "--eol", "crlf"))
        self.assertEqual(b"a\x00\xff\t\\\r\n", self.sent())

    def test_refuses_a_hexadecimal_prefix_without_a_byte(self):
        self.expect(2, self.send("--hex", "0x"), "'0x' is no byte in hexadecimal digits")

    def test_sends_hexadecimal_bytes(self):
        self.expect(0, self.send("--hex", "41 54:0d,0x0A ff"))
        self.assertEqual(b"AT\r\n\xff", self.sent())

    def test_sends_standard_input(self):
        self.expect(0, self.send("-", input=ALL_BYTES * 300, text=False))
        self.assertEqual(ALL_BYTES * 300, self.sent())

    def test_sends_a_file_named_from_where_the_person_stands(self):
        (self.directory / "data.bin").write_bytes(ALL_BYTES * 10)
        self.expect(0, self.send("--file", "data.bin"))
        self.assertEqual(ALL_BYTES * 10, self.sent())

    def test_sends_an_empty_text_and_an_empty_file(self):
        (self.directory / "empty").touch()
        self.expect(0, self.send(""))
        self.expect(0, self.send("--file", "empty"))
        self.assertEqual(b"", self.sent())

    def test_sends_a_text_that_begins_with_a_dash(self):
        self.expect(0, self.send("--", "-v"))
        self.assertEqual(b"-v", self.sent())

    def test_continues_short_writes(self):
        self.environment["RECORDING_STEP"] = "7"
        self.expect(0, self.send("x" * 1000))
        self.assertEqual(b"x" * 1000, self.sent())

    def test_fails_when_the_port_takes_no_more_and_says_how_much_it_took(self):
        self.environment["RECORDING_ROOM"] = "150"
        self.expect(1, self.send("x" * 1000, "--timeout", "0.1"),
                    "kovasctl: recorder-0 takes no more data\n  sent: 150 of 1000 bytes\n")

    def test_shows_the_progress_of_a_file_to_a_person(self):
        (self.directory / "data.bin").write_bytes(ALL_BYTES * 10)
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        self.addCleanup(os.close, slave)
        result = self.send("--file", "data.bin", capture_output=False, stdout=subprocess.PIPE,
                           stderr=slave)
        self.assertEqual((0, ""), (result.returncode, result.stdout))
        seen = []

        def is_complete():
            seen.append(os.read(master, 65536))
            return b"100 %" in b"".join(seen)

        wait_until(is_complete, "a full bar")

    def test_refuses_what_makes_no_sense(self):
        for arguments, reason in (
                ([], "send what?"), (["a", "--hex", "41"], "send what?"),
                (["--hex", "4"], "is no byte"), (["--hex", "zz"], "is no byte"),
                (["-e", r"\q"], "is no escape"), (["-", "--eol", "cr"], "are for a TEXT"),
                (["a", "--eol", "nl"], "--eol"), (["--file", "not-there"], "not-there: No such file"),
                (["a", "--timeout", "x"], "--timeout"), (["a", "b"], "not expected"),
                (["a", "--json"], "--json has no meaning for send")):
            with self.subTest(arguments=arguments):
                self.expect(2, self.send(*arguments), reason)
        self.assertEqual(b"", self.sent())

    def test_sets_the_line_first(self):
        self.expect(0, self.send("a", "--line", "9600,7e1"))
        self.assertEqual("recorder-0 9600,7e1\n", (self.directory / "line").read_text("utf-8"))

    def test_sends_nothing_on_a_line_that_is_refused(self):
        self.expect(1, self.send("a", "--line", "nonsense"), "the line 'nonsense' cannot be set")
        self.assertEqual(b"", self.sent())

    def test_says_that_an_adapter_has_no_lines(self):
        self.expect(1, self.run_tool("send", "bench-echo", "a", "--line", "9600"),
                    "has no lines to set (no OSADAPT_SetLine)")

    def test_reaches_a_far_end(self):
        process = self.start("send", "bench-far", "-", stdin=subprocess.PIPE)
        far = self.far_end("bench-far")
        process.stdin.write("hello")
        process.stdin.flush()
        self.assertEqual(b"hello", os.read(far, 100))
        process.stdin.close()
        process.stdin = None
        self.assertEqual(0, process.wait(60), process.stderr.read())

    def test_fails_when_the_device_goes(self):
        process = self.start("send", "bench-far", "-", stdin=subprocess.PIPE)
        far = self.far_end("bench-far")
        process.stdin.write("a")
        process.stdin.flush()
        self.assertEqual(b"a", os.read(far, 100))
        self.devices("pull", "bench")
        process.stdin.write("b")
        process.stdin.flush()
        self.assertEqual(1, process.wait(60))
        self.assertIn("bench-far takes no data: KOVAMGR_ERR_PARAM (20001)", process.stderr.read())


class ChoiceOfPort(KovasctlTest):
    def test_takes_an_identifier_a_name_or_an_unambiguous_part(self):
        for port in ("1", "bench-echo", "H-ECHO", "bench-e"):
            with self.subTest(port=port):
                self.succeed("send", port, "hello")

    def test_takes_a_device_that_has_one_port_by_its_name_or_text(self):
        for port in ("sensor", "Readings", "sends r"):
            with self.subTest(port=port):
                self.succeed("receive", port, "--count", "3")

    def test_lists_the_candidates_of_an_ambiguous_part(self):
        for port in ("bench", "end of our own"):
            with self.subTest(port=port):
                self.expect(1, self.run_tool("send", port, "x"),
                            f"kovasctl: '{port}' fits several ports; choose one:\n"
                            "  1  bench-echo  (bench)\n  2  bench-far  (bench)\n")

    def test_says_when_nothing_fits(self):
        for port in ("modem", "4", "0", "-1", ""):
            with self.subTest(port=port):
                self.expect(1, self.run_tool("send", "--", port, "x"), f"no port fits '{port}'")


class Receive(KovasctlTest):
    def ask(self, *arguments):
        return self.succeed("receive", "bench-echo", *arguments)

    def test_ends_after_the_count_exactly(self):
        self.assertEqual("hel", self.ask("--send", "hello", "--count", "3"))

    def test_ends_behind_the_text(self):
        self.assertEqual("one OK", self.ask("--send", "one OK two", "--until", "OK"))

    def test_finds_a_text_that_arrives_in_pieces(self):
        process = self.start("receive", "bench-far", "--until", "abcabd")
        far = self.far_end("bench-far")
        for piece in (b"xabc", b"abc", b"abdy"):
            os.write(far, piece)
            process.stdout.read(0)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(("xabcabcabd", "", 0), (output, errors, process.returncode))

    def test_passes_every_byte(self):
        escaped = "".join(f"\\x{byte:02x}" for byte in ALL_BYTES)
        result = self.run_tool("receive", "bench-echo", "-e", "--send", escaped, "--count", "256",
                               text=False)
        self.assertEqual((0, ALL_BYTES), (result.returncode, result.stdout))

    def test_ends_when_nothing_has_come_for_a_while(self):
        self.assertEqual("hello", self.ask("--send", "hello", "--idle-timeout", "0.5"))

    def test_ends_at_the_timeout_although_data_comes(self):
        self.assertIn("reading", self.succeed("receive", "sensor", "--timeout", "0.5"))

    def test_fails_when_the_time_is_over_before_the_end(self):
        for end, option in ((["--count", "9"], "--idle-timeout"), (["--until", "OK"], "--timeout")):
            with self.subTest(end=end, option=option):
                result = self.run_tool("receive", "bench-echo", "--send", "hello", *end, option, "0.5")
                self.expect(1, result, "kovasctl: the time is over\n  received: 5 ")
                self.assertEqual("hello", result.stdout)

    def test_fails_when_the_device_goes_and_gives_what_came_before(self):
        process = self.start("receive", "bench-far")
        os.write(self.far_end("bench-far"), b"hello")
        self.assertEqual("hello", process.stdout.read(5))
        self.devices("pull", "bench")
        self.assertEqual(1, process.wait(60))
        self.assertIn("kovasctl: bench-far went away\n  received: 5 bytes\n", process.stderr.read())

    def test_keeps_everything_for_a_slow_reader(self):
        process = self.start("receive", "bench-far", "--count", "400000")
        far = self.far_end("bench-far")
        data = b"0123456789abcdef" * 25000
        for at in range(0, len(data), 4000):
            os.write(far, data[at:at + 4000])
        self.assertEqual(data.decode(), process.communicate(timeout=60)[0])

    def test_refuses_what_makes_no_sense(self):
        for arguments in (["--count", "0"], ["--idle-timeout", "x"], ["--timeout", "inf"],
                          ["--eol", "x"], ["-e", "--until", "\\"], ["--json"]):
            with self.subTest(arguments=arguments):
                self.expect(2, self.run_tool("receive", "bench-echo", *arguments), "kovasctl: ")


if __name__ == "__main__":
    unittest.main()
