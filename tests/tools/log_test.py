# SPDX-License-Identifier: MIT
"""Where the log goes, and when it stays."""

import os
import stat
import subprocess
import unittest

from kit import NO_DEVICE, KovasctlTest


class Log(KovasctlTest):
    def test_of_a_run_that_went_well_is_removed(self):
        self.succeed("list")
        self.assertEqual([], list(self.state.glob("kovasctl/*")))

    def test_of_a_run_that_failed_is_kept_and_named(self):
        self.scenario("nonsense")
        result = self.expect(1, self.run_tool("list"), "no device is there")
        kept = self.kept_logs()
        self.assertEqual(1, len(kept))
        self.assertIn(f"\n  log: {kept[0]}\n", result.stderr)
        self.assertIn("ERRO:OSAdapt: ", kept[0].read_text(encoding="utf-8"))

    def test_is_in_a_directory_that_is_private_to_the_process(self):
        process = self.start("watch", "--initial")
        process.stdout.readline()
        directory, = self.state.glob("kovasctl/*")
        self.assertTrue(directory.name.startswith(f"{process.pid}-"))
        self.assertEqual(0o700, directory.stat().st_mode & 0o777)

    def test_of_an_interrupted_run_is_removed(self):
        process = self.start("watch", "--initial")
        process.stdout.readline()
        process.terminate()
        process.wait(60)
        self.assertEqual([], list(self.state.glob("kovasctl/*")))

    def test_the_oldest_of_many_are_removed(self):
        self.scenario("nonsense")
        for number in range(13):
            directory = self.state / "kovasctl" / f"999999999-{number:06}"
            directory.mkdir(parents=True)
            (directory / "KOVASMgr.log").touch()
            os.utime(directory, (number, number))
        self.expect(1, self.run_tool("list"), "log: ")
        names = sorted(path.name for path in self.state.glob("kovasctl/999999999-*"))
        self.assertEqual([f"999999999-{number:06}" for number in range(3, 13)], names)

    def test_goes_where_the_person_says_and_stays(self):
        (self.directory / "logs").mkdir()
        self.succeed("list", "--log-dir", "logs")
        text = (self.directory / "logs/KOVASMgr.log").read_text(encoding="utf-8")
        self.assertIn("LEAVE CKOVASMgrPort::Release()", text)
        self.assertFalse(self.state.exists())

    def test_goes_to_a_directory_that_is_made_for_it(self):
        self.succeed("list", "--log-dir", "new")
        self.assertTrue((self.directory / "new/KOVASMgr.log").exists())
        self.assertEqual(0o700, stat.S_IMODE((self.directory / "new").stat().st_mode))

    def test_cannot_go_where_nothing_can_be_written(self):
        self.expect(2, self.run_tool("list", "--log-dir", "/proc"), "--log-dir: /proc/KOVASMgr.log: ")

    def test_gives_no_reason_of_an_earlier_run(self):
        (self.directory / "KOVASMgr.log").write_text("[] ERRO:OSAdapt: long ago\n", encoding="utf-8")
        self.scenario(NO_DEVICE)
        result = self.expect(1, self.run_tool("list", "--log-dir", "."), "no device is there")
        self.assertNotIn("long ago", result.stderr)

    def test_goes_elsewhere_when_there_is_no_state_directory(self):
        (self.directory / "file").touch()
        (self.directory / "tmp").mkdir()
        self.environment.update(XDG_STATE_HOME=str(self.directory / "file"),
                                TMPDIR=str(self.directory / "tmp"))
        process = self.start("watch", "--initial", stderr=subprocess.PIPE)
        process.stdout.readline()
        directory, = (self.directory / "tmp").iterdir()
        self.assertTrue((directory / "KOVASMgr.log").exists())
        process.terminate()
        process.wait(60)
        self.assertEqual([], list((self.directory / "tmp").iterdir()))


if __name__ == "__main__":
    unittest.main()
