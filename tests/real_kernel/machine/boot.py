# SPDX-License-Identifier: MIT
"""Boots a Debian kernel in QEMU, runs every scenario there and writes down how each ended.

Ends with 0 when all scenarios were run, however they ended: result.py reports each. 77: no QEMU.
"""

import argparse
import os
import shutil
import sys
import time
from pathlib import Path

import initramfs
import machine
import packages
from results import Results
from steering import Steering

HERE = Path(__file__).resolve().parent
SKIPPED = 77
TAIL_LINES = 40


def _arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cache", type=Path, required=True, help="where downloads are kept")
    parser.add_argument("--results", type=Path, required=True, help="where results are written to")
    parser.add_argument("--program", type=Path, required=True, help="the scenarios")
    parser.add_argument("--adapter", type=Path, required=True, help="the adapter that they load")
    parser.add_argument("--environment", action="append", default=[], metavar="NAME=VALUE")
    parser.add_argument("--file", action="append", default=[], type=Path,
                        help="a file that the guest has in the same place")
    parser.add_argument("--seconds", type=int, default=200, help="for all scenarios together")
    parser.add_argument("--filter", default="*", help="which scenarios, as GoogleTest names them")
    return parser.parse_args()


def _show_tail(console):
    print(f"The end of {console}:")
    for line in console.read_text(errors="replace").splitlines()[-TAIL_LINES:]:
        print("   ", line)


class _Clock:
    def __init__(self):
        self._last = time.monotonic()

    def tell(self, stage):
        now = time.monotonic()
        print(f"{stage}: {now - self._last:.1f} s", flush=True)
        self._last = now


def _run(arguments, results):
    clock = _Clock()
    console = results.directory / "console.log"
    console.touch()
    kernel = packages.Kernel(arguments.cache)
    udev = packages.udev(arguments.cache)
    clock.tell(f"kernel {kernel.version} and udev")
    image = results.directory / "initramfs.cpio"
    environment = [*arguments.environment, f"SCENARIOS={arguments.filter}",
                   f"KOVASMGR_LATENCY_RUNS={os.environ.get('KOVASMGR_LATENCY_RUNS', '1')}"]
    initramfs.build(image, kernel, udev, HERE.parent / "guest/init", arguments.program,
                    arguments.adapter, environment, arguments.file)
    clock.tell("file system")
    try:
        with machine.Machine(kernel.image, image, console) as guest:
            Steering(guest, results.add).serve(arguments.seconds)
    except (OSError, RuntimeError) as error:
        print(f"The guest was not done: {error or type(error).__name__}")
        _show_tail(console)
        return 1
    finally:
        clock.tell("guest")
        print(results.write_summary())
    if results.is_empty():
        print("The guest has run no scenario.")
        _show_tail(console)
        return 1
    return 0


def main():
    arguments = _arguments()
    results = Results(arguments.results)
    results.clear()
    if not shutil.which(machine.PROGRAM):
        results.skip(f"{machine.PROGRAM} is not installed")
        print(f"skipped: {machine.PROGRAM} is not installed")
        return SKIPPED
    return _run(arguments, results)


if __name__ == "__main__":
    sys.exit(main())
