# SPDX-License-Identifier: MIT
"""kovasctl term: devices that go and come back."""

import unittest

from screen import ScreenTest

QUIT = "\x14q"

ABSENT = """
[[device]]
name = "late"
present = false
[[device.port]]
name = "late-0"
far = "echo"
"""

PROPOSED = """
[[device]]
name = "bench"
[[device.port]]
name = "bench-echo"
id = 7
far = "echo"
"""


class TermConnection(ScreenTest):
    def test_connects_again_when_the_device_comes_back(self):
        process = self.sit_down("bench-echo")
        self.see("connected to bench-echo of bench")
        self.devices("pull", "bench")
        self.see("kovasctl: bench-echo went away; waiting for it\r\n")
        self.assertTrue(self.is_raw())
        self.devices("plug", "bench")
        self.see("connected to bench-echo of bench")
        self.type("hello")
        self.see("hello")
        self.type(QUIT)
        self.expect_end(process, 0)

    def test_connects_again_by_name_although_it_was_chosen_by_an_identifier(self):
        self.sit_down("1")
        self.see("connected to bench-echo")
        self.devices("pull", "bench")
        self.see("waiting for it")
        self.devices("plug", "bench")
        self.see("connected to bench-echo")

    def test_notices_a_device_that_is_back_at_once_with_the_same_identifier(self):
        self.scenario(PROPOSED)
        self.sit_down("7")
        self.see("connected")
        self.devices("replug", "bench")
        self.see("went away")
        self.see("connected")
        self.type("hello")
        self.see("hello")

    def test_keeps_the_connection_while_others_go(self):
        self.sit_down("bench-echo")
        self.see("connected")
        self.devices("pull", "sensor")
        self.devices("plug", "sensor")
        self.type("hello")
        self.assertNotIn("went away", self.see("hello"))

    def test_waits_for_a_device_that_is_not_there_yet(self):
        self.scenario(ABSENT)
        self.sit_down("late-0")
        self.see("kovasctl: waiting for late-0\r\n")
        self.devices("plug", "late")
        self.see("connected to late-0 of late")

    def test_can_be_left_while_it_waits(self):
        self.scenario(ABSENT)
        process = self.sit_down("late-0")
        self.see("waiting")
        self.type(QUIT)
        self.expect_end(process, 0)

    def test_can_be_left_while_the_device_is_away(self):
        process = self.sit_down("bench-echo")
        self.see("connected")
        self.devices("pull", "bench")
        self.see("waiting")
        self.type("not sent" + QUIT)
        self.expect_end(process, 0)

    def test_ends_with_the_device_when_asked_and_restores_the_terminal(self):
        process = self.sit_down("bench-echo", "--no-reconnect")
        self.see("connected")
        self.devices("pull", "bench")
        self.see("kovasctl: bench-echo went away\r\n")
        self.expect_end(process, 1)

    def test_does_not_wait_at_the_start_when_asked(self):
        self.scenario(ABSENT)
        process = self.sit_down("late-0", "--no-reconnect")
        self.see("no port fits 'late-0'; no device is there")
        self.expect_end(process, 1)

    def test_stays_usable_while_the_port_takes_nothing(self):
        process = self.sit_down("bench-far")
        self.see("connected")
        for _ in range(40):  # more than the terminal in between holds
            self.type("x" * 1000)
        self.type("\x14?")
        self.see("Ctrl-T q  quit")
        self.type(QUIT)
        self.expect_end(process, 0)


if __name__ == "__main__":
    unittest.main()
