# SPDX-License-Identifier: MIT
"""Writes a "newc" cpio archive, which is what a kernel unpacks as its first file system."""

import os
import stat
from pathlib import Path


class CpioArchive:
    """Everything in it belongs to root, whoever writes it."""

    def __init__(self, file):
        self._file = file
        self._names = set()

    def directory(self, name):
        name = name.strip("/")
        if name and name not in self._names:
            self.directory(os.path.dirname(name))
            self._entry(name, stat.S_IFDIR | 0o755)

    def text(self, name, content, mode=0o644):
        self._file_entry(name, content.encode(), mode)

    def link(self, name, target):
        self._file_entry(name, target.encode(), 0o777, stat.S_IFLNK)

    def copy(self, name, source):
        """A file; what the source links to, where it is a link."""
        source = Path(source)
        mode = 0o755 if os.access(source, os.X_OK) else 0o644
        self._file_entry(name, source.read_bytes(), mode)

    def close(self):
        self._entry("TRAILER!!!", 0)

    def _file_entry(self, name, content, mode, kind=stat.S_IFREG):
        name = name.strip("/")
        if name not in self._names:
            self.directory(os.path.dirname(name))
            self._entry(name, kind | mode, content)

    def _entry(self, name, mode, content=b""):
        self._names.add(name)
        encoded = name.encode() + b"\0"
        fields = (len(self._names), mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(encoded), 0)
        header = b"070701" + b"".join(b"%08X" % field for field in fields)
        for part in (header + encoded, content):
            self._file.write(part + b"\0" * (-len(part) % 4))
