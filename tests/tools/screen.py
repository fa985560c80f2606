# SPDX-License-Identifier: MIT
"""A person at a terminal: starts kovasctl on a pseudo-terminal, types, and reads the screen."""

import fcntl
import os
import pty
import select
import subprocess
import termios

from kit import KOVASCTL, KovasctlTest, wait_until


class ScreenTest(KovasctlTest):
    def setUp(self):
        super().setUp()
        self.master, self.slave = pty.openpty()
        self.addCleanup(os.close, self.master)
        self.addCleanup(os.close, self.slave)  # kept open: settings outlive the tool
        self.before = termios.tcgetattr(self.slave)
        self.seen = b""

    def sit_down(self, *arguments, adapter="virtual", **options):
        def lead_session():
            os.setsid()
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        options = {"stdin": self.slave, "stdout": self.slave, "stderr": self.slave, **options}
        command = [str(a) for a in (KOVASCTL, "--adapter", adapter, "term", *arguments)]
        # pylint: disable=consider-using-with,subprocess-popen-preexec-fn
        process = subprocess.Popen(command, cwd=self.directory, env=self.environment,
                                   preexec_fn=lead_session, **options)
        self.addCleanup(self.end, process)
        return process

    def read_screen(self):
        while select.select([self.master], [], [], 0)[0]:
            self.seen += os.read(self.master, 65536)
        return self.seen.decode(errors="replace")

    def see(self, text):
        """Waits until the text is on the screen, and forgets what is above its end."""
        wait_until(lambda: text in self.read_screen(), f"{text!r} in {self.read_screen()!r}")
        above, _, below = self.seen.partition(text.encode())
        self.seen = below
        return above.decode(errors="replace")

    def type(self, text):
        os.write(self.master, text.encode())

    def is_raw(self):
        return not termios.tcgetattr(self.slave)[3] & (termios.ICANON | termios.ECHO)

    def expect_end(self, process, status):
        def has_ended():
            self.read_screen()  # a full screen would hold it up
            return process.poll() is not None

        wait_until(has_ended, "the end of term")
        self.assertEqual(status, process.returncode, self.read_screen())
        self.assertEqual(self.before, termios.tcgetattr(self.slave), "the terminal is as before")
