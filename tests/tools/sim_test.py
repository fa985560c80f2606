# SPDX-License-Identifier: MIT
"""kovasctl sim."""

import fcntl
import json
import os
import re
import resource
import signal
import stat
import sys
import unittest
from pathlib import Path

from kit import BUILD, KOVASCTL, VIRTUAL, KovasctlTest, wait_until

SCENARIO = """
description = "a bench and a sensor"
end = "{end}"
events = ['at 300ms pull sensor', 'at 600ms plug sensor']
[[device]]
name = "bench"
[[device.port]]
name = "bench-0"
far = "echo"
[[device]]
name = "sensor"
[[device.port]]
name = "sensor-0"
far = "scripted"
script = ['every 100ms send "tick\\r\\n"']
"""

# Says what it was given, then waits for a signal if it is asked to.
HOST = """
import os, resource, signal, sys
names = [name for name in os.environ if name.startswith("KOVASMGR_VIRTUAL")]
print("arguments", sys.argv[2:])
print("variables", {name: os.environ[name] for name in names})
print("adapter", os.path.realpath("libOSAdapt.so"))
print("descriptors", resource.getrlimit(resource.RLIMIT_NOFILE))
print("directory", os.getcwd(), flush=True)
if sys.argv[1] == "wait":
    signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGTERM, signal.SIGUSR1])
    print("waiting", flush=True)
    print("told", signal.sigwait([signal.SIGTERM, signal.SIGUSR1]).name)
"""


class SimTest(KovasctlTest):
    def setUp(self):
        super().setUp()
        # As a person has it: the place of the commands is found by the process.
        del self.environment["KOVASMGR_VIRTUAL_DIR"]
        self.environment["XDG_RUNTIME_DIR"] = str(self.directory)
        (self.directory / "host.py").write_text(HOST, encoding="utf-8")
        self.write()

    def write(self, end="1s", name="mine.toml", text=SCENARIO):
        (self.directory / name).write_text(text.replace("{end}", end), encoding="utf-8")

    def sim(self, *arguments, **options):
        return self.run_tool("sim", *arguments, adapter=None, **options)

    def host(self, *arguments):
        return ["--", sys.executable, self.directory / "host.py", *(arguments or ["end"])]

    def need_spy(self):
        if not (BUILD / "adapters/spy/libOSAdapt.so").exists():
            self.skipTest("built without the spy")

    def facts(self, output):
        return dict(line.split(" ", 1) for line in output.splitlines() if " " in line)

    def start_sim(self, *arguments):
        return self.start("sim", *arguments, adapter="virtual")

    def simulations(self):
        return list((self.directory / "kovasmgr").glob("*/control"))

    def wait_for_simulation(self):
        return wait_until(self.simulations, "the simulation")[0].parent


class Lists(SimTest):
    def test_the_ready_scenarios(self):
        lines = self.expect(0, self.sim("--list")).stdout.splitlines()
        self.assertEqual(10, len(lines))
        self.assertRegex("\n".join(lines), r"(?m)^modem +a modem: commands, ")

    def test_them_for_programs(self):
        answer = json.loads(self.expect(0, self.sim("--list", "--json")).stdout)
        self.assertEqual(1, answer["schema"])
        modem = next(s for s in answer["scenarios"] if s["name"] == "modem")
        self.assertTrue(modem["file"].endswith("/modem.toml"), modem)
        self.assertTrue(os.path.isfile(modem["file"]))

    def test_nothing_else_for_programs(self):
        self.expect(2, self.sim("mine.toml", "--json"), "--json has no meaning")


class Checks(SimTest):
    def test_files_and_ready_scenarios(self):
        output = self.expect(0, self.sim("--check", "mine.toml", "garbage")).stdout
        self.assertRegex(output, r"^mine\.toml: good\n.*/garbage\.toml: good\n$")

    def test_a_mistake_has_file_and_line(self):
        self.write(name="bad.toml", text=SCENARIO.replace("far = ", "fra = ", 1))
        result = self.expect(1, self.sim("--check", "mine.toml", "bad.toml"), "'fra'")
        self.assertRegex(result.stderr, r"^bad\.toml:9: ")
        self.assertEqual("mine.toml: good\n", result.stdout)

    def test_a_sentence_with_a_mistake_names_the_word(self):
        self.write(name="bad.toml", text=SCENARIO.replace("pull sensor", "pull sensr"))
        self.expect(1, self.sim("--check", "bad.toml"), "sensr")

    def test_what_is_not_there_and_the_others(self):
        self.expect(1, self.sim("--check", "nonsense"), "there is no scenario 'nonsense'")
        result = self.expect(1, self.sim("--check", "./nonsense", "mine.toml"), "there is no such file")
        self.assertEqual("mine.toml: good\n", result.stdout)

    def test_something(self):
        self.expect(2, self.sim("--check"), "--check needs scenarios")

    def test_before_a_host_is_run(self):
        self.write(name="bad.toml", text="nonsense = 1\n")
        result = self.expect(1, self.sim("bad.toml", *self.host()), "bad.toml:1: ")
        self.assertEqual("", result.stdout)


class RunsAHost(SimTest):
    def test_with_the_variables_set(self):
        result = self.sim("mine.toml", "--seed", "7", "--speed", "2.5", "--events", "e.jsonl",
                          *self.host())
        facts = self.facts(result.stdout)
        variables = dict(re.findall(r"'(\w+)': '([^']*)'", facts["variables"]))
        place = variables.pop("KOVASMGR_VIRTUAL_DIR")
        self.assertRegex(place, rf"^{self.directory}/kovasmgr/\d+$")
        self.assertEqual({"KOVASMGR_VIRTUAL_SCENARIO": str(self.directory / "mine.toml"),
                          "KOVASMGR_VIRTUAL_SEED": "7", "KOVASMGR_VIRTUAL_SPEED": "2.5",
                          "KOVASMGR_VIRTUAL_EVENTS": str(self.directory / "e.jsonl")}, variables)

    def test_where_it_finds_the_adapter(self):
        facts = self.facts(self.expect(0, self.sim("mine.toml", *self.host())).stdout)
        self.assertEqual(str((VIRTUAL / "libOSAdapt.so").resolve()), facts["adapter"])

    def test_with_as_many_descriptors_as_it_may_have(self):
        hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
        result = self.sim("mine.toml", *self.host(), preexec_fn=lambda: resource.setrlimit(
            resource.RLIMIT_NOFILE, (64, hard)))
        self.assertEqual(f"({hard}, {hard})", self.facts(self.expect(0, result).stdout)["descriptors"])

    def test_with_its_arguments_as_they_are(self):
        given = ["end", "--seed", "--", "[a,b]", "", "-h", "two words"]
        facts = self.facts(self.expect(0, self.sim("mine.toml", *self.host(*given))).stdout)
        self.assertEqual(str(given[1:]), facts["arguments"])

    def test_and_leaves_nothing_behind(self):
        facts = self.facts(self.expect(0, self.sim("mine.toml", *self.host())).stdout)
        self.assertFalse(os.path.exists(facts["directory"]))
        self.assertEqual([], os.listdir(self.directory / "kovasmgr"))

    def test_and_removes_what_a_killed_one_left(self):
        process = self.start_sim("mine.toml", "--", KOVASCTL, "--adapter", ".", "watch")
        self.wait_for_simulation()
        children = f"/proc/{process.pid}/task/{process.pid}/children"
        os.kill(int(Path(children).read_text(encoding="ascii")), signal.SIGKILL)
        self.assertEqual(128 + signal.SIGKILL, process.wait(60))
        self.assertEqual([], os.listdir(self.directory / "kovasmgr"))

    def test_keeps_what_a_failed_one_left(self):
        result = self.expect(3, self.sim("mine.toml", "--", "sh", "-c", "echo core > core; exit 3"),
                             "what the host left is in ")
        place = result.stderr.split(" is in ")[1].strip()
        self.assertEqual({"core", "KOVASMgr.log"}, set(os.listdir(place)))

    def test_keeps_what_any_left_beside_its_log(self):
        result = self.expect(0, self.sim("mine.toml", "--", "sh", "-c", "echo 1 > answer"),
                             "what the host left is in ")
        self.assertIn("answer", os.listdir(result.stderr.split(" is in ")[1].strip()))

    def test_in_a_directory_that_a_person_names(self):
        (self.directory / "here").mkdir()
        facts = self.facts(self.expect(0, self.sim("mine.toml", "--log-dir", "here",
                                                   *self.host())).stdout)
        self.assertEqual(str(self.directory / "here"), facts["directory"])
        self.assertEqual(["KOVASMgr.log"], os.listdir(self.directory / "here"))

    def test_in_one_that_is_made_for_it(self):
        self.expect(0, self.sim("mine.toml", "--log-dir", "new/here/", *self.host()))
        self.assertEqual(["KOVASMgr.log"], os.listdir(self.directory / "new/here"))
        self.assertEqual(0o700, stat.S_IMODE((self.directory / "new/here").stat().st_mode))

    def test_that_is_named_from_where_the_person_stands(self):
        program = self.directory / "program"
        program.write_text("#!/bin/sh\necho here\n", encoding="utf-8")
        program.chmod(0o700)
        self.assertEqual("here\n", self.expect(0, self.sim("mine.toml", "--", "./program")).stdout)

    def test_and_ends_with_its_status(self):
        self.expect(7, self.sim("mine.toml", "--", "sh", "-c", "exit 7"), "what the host left")
        self.expect(128 + 9, self.sim("mine.toml", "--", "sh", "-c", "kill -9 $$"), "what the host")

    def test_that_cannot_be_started(self):
        self.expect(1, self.sim("mine.toml", "--", "./nonsense"),
                    "./nonsense cannot be started: No such file or directory")

    def test_in_a_place_that_the_person_has_chosen(self):
        self.environment["KOVASMGR_VIRTUAL_DIR"] = str(self.control)
        facts = self.facts(self.expect(0, self.sim("mine.toml", *self.host())).stdout)
        self.assertIn(f"'KOVASMGR_VIRTUAL_DIR': '{self.control}'", facts["variables"])

    def test_and_passes_signals_on(self):
        for number in (signal.SIGTERM, signal.SIGUSR1):
            process = self.start_sim("mine.toml", *self.host("wait"))
            wait_until(lambda: process.stdout.readline() == "waiting\n", "the host")
            process.send_signal(number)
            self.assertEqual((f"told {number.name}\n", ""), process.communicate(timeout=60))
            self.assertEqual(0, process.returncode)

    def test_and_stops_it_when_the_scenario_has_ended(self):
        # The tool itself is a host that runs until it is told to end.
        watch = [KOVASCTL, "--adapter", ".", "watch", "--initial"]
        result = self.sim("mine.toml", "--speed", "2", "--stop", "--", *watch)
        self.expect(0, result)
        self.assertEqual(4, len(result.stdout.splitlines()), result.stdout)

    def test_that_is_ended_so_though_it_has_no_handler(self):
        command = f"'{KOVASCTL}' --adapter . watch --timeout 2 & exec sleep 60"
        result = self.sim("mine.toml", "--speed", "5", "--stop", "--", "sh", "-c", command)
        self.expect(0, result)

    def test_and_makes_it_end_that_does_not_obey(self):
        command = f"trap '' TERM; exec '{KOVASCTL}' --adapter . watch"
        result = self.sim("mine.toml", "--speed", "5", "--stop", "--", "sh", "-c", command)
        self.expect(128 + signal.SIGKILL, result, "what the host left")

    def test_on_a_recording_of_the_spy(self):
        self.need_spy()
        self.environment["KOVASMGR_SPY_ADAPTER"] = "linux"  # is not meant for simulations
        (self.directory / "calls.jsonl").write_text("stale\n", encoding="utf-8")
        listing = [KOVASCTL, "--adapter", ".", "list", "--names"]
        result = self.sim("mine.toml", "--recording", "calls.jsonl", "--", *listing)
        self.assertEqual("bench-0\nsensor-0\n", self.expect(0, result).stdout)
        result = self.sim("calls.jsonl", "--", *listing)
        self.assertEqual("bench-0\nsensor-0\n", self.expect(0, result).stdout)


class IsNotReached(SimTest):
    """Where nothing answers, it says so and ends."""

    def test_by_a_path_that_is_too_long(self):
        self.environment["KOVASMGR_VIRTUAL_DIR"] = str(self.directory / ("x" * 100))
        for arguments in ([], ["--stop", "--", "sleep", "60"]):
            self.expect(1, self.sim("mine.toml", *arguments), "the path is too long for a socket")

    def test_in_time(self):
        host = self.start("sim", "mine.toml", "--stop", "--", "sleep", "60", adapter=None)
        (self.directory / "file").touch()
        self.environment["KOVASMGR_VIRTUAL_DIR"] = str(self.directory / "file")
        result = self.expect(1, self.sim("mine.toml"), "the simulation does not answer in ")
        self.assertRegex(result.stderr, "(?m)^  reason: devices cannot be plugged and pulled: ")
        self.assertIn("--stop has ended a host that does not use the devices", host.communicate()[1])
        self.assertEqual(1, host.returncode)


class LeavesFiles(SimTest):
    def test_of_this_run_or_fails(self):
        self.need_spy()
        for option, what in (("--events", "no events in "), ("--recording", "no recording in ")):
            file = self.directory / "out.jsonl"
            file.write_text("stale\n", encoding="utf-8")
            self.expect(1, self.sim("mine.toml", option, "out.jsonl", *self.host()), what)
            self.assertEqual("", file.read_text(encoding="utf-8"))
            file.unlink()

    def test_or_has_failed_already(self):
        result = self.sim("mine.toml", "--events", "e.jsonl", "--", "sh", "-c", "exit 7")
        self.expect(7, result, "no events in ")

    def test_of_a_host_that_was_stopped_in_order(self):
        watch = [KOVASCTL, "--adapter", ".", "watch"]
        result = self.sim("mine.toml", "--speed", "5", "--stop", "--events", "e.jsonl", "--", *watch)
        self.expect(0, result)
        self.assertIn("plug sensor", (self.directory / "e.jsonl").read_text(encoding="utf-8"))

    def test_only_where_they_can_be(self):
        for option in ("--events", "--recording"):
            for place, reason in (("nowhere/e", "No such file or directory"), (".", "s a directory"),
                                  ("/dev/null", "it is not a regular file"),
                                  ("mine.toml", "it is the scenario")):
                with self.subTest(option=option, place=place):
                    result = self.expect(2, self.sim("mine.toml", option, place, *self.host()), reason)
                    self.assertEqual("", result.stdout)
        self.assertEqual(SCENARIO.replace("{end}", "1s"),
                         (self.directory / "mine.toml").read_text(encoding="utf-8"))

    def test_never_over_a_recording_that_the_scenario_plays(self):
        receive = [KOVASCTL, "--adapter", ".", "receive", "sensor-0", "--count", "6"]
        self.expect(0, self.sim("mine.toml", "--recording", "was.jsonl", "--", *receive))
        recording = (self.directory / "was.jsonl").read_text(encoding="utf-8")
        (self.directory / "played.toml").write_text(
            '[[device]]\nname = "old"\n[[device.port]]\nname = "old-0"\nfar = "recording"\n'
            'file = "was.jsonl"\nport = "sensor-0"\n', encoding="utf-8")
        for option in ("--events", "--recording"):
            with self.subTest(option=option):
                self.expect(2, self.sim("played.toml", option, "was.jsonl", *self.host()),
                            "the scenario plays it")
        self.assertEqual(recording, (self.directory / "was.jsonl").read_text(encoding="utf-8"))

    def test_each_in_one_of_its_own(self):
        self.expect(2, self.sim("mine.toml", "--events", "e", "--recording", "./e"), "the events go there")

    def test_but_never_over_another_hosts_recording(self):
        file = self.directory / "calls.jsonl"
        with file.open("w", encoding="utf-8") as held:
            held.write("its calls\n")
            held.flush()
            fcntl.flock(held, fcntl.LOCK_EX)
            self.expect(2, self.sim("mine.toml", "--recording", "calls.jsonl"), "another host writes")
        self.assertEqual("its calls\n", file.read_text(encoding="utf-8"))


class IsAHost(SimTest):
    def test_that_shows_what_happens_until_the_end(self):
        output = self.expect(0, self.sim("mine.toml", "--events", "e.jsonl")).stdout
        time = r" +\d+\.\d{3}  "
        for line in (r"= present      bench  \(bench-0\)", r"  opened       bench-0",
                     r"- removed      sensor  \(sensor-0\)", r"\+ added        sensor  \(sensor-0\)",
                     r'> received     sensor-0  "tick\\r\\n.*"'):
            self.assertRegex(output, rf"(?m)^{time}{line}$")
        events = (self.directory / "e.jsonl").read_text(encoding="utf-8")
        self.assertIn('"event":"pull sensor"', events)
        self.assertIn('"track":"bench-0","n":1,"event":"open"', events)

    def test_that_an_interrupt_ends_in_order(self):
        self.write(end="1000s")
        process = self.start_sim("mine.toml", "--events", "e.jsonl")
        wait_until(lambda: "opened" in process.stdout.readline(), "an open port")
        process.send_signal(signal.SIGINT)
        self.assertEqual(128 + signal.SIGINT, process.wait(60), process.stderr.read())
        self.assertIn("open", (self.directory / "e.jsonl").read_text(encoding="utf-8"))
        self.assertEqual([], os.listdir(self.directory / "kovasmgr"))

    def test_that_tries_again_to_open(self):
        self.write(text=SCENARIO.replace("'at 300ms", "'at 0s fail open of bench-0 2 times', 'at 300ms"))
        output = self.expect(0, self.sim("mine.toml")).stdout
        self.assertLess(output.index("refused      bench-0"), output.index("opened       bench-0"))


class IsDriven(SimTest):
    def setUp(self):
        super().setUp()
        quiet = SCENARIO.replace("'at 300ms pull sensor', 'at 600ms plug sensor'", "")
        self.write(end="1000s", text=quiet)
        self.process = self.start_sim("mine.toml")
        self.place = self.wait_for_simulation()
        self.wait_for_line("opened       sensor-0")

    def wait_for_line(self, part):
        wait_until(lambda: part in self.process.stdout.readline(), part)

    def do(self, *words):
        return self.sim("--do", *words)

    def test_by_words_or_a_sentence(self):
        self.assertEqual("ok\n", self.expect(0, self.do("pull", "sensor")).stdout)
        self.wait_for_line("- removed      sensor")
        self.assertEqual("ok\n", self.expect(0, self.do("plug sensor")).stdout)
        self.wait_for_line("+ added        sensor")

    def test_with_bytes(self):
        for words in (['send "one two\\r" to sensor-0'], ["send", "one two\\r", "to", "sensor-0"]):
            self.expect(0, self.do(*words))
            self.wait_for_line("one two\\r")

    def test_and_paused(self):
        self.expect(0, self.do("pause"))
        self.assertIn("state paused\n", self.expect(0, self.do("status")).stdout)
        self.expect(0, self.do("continue"))
        self.assertIn("state running\n", self.expect(0, self.do("status")).stdout)

    def test_by_its_process_or_place(self):
        for option in (["--pid", str(self.process.pid)], ["--dir", str(self.place)]):
            output = self.expect(0, self.sim("--do", "list", *option)).stdout
            self.assertIn('device "bench" present', output)

    def test_unless_it_refuses(self):
        result = self.expect(1, self.do("pull", "nonsense"))
        self.assertRegex(result.stdout, "^error .*nonsense")
        self.expect(2, self.do('send "never closed'), "a quote is not closed")

    def test_unless_there_is_none(self):
        result = self.expect(2, self.sim("--do", "status", "--dir", "/nonsense"), "No such file")
        self.assertRegex(result.stderr, "^kovasctl: /nonsense/")
        self.expect(2, self.sim("--do", ""), "kovasctl: --do needs a COMMAND")


class Refuses(SimTest):
    def test_what_makes_no_sense(self):
        for arguments, reason in (
                ([], "sim needs a SCENARIO"), (["mine.toml", "host"], "a host stands behind '--'"),
                (["mine.toml", "more", "--", "host"], "host; 'kovasctl sim --help' explains"),
                (["--check", "--list"], "excludes"), (["--pid", "1", "mine.toml"], "requires --do"),
                (["mine.toml", "--speed", "0"], "'0' is not 0.001 to 1000"),
                (["mine.toml", "--seed", "-1"], "'-1' is no number"),
                (["mine.toml", "--seed", "9223372036854775808"], "is no number"),
                (["mine.toml", "--stop"], "--stop needs a host"),
                (["--adapter", "linux", "mine.toml"], "sim takes --adapter virtual or --adapter spy"),
                (["--adapter", VIRTUAL, "mine.toml", "--", "true"], "never real ports"),
                (["--adapter", "virtual", "mine.toml", "--recording", "x"], "--recording takes")):
            with self.subTest(arguments=arguments):
                self.expect(2, self.sim(*arguments), reason)

    def test_a_base_directory_that_others_can_write_to(self):
        (self.directory / "kovasmgr").mkdir()
        (self.directory / "kovasmgr").chmod(stat.S_IRWXU | stat.S_IRWXO)
        self.expect(1, self.sim("mine.toml"), "is no directory of yours alone")


if __name__ == "__main__":
    unittest.main()
