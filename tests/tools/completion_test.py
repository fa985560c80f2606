# SPDX-License-Identifier: MIT
"""Completion and the manual know what the tool knows."""

import re
import shutil
import subprocess
import unittest

from kit import KOVASCTL, ROOT, KovasctlTest

ROOM = ROOT / "tools/kovasctl"
BASH = ROOM / "completions/kovasctl.bash"
ZSH = ROOM / "completions/_kovasctl"
MANUAL = ROOM / "kovasctl.1.scd"


class Completion(KovasctlTest):
    def commands(self):
        part = self.succeed("--help").split("Subcommands:\n")[1].split("\n\n")[0]
        return [line.split()[0] for line in part.splitlines() if line.strip()]

    def options(self, *command):
        text = self.succeed(*command, "--help").split("Options:\n")[1].split("\n\n")[0]
        return set(re.findall(r"(?:^  |,)(--[a-z-]+)", text, re.MULTILINE)) - {"--help"}

    def complete(self, *words):
        """What bash offers for the last word."""
        script = (f"source '{BASH}'; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
                  "_kovasctl; printf '%s\\n' \"${COMPREPLY[@]}\"")
        environment = {**self.environment, "PATH": f"{KOVASCTL.parent}:{self.environment['PATH']}"}
        result = subprocess.run(["bash", "-c", script, "bash", "kovasctl", *words], env=environment,
                                cwd=self.directory, capture_output=True, text=True, timeout=60,
                                check=False)
        self.assertEqual("", result.stderr)
        return set(result.stdout.split())

    def test_files_parse(self):
        subprocess.run(["bash", "-n", BASH], check=True)
        if shutil.which("zsh"):
            subprocess.run(["zsh", "-n", ZSH], check=True)

    def test_offers_every_command(self):
        self.assertEqual(set(self.commands()), self.complete(""))
        self.assertEqual({"adapter-info"}, self.complete("--adapter", "virtual", "adap"))

    def test_offers_every_option_of_every_command(self):
        general = self.options()
        self.assertEqual(general | {"--help"}, self.complete("--"))
        for command in self.commands():
            with self.subTest(command=command):
                offered = self.complete(command, "--")
                self.assertEqual(self.options(command), offered - general - {"--help"})

    def test_offers_the_ports_that_are_there(self):
        self.assertEqual({"bench-echo", "bench-far"},
                         self.complete("--adapter", "virtual", "send", "bench"))
        self.assertEqual({"sensor-0"}, self.complete("receive", "--adapter", "virtual", "s"))

    def test_offers_scenarios_and_files(self):
        self.assertEqual({"modem"}, self.complete("sim", "mod"))
        self.assertEqual({"devices.toml"}, self.complete("sim", "--check", "modem", "dev"))

    def test_offers_values(self):
        self.assertEqual({"cr", "lf", "crlf"}, self.complete("send", "x", "--eol", ""))
        self.assertEqual({"virtual"}, self.complete("--adapter", "v"))
        self.assertEqual({"devices.toml"}, self.complete("send", "x", "--file", "dev"))

    def test_understands_options_that_are_written_with_an_equals_sign(self):
        # Bash gives "=" as a word of its own.
        self.assertEqual({"cr", "lf", "crlf"}, self.complete("receive", "--eol", "=", ""))
        self.assertEqual({"cr", "lf", "crlf"}, self.complete("receive", "--eol", "="))
        self.assertEqual({"sensor-0"}, self.complete("receive", "--adapter", "=", "virtual", "s"))

    def test_zsh_and_the_manual_name_every_command_and_option(self):
        for path in (ZSH, MANUAL):
            text = path.read_text(encoding="utf-8").replace("\\", "")
            for command in self.commands():
                self.assertRegex(text, rf"(?<![\w-]){command}(?![\w-])", path)
                for option in self.options(command) | self.options():
                    with self.subTest(file=path.name, command=command, option=option):
                        self.assertIn(option, text)

    @unittest.skipUnless(shutil.which("scdoc"), "scdoc is not installed")
    def test_the_manual_is_a_page(self):
        page = subprocess.run(["scdoc"], input=MANUAL.read_bytes(), capture_output=True, check=True)
        self.assertIn(b'.TH "kovasctl" "1"', page.stdout)
        self.assertEqual(b"", page.stderr)


if __name__ == "__main__":
    unittest.main()
