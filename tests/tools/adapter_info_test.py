# SPDX-License-Identifier: MIT
"""kovasctl adapter-info."""

import struct
import unittest

from kit import BUILD, VIRTUAL, KovasctlTest

FAKES = BUILD / "tests/fakes"
ADAPTERS = BUILD / "tests/tools/adapters"
FUNCTIONS = ("OS_ADAPT_RegisterDeviceStateProcessCallBack",
             "OS_ADAPT_UnRegisterDeviceStateProcessCallBack", "OS_ADAPT_OpenPort",
             "OS_ADAPT_ClosePort", "OS_ADAPT_Write", "OS_ADAPT_Read", "OS_ADAPT_EnumDevicePortInfo")


class AdapterInfo(KovasctlTest):
    def info(self, *arguments, status=0):
        return self.expect(status, self.run_tool("adapter-info", *arguments, adapter=None)).stdout

    def test_shows_a_good_adapter_by_name_and_by_directory(self):
        for place in ("virtual", VIRTUAL):
            with self.subTest(place=place):
                text = self.info(place)
                size = (VIRTUAL / "libOSAdapt.so").stat().st_size
                self.assertIn(f"file {VIRTUAL}/libOSAdapt.so, {size} bytes\n", text)
                self.assertIn("good     loads\n", text)
                for function in FUNCTIONS:
                    self.assertIn(f"good     {function} found\n", text)
                self.assertIn("OSADAPT_SetLine not there", text)

    def test_opens_nothing(self):
        self.info("virtual")
        self.assertFalse(self.control.exists())
        self.assertFalse(self.state.exists())

    def test_shows_whether_lines_can_be_set(self):
        self.assertIn("OSADAPT_SetLine found", self.info(ADAPTERS / "recording"))

    def test_shows_each_missing_function(self):
        for function in FUNCTIONS:
            with self.subTest(function=function):
                text = self.info(FAKES / f"lacks_{function}", status=1)
                self.assertIn(f"problem  {function} missing\n", text)
                self.assertEqual(6, text.count(" found\n"))

    def test_survives_an_adapter_that_crashes(self):
        text = self.info(ADAPTERS / "crashing", status=1)
        self.assertIn("problem  does not load: loading it crashes (Aborted)\n", text)

    def test_survives_an_adapter_that_hangs(self):
        text = self.info(ADAPTERS / "hanging", status=1)
        self.assertIn("problem  does not load: loading it does not end\n", text)

    def test_shows_a_file_that_is_no_library(self):
        (self.directory / "libOSAdapt.so").write_text("no library", encoding="utf-8")
        text = self.info(".", status=1)
        self.assertIn("problem  it is not a library (no ELF file)\n", text)
        self.assertIn("does not load: ", text)

    def test_shows_a_library_of_another_machine(self):
        library = bytearray((VIRTUAL / "libOSAdapt.so").read_bytes()[:4096])
        struct.pack_into("<H", library, 18, 243)  # e_machine: RISC-V
        (self.directory / "libOSAdapt.so").write_bytes(library)
        text = self.info(self.directory, status=1)
        self.assertIn("problem  it is of another kind: ELF 64-bit shared object, risc-v\n", text)

    def test_shows_an_empty_directory(self):
        text = self.info(self.directory, status=1)
        self.assertIn("problem  there is none of libOSAdapt.so, OSAdapt.so, OSAdapt\n", text)

    def test_takes_the_names_in_the_librarys_order(self):
        for name in ("OSAdapt", "OSAdapt.so", "libOSAdapt.so"):
            (self.directory / name).symlink_to(VIRTUAL / "libOSAdapt.so")
            self.assertIn(f"/{name}, ", self.info(self.directory))

    def test_gives_json(self):
        result = self.run_tool("adapter-info", FAKES / "complete", "--json", adapter=None)
        self.expect(0, result)
        self.assertIn('{"subject":"adapter","level":"good","text":"OS_ADAPT_Read found","mend":""}',
                      result.stdout)

    def test_refuses_what_is_no_directory(self):
        for place in ("nowhere", "/etc/passwd", ""):
            with self.subTest(place=place):
                self.expect(2, self.run_tool("adapter-info", place, adapter=None), "kovasctl: ")
        self.expect(2, self.run_tool("adapter-info", adapter=None), "DIR is required")
        self.expect(2, self.run_tool("adapter-info", "virtual"), "--adapter has no meaning")


if __name__ == "__main__":
    unittest.main()
