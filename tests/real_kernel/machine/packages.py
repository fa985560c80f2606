# SPDX-License-Identifier: MIT
"""Fetches what the guest is made of, a Debian kernel and udev, and unpacks it into a cache."""

import lzma
import os
import re
import shutil
import struct
import subprocess
from pathlib import Path

KERNEL = "linux-image-amd64"  # depends on the current one; the "cloud" kernels have no USB


def _output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def _kernel_package():
    found = re.search(r"Depends: (linux-image-\S+)", _output("apt-cache", "depends", KERNEL))
    if not found:
        raise RuntimeError(f"apt knows no {KERNEL}")
    return found.group(1)


def _download(package, directory):
    command = ["apt-get", "-q", "download", package]
    done = subprocess.run(command, cwd=directory, capture_output=True, text=True, check=False)
    if done.returncode != 0 and os.geteuid() == 0:
        # What the package lists name may be gone from the server.
        subprocess.run(["apt-get", "-q", "update"], capture_output=True, check=False)
        done = subprocess.run(command, cwd=directory, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"apt cannot download {package}: {done.stderr.strip()}")


def _unpack(package, directory):
    """Downloads and unpacks a package, once."""
    if not directory.is_dir():
        part = directory.with_suffix(".part")
        shutil.rmtree(part, ignore_errors=True)
        part.mkdir(parents=True)
        _download(package, part)
        archive = next(part.glob("*.deb"))
        subprocess.run(["dpkg", "-x", archive, part], check=True)
        archive.unlink()
        part.rename(directory)
    return directory


def _vmlinux(image):
    """The kernel inside a bzImage: started as it is, it need not unpack itself, which takes an
    emulated machine seconds."""
    data = image.read_bytes()
    setup_sectors = data[0x1F1] or 4
    offset, length = struct.unpack_from("<II", data, 0x248)
    start = (setup_sectors + 1) * 512 + offset
    return lzma.LZMADecompressor().decompress(data[start:start + length])


class Kernel:
    """`image` to boot, and modules()."""

    def __init__(self, cache):
        package = _kernel_package()
        self._tree = _unpack(package, Path(cache) / package)
        self.version = package.removeprefix("linux-image-")
        self.image = self._tree / "vmlinux"
        if not self.image.exists():
            subprocess.run(["/sbin/depmod", "-b", self._tree, self.version], check=True)
            self.image.write_bytes(_vmlinux(self._tree / f"boot/vmlinuz-{self.version}"))

    def modules(self, *names):
        """The files of these modules and of all that they need, in the order of loading."""
        shown = _output("/sbin/modprobe", "-d", str(self._tree), "-S", self.version, "-a",
                        "--show-depends", *names)
        return list(dict.fromkeys(re.findall(r"^insmod (\S+)", shown, re.MULTILINE)))


def udev(cache):
    """The directory that udev is unpacked in."""
    return _unpack("udev", Path(cache) / "udev")
