# SPDX-License-Identifier: MIT
"""What all commands have in common: help, messages, exit statuses, standard streams."""

import os
import re
import subprocess
import unittest

from kit import BUILD, KOVASCTL, ROOT, KovasctlTest

COMMANDS = ("list", "watch", "term", "send", "receive", "doctor", "adapter-info", "stats",
            "sim")
RECORDING = BUILD / "tests/tools/adapters/recording"


class CommandLine(KovasctlTest):
    def test_shows_the_version_of_the_header(self):
        header = (ROOT / "include/KOVASMgr.h").read_text(encoding="utf-8")
        version = ".".join(re.findall(r"#define KOVASMGR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header))
        self.assertEqual(f"kovasctl {version}\n", self.succeed("--version"))

    def test_shows_all_commands(self):
        text = self.succeed("--help")
        for command in COMMANDS:
            self.assertRegex(text, rf"\n  {command} +\w")
        self.assertIn("Usage: kovasctl ", text)

    def test_shows_help_with_an_example_for_each_command(self):
        for command in COMMANDS:
            with self.subTest(command=command):
                text = self.succeed(command, "--help")
                self.assertIn(f"Usage: kovasctl {command} ", text)
                self.assertIn(f"Examples:\n  kovasctl {command}", text)

    def test_takes_global_options_before_and_behind_the_command(self):
        before = self.run_tool("--json", "list", adapter="virtual")
        behind = self.run_tool("list", "--json", "--adapter", "virtual", adapter=None)
        self.assertEqual(before.stdout, self.expect(0, behind).stdout)

    def test_refuses_what_makes_no_sense(self):
        for arguments, reason in (
                ([], "A subcommand is required; 'kovasctl --help' explains"),
                (["lits"], "there is no command 'lits'; 'kovasctl --help' explains"),
                (["list", "--all"], "--all; 'kovasctl list --help' explains"),
                (["list", "more"], "more; 'kovasctl list --help' explains"),
                (["send"], "PORT is required"), (["receive"], "PORT is required"),
                (["term"], "PORT is required"), (["--adapter"], "--adapter"),
                (["term", "x", "--json"], "--json has no meaning for term"),
                (["receive", "x", "--json"], "--json has no meaning for receive"),
                (["--log-dir", "devices.toml", "list"], "devices.toml is no directory")):
            with self.subTest(arguments=arguments):
                result = self.expect(2, self.run_tool(*arguments), f"{reason}")
                self.assertTrue(result.stderr.startswith("kovasctl: "), result.stderr)
                self.assertEqual("", result.stdout)

    def test_names_the_result_code_when_the_library_refuses(self):
        result = self.run_tool("list", adapter=BUILD / "tests/fakes/lacks_OS_ADAPT_Read")
        self.expect(1, result, "cannot be used: KOVAMGR_ERR_OSADAPT (20002)\n"
                               "  reason: it lacks OS_ADAPT_Read\n  log: ")

    def test_says_why_an_adapter_does_not_load(self):
        (self.directory / "libOSAdapt.so").write_text("no library", encoding="utf-8")
        self.expect(1, self.run_tool("list", adapter="."), "  reason: ")

    def test_keeps_what_adapters_and_library_print_out_of_standard_output(self):
        self.assertEqual("recorder-0\n", self.succeed("list", "--names", adapter=RECORDING))

    def run_shell(self, redirection):
        command = f"'{KOVASCTL}' --adapter virtual list {redirection}"
        return subprocess.run(["sh", "-c", command], env=self.environment, cwd=self.directory,
                              capture_output=True, text=True, timeout=60, check=False)

    def test_survives_standard_streams_that_are_closed(self):
        self.expect(1, self.run_shell(">&-"), "standard output: Bad file descriptor")
        self.assertIn("bench", self.expect(0, self.run_shell("<&- 2>&-")).stdout)
        self.assertEqual(1, self.run_shell("<&- >&- 2>&-").returncode)

    def test_fails_when_standard_output_is_full(self):
        self.expect(1, self.run_shell(">/dev/full"), "standard output: No space left on device")

    def test_leaves_nothing_where_the_person_stands(self):
        before = sorted(os.listdir(self.directory))
        self.succeed("list")
        self.assertEqual(before + ["state"], sorted(os.listdir(self.directory)))


if __name__ == "__main__":
    unittest.main()
