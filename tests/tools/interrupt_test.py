# SPDX-License-Identifier: MIT
"""An interrupt ends every command in order: the library is released, nothing hangs."""

import fcntl
import os
import signal
import struct
import termios
import unittest

from kit import KovasctlTest, wait_until

SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Interrupt(KovasctlTest):
    def expect_release(self, process, number):
        self.assertEqual(128 + number, process.wait(60), process.stderr.read())
        self.assertEqual("", process.stderr.read())
        self.assertFalse(self.control.exists(), "the adapter has been told to end")
        log = self.directory / "KOVASMgr.log"
        self.assertIn("LEAVE CKOVASMgrPort::Release()", log.read_text(encoding="utf-8"))
        log.unlink()

    def interrupt_each(self, *arguments, ready, **options):
        for number in SIGNALS:
            with self.subTest(signal=number):
                process = self.start(*arguments, "--log-dir", ".", **options)
                ready(process)
                process.send_signal(number)
                self.expect_release(process, number)

    def test_of_watch(self):
        self.interrupt_each("watch", "--initial", ready=lambda process: process.stdout.readline())

    def test_of_receive(self):
        self.interrupt_each("receive", "sensor", ready=lambda process: process.stdout.readline())

    def test_of_send_while_it_waits_for_input(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        self.interrupt_each("send", "bench-far", "-", ready=lambda _: self.far_end("bench-far"),
                            stdin=reader)

    def test_of_send_while_the_port_takes_nothing(self):
        def ready(_):
            far = self.far_end("bench-far")
            wait_until(lambda: self.waiting(far) > 0, "bytes at the far end")

        (self.directory / "big").write_bytes(b"x" * 1000000)
        self.interrupt_each("send", "bench-far", "--file", "big", ready=ready)

    @staticmethod
    def waiting(descriptor):
        """How many bytes could be read."""
        return struct.unpack("i", fcntl.ioctl(descriptor, termios.FIONREAD, b"\0" * 4))[0]

    def test_of_receive_while_its_reader_does_not_read(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        process = self.start("receive", "bench-far", "--log-dir", ".", stdout=writer)
        far = self.far_end("bench-far")
        os.set_blocking(writer, False)
        with self.assertRaises(BlockingIOError):  # the pipe is full
            while True:
                os.write(writer, b"x" * 4096)
        os.set_blocking(writer, True)
        os.write(far, b"y" * 4000)
        process.send_signal(signal.SIGTERM)
        self.expect_release(process, signal.SIGTERM)

    def test_is_passed_over_where_it_is_ignored(self):
        process = self.start("watch", "--initial", "--log-dir", ".",
                             preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
        process.stdout.readline()
        process.send_signal(signal.SIGINT)
        self.devices("list")
        process.send_signal(signal.SIGTERM)
        self.expect_release(process, signal.SIGTERM)


if __name__ == "__main__":
    unittest.main()
