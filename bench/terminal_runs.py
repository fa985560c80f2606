# SPDX-License-Identifier: MIT
"""Runs the programs that measure reading from terminals, and turns what they print into figures."""
import random
import re
import statistics
import subprocess

PROGRAMS = {"idle": [1, 16, 64, 256, 1024], "delivery": [1, 256], "throughput": [1, 16, 64]}


def values_of(line):
    return {key: float(value) for key, value in re.findall(r"(\w+)=([\d.e+-]+)", line)}


def measure(build, repetitions, chosen):
    """The medians of what each run prints, by "<program>/<ports>"."""
    runs = [(name, ports) for name, sizes in PROGRAMS.items() for ports in sizes
            if re.search(chosen, f"{name}/{ports}")]
    seen = {}
    for _ in range(repetitions):
        random.shuffle(runs)
        for name, ports in runs:
            program = build / "bin" / f"kovasmgr_{name}_bench"
            if not program.exists():
                continue
            line = subprocess.run([program, str(ports)], check=True, capture_output=True,
                                  text=True, timeout=120).stdout
            for key, value in values_of(line).items():
                seen.setdefault(f"{name}/{ports}", {}).setdefault(key, []).append(value)
    return {run: {key: statistics.median(values) for key, values in by_key.items()}
            for run, by_key in seen.items()}


def runs_of(program, medians):
    """(ports, medians) of the sizes that were measured."""
    return [(ports, medians[f"{program}/{ports}"]) for ports in PROGRAMS[program]
            if f"{program}/{ports}" in medians]


def idle_figures(medians):
    for ports, run in runs_of("idle", medians):
        what = f"read thread, {ports:5} idle port{'s' if ports > 1 else ''}"
        yield f"{what}, CPU time a second", run["us_per_second"], None, "us"
        yield f"{what} / one port", run["to_one_port"], 1.5 if ports == 256 else None, "x"
        yield f"{what} / bare loop of poll and sleep", run["to_bare_loop"], None, "x"


def delivery_figures(medians):
    for ports, run in runs_of("delivery", medians):
        what = f"delivery, {ports:3} open port{'s' if ports > 1 else ''}"
        for part in ("p50", "p99"):
            bare = run[f"bare_loop_{part}_ms"]
            yield f"{what}, {part}", run[f"{part}_ms"], None, "ms"
            yield f"{what}, {part} above a bare loop's", run[f"{part}_ms"] - bare, 1, "ms"


def throughput_figures(medians):
    for ports, run in runs_of("throughput", medians):
        what = f"{ports} busy port{'s' if ports > 1 else ''}"
        yield f"{what}, a second", run["bytes_per_second"] / 1000, None, "kB"
        yield f"{what}, sweeps a second", run["sweeps_per_second"], None, "/s"
        yield f"{what}, largest read", run["largest_read"], None, "B"
        yield f"{what} / sweeps made x largest read", run["of_ceiling"], None, "x"
        yield f"{what}, bytes lost or wrong", run["lost"] + run["wrong"], 0, "B"


def figures(medians):
    """(what, measured, target, unit)"""
    yield from idle_figures(medians)
    yield from delivery_figures(medians)
    yield from throughput_figures(medians)
