# SPDX-License-Identifier: MIT
"""The emulated machine."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time

from far_end import FarEnd
from qmp import Qmp

PROGRAM = "qemu-system-x86_64"
LINES = 2          # serial adapters that can be plugged in at a time
START_SECONDS = 20
_PR_SET_PDEATHSIG = 1

# Never KVM: /dev/kvm may exist and be of no use.
OPTIONS = ("-M", "q35", "-accel", "tcg,thread=multi", "-cpu", "qemu64", "-smp", "2", "-m", "512",
           "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
           "-device", "qemu-xhci,id=x", "-device", "virtio-serial-pci")
KERNEL_LINE = "console=ttyS0 quiet panic=-1 mitigations=off"


def _end_with_parent():
    """Nobody else would end the machine when this process is killed."""
    ctypes.CDLL(None).prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


class Machine:
    """Runs while the object is used in a `with`."""

    def __init__(self, kernel, initramfs, console):
        self._directory = tempfile.mkdtemp(prefix="kovasmgr-")  # socket paths must be short
        self._command = [PROGRAM, *OPTIONS, "-kernel", str(kernel), "-initrd", str(initramfs),
                         "-append", KERNEL_LINE, "-serial", f"file:{console}",
                         "-qmp", f"unix:{self._path('qmp')},server=on,wait=off",
                         *self._socket("steering"),
                         "-device", "virtserialport,chardev=steering,name=steering"]
        for line in range(LINES):
            self._command += self._socket(f"line{line}")

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdin=subprocess.DEVNULL,
                                         preexec_fn=_end_with_parent)
        try:
            self._wait_for_sockets()
            self.qmp = Qmp(self._path("qmp"))
            self.lines = [FarEnd(self._path(f"line{line}")) for line in range(LINES)]
            self.steering = socket.socket(socket.AF_UNIX)
            self.steering.connect(self._path("steering"))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        shutil.rmtree(self._directory, ignore_errors=True)

    def plug(self, line, serial):
        properties = {"serial": serial} if serial else {}
        self.lines[line].clear()
        self.qmp.plug("usb-serial", f"serial{line}", bus="x.0", port=str(line + 1),
                      chardev=f"line{line}", **properties)

    def pull(self, line):
        self.qmp.pull(f"serial{line}")

    def _path(self, name):
        return os.path.join(self._directory, name)

    def _socket(self, name):
        return ["-chardev", f"socket,id={name},path={self._path(name)},server=on,wait=off"]

    def _wait_for_sockets(self):
        end = time.monotonic() + START_SECONDS
        while not os.path.exists(self._path(f"line{LINES - 1}")):
            if self._process.poll() is not None:
                raise RuntimeError(f"{PROGRAM} ended with {self._process.returncode}")
            if time.monotonic() > end:
                raise RuntimeError(f"{PROGRAM} does not start")
            time.sleep(0.01)
