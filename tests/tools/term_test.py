# SPDX-License-Identifier: MIT
"""kovasctl term: typing, reading, and leaving."""

import os
import signal
import subprocess
import unittest

from kit import BUILD, wait_until
from screen import ScreenTest

RECORDING = BUILD / "tests/tools/adapters/recording"
QUIT = "\x14q"


class Term(ScreenTest):
    def talk(self, *arguments):
        process = self.sit_down("bench-echo", *arguments)
        self.see("connected to bench-echo of bench")
        return process

    def test_shows_the_escape_key_at_the_start(self):
        self.sit_down("bench-echo")
        self.see("kovasctl: Ctrl-T q quits, Ctrl-T ? shows all keys\r\n"
                 "kovasctl: connected to bench-echo of bench\r\n")

    def test_passes_what_is_typed_and_shows_what_comes(self):
        process = self.talk()
        self.assertTrue(self.is_raw())
        self.type("hello\r")
        self.see("hello\r")
        self.type(QUIT)
        self.expect_end(process, 0)

    def test_passes_keys_that_mean_something_to_other_programs(self):
        self.talk("--hex")
        self.type("\x03\x1a\x04\x11\x13\x1b[A")
        self.see("03 1a 04 11 13 1b 5b 41 ")

    def test_sends_the_escape_key_when_it_is_typed_twice(self):
        self.talk("--hex")
        self.type("a\x14\x14b")
        self.see("61 14 62 ")

    def test_has_an_escape_key_of_choice(self):
        process = self.talk("--escape", "a", "--hex")
        self.type("\x14\x01\x01")
        self.see("14 01 ")
        self.type("\x01q")
        self.expect_end(process, 0)

    def test_shows_help_for_its_keys(self):
        self.talk()
        self.type("\x14?")
        self.see("\r\n  Ctrl-T q  quit\r\n")
        self.see("Ctrl-T Ctrl-T  send Ctrl-T itself\r\n")

    def test_echoes_when_asked(self):
        self.sit_down("bench-far", "--echo")
        self.see("connected")
        self.type("ab\x1b\r")
        self.see("ab^[\r\n")

    def test_switches_echo_and_hex_while_it_runs(self):
        self.talk()
        self.type("\x14e")
        self.see("local echo on")
        self.type("\x14h")
        self.see("hexadecimal display on")
        self.type("A")
        self.see("41 41 ")
        self.type("\x14h\x14e")
        self.see("hexadecimal display off")
        self.see("local echo off")
        self.type("B")
        self.see("B")

    def test_sends_the_line_end_of_choice(self):
        self.talk("--hex", "--eol", "crlf")
        self.type("A\r")
        self.see("41 0d 0a ")

    def test_writes_a_log_where_the_person_stands(self):
        process = self.talk("--log", "talk.log")
        self.type("hello\r")
        self.see("hello")
        self.type(QUIT)
        self.expect_end(process, 0)
        self.assertEqual(b"hello\r", (self.directory / "talk.log").read_bytes())

    def test_appends_to_the_log(self):
        (self.directory / "talk.log").write_text("before ", encoding="utf-8")
        self.talk("--log", "talk.log")
        self.type("x")
        self.see("x")
        self.assertEqual(b"before x", (self.directory / "talk.log").read_bytes())

    def test_carries_on_when_the_log_takes_no_more(self):
        self.talk("--log", "/dev/full")
        self.type("x")
        self.see("the log file takes no more: No space left on device")
        self.type("y")
        self.see("y")

    def test_gives_data_alone_to_a_redirected_standard_output(self):
        with (self.directory / "out").open("wb") as output:
            process = self.sit_down("bench-echo", stdout=output)
        self.see("connected")
        self.type("hello")
        path = self.directory / "out"
        wait_until(lambda: path.read_bytes() == b"hello", "the answer in the file")
        self.type(QUIT)
        self.expect_end(process, 0)
        self.assertEqual(b"hello", path.read_bytes())

    def test_restores_the_terminal_when_a_signal_ends_it(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT,
                       signal.SIGALRM, signal.SIGUSR1, signal.SIGUSR2):
            with self.subTest(signal=number):
                process = self.talk()
                process.send_signal(number)
                self.expect_end(process, 128 + number)

    def test_restores_the_terminal_when_an_adapter_crashes(self):
        for number in (signal.SIGSEGV, signal.SIGABRT, signal.SIGBUS):
            with self.subTest(signal=number):
                process = self.talk()
                process.send_signal(number)
                self.expect_end(process, -number)

    def test_a_second_signal_ends_it_at_once_when_the_adapter_hangs(self):
        self.environment["RECORDING_HANG"] = "1"
        process = self.sit_down("recorder-0", adapter=RECORDING)
        self.see("connected")

        def has_ended():
            process.terminate()
            return process.poll() is not None

        wait_until(has_ended, "the end of term")
        self.expect_end(process, 128 + signal.SIGTERM)

    def test_ends_when_nobody_reads_its_output(self):
        reader, writer = os.pipe()
        process = self.sit_down("bench-echo", stdout=writer)
        os.close(writer)
        self.see("connected")
        os.close(reader)
        self.expect_end(process, 128 + signal.SIGPIPE)

    def test_sets_the_line_of_a_port(self):
        self.environment["RECORDING_DIRECTORY"] = str(self.directory)
        process = self.sit_down("recorder-0", "--line", "115200,8n1", adapter=RECORDING)
        self.see("connected")
        self.type("\x14b" + QUIT)
        self.expect_end(process, 0)
        self.assertEqual("recorder-0 115200,8n1\nrecorder-0 break\n",
                         (self.directory / "line").read_text(encoding="utf-8"))

    def test_says_that_an_adapter_has_no_lines_and_restores_the_terminal(self):
        process = self.sit_down("bench-echo", "--line", "115200,8n1")
        self.see("kovasctl: the line cannot be set: the adapter ")
        self.see("has no lines to set")
        self.expect_end(process, 1)

    def test_without_lines_a_break_is_refused_and_the_talk_goes_on(self):
        self.talk()
        self.type("\x14b")
        self.see("has no lines to set")
        self.type("x")
        self.see("x")

    def test_lists_the_candidates_of_an_ambiguous_part(self):
        process = self.sit_down("bench")
        self.see("fits several ports; choose one:")
        self.expect_end(process, 1)

    def test_needs_a_terminal(self):
        self.expect(2, self.run_tool("term", "bench-echo", stdin=subprocess.DEVNULL),
                    "kovasctl: term needs a terminal; scripts use send and receive\n")

    def test_refuses_what_makes_no_sense(self):
        for arguments, text in ((["--escape", "T1"], "the escape key is one of the letters"),
                                (["--escape", "m"], "the escape key is one of the letters"),
                                (["--log", "not/there"], "--log: not/there: No such file"),
                                (["--eol", "x"], "--eol")):
            with self.subTest(arguments=arguments):
                process = self.sit_down("bench-echo", *arguments)
                self.see(text)
                self.expect_end(process, 2)


if __name__ == "__main__":
    unittest.main()
