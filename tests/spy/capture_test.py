# SPDX-License-Identifier: MIT
"""The capture file, taken apart by the rules of its format."""

import os
import stat
import struct
import sys
import time
import unittest

from spy_kit import OK, SpyTest

SECTION, INTERFACE, PACKET = 0x0A0D0D0A, 1, 6
ORDER = "<" if sys.byteorder == "little" else ">"
USER0 = 147
INBOUND, OUTBOUND = 1, 2


def unpack(layout, data):
    return struct.unpack(ORDER + layout, data[:struct.calcsize(ORDER + layout)])


def options(data):
    found = {}
    while data:
        code, length = unpack("HH", data)
        if code == 0:
            assert length == 0 and len(data) == 4, "the end of the options is the end of the block"
            return found
        found[code] = data[4:4 + length]
        padded = (length + 3) // 4 * 4
        assert not any(data[4 + length:4 + padded]), "padding is zero"
        data = data[4 + padded:]
    raise AssertionError("options without an end")


def blocks(data):
    """Kind and body of each block, whose length stands at both of its ends."""
    while data:
        kind, length = unpack("II", data)
        assert length % 4 == 0 and 12 <= length <= len(data), f"length {length} of {len(data)}"
        assert unpack("I", data[length - 4:])[0] == length
        yield kind, data[8:length - 4]
        data = data[length:]


class Section:
    def __init__(self, body):
        magic, major, minor, length = unpack("IHHq", body)
        assert (magic, major, minor, length) == (0x1A2B3C4D, 1, 0, -1)
        self.options = options(body[16:])
        self.interfaces = []  # names
        self.packets = []  # (name, direction, nanoseconds, data)

    def add_interface(self, body):
        link, reserved, limit = unpack("HHI", body)
        assert (link, reserved, limit) == (USER0, 0, 0)
        found = options(body[8:])
        assert found[9] == b"\x09", "nanoseconds"
        self.interfaces.append(found[2].decode())

    def add_packet(self, body):
        interface, high, low, captured, original = unpack("IIIII", body)
        assert captured == original
        padded = (captured + 3) // 4 * 4
        flags, = unpack("I", options(body[20 + padded:])[2])
        self.packets.append((self.interfaces[interface], flags, high << 32 | low,
                             body[20:20 + captured]))


def sections(data):
    found = []
    for kind, body in blocks(data):
        if kind == SECTION:
            found.append(Section(body))
        elif kind == INTERFACE:
            found[-1].add_interface(body)
        else:
            assert kind == PACKET, kind
            found[-1].add_packet(body)
    return found


class Capture(SpyTest):
    def test_has_what_went_over_each_port(self):
        started = time.time_ns()
        host = self.running_host(PCAP=self.capture)
        for port in ("bench-echo", "bench-far"):
            self.assertEqual(OK, host.open(port))
            self.assertEqual(OK, host.listen(port))
        self.assertEqual("5 0", host.write("bench-echo", "hello"))
        self.assertEqual("yes", host.received("hello"))
        self.assertEqual("3 0", host.write("bench-far", "bye"))
        self.finish(host)
        section, = sections(self.capture.read_bytes())
        self.assertEqual(["bench-echo", "bench-far"], section.interfaces)
        self.assertEqual([(OUTBOUND, b"hello")], self.data(section, "bench-echo", OUTBOUND))
        self.assertEqual(b"hello", b"".join(
            data for _, data in self.data(section, "bench-echo", INBOUND)))
        self.assertEqual([(OUTBOUND, b"bye")], self.data(section, "bench-far", OUTBOUND))
        times = [nanoseconds for _, _, nanoseconds, _ in section.packets]
        self.assertLess(started - 10**9, min(times))
        self.assertLess(max(times), time.time_ns() + 10**9)
        self.assertLess(times[0], times[1], "the echo comes behind")

    @staticmethod
    def data(section, port, direction):
        return [(flags, data) for name, flags, _, data in section.packets
                if (name, flags) == (port, direction)]

    def test_goes_on_when_the_host_begins_again(self):
        host = self.running_host(PCAP=self.capture)
        for port in ("bench-far", "bench-echo", "bench-far"):
            self.assertEqual(OK, host.open(port))
            self.assertEqual("3 0", host.write(port, "one"))
            self.assertEqual(OK, host.release())
            self.assertEqual(OK, host.init())
        self.finish(host)
        section, = sections(self.capture.read_bytes())
        self.assertEqual(["bench-far", "bench-echo"], section.interfaces)
        self.assertEqual(["bench-far", "bench-echo", "bench-far"],
                         [name for name, flags, _, _ in section.packets if flags == OUTBOUND])

    def test_another_host_begins_anew(self):
        for _ in range(2):
            host = self.running_host(PCAP=self.capture)
            host.open("bench-far")
            host.write("bench-far", "x")
            self.finish(host)
        self.assertEqual(1, len(sections(self.capture.read_bytes())))

    def test_is_for_its_owner_alone(self):
        host = self.running_host(PCAP=self.capture)
        host.open("bench-far")
        host.write("bench-far", "x")
        self.finish(host)
        self.assertEqual(0o600, stat.S_IMODE(os.stat(self.capture).st_mode))

    def test_that_cannot_be_written_is_one_line_in_the_log(self):
        host = self.running_host(PCAP="/dev/full")
        self.assertEqual(OK, host.open("bench-far"))
        for _ in range(3):
            self.assertEqual("1 0", host.write("bench-far", "x"))
        self.finish(host)
        self.assertEqual(1, self.log().count("No space left on device"))


if __name__ == "__main__":
    unittest.main()
