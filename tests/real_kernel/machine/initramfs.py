# SPDX-License-Identifier: MIT
"""Builds the guest's file system: busybox, udev, kernel modules, and the programs under test with
the libraries that they need."""

import re
import subprocess
from pathlib import Path

from cpio_archive import CpioArchive

MODULES = (
    "virtio_pci", "virtio_console",        # the line to the driver
    "xhci-pci", "ftdi_sio", "cdc-acm",     # ports
    "dummy_hcd", "usb_f_acm", "usb_f_serial",  # devices that the guest plugs into itself
)

# dummy_hcd: so many devices can be plugged in at a time.
MODULE_OPTIONS = {"dummy_hcd": "num=3"}

PASSWD = "root:x:0:0:root:/root:/bin/sh\nguest:x:1000:1000:guest:/tmp:/bin/sh\n"
GROUPS = ("root:x:0:", "tty:x:5:", "disk:x:6:", "lp:x:7:", "dialout:x:20:", "cdrom:x:24:",
          "floppy:x:25:", "tape:x:26:", "audio:x:29:", "video:x:44:", "kmem:x:15:", "input:x:104:",
          "sgx:x:105:", "kvm:x:106:", "render:x:107:", "guest:x:1000:")


def _libraries(program):
    shown = subprocess.run(["ldd", program], capture_output=True, text=True, check=False).stdout
    return re.findall(r"(/\S+) \(0x", shown)


def _add_program(archive, name, source):
    archive.copy(name, source)
    for library in _libraries(source):
        archive.copy(library, library)


def _add_modules(archive, kernel):
    lines = []
    for module in kernel.modules(*MODULES):
        archive.copy(f"/modules/{Path(module).name}", module)
        name = Path(module).stem
        lines.append(f"{Path(module).name} {MODULE_OPTIONS.get(name, '')}".strip())
    archive.text("/modules/list", "\n".join(lines) + "\n")


def _add_udev(archive, tree):
    _add_program(archive, "/bin/udevadm", tree / "bin/udevadm")
    archive.link("/lib/systemd/systemd-udevd", "/bin/udevadm")
    for rules in sorted((tree / "lib/udev/rules.d").iterdir()):
        archive.copy(f"/lib/udev/rules.d/{rules.name}", rules)


def _add_system(archive):
    for directory in ("/dev", "/proc", "/sys", "/run", "/tmp", "/root", "/etc"):
        archive.directory(directory)
    archive.copy("/bin/busybox", "/bin/busybox")
    archive.text("/etc/passwd", PASSWD)
    archive.text("/etc/group", "\n".join(GROUPS) + "\n")


def build(path, kernel, udev, init, program, adapter, environment, files):
    """Writes the file system to path: `program` holds the scenarios, `adapter` is what it loads,
    `files` are in the same place as here."""
    with open(path, "wb") as file:
        archive = CpioArchive(file)
        _add_system(archive)
        _add_udev(archive, udev)
        _add_modules(archive, kernel)
        _add_program(archive, "/guest/scenarios", program)
        _add_program(archive, "/guest/libOSAdapt.so", adapter)
        archive.text("/guest/environment", "".join(f"export {line}\n" for line in environment))
        archive.copy("/init", init)
        for file in files:
            archive.copy(str(file), file)
        archive.close()
