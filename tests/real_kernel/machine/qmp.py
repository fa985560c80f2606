# SPDX-License-Identifier: MIT
"""QEMU's control connection."""

import json
import socket
import time

DEVICE_TIME = 10  # seconds that a device may take to be let go


class Qmp:
    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(DEVICE_TIME)
        self._socket.connect(path)
        self._file = self._socket.makefile("rw")
        self._events = []
        self._message()  # the greeting
        self.call("qmp_capabilities")

    def call(self, command, **arguments):
        """The command's answer, or RuntimeError with QEMU's reason."""
        self._file.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self._file.flush()
        while True:
            message = self._message()
            if "error" in message:
                raise RuntimeError(message["error"]["desc"])
            if "return" in message:
                return message["return"]
            self._events.append(message)

    def plug(self, driver, name, **properties):
        """Adds a device. Its character device may still be busy with a former one."""
        end = time.monotonic() + DEVICE_TIME
        while True:
            try:
                return self.call("device_add", driver=driver, id=name, **properties)
            except RuntimeError:
                if time.monotonic() > end:
                    raise
                time.sleep(0.002)

    def pull(self, name):
        """Removes a device and waits until it is gone."""
        self._events.clear()
        self.call("device_del", id=name)
        while not any(self._tells_removal(event, name) for event in self._events):
            self._events.append(self._message())

    @staticmethod
    def _tells_removal(event, name):
        return event.get("event") == "DEVICE_DELETED" and event["data"].get("device") == name

    def _message(self):
        line = self._file.readline()
        if not line:
            raise RuntimeError("QEMU has closed its control connection")
        return json.loads(line)
