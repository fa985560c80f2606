# SPDX-License-Identifier: MIT
"""The Python binding on the virtual adapter, with real terminals.

    python_test.py MODULE_DIRECTORY LIBRARY ADAPTER [unittest arguments]
"""

import ctypes
import gc
import io
import os
import subprocess
import sys
import threading
import unittest
import warnings
from contextlib import redirect_stderr
from unittest import mock

from virtual_host import BOUND, VirtualHost, pattern, wait_until

MODULE, LIBRARY, ADAPTER = (sys.argv.pop(1) for _ in range(3))
os.environ["KOVASMGR_LIBRARY"] = LIBRARY
sys.path.insert(0, MODULE)

import kovasmgr  # noqa: E402  (found by the path above)
from kovasmgr import Device, Library, PortInfo, Snapshot, difference  # noqa: E402

VirtualHost.adapter = ADAPTER
MUCH = 200 * 1024


class Inbox:
    """A receiver that keeps what it got."""

    def __init__(self):
        self._data = bytearray()

    def __call__(self, data):
        self._data += data

    @property
    def data(self):
        return bytes(self._data)

    def wait_for(self, data):
        return wait_until(lambda: data in self._data)


def raw():
    """The C interface beside the binding."""
    return ctypes.CDLL(LIBRARY)


class Host(VirtualHost):
    def setUp(self):
        super().setUp()
        self.library = Library(self.directory)
        self.addCleanup(self.library.close)

    def open(self, name, receiver=None):
        port = self.library.open(self.library.snapshot().find_port(name), receiver)
        self.addCleanup(port.close)
        return port

    def is_open_in_c(self, number):
        return raw().KOVAMGR_Write(number, b"x", 1, 0, None) == 1


class ALibrary(Host):
    def test_lists_devices_with_their_ports(self):
        snapshot = self.library.snapshot()
        self.assertEqual(["modem", "sensor", "bench"], [d.name for d in snapshot.devices])
        self.assertEqual("A modem", snapshot.find_device("modem").text)
        self.assertEqual(PortInfo(4711, "far-0", 20100), snapshot.find_port("far-0"))
        self.assertIsNone(snapshot.find_port("modem"))
        self.assertIsNone(snapshot.find_device("far-0"))
        self.assertEqual(3, snapshot.present)

    def test_in_no_directory_is_a_bad_argument(self):
        self.library.close()
        for path in ("/no/such/directory", ""):
            with self.assertRaises(kovasmgr.BadArgument) as caught:
                Library(path)
            self.assertEqual(20001, caught.exception.code)

    def test_without_an_adapter_fails_and_can_be_tried_again(self):
        self.library.close()
        os.rename("libOSAdapt.so", "elsewhere.so")
        with self.assertRaisesRegex(kovasmgr.AdapterFailed, r"KOVASMgr\.log.*\(20002\)"):
            Library(self.directory)
        os.rename("elsewhere.so", "libOSAdapt.so")
        with Library(self.directory) as library:
            self.assertEqual(3, library.snapshot().present)

    def test_exists_once_at_a_time(self):
        with self.assertRaises(kovasmgr.AlreadyInitialised):
            Library(self.directory)
        self.assertEqual(3, self.library.snapshot().present)

    def test_closes_twice_and_is_made_again(self):
        self.library.close()
        self.library.close()
        with self.assertRaises(kovasmgr.NotInitialised):
            self.library.snapshot()
        for _ in range(3):
            with Library(self.directory) as library:
                self.assertEqual(3, library.snapshot().present)
        self.assertEqual(20003, raw().KOVAMGR_GetPortState(0))

    def test_that_is_closed_leaves_its_ports_without_effect_on_the_next_one(self):
        old = self.open("far-0")
        self.library.close()
        inbox = Inbox()
        with Library(self.directory) as library, library.open(4711, inbox):
            with self.assertRaises(kovasmgr.NotInitialised):
                old.write(b"x")
            old.close()
            self.far("far-0").send(b"still open")
            self.assertTrue(inbox.wait_for(b"still open"))

    def test_is_not_closed_from_a_callback(self):
        errors = []

        def receiver(_data):
            for call in (self.library.close, lambda: Library(self.directory)):
                try:
                    call()
                except (RuntimeError, kovasmgr.Error) as error:
                    errors.append(type(error))

        with self.open("sensor-0", receiver):
            self.assertTrue(wait_until(lambda: len(errors) >= 2))
        self.assertEqual([RuntimeError, kovasmgr.AlreadyInitialised], errors[:2])


class APort(Host):
    def test_has_a_dialogue_with_a_modem(self):
        inbox = Inbox()
        port = self.open("modem-at", inbox)
        self.assertEqual(4, port.write(b"ATI\r"))
        self.assertTrue(inbox.wait_for(b"Virtual modem\r\n"))
        self.assertTrue(inbox.wait_for(b"OK\r\n"))

    def test_receives_a_sensors_data(self):
        inbox = Inbox()
        with self.open("sensor-0", inbox):
            self.assertTrue(inbox.wait_for(b"reading 1\r\nreading 2\r\nreading 3\r\n"))

    def test_passes_all_byte_values(self):
        inbox = Inbox()
        self.assertEqual(256, self.open("echo-0", inbox).write(bytes(range(256))))
        self.assertTrue(inbox.wait_for(bytes(range(256))))

    def test_writes_all_kinds_of_bytes(self):
        port, far = self.open("far-0"), self.far("far-0")
        for data in (b"abc", bytearray(b"abc"), memoryview(b"xabcx")[1:4]):
            self.assertEqual(3, port.write(data))
            self.assertEqual(b"abc", far.receive(3))
        self.assertEqual(0, port.write(b""))

    def test_writes_200_kib_in_one_call(self):
        port, far, data, got = self.open("far-0"), self.far("far-0"), pattern(MUCH), []
        reader = threading.Thread(target=lambda: got.append(far.receive(MUCH)))
        reader.start()
        self.assertEqual(MUCH, port.write(data))
        reader.join()
        self.assertTrue(data == got[0])

    def test_receives_200_kib(self):
        inbox, data = Inbox(), pattern(MUCH)
        self.open("far-0", inbox)
        self.far("far-0").send(data)
        self.assertTrue(wait_until(lambda: len(inbox.data) >= MUCH, 3 * BOUND))
        self.assertTrue(data == inbox.data)

    def test_tells_how_much_was_sent_when_the_far_end_does_not_keep_up(self):
        data = pattern(MUCH)
        sent = self.open("far-0").write(data)
        self.assertTrue(0 < sent < MUCH, sent)
        self.assertTrue(data[:sent] == self.far("far-0").receive(sent))

    def test_that_does_not_exist_is_not_opened(self):
        for number in (4712, -1, 2 ** 40):
            for receiver in (None, Inbox()):
                with self.assertRaises(kovasmgr.BadArgument):
                    self.library.open(number, receiver)

    def test_is_prepared_and_opened_later(self):
        inbox = Inbox()
        with self.library.prepare(4711, inbox) as port:
            self.assertFalse(port.is_open)
            with self.assertRaises(kovasmgr.NotOpen):
                port.write(b"x")
            for _ in range(2):
                port.open()
                self.assertEqual(1, port.write(b"x"))
            self.far("far-0").send(b"to the receiver")
            self.assertTrue(inbox.wait_for(b"to the receiver"))
            port.close()
            port.open()
            self.assertEqual(1, port.write(b"x"))

    def test_stays_prepared_when_it_cannot_be_opened(self):
        self.command("pull bench")
        port = self.library.prepare(4711, Inbox())
        with self.assertRaises(kovasmgr.BadArgument):
            port.open()
        self.assertFalse(port.is_open)
        self.command("plug bench")
        port.open()
        self.assertEqual(1, port.write(b"x"))
        port.close()

    def test_closes_once_and_then_writes_no_more(self):
        port = self.open("far-0", Inbox())
        self.assertTrue(port.is_open)
        port.close()
        port.close()
        self.assertFalse(port.is_open)
        with self.assertRaises(kovasmgr.NotOpen):
            port.write(b"x")
        self.assertFalse(self.is_open_in_c(4711))

    def test_opened_twice_serves_both_and_is_closed_by_the_last(self):
        one, two = Inbox(), Inbox()
        first, second, far = self.open("far-0", one), self.open("far-0", two), self.far("far-0")
        far.send(b"both")
        self.assertTrue(one.wait_for(b"both") and two.wait_for(b"both"))
        first.close()
        far.send(b"second")
        self.assertTrue(two.wait_for(b"second"))
        self.assertEqual(b"both", one.data)
        self.assertTrue(self.is_open_in_c(4711))
        second.close()
        self.assertFalse(self.is_open_in_c(4711))

    def test_that_shares_its_port_leaves_nothing_behind_on_it(self):
        before, shared, other = Inbox(), Inbox(), Inbox()
        first = self.open("far-0", before)
        self.open("far-0", shared)
        first.close()
        self.open("far-1", other)  # by the same trampoline
        self.far("far-0").send(b"for one")
        self.assertTrue(shared.wait_for(b"for one"))
        self.assertEqual((b"", b""), (before.data, other.data))

    def test_whose_device_went_says_so(self):
        port = self.open("far-0", Inbox())
        self.command("pull bench")
        with self.assertRaises(kovasmgr.BadArgument) as caught:
            port.write(b"x")
        self.assertEqual(0, caught.exception.sent)
        port.close()

    def test_of_a_device_that_came_back_is_opened_anew(self):
        old, inbox = self.open("far-0", Inbox()), Inbox()
        self.command("replug bench")
        with self.assertRaises(kovasmgr.NotOpen):
            old.write(b"x")
        new = self.open("far-0", inbox)
        old.close()
        self.assertEqual(1, new.write(b"x"))
        self.far("far-0").send(b"again")
        self.assertTrue(inbox.wait_for(b"again"))

    def test_that_is_collected_is_closed_with_a_warning(self):
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            port = self.library.open(4711, Inbox())
            del port
            gc.collect()
        self.assertEqual([ResourceWarning], [w.category for w in caught])
        self.assertFalse(self.is_open_in_c(4711))

    def test_does_not_hold_up_other_threads_while_it_writes(self):
        port, steps, done = self.open("far-0"), [0], threading.Event()

        def count():
            while not done.is_set():
                steps[0] += 1
                done.wait(0.001)

        counter = threading.Thread(target=count)
        counter.start()
        port.write(pattern(MUCH))  # a second, since nobody receives
        done.set()
        counter.join()
        self.assertGreater(steps[0], 100)


class AWrite(Host):
    """With the library's function replaced, to see its calls and to fail."""

    def setUp(self):
        super().setUp()
        self.port = self.open("far-0")
        self.parts = []

    def write(self, size, *answers):
        """Each answer is a count, or (-1, reason); without one all is taken."""
        answers = list(answers)

        def function(_port, data, length, _extra, reason):
            self.parts.append(data[:length])
            answer = answers.pop(0) if answers else length
            if isinstance(answer, tuple):
                answer, ctypes.cast(reason, ctypes.POINTER(ctypes.c_long))[0] = answer
            return answer

        with mock.patch.object(kovasmgr._library(), "KOVAMGR_Write", function):
            return self.port.write(pattern(size))

    def test_is_split_into_calls_of_16384_bytes(self):
        self.assertEqual(36000, self.write(36000))
        self.assertEqual([16384, 16384, 3232], [len(part) for part in self.parts])
        self.assertTrue(pattern(36000) == b"".join(self.parts))

    def test_ends_with_a_short_count(self):
        self.assertEqual(16384 + 100, self.write(36000, 16384, 100))
        self.assertEqual(2, len(self.parts))

    def test_that_fails_in_the_middle_tells_what_was_sent(self):
        for answer, error in (((-1, 20002), kovasmgr.AdapterFailed), (20006, kovasmgr.NotOpen),
                              ((-1, 20001), kovasmgr.BadArgument), (20003, kovasmgr.NotInitialised)):
            with self.assertRaises(error) as caught:
                self.write(36000, 16384, answer)
            self.assertEqual(16384, caught.exception.sent)

    def test_never_counts_more_than_it_was_given(self):
        self.assertEqual(3, self.write(3, 9000))


class AReceiver(Host):
    def setUp(self):
        super().setUp()
        self.program = self.far("far-0")

    def test_writes_the_answer(self):
        port = self.library.prepare(4711, lambda data: port.write(b"got " + data))
        self.addCleanup(port.close)
        port.open()
        self.program.send(b"it")
        self.assertEqual(b"got it", self.program.receive(6))

    def test_runs_on_the_librarys_thread(self):
        threads = set()
        with self.open("sensor-0", lambda _: threads.add(threading.get_ident())):
            self.assertTrue(wait_until(lambda: threads))
        self.assertNotIn(threading.get_ident(), threads)

    def test_lists_opens_and_closes_other_ports(self):
        seen = []

        def receiver(_data):
            with self.library.open(self.library.snapshot().find_port("echo-0"), Inbox()) as other:
                seen.append(other.write(b"x"))

        self.open("far-0", receiver)
        self.program.send(b"x")
        self.assertTrue(wait_until(lambda: seen == [1]))

    def test_closes_its_own_port_and_lives_until_it_returns(self):
        seen = []

        def receiver(data):
            ports.pop().close()
            gc.collect()
            seen.append(data)

        ports = [self.library.prepare(4711, receiver)]
        ports[0].open()
        del receiver
        self.program.send(b"x")
        self.assertTrue(wait_until(lambda: seen))
        self.assertFalse(self.is_open_in_c(4711))

    def test_opens_its_own_port_anew(self):
        inbox, ports = Inbox(), []

        def receiver(_data):
            ports.pop().close()
            ports.append(self.library.open(4711, inbox))

        ports.append(self.library.prepare(4711, receiver))
        ports[0].open()
        self.program.send(b"first")
        self.assertTrue(wait_until(lambda: self.program.send(b"second") or b"second" in inbox.data))
        ports.pop().close()

    def test_does_not_run_any_more_once_the_port_is_closed(self):
        late = []
        for _ in range(50):
            is_over = threading.Event()
            port = self.open("sensor-0", lambda _, e=is_over: e.is_set() and late.append(1))
            port.close()
            is_over.set()
        self.assertEqual([], late)

    def test_is_waited_for_by_close(self):
        is_inside, has_left = threading.Event(), threading.Event()

        def receiver(_data):
            is_inside.set()
            threading.Event().wait(0.1)
            has_left.set()

        port = self.open("far-0", receiver)
        self.program.send(b"x")
        self.assertTrue(is_inside.wait(BOUND))
        port.close()
        self.assertTrue(has_left.is_set())

    def test_that_raises_is_reported_and_goes_on(self):
        seen, errors = [], io.StringIO()

        def receiver(data):
            seen.append(data)
            raise (SystemExit if len(seen) == 2 else ValueError)("my mistake")

        with redirect_stderr(errors):
            self.open("far-0", receiver)
            for count in (1, 2, 3):
                self.program.send(b"x")
                self.assertTrue(wait_until(lambda n=count: errors.getvalue().count("my mistake\n") == n))
        self.assertEqual(3, len(seen))
        self.assertEqual(3, errors.getvalue().count("kovasmgr: exception in a callback, on thread"))
        self.assertIn("ValueError: my mistake", errors.getvalue())
        self.assertIn("SystemExit: my mistake", errors.getvalue())

    def test_that_raises_is_told_to_the_hosts_own_function(self):
        self.library.close()
        errors = []
        with Library(self.directory, on_error=errors.append) as library:
            with library.open(4711, lambda _: 1 / 0):
                self.far("far-0").send(b"x")
                self.assertTrue(wait_until(lambda: errors))
        self.assertIsInstance(errors[0], ZeroDivisionError)

    def test_makes_no_watch_and_may_close_one(self):
        told, errors = [], []
        watch = self.library.watch(told.append)

        def receiver(_data):
            try:
                self.library.watch(told.append)
            except RuntimeError as error:
                errors.append(error)
            watch.close()

        self.open("far-0", receiver)
        self.program.send(b"x")
        self.assertTrue(wait_until(lambda: errors and watch.has_ended))
        self.command("pull sensor")
        self.assertEqual([], told)


class AWatch(Host):
    def setUp(self):
        super().setUp()
        self.told = []

    def test_tells_which_device_went_and_came(self):
        before = self.library.snapshot().find_device("sensor")
        with self.library.watch(self.told.append):
            self.command("pull sensor")
            self.command("plug sensor")
        went, came = self.told
        self.assertEqual(((before,), ()), (went.went, went.came))
        self.assertEqual(((self.library.snapshot().find_device("sensor"),), ()), (came.came, came.went))
        self.assertNotEqual(before.ports[0].id, came.came[0].ports[0].id)

    def test_tells_which_ports_went_and_came(self):
        with self.library.watch(self.told.append):
            self.command("unplug-port far-1")
            self.command("plug-port far-1")
        went, came = self.told
        self.assertEqual(["far-1"], [p.name for p in went.ports_went[0].ports])
        self.assertEqual(["far-1"], [p.name for p in came.ports_came[0].ports])
        self.assertEqual(((), ()), (went.went, came.came))

    def test_is_told_at_once_what_has_changed_since_a_snapshot(self):
        before = self.library.snapshot()
        self.command("pull sensor")
        with self.library.watch(self.told.append, before):
            self.assertEqual(["sensor"], [d.name for d in self.told[0].went])
            with self.library.watch(self.told.append, Snapshot()):
                self.assertEqual(["modem", "bench"], [d.name for d in self.told[1].came])

    def test_is_not_told_any_more_once_closed(self):
        other = []
        watch = self.library.watch(self.told.append)
        with self.library.watch(other.append):
            self.command("pull sensor")
            watch.close()
            watch.close()
            self.command("plug sensor")
        self.assertEqual((1, 2), (len(self.told), len(other)))

    def test_closed_in_its_own_watcher_costs_its_successor_nothing(self):
        calls = []

        def watcher(changes):
            first.close()
            calls.append(changes)

        first = self.library.watch(watcher)
        with self.library.watch(self.told.append):
            self.command("replug sensor")
        self.assertEqual((1, 2), (len(calls), len(self.told)))

    def test_that_raises_costs_the_others_nothing(self):
        errors = io.StringIO()
        with redirect_stderr(errors):
            with self.library.watch(lambda _: 1 / 0), self.library.watch(self.told.append):
                self.command("pull sensor")
        self.assertEqual(1, len(self.told))
        self.assertIn("ZeroDivisionError", errors.getvalue())

    def test_opens_the_new_port_at_once(self):
        inbox, ports = Inbox(), []

        def watcher(changes):
            for device in changes.came:
                ports.append(self.library.open(device.ports[0], inbox))

        with self.library.watch(watcher):
            self.command("replug sensor")
            self.assertTrue(inbox.wait_for(b"reading"))
        ports.pop().close()


class ManyPorts(Host):
    COUNT = 70

    def test_each_get_their_own_data(self):
        self.library.close()
        self.use_scenario("".join(
            (f'[[device]]\nname = "d{n}"\n' if n % 10 == 0 else "")
            + f'[[device.port]]\nname = "p{n}"\nfar = "echo"\n' for n in range(self.COUNT)))
        with Library(self.directory) as library:
            snapshot, boxes = library.snapshot(), [Inbox() for _ in range(self.COUNT)]
            ports = [library.open(snapshot.find_port(f"p{n}"), box) for n, box in enumerate(boxes)]
            for n, port in enumerate(ports):
                port.write(f"p{n};".encode())
            self.assertTrue(wait_until(lambda: all(box.data for box in boxes)))
            for n, box in enumerate(boxes):
                self.assertTrue(box.wait_for(f"p{n};".encode()))
                self.assertEqual(f"p{n};".encode(), box.data)
            for port in ports:
                port.close()

    def test_opened_one_after_the_other_need_one_trampoline(self):
        for _ in range(3):
            self.library.open(4711, Inbox()).close()
        before = len(kovasmgr._Trampoline._unused)
        for _ in range(100):
            self.library.open(4711, Inbox()).close()
        self.assertEqual(before, len(kovasmgr._Trampoline._unused))


class ADifference(unittest.TestCase):
    MODEM = Device("modem", "", (PortInfo(1, "m0"), PortInfo(2, "m1")))
    SENSOR = Device("sensor", "", (PortInfo(3, "s0"),))

    @staticmethod
    def between(before, after):
        return difference(Snapshot(tuple(before), len(before)), Snapshot(tuple(after), len(after)))

    def test_of_the_same_is_false(self):
        self.assertFalse(self.between([self.MODEM, self.SENSOR], [self.SENSOR, self.MODEM]))

    def test_shows_what_came_and_what_went(self):
        changes = self.between([self.MODEM], [self.SENSOR])
        self.assertEqual(((self.SENSOR,), (self.MODEM,)), (changes.came, changes.went))
        self.assertEqual(((), ()), (changes.ports_came, changes.ports_went))

    def test_shows_a_device_that_was_away_twice(self):
        again = Device("modem", "", (PortInfo(7, "m0"), PortInfo(8, "m1")))
        changes = self.between([self.MODEM], [again])
        self.assertEqual(((again,), (self.MODEM,)), (changes.came, changes.went))

    def test_shows_the_ports_of_a_device_that_stays(self):
        less = Device("modem", "", (PortInfo(1, "m0"),))
        lost = (Device("modem", "", (PortInfo(2, "m1"),)),)
        self.assertEqual(kovasmgr.Changes(ports_went=lost), self.between([self.MODEM], [less]))
        self.assertEqual(kovasmgr.Changes(ports_came=lost), self.between([less], [self.MODEM]))


class AProcess(VirtualHost):
    """What takes a process of its own."""

    def run_python(self, text, environment=None):
        prelude = f"import sys; sys.path.insert(0, {MODULE!r}); import kovasmgr\n"
        return subprocess.run([sys.executable, "-c", prelude + text], env=environment, text=True,
                              capture_output=True, timeout=60, check=False)

    def test_that_ends_without_closing_is_closed_at_its_end(self):
        result = self.run_python(
            "library = kovasmgr.Library('.')\n"
            "port = library.open(library.snapshot().find_port('sensor-0'), lambda data: None)\n")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertIn("LEAVE CKOVASMgrPort::Release()", self.log())

    def test_whose_receiver_hangs_closes_all_the_same_and_goes_on(self):
        result = self.run_python(
            "import threading, time\n"
            "inside, leave, left = (threading.Event() for _ in range(3))\n"
            "def receiver(data):\n"
            "    inside.set(); leave.wait(); left.set()\n"
            "library = kovasmgr.Library('.')\n"
            "port = library.open(library.snapshot().find_port('sensor-0'), receiver)\n"
            "inside.wait()\n"
            "start = time.monotonic()\n"
            "library.close()\n"
            "print('closed', time.monotonic() - start < 10)\n"
            "leave.set(); print('left', left.wait(10))\n"
            "with kovasmgr.Library('.') as library: print(library.snapshot().present)\n")
        self.assertEqual("", result.stderr)
        lines = [line for line in result.stdout.splitlines() if not line.startswith("----")]
        self.assertEqual(["closed True", "left True", "3"], lines)
        self.assertEqual(0, result.returncode)

    def test_without_the_library_says_what_to_do(self):
        result = self.run_python("kovasmgr.Library('.')",
                                 dict(os.environ, KOVASMGR_LIBRARY="/no/such/file.so"))
        self.assertEqual(1, result.returncode)
        self.assertIn("OSError: libKOVASMgr cannot be loaded (/no/such/file.so", result.stderr)
        self.assertIn("KOVASMGR_LIBRARY", result.stderr)

    def test_can_import_the_module_without_the_library(self):
        environment = dict(os.environ, KOVASMGR_LIBRARY="/no/such/file.so")
        self.assertEqual(0, self.run_python("", environment).returncode)


if __name__ == "__main__":
    sys.exit(unittest.main())
