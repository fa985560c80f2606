# SPDX-License-Identifier: MIT
"""Which adapter is loaded, from where."""

import shutil
import unittest

from kit import ADAPTERS_FROM_PROGRAM, BUILD, KOVASCTL, VIRTUAL, KovasctlTest

CRASHING = BUILD / "tests/tools/adapters/crashing"


class Place(KovasctlTest):
    def program_in(self, tree):
        (self.directory / tree / "bin").mkdir(parents=True)
        return shutil.copy(KOVASCTL, self.directory / tree / "bin/kovasctl")

    def adapter_in(self, *parts):
        directory = self.directory.joinpath(*parts)
        directory.mkdir(parents=True, exist_ok=True)
        (directory / "libOSAdapt.so").symlink_to(VIRTUAL / "libOSAdapt.so")

    def expect_devices(self, *arguments, **options):
        self.assertIn("bench-echo", self.succeed("list", *arguments, **options))

    def test_a_library_where_the_person_stands_is_not_loaded(self):
        (self.directory / "libOSAdapt.so").symlink_to(CRASHING / "libOSAdapt.so")
        self.expect_devices()

    def test_but_is_when_asked_for(self):
        self.adapter_in("here")
        self.expect_devices(adapter=".", cwd=self.directory / "here")

    def test_a_name_means_the_adapter_and_not_a_directory_of_that_name(self):
        (self.directory / "virtual").mkdir()
        self.expect_devices(adapter="virtual")

    def test_a_name_of_ours_is_not_looked_for_where_the_person_stands(self):
        program = self.program_in("prefix")
        self.adapter_in("virtual")
        self.expect(2, self.run_tool("list", adapter="virtual", program=program), "neither")
        self.expect_devices(adapter="./virtual", program=program)

    def test_a_path_that_is_no_directory_is_wrong_use(self):
        self.expect(2, self.run_tool("list", adapter="/nonsense"), "/nonsense is no directory")

    def test_a_directory_is_taken_from_where_the_person_stands(self):
        self.adapter_in("mine")
        self.expect_devices(adapter="mine")
        self.expect_devices(adapter="./mine/../mine")
        self.expect_devices(adapter=self.directory / "mine")

    def test_a_directory_without_an_adapter_is_refused(self):
        self.expect(1, self.run_tool("list", adapter="."), "holds no adapter (libOSAdapt.so)")

    def test_neither_name_nor_directory_is_wrong_use(self):
        self.expect(2, self.run_tool("list", adapter="nonsense"),
                    "nonsense is neither a directory nor an adapter in ")

    def test_in_a_build_tree_its_own_adapters_are_found(self):
        program = self.program_in("build")
        (self.directory / "build/CMakeCache.txt").touch()
        self.adapter_in("build/adapters/linux")
        self.adapter_in("build/adapters/mine")
        self.expect_devices(adapter=None, program=program)
        self.expect_devices(adapter="mine", program=program)

    def test_in_an_installed_tree_its_own_adapters_are_found(self):
        program = self.program_in("prefix")
        self.adapter_in("prefix/bin", ADAPTERS_FROM_PROGRAM)
        self.adapter_in("prefix/bin", ADAPTERS_FROM_PROGRAM, "virtual")
        self.expect_devices(adapter=None, program=program)
        self.expect_devices(adapter="virtual", program=program)

    def test_in_an_installed_tree_no_build_trees_adapters_are_looked_for(self):
        program = self.program_in("prefix")
        self.adapter_in("prefix/adapters/mine")
        self.expect(2, self.run_tool("list", adapter="mine", program=program), "neither")

    def test_a_relative_scenario_is_taken_from_where_the_person_stands(self):
        self.environment["KOVASMGR_VIRTUAL_SCENARIO"] = "devices.toml"
        self.expect_devices()


if __name__ == "__main__":
    unittest.main()
