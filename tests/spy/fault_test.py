# SPDX-License-Identifier: MIT
"""Each fault of each of the seven operations, and what the host gets to see of it."""

import os
import time
import unittest

from spy_kit import OK, OSADAPT, SpyTest

REFUSED = f"-1 {OSADAPT}"  # what a write that failed returns and stores


class Faults(SpyTest):
    def faulty(self, plan):
        """A host that has begun, with its port open, unless that is what fails."""
        host = self.running_host(FAULTS=plan, RECORD=self.record, IDLE_READS="off")
        self.assertEqual(OK, host.open("bench-echo"))
        self.assertEqual(OK, host.listen("bench-echo"))
        return host

    def faults_of(self, kind):
        return [line.get("fault") for line in self.calls(kind)]

    # register

    def test_a_registration_that_fails_ends_the_beginning(self):
        for fault in ("fail", "result:7"):
            with self.subTest(fault=fault):
                host = self.host(FAULTS=f"register:1={fault}", RECORD=self.record)
                self.assertEqual(OSADAPT, host.init())
                self.assertEqual((0, ""), host.end())
                self.assertEqual([fault], self.faults_of("register"))

    def test_a_registration_that_lasts(self):
        self.check_delay("register:1=delay:100ms", lambda host: host.init(), OK, begun=False)

    # unregister

    def test_a_release_does_not_mind_an_un_registration_that_fails(self):
        for fault in ("fail", "result:7"):
            with self.subTest(fault=fault):
                host = self.faulty(f"unregister:1={fault}")
                self.finish(host)
                self.assertEqual([fault], self.faults_of("unregister"))

    def test_an_un_registration_that_lasts(self):
        self.check_delay("unregister:*=delay:100ms", lambda host: host.release(), OK)

    # open

    def test_an_opening_that_fails(self):
        for fault in ("fail", "result:30002"):
            with self.subTest(fault=fault):
                host = self.running_host(FAULTS=f"open:1={fault}", RECORD=self.record)
                self.assertEqual(OSADAPT, host.open("bench-echo"))
                self.assertEqual(OK, host.open("bench-echo"))
                self.assertEqual("2 0", host.write("bench-echo", "ok"))
                self.finish(host)
                self.assertEqual([fault, None], self.faults_of("open"))
                self.assertEqual(-1, self.calls("open")[0]["handle"])

    # The library takes a port with a handle for open, whatever the opening has returned.
    def test_an_opening_that_fails_with_its_handle_set(self):
        host = self.running_host(FAULTS="open:1=fail-with-handle", RECORD=self.record)
        self.assertEqual(OSADAPT, host.open("bench-echo"))
        self.assertEqual("2 0", host.write("bench-echo", "ok"))
        self.assertEqual(OK, host.open("bench-echo"))
        self.finish(host)
        opening, = self.calls("open")
        self.assertEqual((30001, "fail-with-handle"), (opening["result"], opening["fault"]))
        self.assertGreater(opening["handle"], 0)
        self.assertEqual([opening["handle"]], [line["handle"] for line in self.calls("close")])

    def test_an_opening_that_lasts(self):
        self.check_delay("open:2=delay:100ms", lambda host: host.open("bench-far"), OK)

    # close

    def test_a_closing_that_fails_leaves_the_port_open(self):
        for fault in ("fail", "result:0"):
            with self.subTest(fault=fault):
                host = self.faulty(f"close:1={fault}")
                self.assertEqual(OSADAPT, host.close("bench-echo"))
                self.assertEqual("2 0", host.write("bench-echo", "ok"))
                self.assertEqual(OK, host.close("bench-echo"))
                self.finish(host)
                self.assertEqual([fault, None], self.faults_of("close"))

    def test_a_closing_that_lasts(self):
        self.check_delay("close:1=delay:100ms", lambda host: host.close("bench-echo"), OK)

    # write

    def test_the_third_write_fails(self):
        host = self.faulty("write:3=fail")
        answers = [host.write("bench-echo", "abc") for _ in range(4)]
        self.finish(host)
        self.assertEqual(["3 0", "3 0", REFUSED, "3 0"], answers)
        self.assertEqual([None, None, "fail", None], self.faults_of("write"))

    def test_writes_of_one_port_fail(self):
        host = self.faulty("write@bench-echo:2+=result:1")
        self.assertEqual(OK, host.open("bench-far"))
        far = [host.write("bench-far", "abc") for _ in range(3)]
        echo = [host.write("bench-echo", "abc") for _ in range(3)]
        self.finish(host)
        self.assertEqual((["3 0"] * 3, ["3 0", REFUSED, REFUSED]), (far, echo))

    def test_writes_that_take_less(self):
        host = self.faulty("write:1-2=short:2")
        answers = [host.write("bench-echo", text) for text in ("abc", "x", "def")]
        self.assertEqual("yes", host.received("abxdef"))
        self.finish(host)
        self.assertEqual(["2 0", "1 0", "3 0"], answers)
        self.assertEqual([(3, 2), (1, 1), (3, 3)],
                         [(line["length"], line["count"]) for line in self.calls("write")])

    def test_a_write_that_does_nothing_and_succeeds(self):
        host = self.faulty("write:1=result:30000")
        self.assertEqual("0 0", host.write("bench-echo", "abc"))
        self.finish(host)

    def test_a_write_that_lasts(self):
        self.check_delay("write:1=delay:100ms", lambda host: host.write("bench-echo", "x"), "1 0")

    # read

    def test_reads_that_fail_lose_nothing(self):
        for fault in ("fail", "result:-1"):
            with self.subTest(fault=fault):
                host = self.faulty(f"read:1-5={fault}")
                self.assertEqual("5 0", host.write("bench-echo", "hello"))
                self.assertEqual("yes", host.received("hello"))
                self.finish(host)
                self.assertEqual([fault] * 5, self.faults_of("read")[:5])

    def test_reads_that_give_less(self):
        host = self.faulty("read:*=short:2")
        self.assertEqual("5 0", host.write("bench-echo", "hello"))
        self.assertEqual("yes", host.received("hello"))
        self.finish(host)
        self.assertLessEqual({line["count"] for line in self.calls("read")}, {0, 1, 2})

    def test_reads_that_last(self):
        self.check_delay("read:1=delay:100ms,read:2+=delay:1ms",
                         lambda host: host.write("bench-echo", "x") and host.received("x"), "yes",
                         least=0)

    # enumerate

    def test_an_enumeration_that_fails_at_the_beginning(self):
        for fault in ("fail", "result:1"):
            with self.subTest(fault=fault):
                host = self.running_host(FAULTS=f"enumerate:1={fault}", RECORD=self.record)
                self.assertEqual("0", host.devices())
                self.devices("replug", "sensor")  # a notice, and the list is fetched again
                host.notices(1)
                self.assertEqual("2", host.devices())
                self.finish(host)
                self.assertEqual(fault, self.faults_of("enumerate")[0])

    def test_an_enumeration_that_lasts(self):
        self.check_delay("enumerate:1=delay:100ms", lambda host: host.init(), OK, begun=False)

    def check_delay(self, plan, action, answer, begun=True, least=0.1):
        host = self.faulty(plan) if begun else self.host(FAULTS=plan, RECORD=self.record)
        start = time.monotonic()
        self.assertEqual(answer, action(host))
        self.assertGreaterEqual(time.monotonic() - start, least)
        host.release()
        self.assertEqual((0, ""), host.end())
        delayed = [line for line in self.lines() if line.get("fault") == "delay:100ms"]
        self.assertNotEqual([], delayed)
        self.assertGreaterEqual(delayed[0]["took_us"], 100000)

    # the plan

    def test_delays_add_up_and_the_first_other_fault_counts(self):
        host = self.faulty("write:1=delay:1ms, write:*=fail, write:*=result:30000,write:1=delay:1ms")
        self.assertEqual(REFUSED, host.write("bench-echo", "x"))
        self.finish(host)
        self.assertEqual(["delay:1ms,fail,delay:1ms"], self.faults_of("write"))

    def test_a_mistake_is_told_with_its_place_and_no_call_is_passed_on(self):
        for plan, place in (
                ("write:3=fial", "character 9, 'fial': one of fail, "),
                ("wirte:3=fail", "character 1, 'wirte:3=fail': one of register, "),
                ("write:3=fail,", "character 14, the end: one of register, "),
                ("write@p:0=fail", "character 10, '=fail': calls are counted from 1"),
                ("enumerate@p:1=fail", "enumerate is of no port"),
                ("read:1=fail-with-handle", "fail-with-handle is not for read"),
                ("read:1=delay:61s", "character 14, '61s': a delay is 60s at most")):
            with self.subTest(plan=plan):
                host = self.host(FAULTS=plan)
                self.assertEqual(OSADAPT, host.init())
                self.assertEqual((0, ""), host.end())
                self.assertIn(place, self.log())
                self.assertEqual(1, self.log().count("KOVASMGR_SPY_FAULTS"))
                os.remove(self.directory / "KOVASMgr.log")


if __name__ == "__main__":
    unittest.main()
