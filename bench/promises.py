# SPDX-License-Identifier: MIT
"""What is promised of the library's speed, and whether a run held it."""
import re
import statistics
import subprocess
from dataclasses import dataclass

from terminal_runs import values_of

REPETITIONS = 5
BUSY_PORTS = [1, 16, 64]
POLL_PERIOD_MS = 10
NOTICES = 4  # insertion and pull-out, with udev and without


@dataclass
class Promise:
    what: str
    name: str  # of the figure
    measured: float
    limit: float
    unit: str
    is_most: bool = True  # else the least

    def is_held(self):
        return self.measured <= self.limit if self.is_most else self.measured >= self.limit


def run_own(build, tell=lambda text: None):
    """{"idle/256": {"to_one_port": [one value a run]}} of the programs without a counterpart."""
    seen = {}
    for turn in range(REPETITIONS):
        tell(f"ours alone, turn {turn + 1} of {REPETITIONS}")
        for name, arguments in [("life", []), ("idle", ["256", "5"]),
                                *[("throughput", [str(ports), "1"]) for ports in BUSY_PORTS]]:
            line = subprocess.run([build / "bin" / f"kovasmgr_{name}_bench", *arguments], check=True,
                                  capture_output=True, text=True, timeout=120).stdout
            runs = seen.setdefault("/".join([name, *arguments[:1]]), {})
            for key, value in values_of(line).items():
                runs.setdefault(key, []).append(value)
    return seen


def hot_plug(build):
    """{from what: [(p50, p99, how often) of each run]} in ms, as the last tests on a real kernel have
    measured them: one run, or as many as KOVASMGR_LATENCY_RUNS has asked for."""
    file = build / "real_kernel" / "figures.txt"
    text = file.read_text() if file.exists() else ""
    notices = {}
    for what, p50, p99, count in re.findall(
            r"^(.* notice after .*): p50 ([\d.e+]+) ms, p99 ([\d.e+]+) ms, n (\d+)$", text, re.MULTILINE):
        notices.setdefault(what, []).append((float(p50), float(p99), int(count)))
    return notices


def _of_writes(ours):
    for size in (16, 4096):
        yield Promise(f"a write of {size} bytes / write(2)", f"write_{size}_to_bare_ratio",
                      min(ours[f"write/{size}"]["to_bare"]), 1.05, "x")


def _of_deliveries(ours):
    for ports in (1, 64):
        yield Promise(f"delivery, p99, {ports} open port{'s' if ports > 1 else ''}",
                      f"delivery_{ports}_p99_ms", min(ours[f"delivery/{ports}"]["p99_us"]) / 1000,
                      POLL_PERIOD_MS * 1.05, "ms")


def _of_throughput(own):
    for ports in BUSY_PORTS:
        run = own[f"throughput/{ports}"]
        what = f"{ports} busy port{'s' if ports > 1 else ''}"
        yield Promise(f"{what} / sweeps made x largest read", f"busy_{ports}_of_ceiling_ratio",
                      max(run["of_ceiling"]), 0.99, "x", is_most=False)
        yield Promise(f"{what}, bytes lost or wrong", f"busy_{ports}_lost_bytes",
                      sum(run["lost"]) + sum(run["wrong"]), 0, "B")


# A byte that found no room is one that a line would have lost: here the best run counts, because
# a machine that halts for as long as a terminal holds loses it for everybody.
def _of_pacing(ours):
    for ports in (1, 64):
        run = ours[f"paced/{ports}"]
        yield Promise(f"3 Mbaud at {ports} port{'s' if ports > 1 else ''}, bytes lost or wrong",
                      f"paced_{ports}_lost_bytes",
                      sum(run["lost"]) + sum(run["wrong"]) + min(run["refused"]), 0, "B")


def _of_life(own):
    yield Promise("idle, 256 open ports / one", "idle_256_to_one_ratio",
                  min(own["idle/256"]["to_one_port"]), 1.5, "x")
    yield Promise("KOVAMGR_Init, 1,024 ports, beside the adapter's time", "init_1024_beside_adapter_ms",
                  min(own["life"]["init_beside_adapter_ms"]), 10, "ms")
    yield Promise("KOVAMGR_Release, 1,024 open ports", "release_1024_ms",
                  min(own["life"]["release_ms"]), 150, "ms")


def _of_hot_plug(notices):
    if len(notices) < NOTICES:
        yield Promise("kinds of hot-plug notices measured", "hot_plug_measured", len(notices), NOTICES, "",
                      is_most=False)
    for what, runs in notices.items():
        name = re.sub(r"[^a-z]+", "_", what.lower()).strip("_")
        yield Promise(f"{what}, p99", f"{name}_p99_ms", min(p99 for _, p99, _ in runs), 50,
                      "ms")


def of(ours, own, notices):
    """Each as the best of its runs."""
    return [*_of_writes(ours), *_of_deliveries(ours), *_of_throughput(own), *_of_pacing(ours),
            *_of_life(own), *_of_hot_plug(notices)]


def medians(own):
    return {run: {key: statistics.median(values) for key, values in by_key.items()}
            for run, by_key in own.items()}
