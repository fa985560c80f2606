# SPDX-License-Identifier: MIT
"""What scripts/prove runs, stage by stage."""
import json
import os
import shutil
import subprocess
import time
from dataclasses import dataclass

HOUR = "3600"

# What bench/prove leaves, and what it takes from the tests on a real kernel.
_SPEED = "build/release/bench/performance.json"
_KERNEL = "build/release/real_kernel/figures.txt"


@dataclass
class Stage:
    title: str
    steps: list  # of commands; the last ones may be ctest, see ctest()
    long_steps: list = None  # in place of the others with --long


def configure(preset, *options):
    return ["cmake", "--preset", preset, *options]


def build(preset, *targets):
    return ["cmake", "--build", "--preset", preset, "--target", *targets, "--", "--quiet"]


def ctest(preset, *options):
    """Its results go to build/prove/<stage>.xml."""
    return ["ctest", "--preset", preset, "--output-junit", "{junit}", *options]


# What measures time comes first, while the processors are cool.
STAGES = {
    "kernel": Stage("the Linux adapter on a kernel in QEMU", [
        ["scripts/install-deps", "--real-kernel"],
        configure("release", "-DKOVASMGR_REAL_KERNEL=ON"),
        build("release", "adapter_linux", "real_kernel_scenarios"),
        ctest("release", "-L", "real_kernel", "-j", "1")]),
    "speed": Stage("speed, side by side with others", [
        ["scripts/install-deps", "--compare"],
        configure("release"),
        build("release", "bench_programs"),
        ["bench/prove"]]),
    "lint": Stage("clang-format, clang-tidy, cppcheck", [["scripts/lint", "--library"]],
                  [["scripts/lint"]]),
    "coverage": Stage("coverage of the library by its own tests: g++, nothing optimised", [
        ["scripts/coverage"]]),
    "valgrind": Stage("hosts' tests under valgrind: clang, Debug", [
        configure("debug"),
        build("debug", "memcheck_tests"),
        ctest("debug", "-L", "memcheck")]),
    "fuzz": Stage("the fuzzers, a minute each: clang, libFuzzer", [
        configure("fuzz"),
        build("fuzz", "fuzz_tests"),
        ctest("fuzz", "-L", "fuzz")]),
    "release": Stage("the promises' tests, as shipped: g++, Release", [
        configure("release"),
        build("release", "proof_tests"),
        ctest("release", "-L", "proof", "-E", "^soak$")]),
    "soak": Stage("two minutes of load", [
        configure("release"),
        build("release", "soak"),
        ctest("release", "-R", "^soak$")]),
    "asan": Stage("the library's and the promises' tests under address, leak and undefined-behaviour "
                  "sanitizers: clang", [
                      configure("asan"),
                      build("asan", "core_tests", "proof_tests"),
                      ctest("asan", "-L", "core|proof")]),
    "tsan": Stage("the same under the thread sanitizer: clang", [
        configure("tsan"),
        build("tsan", "core_tests", "proof_tests"),
        ctest("tsan", "-L", "core|proof")]),
}


def _environment(results, name, is_long):
    environment = dict(os.environ, KOVASMGR_FIGURES=str(results / f"{name}.jsonl"))
    if is_long:
        # Other inputs in each long run; short ones repeat theirs, so that a failure can be looked at.
        environment.update(KOVASMGR_FUZZ_SECONDS=HOUR, KOVASMGR_FUZZ_SEED="0",
                           KOVASMGR_MODEL_SEED=str(int(time.time())))
    if is_long and name == "soak":
        environment["KOVASMGR_SOAK_SECONDS"] = HOUR
    if name == "kernel":
        environment["KOVASMGR_LATENCY_RUNS"] = "5"
    return environment


def _run_stage(root, results, name, is_long):
    stage = STAGES[name]
    steps = stage.long_steps if is_long and stage.long_steps else stage.steps
    environment = _environment(results, name, is_long)
    start = time.monotonic()
    with open(results / f"{name}.log", "wb") as log:
        for step in steps:
            command = [part.format(junit=results / f"{name}.xml") for part in step]
            status = subprocess.run(command, cwd=root, env=environment, stdin=subprocess.DEVNULL,
                                    stdout=log, stderr=subprocess.STDOUT, check=False).returncode
            if status != 0:
                break
    if name == "speed" and (root / _SPEED).exists():
        shutil.copy(root / _SPEED, results)
    return {"title": stage.title, "seconds": time.monotonic() - start, "status": status,
            "failed": None if status == 0 else " ".join(step)}


def _machine():
    model = "unknown processor"
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    return f"{os.cpu_count()} x {model}, Linux {os.uname().release}"


def run(root, results, names, is_long):
    """Leaves in results: run.json, and of each stage its .log, its .jsonl (figures) and .xml (tests)."""
    shutil.rmtree(results, ignore_errors=True)
    for path in (_SPEED, _KERNEL):
        (root / path).unlink(missing_ok=True)  # of another run
    results.mkdir(parents=True)
    report = {"date": time.strftime("%Y-%m-%d"), "machine": _machine(), "long": is_long, "stages": {}}
    for name in names:
        print(f"== {name}: {STAGES[name].title}", flush=True)
        report["stages"][name] = _run_stage(root, results, name, is_long)
        (results / "run.json").write_text(json.dumps(report, indent=1))
        seen = report["stages"][name]
        print(f"   {seen['seconds'] / 60:.1f} minutes" + (
            f", FAILED: {seen['failed']}; see {results / name}.log" if seen["status"] else ""), flush=True)
