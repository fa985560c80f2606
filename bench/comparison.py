# SPDX-License-Identifier: MIT
"""Runs the programs of bench/compare side by side: every library does every measure once, in random
order, and that several times."""
import random
import statistics
import subprocess

from terminal_runs import values_of

NAMES = {"kovasmgr": "KOVASMgr", "plain": "termios and poll", "libserialport": "libserialport",
         "qt": "Qt Serial Port", "asio": "Boost.Asio"}

PORTS = [1, 16, 64, 256, 1024]

# measure, ports or bytes, how much, repetitions
MEASURES = [
    ("write", 16, 2000, 5), ("write", 4096, 2000, 5),
    ("delivery", 1, 200, 5), ("delivery", 64, 200, 5),
    ("throughput", 1, 1, 3), ("throughput", 16, 1, 3), ("throughput", 64, 1, 3),
    ("paced", 1, 2, 5), ("paced", 64, 2, 5),
    *[("idle", ports, 1, 3) for ports in PORTS],
    ("enumeration", 1, 50, 3), ("enumeration", 1024, 50, 3),
]

# Of most programs a table needs less than of the one whose promises are held.
ONLY_OURS_AND_THE_FLOOR = {"paced"}
ONLY_OURS = {("enumeration", 1024)}


def program(build, library):
    return build / "bin" / f"kovasmgr_compare_{library}"


def _is_wanted(library, measure, size):
    if measure in ONLY_OURS_AND_THE_FLOOR:
        return library in ("kovasmgr", "plain")
    return library == "kovasmgr" or (measure, size) not in ONLY_OURS


def _runs(libraries, turn):
    runs = [(library, measure, size, much) for measure, size, much, repetitions in MEASURES
            for library in libraries
            if turn < repetitions and _is_wanted(library, measure, size)]
    random.shuffle(runs)
    return runs


def measure(build, tell=lambda text: None):
    """{library: {"write/16": {"ns": [one value a run]}}}, of the programs that were built."""
    libraries = [library for library in NAMES if program(build, library).exists()]
    seen = {library: {} for library in libraries}
    turns = max(repetitions for *_, repetitions in MEASURES)
    for turn in range(turns):
        tell(f"side by side, turn {turn + 1} of {turns}: {', '.join(libraries)}")
        for library, name, size, much in _runs(libraries, turn):
            line = subprocess.run([program(build, library), name, str(size), str(much)], check=True,
                                  capture_output=True, text=True, timeout=120).stdout
            runs = seen[library].setdefault(f"{name}/{size}", {})
            for key, value in values_of(line).items():
                runs.setdefault(key, []).append(value)
    return seen


def medians(seen):
    return {library: {run: {key: statistics.median(values) for key, values in by_key.items()}
                      for run, by_key in runs.items()} for library, runs in seen.items()}
