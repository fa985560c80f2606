# SPDX-License-Identifier: MIT
"""follow.c in Python.

    follow.py COUNT    COUNT: how often it is connected before the program ends
"""

import queue
import sys

import kovasmgr

NAME = "virtual-sensor-0"


def ports_of(devices):
    return [port for device in devices for port in device.ports if port.name == NAME]


with kovasmgr.Library(".") as library:
    todo = queue.SimpleQueue()  # the watcher hands over to the main thread
    with library.watch(todo.put, kovasmgr.Snapshot()):  # which begins with all that is there
        rest, port = int(sys.argv[1]), None
        while rest > 0:
            changes = todo.get()
            if port is not None and ports_of(changes.went):
                port.close()
                print("gone", flush=True)
            for info in ports_of(changes.came):
                port = library.open(info, lambda data: None)
                print("connected", flush=True)
                rest -= 1
        port.close()
