# SPDX-License-Identifier: MIT
"""Runs the programs that measure reading from terminals, and turns what they print into figures."""
import random
import re
import statistics
import subprocess

PROGRAMS = {"idle": [0, 1, 16, 64, 256, 1024], "delivery": [0, 1, 256], "throughput": [1, 64]}


def values_of(line):
    return {key: float(value) for key, value in re.findall(r"(\w+)=([\d.]+)", line)}


def measure(build, repetitions, chosen):
    """The medians of what each run prints, by "<program>/<ports>"; 0 ports is a bare loop."""
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


def idle_figures(medians):
    cost = {ports: medians[f"idle/{ports}"]["cpu_us_per_second"]
            for ports in PROGRAMS["idle"] if f"idle/{ports}" in medians}
    for ports, value in cost.items():
        what = f"{ports} idle ports" if ports else "bare loop of poll and sleep"
        yield f"read thread, {what}, CPU time a second", value, None, "us"
    for floor, what in ((1, "one port"), (0, "bare loop")):
        for ports, value in cost.items():
            if floor in cost and ports > floor:
                target = 1.5 if (ports, floor) == (256, 1) else None
                yield f"read thread, {ports} idle ports / {what}", value / cost[floor], target, "x"


def delivery_figures(medians):
    bare = medians.get("delivery/0")
    for ports in PROGRAMS["delivery"]:
        run = medians.get(f"delivery/{ports}")
        if run is None:
            continue
        what = f"{ports} open ports" if ports else "bare loop of read and sleep"
        yield f"delivery, {what}, p50", run["p50_ms"], None, "ms"
        yield f"delivery, {what}, p99", run["p99_ms"], None, "ms"
        if ports and bare is not None:
            yield f"delivery, {what}, p99 above the bare loop's", \
                run["p99_ms"] - bare["p99_ms"], 1, "ms"


def throughput_figures(medians):
    for ports in PROGRAMS["throughput"]:
        run = medians.get(f"throughput/{ports}")
        if run is None:
            continue
        what = f"{ports} busy port{'s' if ports > 1 else ''}"
        yield f"{what}, a second", run["bytes_per_second"] / 1000, None, "kB"
        yield f"{what}, sweeps a second", run["sweeps_per_second"], None, "/s"
        yield f"{what}, largest read", run["largest_read"], None, "B"
        yield f"{what} / sweeps made x largest read", run["of_ceiling"], None, "x"


def figures(medians):
    """(what, measured, target, unit)"""
    yield from idle_figures(medians)
    yield from delivery_figures(medians)
    yield from throughput_figures(medians)
