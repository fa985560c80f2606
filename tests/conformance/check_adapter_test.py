# SPDX-License-Identifier: MIT
"""kovasctl check-adapter: what it finds, how it says so, and what it survives."""

import os
import re
import signal
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from kit_case import ADAPTERS, BUILD, CULPRITS, ConformanceTest, rule_of
from kit import KOVASCTL, ROOT, wait_until

GOOD = ADAPTERS / "good"
ROUGH = ADAPTERS / "rough"
TOOLS = BUILD / "tests/tools/adapters"
PORTS = ("--port", "anchor-0", "--port", "probe-0")


class Rules(ConformanceTest):
    def test_none_is_without_its_culprit(self):
        culprits = {rule_of(path.stem) for path in CULPRITS.glob("*.cpp")}
        self.assertEqual(set(self.rules()), culprits)

    def test_each_rule_of_the_header_is_tried_and_each_tried_rule_is_there(self):
        header = (ROOT / "include/OSAdapt.h").read_text(encoding="utf-8")
        numbers = set(re.findall(r"^ \*  (R\d+) ", header, re.MULTILINE)) | {"R0"}
        self.assertEqual(numbers, {number[:-1] for number in self.rules()})

    def test_the_guide_describes_each_in_their_order_and_words(self):
        guide = (ROOT / "docs/conformance.md").read_text(encoding="utf-8")
        self.assertEqual(self.rules(), re.findall(r"^\*\*(R\d+[a-z])\*\*", guide, re.MULTILINE))
        for rule in self.verdicts("--list").values():
            with self.subTest(rule=rule["rule"]):
                self.assertIn(f"**{rule['rule']}** {rule['text']}", guide.replace("\n", " "))
                self.assertTrue(rule["broken"])

    def test_are_listed_for_people(self):
        text = self.check("--list", "--rule", "R9")
        self.assertIn("R9a   A read never blocks.\n      broken: Every other port stalls", text)
        self.assertIn("      needs: --port\n", text)
        self.assertEqual(3, text.count("broken: "))

    def test_can_be_chosen(self):
        for given, chosen in ((["--rule", "R9b"], ["R9b"]), (["--rule", "R9"], ["R9a", "R9b", "R9c"]),
                              (["--rule", "R12e,R1a"], ["R1a", "R12e"]),
                              (["--rule", "R1", "--rule", "R7"], ["R1a", "R1b", "R7a"])):
            with self.subTest(given=given):
                self.assertEqual(chosen, list(self.verdicts("--list", *given)))


class Options(ConformanceTest):
    def test_may_stand_before_the_directory(self):
        for options in (("--rule", "R9b"), ("--port", "anchor-0", "--rule=R9b")):
            with self.subTest(options=options):
                self.assertEqual(["R9b"], list(self.verdicts(*options, GOOD)))


class GoodAdapter(ConformanceTest):
    def test_passes_every_rule(self):
        verdicts = self.verdicts(GOOD, *PORTS, "--stalled", "anchor-full", *self.commands(),
                                 "--write-bound", "0.3", "--timeout", "60")
        others = {number: rule["seen"] for number, rule in verdicts.items()
                  if rule["verdict"] != "pass"}
        self.assertEqual({}, others)
        self.assertEqual(self.rules(), list(verdicts))

    def test_without_leave_its_ports_are_left_alone(self):
        for number, rule in self.verdicts(GOOD).items():
            with self.subTest(rule=number):
                expected = "not-applicable" if rule["needs"] else "pass"
                self.assertEqual(expected, rule["verdict"], rule["seen"])
                if rule["needs"]:
                    self.assertEqual("it needs " + rule["needs"], rule["seen"])

    def test_the_device_is_plugged_in_at_the_end(self):
        self.check(GOOD, *self.commands(), "--rule", "R4,R7")
        self.assertTrue(self.device.exists())

    def test_the_commands_know_the_process_and_run_where_the_person_stands(self):
        host = "grep -q conformance/good /proc/$KOVASMGR_HOST_PID/maps"
        self.check(GOOD, "--rule", "R17a", "--unplug", f"{host} && rm devices/probe",
                   "--plug", f"{host} && touch devices/probe")

    def test_a_command_that_fails_is_told_once(self):
        verdicts = self.verdicts(GOOD, "--unplug", "echo no such device >&2; exit 3",
                                 "--plug", "true")
        self.expect_broken(["R17a"], verdicts)
        self.assertEqual("the command of --unplug failed: status 3, no such device",
                         verdicts["R17a"]["seen"])
        self.assertEqual("it builds upon R17a, which is broken", verdicts["R16c"]["seen"])

    def test_commands_that_pull_another_device_are_told(self):
        verdicts = self.verdicts(GOOD, "--port", "anchor-0", *self.commands(), "--rule", "R11b",
                                 "--timeout", "4")
        self.assertEqual("the command of --unplug pulls none of the ports that --port names",
                         verdicts["R11b"]["seen"])

    def test_a_far_end_that_reads_is_told(self):
        verdicts = self.verdicts(GOOD, "--stalled", "anchor-0", "--rule", "R10")
        self.assertIn("took everything: it reads", verdicts["R10b"]["seen"])


class Reports(ConformanceTest):
    BAD_NAME = "<&>\"'\x1b\n\u20ac"

    def test_text_has_number_rule_consequence_and_what_was_seen(self):
        text = self.check(GOOD, "--rule", "R12e,R9a")
        self.assertRegex(text, r"(?m)^pass            R12e  Unknown handles are refused by write.*\n"
                               r" +broken: Mistakes go unnoticed.*\n +seen: write, read and close")
        self.assertRegex(text, r"(?m)^not applicable  R9a   A read never blocks\.\n"
                               r" +broken: Every other port.*\n +why: it needs --port$")
        self.assertTrue(text.endswith("2 rules: 1 pass, 0 fail, 1 not applicable\n"), text)

    def test_json_has_a_schema(self):
        result = self.run_tool("check-adapter", GOOD, "--rule", "R0a", "--json", adapter=None)
        self.assertRegex(self.expect(0, result).stdout,
                         r'^{"schema":1,"adapter":".*/good/libOSAdapt.so","good":true,"rules":\['
                         r'{"rule":"R0a","text":".*","broken":".*","needs":"","verdict":"pass",'
                         r'"seen":"it loads, and all seven are there","seconds":0\.\d+}\]}\n$')

    def test_junit_is_xml_whatever_names_ports_have(self):
        self.check(GOOD, "--rule", "R0,R9a", "--port", self.BAD_NAME, "--junit", "report.xml",
                   status=1)
        report = ElementTree.parse(self.directory / "report.xml").getroot()
        suite = report.find("testsuite")
        self.assertEqual(("5", "1", "2"),
                         tuple(suite.get(key) for key in ("tests", "failures", "skipped")))
        cases = {case.get("name").split()[0]: case for case in suite.findall("testcase")}
        self.assertEqual([], list(cases["R0a"]))
        self.assertIn("'<&>\"'?\n\u20ac'", cases["R0c"].find("failure").get("message"))
        self.assertEqual("The port is listed and cannot be used.",
                         cases["R0c"].find("failure").text)
        self.assertIn("builds upon R0c", cases["R9a"].find("skipped").get("message"))
        self.assertGreater(float(suite.get("time")), 0)

    def test_the_adapters_own_reason_is_shown(self):
        verdicts = self.verdicts("virtual", "--rule", "R0c", "--port", "nobody")
        self.assertIn("its last word in the log: port 'nobody' cannot be opened",
                      verdicts["R0c"]["seen"])


class WrongUse(ConformanceTest):
    def test_is_refused(self):
        for error, arguments in (
                ("DIR is required", []),
                ("nowhere is neither", ["nowhere"]),
                ("there is no rule 'R99'", [GOOD, "--rule", "R99"]),
                ("there is no rule 'R'", [GOOD, "--rule", "R1,R"]),
                ("belong together", [GOOD, "--plug", "true"]),
                ("belong together", [GOOD, "--unplug", "true"]),
                ("--timeout", [GOOD, "--timeout", "0.5"]),
                ("--adapter has no meaning", [GOOD, "--adapter", "virtual"]),
                ("--junit: /nowhere/x.xml", [GOOD, "--junit", "/nowhere/x.xml"])):
            with self.subTest(arguments=arguments):
                self.check(*arguments, status=2, error=error)

    def test_a_directory_without_an_adapter_is_a_failure(self):
        self.check(self.directory, status=1, error="holds no adapter")


class RoughAdapters(ConformanceTest):
    """Whatever an adapter does, it is the rule's failure and not the tool's."""

    def seen(self, adapter, rule, *arguments):
        verdicts = self.verdicts(adapter, "--timeout", "4", *arguments)
        self.expect_broken([rule], verdicts)
        return verdicts[rule]["seen"]

    def test_one_that_aborts(self):
        self.assertIn("it crashed (Aborted), enumerating", self.seen(ROUGH / "aborts", "R0b"))

    def test_one_that_ends_the_process(self):
        self.assertIn("it ended the process (status 0), enumerating",
                      self.seen(ROUGH / "exits", "R0b"))

    def test_one_that_hangs(self):
        self.assertIn("it did not end within 4.00 s, enumerating", self.seen(ROUGH / "hangs", "R0b"))

    def test_one_that_throws(self):
        self.assertIn("an exception came out of it: out of devices",
                      self.seen(ROUGH / "throws", "R0b"))

    def test_one_that_closes_what_is_not_its_own(self):
        self.assertIn("it closed descriptors that are not its own, enumerating",
                      self.seen(ROUGH / "closes_everything", "R0b"))

    def test_one_that_crashes_when_it_is_loaded(self):
        self.assertIn("it crashed (Aborted), loading", self.seen(TOOLS / "crashing", "R0a"))

    def test_one_that_hangs_when_it_is_loaded(self):
        self.assertIn("it did not end within 4.00 s, loading", self.seen(TOOLS / "hanging", "R0a"))

    def test_one_that_is_no_library(self):
        (self.directory / "libOSAdapt.so").write_text("no library", encoding="utf-8")
        self.assertIn("it does not load: ", self.seen(self.directory, "R0a"))

    def test_an_interrupt_ends_the_tool_and_its_child(self):
        tool = subprocess.Popen(  # pylint: disable=consider-using-with
            [str(KOVASCTL), "check-adapter", str(TOOLS / "hanging"), "--timeout", "600"],
            stdout=subprocess.DEVNULL, env=self.environment, cwd=self.directory)
        self.addCleanup(self.end, tool)
        children = Path(f"/proc/{tool.pid}/task/{tool.pid}/children")
        child = wait_until(lambda: children.read_text(encoding="ascii").split(), "the child")[0]
        tool.send_signal(signal.SIGTERM)  # SIGINT may be ignored here
        self.assertEqual(128 + signal.SIGTERM, tool.wait(60))
        wait_until(lambda: not os.path.exists(f"/proc/{child}"), "the end of the child")


if __name__ == "__main__":
    unittest.main()
