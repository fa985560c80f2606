# SPDX-License-Identifier: MIT
"""What is connected to the far side of a plugged adapter's line."""

import socket
import threading

PATTERN_SIZE = 1 << 20


def pattern(size):
    """The byte at each place depends on the place: a lost, doubled or moved one is seen."""
    return bytes((at ^ (at >> 8) * 7 ^ (at >> 16) * 13) & 0xFF for at in range(size))


PATTERN = pattern(PATTERN_SIZE)


class FarEnd:
    """Takes whatever arrives, always: an adapter whose far end does not read would stop QEMU."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(path)
        self._received = bytearray()
        self._changed = threading.Condition()
        threading.Thread(target=self._take, daemon=True).start()

    def clear(self):
        with self._changed:
            self._received.clear()

    def send(self, size):
        threading.Thread(target=self._socket.sendall, args=(PATTERN[:size],), daemon=True).start()

    def expect(self, size, seconds):
        """Waits for so many bytes of the pattern; RuntimeError says what came instead."""
        with self._changed:
            self._changed.wait_for(lambda: len(self._received) >= size, seconds)
            received = bytes(self._received)
        if received != PATTERN[:size]:
            at = next((i for i, pair in enumerate(zip(received, PATTERN)) if pair[0] != pair[1]),
                      min(size, len(received)))
            raise RuntimeError(f"{len(received)} bytes of {size} came, wrong from {at}")

    def _take(self):
        while data := self._socket.recv(1 << 16):
            with self._changed:
                self._received += data
                self._changed.notify_all()
