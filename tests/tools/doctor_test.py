# SPDX-License-Identifier: MIT
"""kovasctl doctor."""

import fcntl
import os
import pty
import shutil
import subprocess
import sys
import unittest

from kit import BUILD, KOVASCTL, NO_DEVICE, VIRTUAL, KovasctlTest, wait_until

FAKES = BUILD / "tests/fakes"
NOBODY = 65534

PORT = """
[[device]]
name = "cable"
[[device.port]]
name = "{name}"
far = "silent"
"""


class Doctor(KovasctlTest):
    def node(self):
        """A terminal of the system, which is the name of the one port."""
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        name = os.ttyname(slave)
        os.close(slave)
        self.scenario(PORT.format(name=name))
        return name

    def findings(self, *arguments, status=0, **options):
        result = self.expect(status, self.run_tool("doctor", *arguments, **options))
        return result.stdout

    def as_nobody(self, *arguments):
        """Runs as a user without privileges, who may open nothing by being root."""
        if os.geteuid() != 0:
            return self.run_tool(*arguments)
        shutil.chown(self.directory, NOBODY, NOBODY)
        command = [str(KOVASCTL), "--adapter", "virtual", *arguments]

        def drop():
            os.setgroups([])
            os.setgid(NOBODY)
            os.setuid(NOBODY)

        probe = subprocess.run([shutil.which("test"), "-x", str(VIRTUAL / "libOSAdapt.so")],
                               preexec_fn=drop, check=False)
        if probe.returncode != 0:
            self.skipTest(f"user {NOBODY} cannot reach {BUILD}")
        return subprocess.run(command, cwd=self.directory, env=self.environment, text=True,
                              capture_output=True, timeout=60, check=False, preexec_fn=drop)

    def test_is_content_with_devices_that_open(self):
        text = self.findings()
        self.assertIn(f"directory {VIRTUAL} (chosen: virtual)", text)
        self.assertIn(f"file {VIRTUAL}/libOSAdapt.so", text)
        self.assertEqual(7, text.count("  good     OS_ADAPT_"))
        self.assertEqual(7, text.count(" found\n"))
        self.assertIn("bench-echo\n  good     identifier 1, of bench\n  good     opens\n", text)
        self.assertNotIn("problem", text)

    def test_looks_at_one_port_when_asked(self):
        text = self.findings("sensor")
        self.assertIn("sensor-0\n  good     identifier 3", text)
        self.assertNotIn("bench-echo", text)

    def test_says_what_a_host_would_load_that_is_started_here(self):
        (self.directory / "libOSAdapt.so").symlink_to(VIRTUAL / "libOSAdapt.so")
        self.assertIn(f"a host that is started in {self.directory} loads "
                      f"{self.directory}/libOSAdapt.so\n", self.findings())

    def test_gives_json(self):
        report = self.succeed_json("doctor", "sensor")
        self.assertEqual((1, True), (report["schema"], report["good"]))
        self.assertIn({"subject": "sensor-0", "level": "good", "text": "opens", "mend": ""},
                      report["findings"])

    def test_finds_a_port_that_nobody_may_open(self):
        node = self.node()
        os.chmod(node, 0)
        result = self.as_nobody("doctor")
        self.assertEqual(1, result.returncode, result.stderr)
        self.assertRegex(result.stdout, rf"{node}\n  good .*\n  problem  permission denied "
                                        r"\(mode 0000, group \w+\): no access rule gives it to a group")
        self.assertIn("sudo tee /etc/udev/rules.d/70-kovasmgr.rules", result.stdout)

    @unittest.skipUnless(os.geteuid() == 0, "only root is let through and needs to be told")
    def test_tells_root_that_nobody_else_may_open_a_port(self):
        node = self.node()
        os.chmod(node, 0)
        text = self.findings()
        self.assertIn("root may open it (mode 0000", text)
        self.assertIn("note     nobody but root may: no access rule gives it to a group", text)

    @unittest.skipUnless(os.geteuid() == 0, "only root can give a node to a group")
    def test_names_the_group_that_the_user_is_not_in(self):
        node = self.node()
        shutil.chown(node, "root", "dialout")
        os.chmod(node, 0o660)
        result = self.as_nobody("doctor")
        self.assertEqual(1, result.returncode, result.stderr)
        self.assertIn("permission denied (mode 0660, group dialout): you are not in the group\n"
                      "           mend: sudo usermod -aG dialout nobody, then log in again\n",
                      result.stdout)

    def test_names_who_holds_a_port_with_an_exclusive_lock(self):
        node = self.node()
        with open(node, "rb", buffering=0) as terminal:
            fcntl.flock(terminal, fcntl.LOCK_EX)
            text = self.findings(status=1)
        process = os.getpid()
        self.assertIn(f"problem  held with an exclusive lock by process {process} (", text)
        self.assertIn(f"mend: close it there, or: kill {process}\n", text)

    def test_names_who_holds_a_port_open(self):
        node = self.node()
        hold = "import sys; f = open(sys.argv[1]); print('open', flush=True); sys.stdin.read()"
        with subprocess.Popen([sys.executable, "-c", hold, node], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True) as holder:
            self.assertEqual("open\n", holder.stdout.readline())
            text = self.findings(status=1)
            holder.stdin.close()
        self.assertIn(f"problem  held open by process {holder.pid} (", text)

    def test_finds_nothing_against_a_free_port_and_does_not_open_it(self):
        text = self.findings(self.node())
        self.assertIn("holds it\n", text)
        self.assertNotIn("opens", text)

    def test_opens_a_node_when_asked(self):
        self.assertIn("  good     opens\n", self.findings(self.node(), "--open"))

    def test_says_that_a_device_is_gone(self):
        self.scenario(PORT.format(name="/dev/pts/99999"))
        text = self.findings(status=1)
        self.assertIn("problem  the device is gone: there is no such node\n"
                      "           mend: attach it again", text)

    def test_says_so_also_of_a_port_that_the_adapter_does_not_list(self):
        text = self.findings("/dev/ttyGONE0", status=1)
        self.assertIn("/dev/ttyGONE0\n  problem  no port fits '/dev/ttyGONE0'", text)
        self.assertIn("problem  the device is gone", text)

    def test_says_when_there_is_no_device(self):
        self.scenario(NO_DEVICE)
        self.assertIn("devices\n  problem  no device is there\n", self.findings(status=1))

    def test_says_why_the_adapter_has_no_device(self):
        self.scenario("nonsense")
        self.assertIn("reason: no devices, the scenario has a mistake", self.findings(status=1))

    def test_finds_a_missing_function(self):
        text = self.findings(adapter=FAKES / "lacks_OS_ADAPT_Read", status=1)
        self.assertIn("problem  OS_ADAPT_Read missing\n           mend: rebuild it", text)
        self.assertEqual(6, text.count(" found\n"))

    def test_finds_a_file_that_is_no_library(self):
        (self.directory / "libOSAdapt.so").write_text("no library", encoding="utf-8")
        text = self.findings(adapter=".", status=1)
        self.assertIn("problem  it is not a library (no ELF file)", text)
        self.assertIn("problem  does not load: ", text)

    def test_finds_a_modem_manager_that_waits_for_the_port(self):
        node = self.node()
        number = os.stat(node).st_rdev
        name = f"c{os.major(number)}:{os.minor(number)}"
        note = "E:ID_MM_CANDIDATE=1\\nE:ID_VENDOR_ID=0403\\nE:ID_MODEL_ID=6001\\n"
        script = (f"mount -t tmpfs none /run && mkdir -p /run/udev/data && "
                  f"printf '{note}' > /run/udev/data/{name} && exec \"$0\" --adapter virtual doctor")
        if subprocess.run(["unshare", "-m", "mount", "-t", "tmpfs", "none", "/run"],
                          capture_output=True, check=False).returncode != 0:
            self.skipTest("no mount namespace for a /run of its own")
        program = self.directory / "ModemManager"
        shutil.copy(shutil.which("sleep"), program)
        with subprocess.Popen([str(program), "60"]) as manager:
            wait_until(lambda: open(f"/proc/{manager.pid}/comm", encoding="utf-8").read()
                       == "ModemManager\n", "the name of the process")
            result = subprocess.run(["unshare", "-m", "sh", "-c", script, str(KOVASCTL)],
                                    env=self.environment, cwd=self.directory, text=True,
                                    capture_output=True, timeout=60, check=False)
            manager.kill()
        self.expect(0, result)
        self.assertIn("note     ModemManager runs and may grab it", result.stdout)
        self.assertIn('ATTRS{idVendor}=="0403", ATTRS{idProduct}=="6001", '
                      'ENV{ID_MM_DEVICE_IGNORE}="1"', result.stdout)


if __name__ == "__main__":
    unittest.main()
