# SPDX-License-Identifier: MIT
"""What the guest says, line by line, and what is done about it.

    plug LINE [SERIAL]    plug a serial adapter in          answered: "ok" or "failed: reason"
    pull LINE             pull it out                       answered
    send LINE SIZE        its far end sends the pattern     answered, before it has been sent
    expect LINE SIZE      its far end has received it       answered
    log TEXT              a line of the scenario's output
    result NAME STATUS MILLISECONDS    a scenario has ended
    done                  all have
"""

import time

EXPECT_SECONDS = 30


class Steering:
    """Serves the guest until it is done; outcome(name, status, milliseconds, text) takes each result."""

    def __init__(self, machine, outcome):
        self._machine = machine
        self._outcome = outcome
        self._log = []
        self._asked = {"plug": self._plug, "pull": machine.pull, "send": self._send,
                       "expect": self._expect}

    def serve(self, seconds):
        """Raises TimeoutError when the guest is not done in time."""
        end = time.monotonic() + seconds
        buffered = b""
        while True:
            self._machine.steering.settimeout(max(0.01, end - time.monotonic()))
            data = self._machine.steering.recv(1 << 16)
            if not data:
                raise RuntimeError("the machine has stopped")
            *lines, buffered = (buffered + data).split(b"\n")
            for line in lines:
                if self._take(line.decode(errors="replace").rstrip("\r")):
                    return

    def _take(self, line):
        word, _, rest = line.partition(" ")
        if word == "log":
            self._log.append(rest)
        elif word == "result":
            name, status, milliseconds = rest.split()
            self._outcome(name, int(status), int(milliseconds), "\n".join(self._log))
            self._log = []
        elif word in self._asked:
            self._answer(self._asked[word], rest.split())
        return word == "done"

    def _answer(self, action, arguments):
        try:
            line, *others = arguments
            action(int(line), *others)
            answer = "ok"
        except (OSError, RuntimeError, ValueError, TypeError, IndexError) as error:
            answer = f"failed: {error}"
        self._machine.steering.sendall(answer.encode() + b"\n")

    def _plug(self, line, serial=""):
        self._machine.plug(line, serial)

    def _send(self, line, size):
        self._machine.lines[line].send(int(size))

    def _expect(self, line, size):
        self._machine.lines[line].expect(int(size), EXPECT_SECONDS)
