# SPDX-License-Identifier: MIT
"""KOVASMgr for Python: the communication ports of the attached devices.

    with kovasmgr.Library(".") as library:
        info = library.snapshot().find_port("virtual-modem-0")
        with library.open(info, on_data) as port, library.watch(on_changes):
            port.write(b"ATI\\r")

The module is a layer over libKOVASMgr; what devices there are is the business of the adapter, which
the library takes from the current directory or from the directory fixed when it was built. The
library is the file that the environment variable KOVASMGR_LIBRARY names, else the one that the
loader finds.

ERRORS
    Every failure is an Error with the library's code; each code has a class of its own. The reason
    behind an AdapterFailed is in KOVASMgr.log.

THREADS
    A Library is made and closed by one thread while no other is inside the library, and not from a
    callback. All else may be done by any thread at any time between the two. No call holds the
    interpreter's lock while it waits.

    Receivers run on the library's read thread: they may do everything but make or close a Library
    and make or close a Watch. Watchers run on the adapter's notifying thread: they may do everything
    but make or close a Library.

    - Once close() of a Port or Watch has returned, its callable does not run and will not: close()
      waits for a call under way on another thread. From inside its own callable it returns at once.
    - So: while closing, hold no lock that a callable may wait for. A receiver must not wait for a
      watcher.
    - An exception that leaves a callable goes to the Library's on_error, by default to standard
      error; the callable stays registered. SystemExit does not end the process either.
    - A thread that has run Python is never cancelled. A receiver that hangs lets Library.close()
      return after about 7 seconds all the same; the thread is then left alone.
    - A Library that is still open at the end of the process is closed by atexit.
"""

from __future__ import annotations

import atexit
import ctypes
import os
import sys
import threading
import traceback
import warnings
from collections.abc import Callable
from dataclasses import dataclass
from types import TracebackType
from typing import Any

__all__ = ["AdapterFailed", "AlreadyInitialised", "BadArgument", "Changes", "Device", "Error",
           "Library", "MAX_WRITE", "NotInitialised", "NotOpen", "Port", "PortInfo", "Snapshot",
           "Watch", "difference"]
__version__ = "1.0.0"

MAX_WRITE = 16384
"""Most bytes of one write of the library: a larger count could not be told from a result code."""

_OK = 20000


# Errors -----------------------------------------------------------------------------------------

class Error(Exception):
    """A call failed. code is the library's, sent the bytes that a write has sent before."""

    code: int = 0
    text: str = "failed"

    def __init__(self, what: str, code: int | None = None) -> None:
        self.code = type(self).code if code is None else code
        self.sent = 0
        super().__init__(f"{what}: {self.text} ({self.code})" if self.code else
                         f"{what}: {self.text}")


class BadArgument(Error):
    """A bad argument, or no such directory or port."""
    code, text = 20001, "bad argument, or no such directory or port"


class AdapterFailed(Error):
    """The adapter failed; KOVASMgr.log has the reason."""
    code, text = 20002, "the adapter failed, KOVASMgr.log has the reason"


class NotInitialised(Error):
    """There is no Library, or not this one any more."""
    code, text = 20003, "the library is not initialised"


class NotOpen(Error):
    """The port is not open (any more)."""
    code, text = 20006, "the port is not open"


class AlreadyInitialised(Error):
    """The process has a Library, or has initialised libKOVASMgr in another way."""
    text = "the library is initialised already"


_CLASSES: dict[int, type[Error]] = {
    c.code: c for c in (BadArgument, AdapterFailed, NotInitialised, NotOpen)}


def _error(what: str, code: int) -> Error:
    return _CLASSES.get(code, Error)(what, code)


def _check(what: str, result: int) -> None:
    if result != _OK:
        raise _error(what, result)


# What is attached -------------------------------------------------------------------------------

@dataclass(frozen=True)
class PortInfo:
    """A port; id is another one after the device was away."""
    id: int
    name: str
    type: int = 20100


@dataclass(frozen=True)
class Device:
    """A device; its name is unique."""
    name: str
    text: str
    ports: tuple[PortInfo, ...]


@dataclass(frozen=True)
class Snapshot:
    """What was attached at one moment. present may exceed the (at most 64) devices listed."""
    devices: tuple[Device, ...] = ()
    present: int = 0

    def find_device(self, name: str) -> Device | None:
        return next((device for device in self.devices if device.name == name), None)

    def find_port(self, name: str) -> PortInfo | None:
        """The port of this name, of whatever device."""
        return next((port for device in self.devices for port in device.ports
                     if port.name == name), None)


@dataclass(frozen=True)
class Changes:
    """What lies between two snapshots. A device that was away in between, all its ports having new
    identifiers, is in both of the first two."""
    came: tuple[Device, ...] = ()        # whole
    went: tuple[Device, ...] = ()        # as they were
    ports_came: tuple[Device, ...] = ()  # devices that stay, with only those ports that came
    ports_went: tuple[Device, ...] = ()  # devices that stay, with only those ports that went

    def __bool__(self) -> bool:
        return bool(self.came or self.went or self.ports_came or self.ports_went)


def difference(before: Snapshot, after: Snapshot) -> Changes:
    """What came and what went from one snapshot to a later one."""
    came, ports_came = _subtract(after, before)
    went, ports_went = _subtract(before, after)
    return Changes(came, went, ports_came, ports_went)


def _subtract(minuend: Snapshot, other: Snapshot) -> tuple[tuple[Device, ...], tuple[Device, ...]]:
    whole, parts = [], []
    for device in minuend.devices:
        same = other.find_device(device.name)
        rest = tuple(port for port in device.ports if same is None or port not in same.ports)
        if len(rest) == len(device.ports):  # a device stays when a port of it does
            whole.append(device)
        elif rest:
            parts.append(Device(device.name, device.text, rest))
    return tuple(whole), tuple(parts)


# The C interface --------------------------------------------------------------------------------

class _PortRecord(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char * 256), ("id", ctypes.c_int32), ("type", ctypes.c_int32)]


class _DeviceRecord(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char * 128), ("port_count", ctypes.c_uint32),
                ("ports", _PortRecord * 16), ("text", ctypes.c_char * 128)]


class _List(ctypes.Structure):
    _fields_ = [("count", ctypes.c_uint32), ("devices", _DeviceRecord * 64)]


_ReadCallback = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int)
_StateCallback = ctypes.CFUNCTYPE(None, ctypes.c_int)

_FUNCTIONS: dict[str, list[Any]] = {
    "KOVAMGR_Init": [ctypes.c_char_p],
    "KOVAMGR_Release": [],
    "KOVAMGR_RegisterDeviceStateProcessCallback": [_StateCallback],
    "KOVAMGR_RegisterCommDataReadCallback": [_ReadCallback, ctypes.c_int],
    "KOVAMGR_UnRegisterCommDataReadCallback": [_ReadCallback, ctypes.c_int],
    "KOVAMGR_Open": [ctypes.c_int],
    "KOVAMGR_Close": [ctypes.c_int],
    "KOVAMGR_Write": [ctypes.c_int, ctypes.c_char_p, ctypes.c_long, ctypes.c_long,
                      ctypes.POINTER(ctypes.c_long)],
    "KOVAMGR_GetPortState": [ctypes.c_int],
    "KOVAMGR_EnumeratePortInfo": [ctypes.POINTER(_List)],
}


def _load() -> ctypes.CDLL:
    named = os.environ.get("KOVASMGR_LIBRARY")
    name = named or ("libKOVASMgr.dylib" if sys.platform == "darwin" else "libKOVASMgr.so.1")
    try:
        library = ctypes.CDLL(name)
    except OSError as reason:
        hint = "as KOVASMGR_LIBRARY says" if named else "or let KOVASMGR_LIBRARY name the file"
        raise OSError(f"libKOVASMgr cannot be loaded ({reason}); install it, {hint}") from None
    for function, arguments in _FUNCTIONS.items():
        getattr(library, function).argtypes = arguments
        getattr(library, function).restype = ctypes.c_int
    return library


class _Session:
    """From KOVAMGR_Init to KOVAMGR_Release, shared by all objects of that time.

    Lock order: the library's device-state lock, lock, the library's port lock. One callback is
    registered for all watchers and for the whole time, so that none needs the first while it holds
    the second.
    """

    def __init__(self, on_error: Callable[[BaseException], None] | None) -> None:
        self.on_error = on_error
        self.is_alive = True
        self.lock = threading.RLock()  # held while watchers run
        self.watches: list[Watch] = []
        # Which objects have which port open. Only changed by operations that need no lock of ours:
        # a Port may end at any point of any thread, when it is collected.
        self.ports: dict[int, int] = {}

    def snapshot(self) -> Snapshot:
        record = _List()
        _check("snapshot", _library().KOVAMGR_EnumeratePortInfo(ctypes.byref(record)))
        return _snapshot_of(record)

    def tell(self) -> None:
        with self.lock:
            for watch in list(self.watches):  # they may come and go
                self.tell_one(watch)
            self.forget()

    def forget(self) -> None:
        self.watches = [watch for watch in self.watches if not watch.has_ended]

    def tell_one(self, watch: Watch) -> None:
        if watch.has_ended:
            return
        try:
            now = self.snapshot()
        except NotInitialised:
            return  # being released
        changes = difference(watch.before, now)
        watch.before = now
        if changes:
            self.call(watch.watcher, changes)

    def call(self, function: Callable[[Any], object], argument: object) -> None:
        try:
            function(argument)
        except BaseException as error:  # whatever it is, it must not go on into the library
            if self.on_error is None:
                _report(error)
            else:
                self.on_error(error)  # ctypes reports what this raises


def _report(error: BaseException) -> None:
    name = threading.current_thread().name
    print(f"kovasmgr: exception in a callback, on thread {name}:", file=sys.stderr)
    traceback.print_exception(error)


def _snapshot_of(record: _List) -> Snapshot:
    devices = (record.devices[i] for i in range(min(record.count, 64)))
    return Snapshot(tuple(_device_of(device) for device in devices), record.count)


def _device_of(record: Any) -> Device:
    ports = (record.ports[i] for i in range(min(record.port_count, 16)))
    return Device(os.fsdecode(record.name), os.fsdecode(record.text),
                  tuple(PortInfo(port.id, os.fsdecode(port.name), port.type) for port in ports))


# Callbacks --------------------------------------------------------------------------------------

_thread = threading.local()  # what runs on this thread: is_calling, is_receiving


def _is(what: str) -> bool:
    return getattr(_thread, what, False)


class _Marked:
    """Marks the thread while a callback runs on it, and keeps thread cancellation away from it for
    good: cancellation must not unwind an interpreter."""

    def __init__(self, *marks: str) -> None:
        self._marks = [mark for mark in marks if not _is(mark)]

    def __enter__(self) -> None:
        if not _is("is_shielded") and sys.platform == "linux":
            # PyDLL: without giving up the interpreter's lock, waiting for which can be cancelled.
            ctypes.PyDLL(None).pthread_setcancelstate(1, None)  # PTHREAD_CANCEL_DISABLE
            _thread.is_shielded = True
        for mark in self._marks:
            setattr(_thread, mark, True)

    def __exit__(self, *_: object) -> None:
        for mark in self._marks:
            setattr(_thread, mark, False)


class _Trampoline:
    """A C function for one open port. It is never destroyed, since it may be running when its port
    is closed, but used again for another port."""

    _unused: list[_Trampoline] = []

    def __init__(self) -> None:
        self._target: tuple[_Session, Callable[[bytes], object]] | None = None
        self.function = _ReadCallback(self._run)

    @classmethod
    def take(cls, session: _Session, receiver: Callable[[bytes], object]) -> _Trampoline:
        try:
            trampoline = cls._unused.pop()
        except IndexError:
            trampoline = cls()
        trampoline._target = (session, receiver)
        return trampoline

    def give_back(self) -> None:
        self._target = None
        self._unused.append(self)

    def _run(self, data: int, length: int) -> None:
        with _Marked("is_calling", "is_receiving"):
            target = self._target
            if target is not None:
                session, receiver = target
                session.call(receiver, ctypes.string_at(data, length))


def _on_device_state(_state: int) -> None:
    with _Marked("is_calling"):
        session = _shared.session
        if session is not None:
            session.tell()


_state_callback = _StateCallback(_on_device_state)  # kept for as long as the process


class _Shared:
    library: ctypes.CDLL | None = None
    session: _Session | None = None


_shared = _Shared()


def _library() -> ctypes.CDLL:
    if _shared.library is None:
        _shared.library = _load()
    return _shared.library


# Objects ----------------------------------------------------------------------------------------

class Library:
    """The initialised library. One at a time in a process.

    log_dir   an existing directory for KOVASMgr.log
    on_error  gets what a callable of a Port or Watch raises, on the thread that ran it; without it
              a traceback goes to standard error

    Raises OSError: libKOVASMgr cannot be loaded; AlreadyInitialised: nothing changes; BadArgument:
    no such directory; AdapterFailed.
    """

    def __init__(self, log_dir: str | os.PathLike[str],
                 on_error: Callable[[BaseException], None] | None = None) -> None:
        self._session = _Session(on_error)
        self._session.is_alive = False
        if _library().KOVAMGR_GetPortState(0) != NotInitialised.code:
            raise AlreadyInitialised("Library")
        _check("Library", _library().KOVAMGR_Init(os.fsencode(log_dir)))
        self._session.is_alive = True
        _shared.session = self._session
        _library().KOVAMGR_RegisterDeviceStateProcessCallback(_state_callback)
        atexit.register(self.close)

    def close(self) -> None:
        """Releases: closes every port, ends every callable. May be repeated.

        Raises RuntimeError from a callback, and changes nothing.
        """
        if not self._session.is_alive:
            return
        if _is("is_calling"):
            raise RuntimeError("a Library cannot be closed from a callback")
        _library().KOVAMGR_Release()
        self._session.is_alive = False
        _shared.session = None
        atexit.unregister(self.close)

    def __enter__(self) -> Library:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def snapshot(self) -> Snapshot:
        """What is attached now."""
        return self._alive("snapshot").snapshot()

    def open(self, port: int | PortInfo,
             receiver: Callable[[bytes], object] | None = None) -> Port:
        """Opens a port. receiver gets what arrives, from the first byte on, in pieces of 1 to 4,096
        bytes without framing; without it, it is discarded.

        Raises BadArgument: no such port; AdapterFailed: busy, no permission ..., see the log.
        """
        made = self.prepare(port, receiver)
        made.open()
        return made

    def prepare(self, port: int | PortInfo,
                receiver: Callable[[bytes], object] | None = None) -> Port:
        """Makes a Port that is not open yet, for Port.open: for a receiver that uses its own Port,
        and may be called before open() has returned it. The port is not looked at."""
        number = port.id if isinstance(port, PortInfo) else port
        return Port(self._alive("prepare"), number, receiver)

    def watch(self, watcher: Callable[[Changes], object], known: Snapshot | None = None) -> Watch:
        """Tells a watcher what comes and goes from now on, never of nothing.

        With known, also tells what has changed since that snapshot, on the calling thread before it
        returns: nothing is missed between a snapshot and the Watch. With Snapshot(), all that is
        there is told as having come.

        Raises RuntimeError from a receiver.
        """
        return Watch(self._alive("watch"), watcher, known)

    def _alive(self, what: str) -> _Session:
        if not self._session.is_alive:
            raise NotInitialised(what)
        return self._session


class Port:
    """A port, made by Library.open or Library.prepare. Several objects may have the same port open;
    the last one closes it. One that is collected while it is open closes with a ResourceWarning."""

    def __init__(self, session: _Session, number: int,
                 receiver: Callable[[bytes], object] | None) -> None:
        self.id = number
        self._session = session
        self._receiver = receiver
        self._trampoline: _Trampoline | None = None
        self._is_open = False

    def open(self) -> None:
        """Opens a prepared port; nothing happens when it is open.

        Raises BadArgument: no such port; AdapterFailed: busy, no permission ..., see the log;
        NotInitialised. After a failure the port is still prepared.
        """
        what = f"port {self.id}"
        if not self._session.is_alive:
            raise NotInitialised(what)
        if not 0 <= self.id < 2 ** 31:
            raise BadArgument(what)
        if self._is_open:
            return
        self._session.ports[id(self)] = self.id
        self._is_open = True  # from the registration on the receiver may use everything
        try:
            if self._receiver is not None:  # first: what arrives without one is lost
                self._trampoline = _Trampoline.take(self._session, self._receiver)
                _check(what, _library().KOVAMGR_RegisterCommDataReadCallback(
                    self._trampoline.function, self.id))
            _check(what, _library().KOVAMGR_Open(self.id))
        except BaseException:
            self._detach()
            raise

    @property
    def is_open(self) -> bool:
        """Whether it is open. The port's device may be gone all the same."""
        return self._is_open

    def write(self, data: bytes | bytearray | memoryview) -> int:
        """Sends bytes, in calls of at most 16,384, and returns how many were sent: fewer when the
        far end does not keep up. Nothing is tried again.

        Raises NotOpen, AdapterFailed, NotInitialised, BadArgument (the port is gone); the error's
        sent says how many bytes went before. Calls of different threads may alternate.
        """
        view = memoryview(data).cast("B")
        sent = 0
        while sent < len(view):
            part = bytes(view[sent:sent + MAX_WRITE])
            try:
                count = self._write_part(part)
            except Error as error:
                error.sent = sent
                raise
            sent += count
            if count < len(part):
                break
        return sent

    def _write_part(self, part: bytes) -> int:
        what = f"write to port {self.id}"
        if not self._is_open:
            raise NotOpen(what)
        if not self._session.is_alive:
            raise NotInitialised(what)
        reason = ctypes.c_long(AdapterFailed.code)
        count: int = _library().KOVAMGR_Write(self.id, part, len(part), 0, ctypes.byref(reason))
        if count < 0:
            raise _error(what, reason.value)
        if count > MAX_WRITE:
            raise _error(what, count)
        return min(count, len(part))

    def close(self) -> None:
        """Closes the port. The receiver does not run any more afterwards. May be repeated, and the
        port may be opened again.

        Raises AdapterFailed: the port is still open and its receiver still there.
        """
        if self._is_open and self._session.is_alive and self._is_the_last():
            result = _library().KOVAMGR_Close(self.id)
            if result == AdapterFailed.code:
                raise _error(f"port {self.id}", result)
        self._detach()

    def _is_the_last(self) -> bool:
        return list(self._session.ports.values()).count(self.id) == 1

    def _detach(self) -> None:
        """The un-registration waits for the sweep under way; then nobody uses the trampoline."""
        if not self._is_open:
            return
        self._is_open = False
        trampoline, self._trampoline = self._trampoline, None
        if trampoline is not None:
            if self._session.is_alive:
                _library().KOVAMGR_UnRegisterCommDataReadCallback(trampoline.function, self.id)
            trampoline.give_back()
        self._session.ports.pop(id(self), None)

    def __enter__(self) -> Port:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def __del__(self) -> None:
        if self._is_open:
            warnings.warn(f"port {self.id} was not closed", ResourceWarning, source=self)
            try:
                self.close()
            except AdapterFailed:
                self._detach()


class Watch:
    """Someone who is told of devices that come and go, made by Library.watch. Lasts until it is
    closed, or the Library is."""

    def __init__(self, session: _Session, watcher: Callable[[Changes], object],
                 known: Snapshot | None) -> None:
        if _is("is_receiving"):
            raise RuntimeError("a Watch cannot be made from a receiver")
        self.watcher = watcher
        self.has_ended = False
        self._session = session
        with session.lock:
            self.before = session.snapshot() if known is None else known
            session.watches.append(self)
            if known is not None:
                session.tell_one(self)

    def close(self) -> None:
        """The watcher does not run any more afterwards. May be repeated. From a receiver it does not
        wait: a call under way may still end."""
        self.has_ended = True
        if not _is("is_receiving"):
            with self._session.lock:
                self._session.forget()

    def __enter__(self) -> Watch:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()
